// Three boards linked only through the text form, driven by random sessions
// of every tool, undo, clear, resize, state hand-off and hostile text, over a
// channel that delivers at once, one that interleaves senders, or one broker
// (one order, own actions echoed, a peer without stamps, a late joiner). At
// the end every board holds the same cache and draws what a fresh board draws
// from it. DOODLE_SEEDS=N runs N seeds, DOODLE_STEPS=N sessions of N steps.
#include "BoardHarness.h"

#include <doodle/board/DoodleBoardCore_p.h>
#include <doodle/model/DoodleProgress_p.h>

#include <QLineEdit>
#include <QMap>
#include <QRandomGenerator>
#include <QtTest>

#include <array>
#include <limits>

namespace {

enum class Kind
{
    Gesture,
    Text,
    Undo,
    Clear,
    Resize,
    Merge,
    Hostile
};

// One step of a session: who does what. Points are fractions of the board's
// size, so a step means the same on boards of any size; some lie outside.
struct Op
{
    Kind kind = Kind::Gesture;
    int board = 0;
    qint64 mode = 1;
    QColor color;
    double width = 2;
    QList<QPointF> points;
    QString text; // typed text; null leaves the field open. Hostile: the received text
};

enum class Channel
{
    AtOnce,
    Reordering,
    Broker,
};

// One row: the channel and how the boards run.
struct Session
{
    Channel channel = Channel::AtOnce;
    quint32 seed = 1;
    bool background = false; // every full redraw on the worker
    qsizetype budget = 0;    // 0: no message budget
    bool legacyPeer = false; // every peer without stamps
    double scale = 1;
};

constexpr qsizetype kSmallBudget = 600;
const QList<QSize> kSizes = {{200, 140}, {200, 140}, {260, 180}};
const QStringList kUsers = {"ann", "ben", "cat"};

// One line per step of a shrunk failing session.
QString describe(const Op &op)
{
    static const char *names[] = {"gesture", "text", "undo", "clear", "resize", "merge", "hostile"};
    QString line;
    QDebug(&line).nospace() << names[int(op.kind)] << " board " << op.board << " mode " << op.mode
                            << " width " << op.width << ' ' << op.color << ' ' << op.points
                            << " text " << op.text;
    return line;
}

QString stampedText(DoodleActionPtr action, quint64 stamp)
{
    return DoodleTranslate::stringFromDoodleAction(stamped(std::move(action), stamp));
}

// Texts from a peer that names others as authors, sends junk and absurd
// numbers; with `stamps` its actions carry order stamps, as current peers' do.
QString hostileText(QRandomGenerator &random, bool stamps)
{
    const quint64 s = stamps ? 1 + random.bounded(60) : 0;
    const QStringList texts = {
        QStringLiteral("{\"bad\""),
        QStringLiteral("[]"),
        // A drawing that names another participant as its author.
        stampedText(strokeAction("ann", {{-0.5, -0.5}, {0.5, 0.2}, {0.1, 0.6}}, Qt::magenta, 0.05f),
                    s),
        stampedText(boxAction(DoodleActionTypeRectangle, "ben", {-0.9, -0.9, 1.5, 1.2}), s),
        stampedText(commandAction(DoodleActionTypeUndo, "ann"), s),
        stampedText(strokeAction("mallory", {{0, 0}, {qQNaN(), 1}, {0.3, 0.3}}, Qt::green, 1e30f),
                    s),
        // One point far off the board: the segment towards it crosses the board.
        stampedText(strokeAction("mallory", {{0.1, 0.2}, {1e38, 0.4}, {-0.2, 0.1}}, Qt::blue), s),
        stampedText(strokeAction("mallory", {{-0.3, 0.5}, {0.2, 18446744073709551616.0}}, Qt::black,
                                 0.1f, DoodleActionTypeEraser),
                    s),
    };
    return texts.at(random.bounded(int(texts.size())));
}

Op randomOp(QRandomGenerator &random, bool legacyPeer, bool longStrokes)
{
    Op op;
    op.board = random.bounded(3);
    const int roll = random.bounded(100);
    op.kind = roll < 60   ? Kind::Gesture
              : roll < 72 ? Kind::Text
              : roll < 86 ? Kind::Undo
              : roll < 88 ? Kind::Clear
              : roll < 92 ? Kind::Resize
              : roll < 95 ? Kind::Merge
                          : Kind::Hostile;
    op.mode = 1 + random.bounded(5);
    op.color = QColor::fromRgb(random.generate());
    op.color.setAlphaF(float(0.4 + 0.6 * random.generateDouble()));
    op.width = 1 + 20 * random.generateDouble();
    const int count = op.kind == Kind::Text ? 1 : random.bounded(longStrokes ? 16 : 6);
    QPointF p(random.generateDouble(), random.generateDouble());
    for (int i = 0; i < count; ++i) {
        op.points << p;
        // Mostly small steps; now and then a repeat or a jump off the board.
        if (random.bounded(8) != 0)
            p += QPointF(random.generateDouble() - 0.5, random.generateDouble() - 0.5) * 0.4;
    }
    if (op.kind == Kind::Text && random.bounded(4) != 0)
        op.text = QStringLiteral("hi %1").arg(random.bounded(100));
    if (op.kind == Kind::Hostile)
        op.text = hostileText(random, !legacyPeer);
    return op;
}

// A peer without stamps through the broker: strokes and boxes, now and then an undo.
QString stamplessText(QRandomGenerator &random)
{
    const QPointF p(random.generateDouble() - 0.5, random.generateDouble() - 0.5);
    const QColor color = QColor::fromRgb(random.generate());
    const int roll = random.bounded(10);
    if (roll == 0)
        return DoodleTranslate::stringFromDoodleAction(commandAction(DoodleActionTypeUndo, "pat"));
    const DoodleActionPtr action =
        roll < 6 ? strokeAction("pat", {p, p + QPointF(0.3, 0.1), p + QPointF(0.1, 0.4)}, color)
                 : boxAction(DoodleActionTypeRectangle, "pat", QRectF(p, QSizeF(0.4, 0.3)), color);
    return DoodleTranslate::stringFromDoodleAction(action);
}

// What a drawer reports of a gesture while it is under way: all of its
// points, or its box, or that it was abandoned.
QString progressText(const Op &op, const QString &user, quint64 gesture)
{
    static const qint64 kinds[] = {DoodleActionTypeStroke, DoodleActionTypeStroke,
                                   DoodleActionTypeRectangle, DoodleActionTypeEllipse,
                                   DoodleActionTypeArrow};
    DoodleProgress progress;
    progress.kind = op.mode == 2 ? DoodleProgress::kLaser : kinds[(op.mode - 1) % 5];
    progress.gesture = gesture;
    progress.ended = op.points.size() % 3 == 1;
    for (const QPointF &p : op.points)
        progress.points << p * 2 - QPointF(1, 1);
    progress.box = QRectF(-0.5, -0.5, op.width / 20, 0.4);
    const DoodleActionPtr brush = strokeAction(user, {}, op.color, float(op.width / 200));
    return DoodleTranslate::stringFromDoodleAction(DoodleProgressText::toAction(progress, *brush));
}

class Call
{
public:
    explicit Call(const Session &session)
        : m_channel(session.channel), m_background(session.background), m_peer(session.seed)
    {
        DoodleBoardCore::setBackgroundRedrawFrom(m_background ? 0 : kSavepointStep);
        for (int i = 0; i < 3; ++i) {
            boards.emplace_back(std::make_unique<Participant>(kUsers.at(i), kSizes.at(i)));
            layout(i).showToolBar();
            layout(i).setSharedOrder(m_channel == Channel::Broker);
            layout(i).setMessageBudget(session.budget);
            boards.back()->host.onGenerated = [this, i](const DoodleActionPtr &action) {
                sawNull |= !action;
                send(kUsers.at(i), layout(i).doodleActionToString(action), i);
            };
        }
    }
    DoodleLayout &layout(int i) { return boards.at(size_t(i))->board; }

