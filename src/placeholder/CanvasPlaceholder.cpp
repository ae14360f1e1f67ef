// TEMPORARY: link-time placeholders for the canvas classes until their
// implementation lands (branch "canvas"). Their Q_OBJECT headers are moc'ed
// into the library, so without these no executable links against it.
// src/doodle/model/sources.cmake adds this file only while
// src/doodle/canvas/ZQDoodleView.cpp and ZQDoodleDrawView.cpp are both absent.
// Delete this file and that block when the canvas branch is merged.
#include <doodle/canvas/ZQDoodleDrawView.h>
#include <doodle/canvas/ZQDoodleView.h>

ZQDoodleDrawView::ZQDoodleDrawView(QWidget *parent) : QWidget(parent) {}

void ZQDoodleDrawView::paintEvent(QPaintEvent *) {}

ZQDoodleView::ZQDoodleView(const QRect &frame, const QImage &image, QWidget *parent)
    : QWidget(parent), m_backgroundImage(image)
{
    setGeometry(frame);
}

void ZQDoodleView::resizeEvent(QResizeEvent *) {}

void ZQDoodleView::paintEvent(QPaintEvent *) {}
