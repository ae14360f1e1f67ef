// The wire text of a gesture under way: compact members inside the content
// string that clients without live strokes never read.
#include "DoodleProgress_p.h"

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <QJsonArray>
#include <QJsonObject>

#include <cmath>

namespace {

const QLatin1String kKind("of");
const QLatin1String kGesture("id");
const QLatin1String kFrom("from");
const QLatin1String kPoints("p");
const QLatin1String kEnded("end");

// A coordinate as a stroke's point text holds it ("%f"), so that the preview
// and the committed stroke lie on the same points.
double asPointText(double value)
{
    return std::round(value * 1e6) / 1e6;
}

bool isKnownKind(qint64 kind)
{
    return kind == DoodleProgress::kLaser || kind == DoodleActionTypeStroke ||
           kind == DoodleActionTypeRectangle || kind == DoodleActionTypeEllipse ||
           kind == DoodleActionTypeArrow;
}

bool finite(const DoodleProgress &p)
{
    return std::isfinite(p.box.x()) && std::isfinite(p.box.y()) && std::isfinite(p.box.width()) &&
           std::isfinite(p.box.height()) && std::isfinite(p.end.x()) && std::isfinite(p.end.y());
}

double member(const QJsonObject &content, const char *key)
{
    return content.value(QLatin1String(key)).toDouble();
}

std::optional<DoodleProgress> rejected(const char *why)
{
    qCWarning(lcDoodle, "dropped a progress message: %s", why);
    return std::nullopt;
}

} // namespace

DoodleActionPtr DoodleProgressText::toAction(const DoodleProgress &progress,
                                             const DoodleAction &brush)
{
    QJsonObject content{{kKind, progress.kind}, {kGesture, qint64(progress.gesture)}};
    if (progress.ended) {
        content.insert(kEnded, true);
    } else if (progress.kind == DoodleActionTypeStroke || progress.kind == DoodleProgress::kLaser) {
        QJsonArray points;
        for (const QPointF &p : progress.points)
            points << asPointText(p.x()) << asPointText(p.y());
        content.insert(kFrom, progress.from);
        content.insert(kPoints, points);
    } else {
        content.insert(QLatin1String(KActionPositionXKey), progress.box.x());
        content.insert(QLatin1String(KActionPositionYKey), progress.box.y());
        content.insert(QLatin1String(KActionWidthKey), progress.box.width());
        content.insert(QLatin1String(KActionHeightKey), progress.box.height());
        content.insert(QLatin1String(KActionPositionEndXKey), progress.end.x());
        content.insert(QLatin1String(KActionPositionEndYKey), progress.end.y());
    }
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(DoodleActionTypeProgress);
    action->setUserId(brush.userId());
    action->setBrushWidth(brush.brushWidth());
    action->setBrushColor(brush.brushColor());
    // A type outside the table carries its content member as it is.
    action->setUserDefined(DoodleTranslate::objToJson(content));
    return action;
}

std::optional<DoodleProgress> DoodleProgressText::fromAction(const DoodleAction &action,
                                                             qsizetype maxPoints)
{
    const QJsonValue parsed = DoodleTranslate::jsonToObj(action.userDefined());
    if (!parsed.isObject())
        return rejected("no content");
    const QJsonObject content = parsed.toObject();
    DoodleProgress progress;
    progress.kind = content.value(kKind).toInteger();
    if (!isKnownKind(progress.kind))
        return rejected("unknown kind");
    progress.gesture = quint64(std::max<qint64>(0, content.value(kGesture).toInteger()));
    progress.ended = content.value(kEnded).toBool();
    progress.from = std::max<qint64>(0, content.value(kFrom).toInteger());
    const QJsonArray points = content.value(kPoints).toArray();
    if (points.size() > 2 * maxPoints)
        return rejected("too many points");
    for (qsizetype i = 0; i + 1 < points.size(); i += 2) {
        const QPointF p(points.at(i).toDouble(qQNaN()), points.at(i + 1).toDouble(qQNaN()));
        if (!std::isfinite(p.x()) || !std::isfinite(p.y()))
            return rejected("a point is not a number");
        progress.points << p;
    }
    progress.box =
        QRectF(member(content, KActionPositionXKey), member(content, KActionPositionYKey),
               member(content, KActionWidthKey), member(content, KActionHeightKey));
    progress.end =
        QPointF(member(content, KActionPositionEndXKey), member(content, KActionPositionEndYKey));
    if (!finite(progress))
        return rejected("a corner is not a number");
    return progress;
}
