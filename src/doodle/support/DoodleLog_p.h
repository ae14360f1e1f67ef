#pragma once

#include <doodle/DoodleExport.h>

#include <QLoggingCategory>
#include <QPointF>
#include <QRectF>
#include <QString>

// C printf number formats that do not depend on the process locale.
class DOODLE_EXPORT DoodleNumber
{
public:
    // "%d": a signed decimal integer.
    static QString printfD(qint64 value);
    // "%f": six digits after the point ("nan", "inf" as C prints them).
    static QString printfF(double value);
    // The double whose shortest text is the shortest text that reads back to
    // `value` as a float, so that 0.1f is written as 0.1 rather than
    // 0.10000000149011612. Non-finite values pass through unchanged.
    static double shortestFloat(float value);
    // Geometry as the diagnostic lines write it: "{x, y}" and
    // "{{x, y}, {w, h}}", each number in its shortest exact form.
    static QString pointText(const QPointF &point);
    static QString rectText(const QRectF &rect);
};

// The library's one logging category, "doodle". It reports warnings only
// unless a host asks for more ("doodle.info=true").
DOODLE_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcDoodle)

// Writes one line through the "doodle" category at info level. The argument is
// evaluated only when that level is enabled, so a filtered line costs nothing.
#define DOODLE_LOG(line) qCInfo(lcDoodle).noquote() << (line)
