#pragma once

#include <QPointF>

#include <optional>

class QAbstractButton;
class QEvent;

// A mouse (left button), touch (first point) or stylus event read as one
// pointer, so that every control answers the three alike: a tap is a click.
struct DoodlePointer
{
    enum class Phase
    {
        Press,
        Move,
        Release,
        Cancel
    };
    Phase phase;
    QPointF position; // in the receiving widget's coordinates

    // The pointer phase of `event`; none for any other event. A move may be a
    // hover (no button down): the receiver knows whether it is tracking.
    static std::optional<DoodlePointer> read(const QEvent *event);
    // Lets `button` take touch and stylus taps the way it takes mouse clicks,
    // so they are not passed on to the widgets under it. True when `event`
    // was such an event and has been handled.
    static bool handleTap(QAbstractButton *button, QEvent *event);
};
