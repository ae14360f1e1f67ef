// Replay of received actions, undo per author and clear, between two boards
// linked only through the text form.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <QRandomGenerator>
#include <QtTest>

namespace {

const QSize kAliceSize(300, 400);
const QSize kBobSize(200, 150);

// Draws a stroke on a board as its local user would, in view points.
void drawLocally(DoodleLayout &board, const QList<QPointF> &points)
{
    board.touchesBegan({points.first(), points.first()});
    for (int i = 1; i < points.size(); ++i)
        board.touchesMoved({points.at(i), points.at(i - 1)});
    board.touchesEnded({points.last(), points.last()});
}

// A fresh board of that size that replays `actions` as received.
QImage replayedOnFreshBoard(const QList<DoodleActionPtr> &actions, const QSize &size)
{
    DoodleLayout fresh(QStringLiteral("observer"));
    fresh.resetDoodleViewFrame(QRect(QPoint(0, 0), size));
    for (const DoodleActionPtr &action : actions)
        fresh.addAction(action);
    return fresh.doodleView()->cacheCanvas()->cacheImage();
}

int differenceFromReplay(Participant &p, const QSize &size)
{
    const QImage replayed = replayedOnFreshBoard(p.board.getAllPath(), size);
    const QSize pixels = size * DoodleScreen::scale();
    return maxChannelDifference(p.cache(), replayed, pixels);
}

} // namespace

