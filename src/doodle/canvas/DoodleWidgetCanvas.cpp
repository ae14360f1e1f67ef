#include "DoodleWidgetCanvas_p.h"

#include <QLineEdit>

QSizeF DoodleWidgetCanvas::boardSize() const
{
    return m_view ? QSizeF(m_view->rect().size()) : QSizeF(0, 0);
}

DoodleSurface &DoodleWidgetCanvas::cacheSurface()
{
    // Replay draws on the cache canvas alone: previews and an open text field
    // on the temp canvases stay as they are.
    ZQDoodleView *board = m_load();
    ZQDoodleDrawView *canvas = board->cacheCanvas();
    canvas->setGeometry(board->rect());
    return *canvas->surface();
}

// A hidden board gets its resize event only when shown: every layer takes
// the board's bounds before it is drawn on.
ZQDoodleDrawView *DoodleWidgetCanvas::laidOutTemp(quint64 index)
{
    ZQDoodleView *board = m_load();
    ZQDoodleDrawView *canvas = board->getTempCanvas(index);
    if (canvas)
        canvas->setGeometry(board->rect());
    return canvas;
}

DoodleSurface *DoodleWidgetCanvas::previewSurface(quint64 index)
{
    ZQDoodleDrawView *canvas = laidOutTemp(index);
    return canvas ? canvas->surface() : nullptr;
}

void DoodleWidgetCanvas::cleanPreview(quint64 index, bool release)
{
    if (!m_view)
        return;
    ZQDoodleDrawView *canvas = laidOutTemp(index);
    if (canvas && release)
        canvas->cleanAllPath();
    else if (canvas)
        canvas->cleanForRedraw();
}

void DoodleWidgetCanvas::openTextEntry(const QPointF &point, double textSize, const QColor &color,
                                       quint64 index)
{
    m_load()->textInTempWithStartPoint(point, QString(), textSize, color, index);
}

QString DoodleWidgetCanvas::textEntryText() const
{
    const QLineEdit *field = m_view ? m_view->tempTextField() : nullptr;
    return field ? field->text() : QString();
}