    // Every message reaches every other board: at once, or queued per sender
    // and receiver, so that each sender's order holds but senders interleave,
    // or logged by the broker for every board, the sender's own included.
    void send(const QString &sender, const QString &text, int except)
    {
        if (m_channel == Channel::Broker) {
            m_log.append({sender, text});
            return;
        }
        for (int j = 0; j < 3; ++j) {
            if (j == except)
                continue;
            if (m_channel == Channel::Reordering)
                m_queues[sender][j].append(text);
            else
                deliver(sender, text, j);
        }
    }

    // Through the broker: the third board is away for the first third of the
    // session; it then hears what comes from that moment on and takes the
    // first board's state. The peer without stamps draws now and then.
    bool isAway(int board) const { return m_channel == Channel::Broker && board == 2 && m_away; }
    void step(int index, qsizetype steps)
    {
        if (m_channel != Channel::Broker)
            return;
        if (m_away && index == steps / 3) {
            m_away = false;
            m_read[2] = m_log.size();
            handOff(0, 2);
        }
        if (m_peer.bounded(3) == 0)
            m_log.append({QStringLiteral("pat"), stamplessText(m_peer)});
    }

    // At the end, as the call does: boards whose fingerprints differ hand
    // each other their states.
    void catchUp()
    {
        for (int round = 0; round < 3; ++round) {
            for (int i = 0; i < 3; ++i) {
                for (int j = i + 1; j < 3; ++j) {
                    DoodleLayout &a = layout(i), &b = layout(j);
                    if (a.fingerprint() == b.fingerprint())
                        continue;
                    const QStringList state = a.exportStateParts();
                    handOff(j, i);
                    for (const QString &part : state)
                        b.mergeState(part);
                    Participant::settle(a);
                    Participant::settle(b);
                }
            }
        }
    }