class TestDoodleLayoutReplay : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(1); }

    void onlyDrawnTypesAreCached_data()
    {
        QTest::addColumn<qint64>("type");
        QTest::addColumn<bool>("cached");
        for (qint64 type : {260, 261, 267, 268, 269, 270})
            QTest::addRow("drawn %lld", qlonglong(type)) << type << true;
        for (qint64 type : {0, 257, 262, 263, 266, 271, 1000000, -260})
            QTest::addRow("ignored %lld", qlonglong(type)) << type << false;
    }
    void onlyDrawnTypesAreCached()
    {
        QFETCH(qint64, type);
        QFETCH(bool, cached);
        Participant bob(QStringLiteral("bob"), kBobSize);
        bob.receive("alice", boxAction(type, "alice", {-0.5, -0.5, 1, 1}));
        QCOMPARE(bob.board.getAllPath().size(), cached ? 1 : 0);
        QCOMPARE(bob.host.generated.size(), 0);
    }

    void undoRemovesOnlyTheAuthorsLastDrawingOnBothBoards()
    {
        Participant alice(QStringLiteral("alice"), kAliceSize);
        Participant bob(QStringLiteral("bob"), kBobSize);
        alice.linkTo(bob);
        bob.linkTo(alice);
        alice.board.showToolBar();
        bob.board.showToolBar();

        drawLocally(alice.board, {{20, 20}, {80, 60}, {150, 100}});
        drawLocally(bob.board, {{10, 100}, {100, 120}, {180, 140}});
        drawLocally(alice.board, {{200, 300}, {250, 350}, {280, 380}});
        QCOMPARE(alice.board.getAllPath().size(), 3);
        QCOMPARE(bob.board.getAllPath().size(), 3);

        bob.board.undo();
        for (Participant *p : {&alice, &bob}) {
            const auto actions = p->board.getAllPath();
            QCOMPARE(actions.size(), 2);
            QCOMPARE(actions.at(0)->userId(), QStringLiteral("alice"));
            QCOMPARE(actions.at(1)->userId(), QStringLiteral("alice"));
        }
        QCOMPARE(differenceFromReplay(alice, kAliceSize), 0);
        QCOMPARE(differenceFromReplay(bob, kBobSize), 0);
    }

    void aReceivedUndoUsesTheSenderTheHostNames()
    {
        Participant carol(QStringLiteral("carol"), kBobSize);
        carol.receive("alice", strokeAction("alice", {{-0.8, -0.8}, {0, 0}}));
        carol.receive("bob", strokeAction("bob", {{0.8, -0.8}, {0, 0}}));
        // Bob writes Alice's name into his undo; the host knows it came from Bob.
        carol.receive("bob", commandAction(DoodleActionTypeUndo, "alice"));
        const auto actions = carol.board.getAllPath();
        QCOMPARE(actions.size(), 1);
        QCOMPARE(actions.first()->userId(), QStringLiteral("alice"));
    }

    void localUndoAndClearActFirstThenReachThePeer()
    {
        Participant alice(QStringLiteral("alice"), kAliceSize);
        Participant bob(QStringLiteral("bob"), kBobSize);
        alice.linkTo(bob);
        for (Participant *p : {&alice, &bob})
            p->receive("bob", strokeAction("bob", {{-0.5, 0}, {0.5, 0}}));
        LogCapture log;
        alice.board.undo(); // nothing of alice's to undo: no rebuild, still sent
        QVERIFY(log.lines().isEmpty());
        alice.board.cleanDoodle();
        QCOMPARE(alice.host.calls, QStringList({"generated 258", "generated 259", "willClean"}));
        QVERIFY(bob.host.calls.isEmpty()); // a received clear is not announced
        for (Participant *p : {&alice, &bob}) {
            QVERIFY(p->board.getAllPath().isEmpty());
            QVERIFY(p->cache().isNull());
        }
    }

    void actionsReceivedBeforeTheViewLoadsAppearWhenItLoads()
    {
        DoodleLayout board(QStringLiteral("bob"));
        delete board.view(); // the host threw the view away
        QVERIFY(!board.isViewLoaded());
        board.onDoodleActionReceived(
            "alice", boxAction(DoodleActionTypeRectangle, "alice", {-1, -1, 1, 1}, Qt::blue, 0.1f));
        QCOMPARE(board.getAllPath().size(), 1);
        QVERIFY(!board.isViewLoaded());
        board.resetDoodleViewFrame(QRect(0, 0, 100, 100));
        const QImage cache = board.doodleView()->cacheCanvas()->cacheImage();
        QVERIFY(!cache.isNull());
        QCOMPARE(QColor(cache.pixel(50, 25)), QColor(Qt::blue));
    }

    void aHostResizeRedrawsFromTheCache()
    {
        Participant bob(QStringLiteral("bob"), kBobSize);
        bob.receive("alice", boxAction(DoodleActionTypeEllipse, "alice", {-0.5, -0.5, 1, 1}));
        bob.board.view()->show();
        bob.board.view()->resize(kAliceSize); // the host's own layout, not a frame reset
        QCOMPARE(differenceFromReplay(bob, kAliceSize), 0);
    }

    void aTwoPointStrokeIsSmoothedThroughTheMidpoint()
    {
        Participant bob(QStringLiteral("bob"), kBobSize);
        bob.receive("alice", strokeAction("alice", {{-0.5, -0.5}, {0.5, 0.5}}, Qt::red, 0.05f));
        // Move to P0, curve to the midpoint, curve to P1: a straight line here.
        QPainterPath expected(QPointF(50, 37.5));
        expected.quadTo(QPointF(50, 37.5), QPointF(100, 75));
        expected.quadTo(QPointF(150, 112.5), QPointF(150, 112.5));
        ZQDoodleDrawView reference;
        reference.resize(kBobSize);
        reference.drawInCacheWithPath(expected, 5, Qt::red);
        QCOMPARE(maxChannelDifference(bob.cache(), reference.cacheImage(), kBobSize), 0);
    }

    void diagnosticLines()
    {
        Participant bob(QStringLiteral("bob"), kBobSize);
        LogCapture log;
        bob.board.addAction(boxAction(DoodleActionTypeRectangle, "alice", {-0.5, -0.5, 1, 1}));
        QVERIFY(log.lines().isEmpty());
        bob.board.addAction(boxAction(DoodleActionTypeEllipse, "alice", {-0.5, -0.25, 0.5, 1.5}));
        QCOMPARE(log.lines(), QStringList({"CGRectMake {{-0.5, -0.25}, {0.5, 1.5}}"}));
        log.clear();
        bob.board.drawCachePath();
        QCOMPARE(log.lines().first(), QStringLiteral("addAction 2"));
    }

    void theCacheStaysTheTruthAfterAnySequence()
    {
        // A reproducible random mix of strokes, erasures, shapes, texts, undos
        // and clears from three authors.
        QRandomGenerator random(20261122);
        Participant board(QStringLiteral("me"), kAliceSize);
        const QStringList authors{"ann", "ben", "cid"};
        for (int step = 0; step < 120; ++step) {
            const QString author = authors.at(random.bounded(3));
            const int kind = random.bounded(10);
            const auto r = [&random] { return random.bounded(2.0) - 1.0; };
            if (kind == 0) {
                board.receive(author, commandAction(DoodleActionTypeUndo, author));
            } else if (kind == 1 && random.bounded(4) == 0) {
                board.receive(author, commandAction(DoodleActionTypeClean, author));
            } else if (kind < 5) {
                const qint64 type = kind == 4 ? DoodleActionTypeEraser : DoodleActionTypeStroke;
                board.receive(author,
                              strokeAction(author, {{r(), r()}, {r(), r()}, {r(), r()}},
                                           QColor::fromHsv(step * 3 % 360, 255, 255), 0.03f, type));
            } else {
                const qint64 type = 267 + kind - 5; // text, ellipse, rectangle, arrow, arrow
                auto action =
                    boxAction(std::min<qint64>(type, 270), author, {r(), r(), r() / 2, r() / 2});
                action->setText(QStringLiteral("note %1").arg(step));
                action->setTextSize(0.06f);
                board.receive(author, action);
            }
        }
        QVERIFY(!board.board.getAllPath().isEmpty());
        QCOMPARE(differenceFromReplay(board, kAliceSize), 0);
    }

    void hostileActionsKeepBoardAndCacheConsistent_data()
    {
        QTest::addColumn<DoodleActionPtr>("action");
        QTest::addColumn<int>("cached");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double inf = std::numeric_limits<double>::infinity();
        QTest::newRow("NaN stroke") << strokeAction("x", {{nan, 0}, {0, nan}, {0.5, 0.5}}) << 1;
        QTest::newRow("infinite stroke") << strokeAction("x", {{-inf, 0}, {inf, inf}}) << 1;
        QTest::newRow("empty stroke") << strokeAction("x", {}) << 1;
        QTest::newRow("one-point stroke") << strokeAction("x", {{0, 0}}) << 1;
        QTest::newRow("absurd width")
            << strokeAction("x", {{0, 0}, {0.1, 0.1}}, Qt::red, 1e30f) << 1;
        QTest::newRow("zero width") << strokeAction("x", {{0, 0}, {0.1, 0.1}}, Qt::red, 0) << 1;
        QTest::newRow("NaN rectangle")
            << boxAction(DoodleActionTypeRectangle, "x", {nan, nan, nan, nan}) << 1;
        QTest::newRow("infinite ellipse")
            << boxAction(DoodleActionTypeEllipse, "x", {-inf, -inf, inf, inf}) << 1;
        QTest::newRow("degenerate arrow")
            << boxAction(DoodleActionTypeArrow, "x", {0.2, 0.2, 0, 0}) << 1;
        auto text = boxAction(DoodleActionTypeText, "x", {0, 0, 0, 0});
        text->setText(QString(9000, QChar('W')));
        text->setTextSize(1e9f);
        QTest::newRow("huge text") << text << 1;
        auto longer = std::make_shared<DoodleAction>(*text);
        longer->setText(QString(10001, QChar('W')));
        QTest::newRow("text over the length limit") << longer << 0;
        auto anonymous = strokeAction("", {{0, 0}, {0.3, 0.3}});
        anonymous->setUserId(QString());
        QTest::newRow("no author") << anonymous << 1;
        QTest::newRow("unknown code") << commandAction(4242, "x") << 0;
        QList<QPointF> many;
        for (int i = 0; i < 100001; ++i)
            many.append(QPointF(std::sin(i * 0.01) * 0.9, std::cos(i * 0.013) * 0.9));
        QTest::newRow("100 001 points: over the limit")
            << strokeAction("x", many, Qt::green, 0.01f) << 0;
        many.removeLast();
        QTest::newRow("100 000 points") << strokeAction("x", many, Qt::green, 0.01f) << 1;
    }
    void hostileActionsKeepBoardAndCacheConsistent()
    {
        QFETCH(DoodleActionPtr, action);
        QFETCH(int, cached);
        Participant bob(QStringLiteral("bob"), kBobSize);
        bob.board.onDoodleActionReceived(action->userId(), action);
        QCOMPARE(bob.board.getAllPath().size(), cached);
        bob.board.undoDrawPathWithUserId(action->userId());
        bob.board.addAction(strokeAction("y", {{-0.5, 0}, {0.5, 0}}));
        QCOMPARE(differenceFromReplay(bob, kBobSize), 0);
    }
};

QTEST_MAIN(TestDoodleLayoutReplay)
#include "tst_DoodleLayoutReplay.moc"
