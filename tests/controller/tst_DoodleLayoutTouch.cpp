// Gestures driven as a user would: mouse, touch and stylus events on the
// board's real widget, checked through the actions, the cache and the pixels.
#include "BoardHarness.h"

#include <QLineEdit>
#include <QPointingDevice>
#include <QTabletEvent>
#include <QtTest>

namespace {

const QSize kBoard(200, 100);

// A shown board with its tool bar unfolded, as after a tap on the floating button.
struct TouchBoard : Participant
{
    explicit TouchBoard(qint64 mode = DoodleActionModeBrush, const QSize &size = kBoard)
        : Participant(QStringLiteral("me"), size)
    {
        board.showToolBar();
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

    void drag(const QList<QPoint> &points)
    {
        QTest::mousePress(view(), Qt::LeftButton, {}, points.first());
        for (int i = 1; i + 1 < points.size(); ++i)
            QTest::mouseMove(view(), points.at(i));
        QTest::mouseRelease(view(), Qt::LeftButton, {}, points.last());
    }

    DoodleActionPtr onlyAction()
    {
        return host.generated.size() == 1 ? host.generated.first() : DoodleActionPtr();
    }
};

QStringList pointStrings(const DoodleActionPtr &action)
{
    QStringList strings;
    for (const DoodlePoint &point : action->pathPoints())
        strings << point.join(QLatin1Char(' '));
    return strings;
}

} // namespace

class TestDoodleLayoutTouch : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(1); }

    void aMouseStrokeBecomesOneAction()
    {
        TouchBoard t;
        int cachedWhenGenerated = -1;
        t.host.onGenerated = [&](const DoodleActionPtr &) {
            cachedWhenGenerated = t.board.getAllPath().size();
        };
        t.drag({{20, 20}, {60, 30}, {100, 50}, {180, 90}});
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(action->actionType(), qint64(DoodleActionTypeStroke));
        QCOMPARE(action->userId(), QStringLiteral("me"));
        QCOMPARE(action->brushColor(), QColor(Qt::red));
        QCOMPARE(action->brushWidth(), 0.04f);
        // Begin and moves, interval 2; the release location is not a point.
        QCOMPARE(
            pointStrings(action),
            QStringList({"2 -0.800000 -0.600000", "2 -0.400000 -0.400000", "2 0.000000 0.000000"}));
        QCOMPARE(cachedWhenGenerated, 0); // the host hears first, then the cache records
        QCOMPARE(t.board.getAllPath().size(), 1);
        // Committed on the cache canvas, preview cleared.
        QCOMPARE(QColor(t.cache().pixel(60, 30)), QColor(Qt::red));
        QVERIFY(t.board.doodleView()->getTempCanvas(0)->cacheImage().isNull());
    }

    void drawingLiveEqualsReplayingTheText_data()
    {
        QTest::addColumn<qint64>("mode");
        QTest::addColumn<int>("tolerance");
        QTest::newRow("pen") << qint64(DoodleActionModeBrush) << 0;
        QTest::newRow("rectangle") << qint64(DoodleActionModeRectangle) << 0;
        QTest::newRow("ellipse") << qint64(DoodleActionModeEllipse) << 0;
        QTest::newRow("arrow") << qint64(DoodleActionModeArrow) << 0;
        // The eraser erases each segment live and the whole path at the end.
        QTest::newRow("eraser") << qint64(DoodleActionModeEraser) << 128;
    }
    void drawingLiveEqualsReplayingTheText()
    {
        QFETCH(qint64, mode);
        QFETCH(int, tolerance);
        TouchBoard t(mode);
        t.board.setEraserWidth(12);
        t.board.addAction(
            boxAction(DoodleActionTypeRectangle, "you", {-0.9, -0.9, 1.8, 1.8}, Qt::blue, 0.3f));
        t.drag({{30, 20}, {70, 40}, {120, 60}, {160, 80}, {170, 85}});
        QVERIFY(t.onlyAction());

        TouchBoard replay(DoodleActionModeNone);
        for (const DoodleActionPtr &action : t.board.getAllPath())
            replay.receive(action->userId(), action);
        QVERIFY(maxChannelDifference(t.cache(), replay.cache(), kBoard) <= tolerance);
        if (mode == DoodleActionModeEraser)
            QCOMPARE(qAlpha(t.cache().pixel(70, 40)), 0);
    }

    void aRectangleDraggedUpAndLeftIsNormalised()
    {
        TouchBoard t(DoodleActionModeRectangle);
        t.drag({{150, 80}, {110, 60}, {50, 20}, {40, 10}});
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(action->actionType(), qint64(DoodleActionTypeRectangle));
        // Ends at the previous location (50, 20): origin (50, 20), size 100 x 60.
        QCOMPARE(action->x(), -0.5f);
        QCOMPARE(action->y(), -0.6f);
        QCOMPARE(action->width(), 1.0f);
        QCOMPARE(action->height(), 1.2f);
    }

    void aCancelledRectangleKeepsItsNegativeSize_data()
    {
        QTest::addColumn<QString>("source");
        QTest::newRow("grab taken away") << "ungrab";
        QTest::newRow("window deactivated") << "deactivate";
        QTest::newRow("touch cancelled") << "touch";
    }
    void aCancelledRectangleKeepsItsNegativeSize()
    {
        QFETCH(QString, source);
        TouchBoard t(DoodleActionModeRectangle);
        static QPointingDevice *device = QTest::createTouchDevice();
        const QList<QPoint> points{{150, 80}, {110, 60}, {50, 20}};
        if (source == QLatin1String("touch")) {
            QTest::touchEvent(t.view(), device).press(0, points.at(0), t.view());
            QTest::touchEvent(t.view(), device).move(0, points.at(1), t.view());
            QTest::touchEvent(t.view(), device).move(0, points.at(2), t.view());
            QTouchEvent cancel(QEvent::TouchCancel, device);
            QCoreApplication::sendEvent(t.view(), &cancel);
        } else {
            QTest::mousePress(t.view(), Qt::LeftButton, {}, points.at(0));
            QTest::mouseMove(t.view(), points.at(1));
            QTest::mouseMove(t.view(), points.at(2));
            QEvent taken(source == QLatin1String("ungrab") ? QEvent::UngrabMouse
                                                           : QEvent::WindowDeactivate);
            QCoreApplication::sendEvent(t.view(), &taken);
        }
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(action->x(), 0.5f);
        QCOMPARE(action->y(), 0.6f);
        QCOMPARE(action->width(), -1.0f);
        QCOMPARE(action->height(), -1.2f);
        QTest::mouseRelease(t.view(), Qt::LeftButton, {}, {40, 10});
        QCOMPARE(t.host.generated.size(), 1);
    }

    void aTapLeavesItsPointForTheNextStroke()
    {
        TouchBoard t;
        QTest::mouseClick(t.view(), Qt::LeftButton, {}, {100, 50});
        QVERIFY(t.host.generated.isEmpty());
        QVERIFY(t.cache().isNull());
        t.drag({{20, 20}, {60, 30}, {70, 30}});
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(pointStrings(action).first(), QStringLiteral("2 0.000000 0.000000"));
        QCOMPARE(action->pathPoints().size(), 3);
    }

    void anArrowTapKeepsItsStartPoint()
    {
        TouchBoard t(DoodleActionModeArrow);
        QTest::mouseClick(t.view(), Qt::LeftButton, {}, {20, 50});
        t.drag({{100, 10}, {150, 30}, {180, 50}, {190, 50}});
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(action->x(), 0.0f); // the new touch ...
        QCOMPARE(action->y(), -0.8f);
        QCOMPARE(action->endX(), 0.8f);
        // ... but the arrow is drawn from the tapped point.
        QCOMPARE(QColor(t.cache().pixel(40, 50)), QColor(Qt::red));
    }

    void aStrokeLeavingTheBoardIsCommittedAtOnce()
    {
        TouchBoard t;
        QTest::mousePress(t.view(), Qt::LeftButton, {}, {100, 50});
        QTest::mouseMove(t.view(), {150, 60});
        QTest::mouseMove(t.view(), {190, 70});
        QTest::mouseMove(t.view(), {230, 80}); // off the board
        QCOMPARE(t.host.generated.size(), 1);
        QTest::mouseMove(t.view(), {100, 90});
        QTest::mouseRelease(t.view(), Qt::LeftButton, {}, {100, 95});
        QCOMPARE(t.host.generated.size(), 1);
        QCOMPARE(t.board.getAllPath().size(), 1);
    }

    void gesturesThatDrawNothing_data()
    {
        QTest::addColumn<qint64>("mode");
        QTest::addColumn<bool>("folded");
        QTest::newRow("folded tool bar") << qint64(DoodleActionModeBrush) << true;
        QTest::newRow("mode 0") << qint64(0) << false;
        QTest::newRow("mode 7") << qint64(7) << false;
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

    void aTouchOutsideTheBoardDrawsNothing()
    {
        TouchBoard t;
        t.board.touchesBegan({{-5, 20}, {-5, 20}});
        t.board.touchesMoved({{30, 20}, {-5, 20}});
        t.board.touchesEnded({{40, 20}, {30, 20}});
        QVERIFY(t.host.generated.isEmpty());
    }

    void textIsTypedIntoAFieldAndSentOnReturn_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("words") << QStringLiteral("hi bob");
        QTest::newRow("empty") << QString();
    }
    void textIsTypedIntoAFieldAndSentOnReturn()
    {
        QFETCH(QString, typed);
        TouchBoard t(DoodleActionModeText);
        t.board.setTextSize(20);
        QVERIFY(QTest::qWaitForWindowExposed(t.view()));
        QTest::mouseClick(t.view(), Qt::LeftButton, {}, {30, 40});
        QLineEdit *field = t.board.doodleView()->tempTextField();
        QVERIFY(field);
        QCOMPARE(field->geometry(), QRect(30, 40, 150, 30));
        QVERIFY(t.host.generated.isEmpty());
        QTest::keyClicks(field, typed);
        QTest::keyClick(field, Qt::Key_Return);
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(action->actionType(), qint64(DoodleActionTypeText));
        QCOMPARE(action->text(), typed);
        QCOMPARE(action->x(), -0.7f);
        QCOMPARE(action->y(), -0.2f);
        QCOMPARE(action->textSize(), 0.2f);
        QCOMPARE(t.board.getAllPath().size(), 1);
    }

    void touchAndStylusDrawLikeTheMouse_data()
    {
        QTest::addColumn<bool>("stylus");
        QTest::newRow("touch") << false;
        QTest::newRow("stylus") << true;
    }
    void touchAndStylusDrawLikeTheMouse()
    {
        QFETCH(bool, stylus);
        TouchBoard t;
        const QList<QPoint> points{{20, 20}, {60, 30}, {100, 50}, {140, 60}};
        if (stylus)
            sendStylus(t.view(), points);
        else
            sendTouches(t.view(), points);
        const DoodleActionPtr action = t.onlyAction();
        QVERIFY(action);
        QCOMPARE(action->pathPoints().size(), 3);
        QCOMPARE(QColor(t.cache().pixel(60, 30)), QColor(Qt::red));
    }

