#pragma once

// A gesture under way as its drawer's board reports it, and its wire text:
// an action of the progress type whose content member holds the details.
// Not installed.
#include <doodle/DoodleExport.h>
#include <doodle/model/DoodleAction.h>

#include <QList>
#include <QPointF>
#include <QRectF>

#include <optional>

struct DoodleProgress
{
    // What the gesture makes: a drawn type code (260, 268, 269, 270), or the laser.
    static constexpr qint64 kLaser = 1;
    qint64 kind = 0;
    quint64 gesture = 0;   // the drawer's gesture number: a new one starts a new preview
    qint64 from = 0;       // where `points` start in the whole stroke or track
    QList<QPointF> points; // normalised; a stroke's or laser's points since the last report
    QRectF box;            // a shape: its x, y, width and height as the action holds them
    QPointF end;           // an arrow's end
    bool ended = false;    // the gesture was abandoned: its preview goes
};

class DOODLE_EXPORT DoodleProgressText
{
public:
    // An action of the progress type, in the drawer's brush.
    static DoodleActionPtr toAction(const DoodleProgress &progress, const DoodleAction &brush);
    // The progress an action carries; none, with a log line, when it is malformed.
    static std::optional<DoodleProgress> fromAction(const DoodleAction &action,
                                                    qsizetype maxPoints);
};
