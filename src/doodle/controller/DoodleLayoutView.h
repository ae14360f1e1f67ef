#pragma once

#include <doodle/controller/DoodleLayout.h>

#include <QPointF>
#include <QWidget>

// The controller's own view: it keeps the canvas filling it and hands the
// user's mouse (left button), touch (first point) and stylus input to the
// controller as touch phases, in the board's coordinates.
class QTouchEvent;

class DoodleLayoutView : public QWidget
{
    Q_OBJECT
public:
    explicit DoodleLayoutView(DoodleLayout *controller);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void tabletEvent(QTabletEvent *event) override;

private:
    enum class Phase
    {
        Began,
        Moved,
        Ended,
        Cancelled
    };
    void deliver(Phase phase, const QPointF &viewPosition);
    bool handleTouch(QTouchEvent *event);
    void cancelGesture();

    DoodleLayout *m_controller;
    bool m_pressed = false;
    QPointF m_lastLocation; // in the board's coordinates
};
