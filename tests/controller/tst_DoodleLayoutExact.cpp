// Boards draw exactly what was sent: local gestures against their replay,
// redraws mid-gesture, receive limits, and ownership taken from the channel.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <QLineEdit>
#include <QtTest>

namespace {

const QSize kBoard(200, 100);

int alphaAt(const QImage &image, int x, int y)
{
    return image.isNull() ? 0 : qAlpha(image.pixel(x, y));
}

// A local board unfolded and linked to a replaying peer of the same size.
struct Pair
{
    Pair() : me(QStringLiteral("me"), kBoard), peer(QStringLiteral("peer"), kBoard)
    {
        me.board.showToolBar();
        me.linkTo(peer);
    }
    int difference() { return maxChannelDifference(me.cache(), peer.cache(), kBoard); }
    Participant me;
    Participant peer;
};

} // namespace

class TestDoodleLayoutExact : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(1); }

    void localGesturesEqualTheirReplay_data()
    {
        QTest::addColumn<QString>("gesture");
        QTest::newRow("tap, then a rectangle leaving the board") << "tap-rect";
        QTest::newRow("text at a fractional point, redrawn while typed") << "text";
        QTest::newRow("colour and width changed mid-stroke") << "switch";
    }
    void localGesturesEqualTheirReplay()
    {
        QFETCH(QString, gesture);
        Pair p;
        DoodleLayout &board = p.me.board;
        board.setBrushColor(QColor(20, 120, 200, 180));
        if (gesture == QLatin1String("tap-rect")) {
            touchAlong(board, {{50, 50}});
            board.setActionMode(DoodleActionModeRectangle);
            touchAlong(board, {{60, 40}, {120, 70}, {260, 90}}, false);
            board.touchesEnded({{140, 80}, {260, 90}});
        } else if (gesture == QLatin1String("switch")) {
            board.setBrushWidth(6);
            touchAlong(board, {{20, 40}, {100, 40}}, false);
            board.setBrushColor(Qt::red);
            board.setBrushWidth(1);
            board.setActionMode(DoodleActionModeEraser);
            board.touchesMoved({{180, 45}, {100, 40}});
            board.touchesEnded({{180, 45}, {180, 45}});
            const DoodleActionPtr sent = p.me.host.generated.value(0);
            QVERIFY(sent && sent->actionType() == DoodleActionTypeStroke);
            QCOMPARE(QColor(sent->brushColor()), QColor(20, 120, 200, 180));
            QCOMPARE(sent->brushWidth(), 0.06f);
        } else {
            board.setActionMode(DoodleActionModeText);
            board.setTextSize(13.7);
            touchAlong(board, {{33.4, 21.7}});
            QPointer<QLineEdit> field = board.doodleView()->tempTextField();
            QVERIFY(field);
            QTest::keyClicks(field, QStringLiteral("Exact"));
            // Redraws while the field is open leave it and its text alone.
            p.me.receive("peer", strokeAction("peer", {{-1, -1}, {1, 1}}));
            p.me.receive("peer", commandAction(DoodleActionTypeUndo, "peer"));
            board.resetDoodleViewFrame(QRect(QPoint(0, 0), kBoard));
            QVERIFY(field);
            QTest::keyClick(field, Qt::Key_Return);
            const DoodleActionPtr sent = p.me.host.generated.value(0);
            QVERIFY(sent && sent->text() == QStringLiteral("Exact"));
            const QPointF anchor = board.logicFromNormal({33.4, 21.7}); // not a whole pixel
            QVERIFY(sent->x() == float(anchor.x()) && sent->y() == float(anchor.y()));
        }
        QCOMPARE(p.me.host.generated.size(), 1); // a null one would differ from the replay
        QVERIFY(alphaAt(p.me.cache(), 100, 40) + alphaAt(p.me.cache(), 40, 25) > 0);
        QCOMPARE(p.difference(), 0);
    }

    void limitsDropWithOneWarning_data()
    {
        QTest::addColumn<QString>("limit");
        QTest::addColumn<qsizetype>("kept");
        QTest::addColumn<QString>("warning");
        // Three strokes of three points from bob, as text: one warning per dropped action.
        QTest::newRow("drawings per sender")
            << "actions" << qsizetype(2)
            << "dropped an action from bob: cached drawings 3 over the limit 2";
        QTest::newRow("points per sender")
            << "points" << qsizetype(1)
            << "dropped an action from bob: cached points 6 over the limit 5";
        QTest::newRow("text bytes")
            << "bytes" << qsizetype(0)
            << "dropped an action from bob: text bytes 337 over the limit 300";
    }
    void limitsDropWithOneWarning()
    {
        QFETCH(QString, limit);
        QFETCH(qsizetype, kept);
        QFETCH(QString, warning);
        Participant board(QStringLiteral("me"), kBoard);
        DoodleReceiveLimits limits;
        limits.actionsPerAuthor = limit == QLatin1String("actions") ? 2 : 100;
        limits.pointsPerAuthor = limit == QLatin1String("points") ? 5 : 100;
        limits.textBytes = limit == QLatin1String("bytes") ? 300 : 1000;
        board.board.setReceiveLimits(limits);
        LogCapture log;
        const QString text = DoodleTranslate::stringFromDoodleAction(
            strokeAction("bob", {{-0.5, 0}, {0.5, 0}, {0.5, 0.5}}));
        for (int i = 0; i < 3; ++i)
            board.board.onDoodleTextReceived(QStringLiteral("bob"), text);
        QCOMPARE(board.board.getAllPath().size(), kept);
        QCOMPARE(log.lines().filter(QStringLiteral("dropped")),
                 QStringList(3 - int(kept), warning));
        QCOMPARE(board.board.doodlePathCache()->pointsOwnedBy(QStringLiteral("bob")), 3 * kept);
    }

    void undoAnywhereEqualsAFullRebuild_data()
    {
        QTest::addColumn<int>("mineAt");
        // Boards of 100 drawings keep savepoints of their older part; an undo
        // reaches drawings before, between and after them.
        for (int at : {0, 40, 69, 99})
            QTest::addRow("my drawing at %d of 100", at) << at;
    }
    void undoAnywhereEqualsAFullRebuild()
    {
        QFETCH(int, mineAt);
        Participant board(QStringLiteral("me"), kBoard);
        for (int i = 0; i < 100; ++i) {
            // Every drawing crosses the middle, so every redraw reaches many others.
            const double y = (i % 20) / 10.0 - 0.95;
            const QString who = i == mineAt ? QStringLiteral("me") : QStringLiteral("bob");
            board.receive(who, strokeAction(who, {{-0.9, y}, {0.9, -y}},
                                            QColor::fromHsv(i * 37 % 360, 200, 200, 200), 0.03f));
        }
        board.board.undo();
        QCOMPARE(board.board.getAllPath().size(), 99);
        QCOMPARE(differenceFromReplay(board), 0);
    }

    void aGestureSurvivesRedrawsInItsMiddle_data()
    {
        QTest::addColumn<qint64>("mode");
        QTest::addColumn<QString>("redraw");
        for (const char *redraw : {"received clear", "received undo", "resize"}) {
            QTest::addRow("pen, %s", redraw) << qint64(DoodleActionModeBrush) << redraw;
            QTest::addRow("eraser, %s", redraw) << qint64(DoodleActionModeEraser) << redraw;
        }
    }
    void aGestureSurvivesRedrawsInItsMiddle()
    {
        QFETCH(qint64, mode);
        QFETCH(QString, redraw);
        Pair p;
        // Under the gesture: two bands; the peer clears or undoes its own.
        p.me.receive("peer", strokeAction("peer", {{-1, 0.3}, {1, 0.3}}, Qt::darkGreen, 0.4f));
        p.me.board.addAction(strokeAction("ann", {{-1, 0.3}, {1, 0.3}}, Qt::blue, 0.3f));
        p.peer.board.addAction(strokeAction("ann", {{-1, 0.3}, {1, 0.3}}, Qt::blue, 0.3f));
        DoodleLayout &board = p.me.board;
        board.setActionMode(mode);
        board.setEraserWidth(10);
        touchAlong(board, {{20, 65}, {60, 62}, {100, 66}}, false);
        if (redraw == QLatin1String("received clear"))
            p.me.receive("peer", commandAction(DoodleActionTypeClean, "peer"));
        else if (redraw == QLatin1String("received undo"))
            p.me.receive("peer", commandAction(DoodleActionTypeUndo, "peer"));
        else
            board.resetDoodleViewFrame(QRect(QPoint(0, 0), kBoard));
        // What the gesture drew so far still shows: the pen's preview, the eraser's hole.
        if (mode == DoodleActionModeBrush) {
            const QImage preview = board.doodleView()->getTempCanvas(0)->cacheImage();
            QCOMPARE(alphaAt(preview, 40, 63), 255);
        } else if (redraw != QLatin1String("received clear")) {
            QCOMPARE(alphaAt(p.me.cache(), 40, 65), 0);
        }
        board.touchesMoved({{140, 64}, {100, 66}});
        board.touchesEnded({{140, 64}, {140, 64}});
        if (redraw == QLatin1String("received clear"))
            p.peer.receive("peer", commandAction(DoodleActionTypeClean, "peer"));
        QCOMPARE(p.me.host.generated.size(), 1);
        QCOMPARE(differenceFromReplay(p.me), 0);
    }

    void anUndoTakesOnlyTheSendersOwnDrawing_data()
    {
        QTest::addColumn<quint64>("stamp");
        QTest::newRow("without stamps") << quint64(0);
        QTest::newRow("stamped") << quint64(1);
    }
    void anUndoTakesOnlyTheSendersOwnDrawing()
    {
        QFETCH(quint64, stamp);
        Participant board(QStringLiteral("me"), kBoard);
        // Bob's drawing claims to be Ann's.
        board.receive("bob", stamped(strokeAction("ann", {{-0.5, 0}, {0.5, 0}}), stamp));
        board.receive("ann", stamped(commandAction(DoodleActionTypeUndo, "ann"), stamp));
        QCOMPARE(board.board.getAllPath().size(), 1);
        QCOMPARE(alphaAt(board.cache(), 100, 50), 255);
        board.receive("bob", stamped(commandAction(DoodleActionTypeUndo, "ann"), stamp));
        QVERIFY(board.board.getAllPath().isEmpty());
        QCOMPARE(board.board.doodlePathCache()->actionsOwnedBy(QStringLiteral("bob")), 0);
        QCOMPARE(alphaAt(board.cache(), 100, 50), 0);
    }
};

QTEST_MAIN(TestDoodleLayoutExact)
#include "tst_DoodleLayoutExact.moc"
