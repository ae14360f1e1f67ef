// Gestures driven as a user would: mouse, touch and stylus events on the
// board's real widget, checked through the actions, the cache and the pixels.
#include "../toolbar/ToolbarTesting.h"
#include "BoardHarness.h"

#include <QLineEdit>

namespace {

const QSize kBoard(200, 100);

// A shown, active board with its tool bar unfolded, as after a tap on the floating button.
struct TouchBoard : Participant
{
    explicit TouchBoard(qint64 mode = DoodleActionModeBrush)
        : Participant(QStringLiteral("me"), kBoard)
    {
        board.showToolBar();
        // The bar covers the lower half of so small a board; hidden (still
        // unfolded), it leaves every gesture below to the board.
        board.hideToolBar(true);
        board.setActionMode(mode);
        board.setBrushWidth(4);
        board.setBrushColor(Qt::red);
        board.view()->show();
        // Settle activation first: becoming active abandons a gesture under way.
        QApplication::setActiveWindow(board.view());
        if (!QTest::qWaitForWindowActive(board.view()))
            qWarning("the board's window did not become active");
    }
    QWidget *view() { return board.view(); }
    DoodleActionPtr onlyAction()
    {
        return host.generated.size() == 1 ? host.generated.first() : DoodleActionPtr();
    }

    void drag(const QList<QPoint> &points, Input input = Input::Mouse, bool lift = true)
    {
        ::drag(view(), input, points, lift);
    }
};

QStringList pointStrings(const DoodleActionPtr &action)
{
    QStringList strings;
    for (const DoodlePoint &point : action->pathPoints())
        strings << point.toStringList().join(QLatin1Char(' '));
    return strings;
}

} // namespace