    // A state in the texts the sender's budget allows, merged once whole.
    void handOff(int from, int to)
    {
        for (const QString &part : layout(from).exportStateParts())
            layout(to).mergeState(part);
    }

    void deliver(const QString &sender, const QString &text, int to)
    {
        layout(to).onDoodleActionReceived(sender, layout(to).stringToDoodleAction(text));
    }

    // Delivers the oldest message of up to `count` queues picked at random.
    void pump(int count)
    {
        if (m_channel == Channel::Broker) {
            pumpBroker(count);
            return;
        }
        for (int n = 0; n < count; ++n) {
            QList<std::pair<QString, int>> waiting;
            for (auto it = m_queues.cbegin(); it != m_queues.cend(); ++it) {
                for (int j = 0; j < 3; ++j) {
                    if (!it.value()[j].isEmpty())
                        waiting.append({it.key(), j});
                }
            }
            if (waiting.isEmpty())
                return;
            const auto [sender, to] = waiting.at(m_random.bounded(int(waiting.size())));
            deliver(sender, m_queues[sender][to].takeFirst(), to);
        }
    }

    // The next message of the log to up to `count` boards picked at random.
    void pumpBroker(int count)
    {
        for (int n = 0; n < count; ++n) {
            QList<int> behind;
            for (int j = 0; j < 3; ++j) {
                if (!isAway(j) && m_read[j] < m_log.size())
                    behind << j;
            }
            if (behind.isEmpty())
                return;
            const int to = behind.at(m_random.bounded(int(behind.size())));
            const auto &[sender, text] = m_log.at(m_read[to]++);
            if (sender == kUsers.at(to))
                layout(to).onDoodleTextEchoed(text);
            else
                deliver(sender, text, to);
        }
    }

    void run(const Op &op)
    {
        if (isAway(op.board))
            return;
        DoodleLayout &board = layout(op.board);
        const QSizeF size = board.getScaleSize();
        QList<QPointF> points;
        for (const QPointF &f : op.points)
            points << QPointF(f.x() * size.width(), f.y() * size.height());
        switch (op.kind) {
        case Kind::Gesture:
            send(kUsers.at(op.board), progressText(op, kUsers.at(op.board), ++m_gestures),
                 op.board);
            board.setActionMode(op.mode);
            board.setBrushColor(op.color);
            board.setBrushWidth(op.width);
            board.setEraserWidth(op.width * 2);
            if (!points.isEmpty())
                touchAlong(board, points);
            break;
        case Kind::Text:
            typeText(board, points.first(), op);
            break;
        case Kind::Undo:
            board.undo();
            break;
        case Kind::Clear:
            board.cleanDoodle();
            break;
        case Kind::Resize: // a host layout that comes back to the board's size
            board.resetDoodleViewFrame(QRect(0, 0, 120 + 20 * int(op.points.size()), 200));
            board.resetDoodleViewFrame(QRect(QPoint(0, 0), kSizes.at(op.board)));
            break;
        case Kind::Merge: // catching up with another board's state
            handOff((op.board + int(op.mode) % 2 + 1) % 3, op.board);
            break;
        case Kind::Hostile:
            send(QStringLiteral("mallory"), op.text, -1);
            break;
        }
        // Now and then the worker's picture comes in before the next step.
        if (m_background && op.mode % 2 == 0)
            Participant::settle(board);
    }

    static void typeText(DoodleLayout &board, const QPointF &point, const Op &op)
    {
        board.setActionMode(DoodleActionModeText);
        board.setTextSize(8 + op.width);
        board.setBrushColor(op.color);
        touchAlong(board, {point});
        QLineEdit *field = board.doodleView()->tempTextField();
        if (!field || op.text.isNull())
            return; // left open, or replaced by the next one
        QTest::keyClicks(field, op.text);
        QTest::keyClick(field, Qt::Key_Return);
    }

