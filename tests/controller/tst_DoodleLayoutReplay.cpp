// Replay of received actions: which are kept, local undo and clear, resizes,
// the smoothing of strokes and hostile actions.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <QtTest>

namespace {

const QSize kAliceSize(300, 400);
const QSize kBobSize(200, 150);

} // namespace

class TestDoodleLayoutReplay : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(1); }

    void localUndoAndClearActFirstThenReachThePeer()
    {
        Participant alice(QStringLiteral("alice"), kAliceSize);
        Participant bob(QStringLiteral("bob"), kBobSize);
        alice.linkTo(bob);
        for (Participant *p : {&alice, &bob})
            p->receive("bob", strokeAction("bob", {{-0.5, 0}, {0.5, 0}}));
        LogCapture log;
        alice.board.undo(); // nothing of alice's to undo: nothing done, nothing sent
        QVERIFY(log.lines().isEmpty());
        alice.board.cleanDoodle();
        alice.board.cleanDoodle(); // the board is empty now
        QCOMPARE(alice.host.calls, QStringList({"generated 259", "willClean", "cleared alice"}));
        QCOMPARE(bob.host.calls, QStringList{"cleared alice"}); // who cleared, by the channel
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
        QCOMPARE(cache.isNull() ? QColor() : QColor(cache.pixel(50, 25)), QColor(Qt::blue));
    }

    // An ellipse logs the rectangle it is drawn in; a resize by the host's own
    // layout, not a frame reset, redraws the cache.
    void aResizeRedrawsFromTheCache()
    {
        Participant bob(QStringLiteral("bob"), kBobSize);
        LogCapture log;
        bob.receive("alice", boxAction(DoodleActionTypeEllipse, "alice", {-0.5, -0.25, 0.5, 1.5}));
        QCOMPARE(log.lines().filter("CGRect"),
                 QStringList{"CGRectMake {{-0.5, -0.25}, {0.5, 1.5}}"});
        bob.board.view()->show();
        bob.board.view()->resize(kAliceSize);
        QCOMPARE(differenceFromReplay(bob, kAliceSize), 0);
    }

    void aStrokeIsSmoothedThroughTheMidpoints()
    {
        Participant bob(QStringLiteral("bob"), kBobSize);
        // Points that are not finite are left out.
        const double nan = std::numeric_limits<double>::quiet_NaN();
        bob.receive("alice",
                    strokeAction("alice",
                                 {{-0.5, -0.5}, {nan, 0}, {0.5, -0.5}, {0, nan}, {0.5, 0.5}},
                                 Qt::red, 0.05f));
        // Each point is the control of a curve to the midpoint of the next; the
        // last curve ends at the last point.
        QPainterPath expected(QPointF(50, 37.5));
        expected.quadTo(QPointF(50, 37.5), QPointF(100, 37.5));
        expected.quadTo(QPointF(150, 37.5), QPointF(150, 75));
        expected.quadTo(QPointF(150, 112.5), QPointF(150, 112.5));
        ZQDoodleDrawView reference;
        reference.resize(kBobSize);
        reference.drawInCacheWithPath(expected, 100 * double(0.05f), Qt::red); // 0.05 of 200
        QCOMPARE(maxChannelDifference(bob.cache(), reference.cacheImage(), kBobSize), 0);
    }

    // Only drawn types are cached, and no action, however hostile, makes the
    // host send anything or leaves the board apart from its cache.
    void receivedActionsKeepBoardAndCacheConsistent_data()
    {
        QTest::addColumn<DoodleActionPtr>("action");
        QTest::addColumn<int>("cached");
        const QRectF box(-0.5, -0.25, 0.5, 1.5);
        for (qint64 type : {260, 261, 267, 268, 269, 270})
            QTest::addRow("drawn %lld", qlonglong(type)) << boxAction(type, "alice", box) << 1;
        for (qint64 type : {0, 257, 262, 263, 266, 271, 1000000, -260})
            QTest::addRow("ignored %lld", qlonglong(type)) << boxAction(type, "alice", box) << 0;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double inf = std::numeric_limits<double>::infinity();
        QTest::newRow("NaN stroke") << strokeAction("x", {{nan, 0}, {0, nan}, {0.5, 0.5}}) << 1;
        QTest::newRow("absurd width")
            << strokeAction("x", {{0, 0}, {0.1, 0.1}}, Qt::red, 1e30f) << 1;
        QTest::newRow("zero width") << strokeAction("x", {{0, 0}, {0.1, 0.1}}, Qt::red, 0) << 1;
        QTest::newRow("infinite ellipse")
            << boxAction(DoodleActionTypeEllipse, "x", {-inf, -inf, inf, inf}) << 1;
        auto text = boxAction(DoodleActionTypeText, "x", {0, 0, 0, 0});
        text->setText(QString(9000, QChar('W')));
        text->setTextSize(1e9f);
        QTest::newRow("huge text") << text << 1;
        auto longer = std::make_shared<DoodleAction>(*text);
        longer->setText(QString(10001, QChar('W')));
        QTest::newRow("text over the length limit") << longer << 0;
        QTest::newRow("no author") << strokeAction(QString(), {{0, 0}, {0.3, 0.3}}) << 1;
        QList<QPointF> many;
        for (int i = 0; i < 100001; ++i)
            many.append(QPointF(std::sin(i * 0.01) * 0.9, std::cos(i * 0.013) * 0.9));
        QTest::newRow("100 001 points: over the limit")
            << strokeAction("x", many, Qt::green, 0.01f) << 0;
        many.removeLast();
        QTest::newRow("100 000 points") << strokeAction("x", many, Qt::green, 0.01f) << 1;
    }
    void receivedActionsKeepBoardAndCacheConsistent()
    {
        QFETCH(DoodleActionPtr, action);
        QFETCH(int, cached);
        Participant bob(QStringLiteral("bob"), kBobSize);
        LogCapture log;
        bob.board.onDoodleActionReceived(action->userId(), action);
        QCOMPARE(bob.board.getAllPath().size(), cached);
        QCOMPARE(bob.host.generated.size(), 0);
        // Only an ellipse logs the rectangle it is drawn in.
        QCOMPARE(log.lines().filter("CGRectMake").size(),
                 action->actionType() == DoodleActionTypeEllipse ? 1 : 0);
        bob.board.undoDrawPathWithUserId(action->userId());
        bob.board.addAction(strokeAction("y", {{-0.5, 0}, {0.5, 0}}));
        QCOMPARE(differenceFromReplay(bob), 0);
    }
};

QTEST_MAIN(TestDoodleLayoutReplay)
#include "tst_DoodleLayoutReplay.moc"