class TestDoodleLayoutTouch : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(1); }

    void aStrokeBecomesOneAction_data() { addInputRows(); }
    void aStrokeBecomesOneAction()
    {
        QFETCH(Input, input);
        TouchBoard t;
        qsizetype cachedWhenGenerated = -1;
        t.host.onGenerated = [&](const DoodleActionPtr &) {
            cachedWhenGenerated = t.board.getAllPath().size();
        };
        // A drag with another button is no gesture.
        QTest::mousePress(t.view(), Qt::RightButton, {}, {30, 80});
        QTest::mouseMove(t.view(), {90, 80});
        QTest::mouseRelease(t.view(), Qt::RightButton, {}, {90, 80});
        t.drag({{20, 20}, {60, 30}, {100, 50}, {180, 90}}, input);
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(action->actionType(), qint64(DoodleActionTypeStroke));
        QCOMPARE(action->userId(), QStringLiteral("me"));
        QCOMPARE(action->brushColor(), QColor(Qt::red));
        QCOMPARE(action->brushWidth(), 0.04f);
        // Begin and moves, interval 2; the lift location is not a point.
        QCOMPARE(
            pointStrings(action),
            QStringList({"2 -0.800000 -0.600000", "2 -0.400000 -0.400000", "2 0.000000 0.000000"}));
        QCOMPARE(cachedWhenGenerated, qsizetype(0)); // the host hears first, then the cache records
        QCOMPARE(t.board.getAllPath().size(), 1);
        // The preview is gone; its picture's memory may stay for the next stroke.
        const QImage preview = t.board.doodleView()->getTempCanvas(0)->cacheImage();
        QVERIFY(preview.isNull() || qAlpha(preview.pixel(60, 30)) == 0);
    }

    void drawingLiveEqualsReplayingTheText_data()
    {
        QTest::addColumn<qint64>("mode");
        QTest::newRow("pen") << qint64(DoodleActionModeBrush);
        QTest::newRow("rectangle") << qint64(DoodleActionModeRectangle);
        QTest::newRow("ellipse") << qint64(DoodleActionModeEllipse);
        QTest::newRow("arrow") << qint64(DoodleActionModeArrow);
        // The eraser clears each segment live; what it commits is one erasure.
        QTest::newRow("eraser") << qint64(DoodleActionModeEraser);
    }
    void drawingLiveEqualsReplayingTheText()
    {
        QFETCH(qint64, mode);
        TouchBoard t(mode);
        t.board.setEraserWidth(12);
        t.board.addAction(
            boxAction(DoodleActionTypeRectangle, "you", {-0.9, -0.9, 1.8, 1.8}, Qt::blue, 0.3f));
        t.drag({{30, 20}, {70, 40}, {120, 60}, {160, 80}, {170, 85}});
        QVERIFY(t.onlyAction());
        TouchBoard replay(DoodleActionModeNone);
        for (const DoodleActionPtr &action : t.board.getAllPath())
            replay.receive(action->userId(), action);
        QCOMPARE(maxChannelDifference(t.cache(), replay.cache(), kBoard), 0);
        if (mode == DoodleActionModeEraser)
            QCOMPARE(qAlpha(t.cache().pixel(70, 40)), 0);
    }

    void aRectangleDraggedUpAndLeft_data()
    {
        QTest::addColumn<QString>("finish");
        QTest::addColumn<QRectF>("expected");
        // A lift ends at the location before it, (50, 20); a cancel after the
        // last move ends at (40, 10) and keeps the origin and the raw size.
        const QRectF normalised(-0.5f, -0.6f, 1.0f, 1.2f), raw(0.5f, 0.6f, -1.1f, -1.4f);
        QTest::newRow("lifted: normalised") << "lift" << normalised;
        QTest::newRow("grab taken away: raw") << "ungrab" << raw;
        QTest::newRow("window deactivated: raw") << "deactivate" << raw;
        QTest::newRow("touch cancelled: raw") << "touch" << raw;
    }
    void aRectangleDraggedUpAndLeft()
    {
        QFETCH(QString, finish);
        QFETCH(QRectF, expected);
        TouchBoard t(DoodleActionModeRectangle);
        const QList<QPoint> points{{150, 80}, {110, 60}, {50, 20}, {40, 10}};
        const bool touch = finish == QLatin1String("touch");
        t.drag(points, touch ? Input::Touch : Input::Mouse, finish == QLatin1String("lift"));
        if (touch) {
            QTouchEvent cancel(QEvent::TouchCancel, touchscreen());
            QCoreApplication::sendEvent(t.view(), &cancel);
        } else if (finish != QLatin1String("lift")) {
            QEvent taken(finish == QLatin1String("ungrab") ? QEvent::UngrabMouse
                                                           : QEvent::WindowDeactivate);
            QCoreApplication::sendEvent(t.view(), &taken);
            QTest::mouseRelease(t.view(), Qt::LeftButton, {}, points.last());
        }
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(QRectF(action->x(), action->y(), action->width(), action->height()), expected);
    }

    void aTapLeavesNothingForTheNextGesture()
    {
        TouchBoard pen;
        QTest::mouseClick(pen.view(), Qt::LeftButton, {}, {100, 50});
        QVERIFY(pen.host.generated.isEmpty() && pen.cache().isNull());
        pen.drag({{20, 20}, {60, 30}, {70, 30}});
        QVERIFY(pen.onlyAction());
        QCOMPARE(pointStrings(pen.onlyAction()).first(), QStringLiteral("2 -0.800000 -0.600000"));
        QCOMPARE(pen.onlyAction()->pathPoints().size(), 2); // nothing from the tap

        TouchBoard arrow(DoodleActionModeArrow);
        QTest::mouseClick(arrow.view(), Qt::LeftButton, {}, {20, 50});
        arrow.drag({{100, 10}, {150, 30}, {180, 50}, {190, 50}});
        const DoodleActionPtr action = arrow.onlyAction();
        QVERIFY(action);
        QCOMPARE(QPointF(action->x(), action->y()), QPointF(0.0f, -0.8f));
        QCOMPARE(action->endX(), 0.8f);
        QCOMPARE(qAlpha(arrow.cache().pixel(40, 50)), 0); // nothing from the tap
        QCOMPARE(QColor(arrow.cache().pixel(140, 30)), QColor(Qt::red));
    }

    void aStrokeLeavingTheBoardIsCommittedAtOnce()
    {
        TouchBoard t;
        t.drag({{100, 50}, {150, 60}, {190, 70}, {230, 80}}, Input::Mouse, false);
        QCOMPARE(t.host.generated.size(), 1);
        t.drag({{100, 90}, {100, 95}}); // further movement and the lift add nothing
        // A touch that begins off the board draws nothing.
        t.board.touchesBegan({{-5, 20}, {-5, 20}});
        t.board.touchesMoved({{30, 20}, {-5, 20}});
        t.board.touchesEnded({{40, 20}, {30, 20}});
        QCOMPARE(t.board.getAllPath().size(), 1);
    }

    void gesturesThatDrawNothing_data()
    {
        QTest::addColumn<qint64>("mode");
        QTest::addColumn<bool>("folded");
        QTest::newRow("folded tool bar") << qint64(DoodleActionModeBrush) << true;
        QTest::newRow("mode 8, no tool") << qint64(8) << false;
    }
    void gesturesThatDrawNothing()
    {
        QFETCH(qint64, mode);
        QFETCH(bool, folded);
        TouchBoard t(mode);
        if (folded)
            t.board.showToolBar();
        t.drag({{20, 20}, {60, 30}, {100, 50}, {180, 90}});
        QVERIFY(t.host.generated.isEmpty());
        QVERIFY(t.cache().isNull());
    }

    // While the finger is down the stroke reaches the pointer, not only the
    // last midpoint; once lifted, the board holds exactly the replay.
    void aLiveStrokeReachesThePointer()
    {
        TouchBoard t;
        const auto inkAt = [&t](int x) {
            return qAlpha(t.board.doodleView()->convertViewToImage().pixel(x, 50)) > 128;
        };
        t.drag({{20, 50}, {60, 50}, {100, 50}}, Input::Mouse, false);
        QVERIFY(inkAt(96));
        QVERIFY(!inkAt(110));
        QTest::mouseRelease(t.view(), Qt::LeftButton, {}, {100, 50});
        QCOMPARE(t.host.generated.size(), 1);
        const QImage tail = t.board.doodleView()->getTempCanvas(2)->cacheImage();
        QCOMPARE(maxChannelDifference(tail, QImage(), tail.size()), 0); // nothing left
        QCOMPARE(differenceFromReplay(t), 0);
    }

    // With one aspect for the call, a circle drawn on a tall phone is round on
    // a wide desktop board, which shows exactly a board of that shape.
    void aCircleIsRoundOnBoardsOfOtherShapes_data()
    {
        QTest::addColumn<QSize>("peerView");
        QTest::addColumn<QSize>("peerBoard");
        QTest::newRow("desktop") << QSize(800, 600) << QSize(418, 600);
        QTest::newRow("wider phone") << QSize(430, 560) << QSize(390, 560);
        QTest::newRow("small") << QSize(320, 480) << QSize(320, 459);
    }
    void aCircleIsRoundOnBoardsOfOtherShapes()
    {
        QFETCH(QSize, peerView);
        QFETCH(QSize, peerBoard);
        TouchBoard me(DoodleActionModeEllipse);
        Participant peer(QStringLiteral("peer"), peerView);
        me.linkTo(peer);
        const QSizeF aspect(390, 560);
        for (DoodleLayout *board : {&me.board, &peer.board})
            board->setBoardAspect(aspect);
        me.board.resetDoodleViewFrame(QRect(0, 0, 390, 844)); // board at y 142..702
        QCOMPARE(me.board.getScaleSize(), aspect);
        me.drag({{100, 100}, {150, 130}, {200, 130}}); // in the margin: nothing
        QVERIFY(me.host.generated.isEmpty());
        me.drag({{100, 242}, {150, 292}, {200, 342}, {300, 442}});
        QCOMPARE(me.host.generated.size(), 1);
        QCOMPARE(me.host.generated.first()->y(), float(2 * 100.0 / 560 - 1)); // board-relative
        QCOMPARE(peer.board.getScaleSize(), QSizeF(peerBoard));
        QCOMPARE(differenceFromReplay(peer, peerBoard), 0);
        // Round: the ink is as tall as it is wide.
        const QImage ink = peer.cache();
        QRect box;
        for (int y = 0; y < ink.height(); ++y)
            for (int x = 0; x < ink.width(); ++x)
                box |= qAlpha(ink.pixel(x, y)) > 128 ? QRect(x, y, 1, 1) : QRect();
        QVERIFY2(std::abs(box.width() - box.height()) <= 2, qPrintable(QDebug::toString(box)));
        QCOMPARE(me.board.imageScreenShot().deviceIndependentSize(), aspect);
        me.board.setBoardAspect(QSizeF()); // none: the board fills its view again
        QCOMPARE(me.board.getScaleSize(), QSizeF(390, 844));
    }

    // How a field ends decides what is sent: one text action, drawn where the
    // field was, or nothing at all.
    void aTextFieldIsCommittedWhenTheUserMovesOn_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("sent");
        QTest::addColumn<QString>("finish");
        QTest::newRow("return") << "hi bob" << true << "return";
        QTest::newRow("tap elsewhere") << "hi bob" << true << "tap";
        QTest::newRow("another tool") << "hi" << true << "tool";
        QTest::newRow("fold the bar") << "hi" << true << "fold";
        QTest::newRow("focus elsewhere") << "hi" << true << "focus";
        QTest::newRow("escape") << "hi bob" << false << "escape";
        QTest::newRow("empty return") << "" << false << "return";
        QTest::newRow("blank tap") << "   " << false << "tap";
    }
    void aTextFieldIsCommittedWhenTheUserMovesOn()
    {
        QFETCH(QString, typed);
        QFETCH(QString, finish);
        QFETCH(bool, sent);
        TouchBoard t(DoodleActionModeText);
        QLineEdit other(t.view());
        other.setGeometry(0, 90, 10, 10);
        other.show();
        t.board.setTextSize(20);
        QTest::mouseClick(t.view(), Qt::LeftButton, {}, {30, 40});
        QPointer<QLineEdit> field = t.board.doodleView()->tempTextField();
        QVERIFY(field);
        QCOMPARE(field->geometry(), QRect(30, 40, 150, 30));
        QTRY_VERIFY(field->hasFocus());
        QTest::keyClicks(field, typed);
        QVERIFY(t.host.generated.isEmpty());
        if (finish == "return" || finish == "escape")
            QTest::keyClick(field, finish == "return" ? Qt::Key_Return : Qt::Key_Escape);
        else if (finish == "tap")
            QTest::mouseClick(t.view(), Qt::LeftButton, {}, {120, 60});
        else if (finish == "tool")
            t.board.setActionMode(DoodleActionModeBrush);
        else if (finish == "fold")
            t.board.showToolBar();
        else
            other.setFocus(Qt::MouseFocusReason);
        QCOMPARE(t.host.generated.size(), sent ? 1 : 0);
        QTRY_VERIFY(!field); // the field is gone, and no new one opened
        QVERIFY(!t.board.doodleView()->tempTextField());
        if (!sent)
            return;
        const DoodleActionPtr action = t.onlyAction();
        QCOMPARE(action->actionType(), qint64(DoodleActionTypeText));
        QCOMPARE(action->text(), typed);
        QCOMPARE(QPointF(action->x(), action->y()), QPointF(-0.7f, -0.2f));
        QCOMPARE(action->textSize(), 0.2f);
        QCOMPARE(differenceFromReplay(t), 0);
    }

    void aTextFieldGrowsWithItsTextUpToTheEdge()
    {
        TouchBoard t(DoodleActionModeText);
        t.board.setTextSize(10);
        QTest::mouseClick(t.view(), Qt::LeftButton, {}, {120, 20});
        QLineEdit *field = t.board.doodleView()->tempTextField();
        QCOMPARE(field->geometry().right() + 1, kBoard.width());    // 150 would pass the edge
        QTest::mouseClick(t.view(), Qt::LeftButton, {}, {120, 20}); // nothing typed: nothing sent
        QTest::mouseClick(t.view(), Qt::LeftButton, {}, {2, 20});
        field = t.board.doodleView()->tempTextField();
        QCOMPARE(field->width(), 150);
        QTest::keyClicks(field, QString(60, QLatin1Char('w')));
        QCOMPARE(field->geometry().right() + 1, kBoard.width());
        QVERIFY(t.host.generated.isEmpty());
    }
};

QTEST_MAIN(TestDoodleLayoutTouch)
#include "tst_DoodleLayoutTouch.moc"