    // Empty when the boards agree; otherwise what differs.
    QString disagreement()
    {
        if (sawNull)
            return QStringLiteral("a null action was handed to a host");
        for (const auto &each : boards)
            Participant::settle(each->board);
        const QStringList first = cacheTexts(0);
        for (int i = 0; i < 3; ++i) {
            if (cacheTexts(i) != first)
                return QStringLiteral("caches differ: board %1").arg(i);
            if (layout(i).fingerprint() != layout(0).fingerprint())
                return QStringLiteral("fingerprints differ: board %1").arg(i);
            if (const int d = differenceFromReplay(*boards.at(size_t(i)), kSizes.at(i)))
                return QStringLiteral("board %1 differs from its replay by %2").arg(i).arg(d);
        }
        const QSize pixels = kSizes.at(0) * DoodleScreen::scale();
        if (const int d = maxChannelDifference(boards[0]->cache(), boards[1]->cache(), pixels))
            return QStringLiteral("same-size boards differ by %1").arg(d);
        return {};
    }

    QStringList cacheTexts(int i)
    {
        QStringList texts;
        for (const DoodleCacheEntry &entry : layout(i).doodlePathCache()->entries())
            texts << entry.owner + ' ' + DoodleTranslate::stringFromDoodleAction(entry.action);
        return texts;
    }

    std::vector<std::unique_ptr<Participant>> boards;
    bool sawNull = false;

private:
    Channel m_channel;
    bool m_background;
    QMap<QString, std::array<QStringList, 3>> m_queues;
    QList<std::pair<QString, QString>> m_log; // the broker's order: sender, text
    std::array<qsizetype, 3> m_read{};        // how far each board has read it
    bool m_away = true;
    quint64 m_gestures = 0;
    QRandomGenerator m_random{7};
    QRandomGenerator m_peer;
};

QString failure(const QList<Op> &ops, const Session &session)
{
    Call call(session);
    for (qsizetype i = 0; i < ops.size(); ++i) {
        call.step(int(i), ops.size());
        call.run(ops.at(i));
        call.pump(ops.at(i).board); // 0 to 2 messages move on between steps
    }
    call.pump(std::numeric_limits<int>::max());
    call.catchUp();
    return call.disagreement();
}

// The shortest list found by dropping steps one at a time that still fails.
QList<Op> shrunk(QList<Op> ops, const Session &session)
{
    for (bool progress = true; progress;) {
        progress = false;
        for (qsizetype i = ops.size() - 1; i >= 0; --i) {
            QList<Op> fewer = ops;
            fewer.removeAt(i);
            if (!failure(fewer, session).isEmpty()) {
                ops = fewer;
                progress = true;
            }
        }
    }
    return ops;
}

} // namespace

Q_DECLARE_METATYPE(Session)

class TestDoodleLayoutConverge : public QObject
{
    Q_OBJECT
private slots:
    void randomSessionsConverge_data()
    {
        QTest::addColumn<Session>("session");
        const int seeds = qEnvironmentVariableIsSet("DOODLE_SEEDS")
                              ? qEnvironmentVariableIntValue("DOODLE_SEEDS")
                              : 16;
        const QList<std::pair<const char *, Channel>> channels = {
            {"at once", Channel::AtOnce},
            {"reordering", Channel::Reordering},
            {"one broker, a peer without stamps", Channel::Broker}};
        for (int seed = 1; seed <= seeds; ++seed) {
            const double scale = seed % 4 == 0 ? 2.0 : 1.0;
            for (const auto &[name, channel] : channels)
                QTest::addRow("%s, seed %d", name, seed)
                    << Session{channel, quint32(seed), seed % 2 == 1, 0, false, scale};
        }
        // A budget that splits the longer strokes and refuses the larger shapes.
        for (int seed = 1; seed <= seeds / 2; ++seed) {
            for (const auto &[name, channel] : {std::pair{"reordering", Channel::Reordering},
                                                std::pair{"one broker", Channel::Broker}})
                QTest::addRow("%s, small budget, seed %d", name, seed)
                    << Session{channel, quint32(seed), seed % 2 == 1, kSmallBudget};
        }
        // Between peers that all lack stamps, only where nothing is reordered.
        for (int seed = 1; seed <= 4; ++seed)
            QTest::addRow("peer without stamps, seed %d", seed)
                << Session{Channel::AtOnce, quint32(seed), seed % 2 == 1, 0, true};
    }
    void randomSessionsConverge()
    {
        QFETCH(Session, session);
        DoodleScreen::setScaleOverride(session.scale);
        QRandomGenerator random(session.seed);
        QList<Op> ops;
        const int steps = qEnvironmentVariableIsSet("DOODLE_STEPS")
                              ? qEnvironmentVariableIntValue("DOODLE_STEPS")
                              : 60;
        for (int i = 0; i < steps; ++i)
            ops << randomOp(random, session.legacyPeer, session.budget > 0);
        const QString problem = failure(ops, session);
        if (!problem.isEmpty()) {
            for (const Op &op : shrunk(ops, session))
                qWarning().noquote() << describe(op);
        }
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
    }
};

QTEST_MAIN(TestDoodleLayoutConverge)
#include "tst_DoodleLayoutConverge.moc"
