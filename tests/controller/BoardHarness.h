#pragma once

#include <doodle/Doodle.h>

#include <QImage>
#include <QObject>
#include <QStringList>
#include <QTest>

#include <cmath>
#include <functional>

Q_DECLARE_METATYPE(DoodleActionPtr)

// A host that records what its board tells it.
class RecordingHost : public QObject, public DoodleLayoutDelegate
{
public:
    QStringList calls;
    QList<DoodleActionPtr> generated;
    // Reports of a gesture under way, kept apart: whether one goes out
    // depends on how long the gesture takes.
    QList<DoodleActionPtr> progress;
    std::function<void(const DoodleActionPtr &)> onGenerated;

    void onDoodleActionGenerated(const DoodleActionPtr &action) override
    {
        if (action && action->actionType() == DoodleActionTypeProgress) {
            progress << action;
        } else {
            calls << QStringLiteral("generated %1").arg(action ? action->actionType() : -1);
            generated << action;
        }
        if (onGenerated)
            onGenerated(action);
    }
    void onPauseDoodle() override { calls << QStringLiteral("pause"); }
    void onRestartDoodle() override { calls << QStringLiteral("restart"); }
    void onWillCleanDoodle() override { calls << QStringLiteral("willClean"); }
    void onCloseDoodle() override { calls << QStringLiteral("close"); }
    void onDoodleCleared(const QString &userId) override { calls << "cleared " + userId; }
};

// One participant: a board of its own size whose generated actions travel to
// the peer only as text, as a host's channel would carry them.
struct Participant
{
    Participant(const QString &user, const QSize &size) : board(user)
    {
        board.setDelegate(&host);
        board.resetDoodleViewFrame(QRect(QPoint(0, 0), size));
    }

    void linkTo(Participant &peer)
    {
        host.onGenerated = [this, &peer](const DoodleActionPtr &action) {
            const QString text = board.doodleActionToString(action);
            peer.board.onDoodleActionReceived(board.userId(),
                                              peer.board.stringToDoodleAction(text));
        };
    }

    // Receives an action from `sender` as text, as the host would.
    void receive(const QString &sender, const DoodleActionPtr &action)
    {
        const QString text = DoodleTranslate::stringFromDoodleAction(action);
        board.onDoodleActionReceived(sender, DoodleTranslate::doodleActionFromString(text));
    }

    // The board's exact picture, once a redraw under way on the worker is in.
    QImage cache()
    {
        settle(board);
        return board.doodleView()->cacheCanvas()->cacheImage();
    }
    static bool settle(DoodleLayout &board)
    {
        return QTest::qWaitFor([&board] { return board.isPictureSettled(); }, 20000);
    }

    RecordingHost host;
    DoodleLayout board;
};

// One finger along `points` in view coordinates, lifted at the last unless
// `lift` is false.
inline void touchAlong(DoodleLayout &board, const QList<QPointF> &points, bool lift = true)
{
    board.touchesBegan({points.first(), points.first()});
    for (qsizetype i = 1; i < points.size(); ++i)
        board.touchesMoved({points.at(i), points.at(i - 1)});
    if (lift)
        board.touchesEnded({points.last(), points.last()});
}

// Builders of normalised actions.
inline DoodleActionPtr strokeAction(const QString &user, const QList<QPointF> &points,
                                    const QColor &color = Qt::red, float width = 0.02f,
                                    qint64 type = DoodleActionTypeStroke)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(type);
    action->setUserId(user);
    action->setBrushColor(color);
    action->setBrushWidth(width);
    for (const QPointF &p : points)
        action->addPointWithPositionX(float(p.x()), float(p.y()), 2);
    return action;
}

inline DoodleActionPtr boxAction(qint64 type, const QString &user, const QRectF &box,
                                 const QColor &color = Qt::blue, float width = 0.02f)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(type);
    action->setUserId(user);
    action->setBrushColor(color);
    action->setBrushWidth(width);
    action->setX(float(box.x()));
    action->setY(float(box.y()));
    action->setWidth(float(box.width()));
    action->setHeight(float(box.height()));
    action->setEndX(float(box.right()));
    action->setEndY(float(box.bottom()));
    return action;
}

inline DoodleActionPtr commandAction(qint64 type, const QString &user)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(type);
    action->setUserId(user);
    return action;
}

inline DoodleActionPtr stamped(DoodleActionPtr action, quint64 stamp)
{
    action->setSeqNo(stamp);
    return action;
}

// The largest difference of any channel between two pictures of `pixels`
// size, or 255 when a size differs; a null picture counts as transparent.
inline int maxChannelDifference(const QImage &a, const QImage &b, const QSize &pixels)
{
    const auto bytes = [&pixels](const QImage &image) {
        QImage rgba(pixels, QImage::Format_RGBA8888_Premultiplied);
        rgba.fill(Qt::transparent);
        return image.isNull() ? rgba : image.convertToFormat(rgba.format());
    };
    const QImage x = bytes(a), y = bytes(b);
    if (x.size() != pixels || y.size() != pixels)
        return 255;
    int worst = 0;
    for (qsizetype i = 0; i < x.sizeInBytes(); ++i)
        worst = std::max(worst, std::abs(int(x.constBits()[i]) - int(y.constBits()[i])));
    return worst;
}

// How far a board's picture is from that of a fresh board of `size` (by
// default the view's) that receives its cache in order; 0 when they are
// pixel-identical.
inline int differenceFromReplay(Participant &p, QSize size = QSize())
{
    if (size.isEmpty())
        size = p.board.view()->size();
    Participant fresh(QStringLiteral("observer"), size);
    for (const DoodleCacheEntry &entry : p.board.doodlePathCache()->entries())
        fresh.board.onDoodleActionReceived(entry.owner, entry.action);
    return maxChannelDifference(p.cache(), fresh.cache(), size * DoodleScreen::scale());
}