private:
    static void sendTouches(QWidget *view, const QList<QPoint> &points)
    {
        static QPointingDevice *device = QTest::createTouchDevice();
        QTest::touchEvent(view, device).press(0, points.first(), view);
        for (int i = 1; i + 1 < points.size(); ++i)
            QTest::touchEvent(view, device).move(0, points.at(i), view);
        QTest::touchEvent(view, device).release(0, points.last(), view);
    }

    static void sendStylus(QWidget *view, const QList<QPoint> &points)
    {
        const auto send = [view](QEvent::Type type, const QPoint &p, Qt::MouseButtons buttons) {
            QTabletEvent event(type, QPointingDevice::primaryPointingDevice(), p,
                               view->mapToGlobal(p), 0.5, 0, 0, 0, 0, 0, {}, Qt::LeftButton,
                               buttons);
            QCoreApplication::sendEvent(view, &event);
        };
        send(QEvent::TabletPress, points.first(), Qt::LeftButton);
        for (int i = 1; i + 1 < points.size(); ++i)
            send(QEvent::TabletMove, points.at(i), Qt::LeftButton);
        send(QEvent::TabletRelease, points.last(), Qt::NoButton);
    }
};

QTEST_MAIN(TestDoodleLayoutTouch)
#include "tst_DoodleLayoutTouch.moc"
