// The board controller's lifecycle, host settings and coordinate conversions.
#include "BoardHarness.h"
#include "LogCapture.h"

#include <QGuiApplication>
#include <QtTest>

class TestDoodleLayout : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { DoodleScreen::setScaleOverride(0); }

    // A board opens folded with the tables of the screen scale; folding reports
    // once; a dismissal reports pause then close, and empties and resets the board.
    void lifecycle()
    {
        DoodleScreen::setScaleOverride(2);
        QWidget window;
        DoodleLayout board(QStringLiteral("u1"));
        board.view()->setParent(&window);
        RecordingHost host;
        board.setDelegate(&host);
        QVERIFY(board.isMinToolBar());
        QCOMPARE(board.brushWidthArray(), QList<double>({2, 3, 5, 8}));
        QCOMPARE(QList<double>({board.brushWidth(), board.eraserWidth(), board.textSize()}),
                 QList<double>({2, 10, 14}));
        QCOMPARE(board.brushColor(), QColor(Qt::black));
        board.setPageCount(0);
        QCOMPARE(board.pageCount(), quint64(1));
        board.canEdit(false); // already folded: nothing to report
        board.showToolBar();  // unfold
        board.canEdit(true);  // folds
        board.canEdit(true);
        QCOMPARE(host.calls, QStringList({"restart", "pause"}));

        board.addAction(strokeAction("u2", {{-0.5, -0.5}, {0.5, 0.5}}));
        board.setBrushWidth(40);
        board.setPageCount(3);
        board.setActionMode(DoodleActionModeText);
        board.showToolBar();
        host.calls.clear();
        board.dismissDoodle();
        QCOMPARE(host.calls, QStringList({"pause", "close"}));
        QVERIFY(board.getAllPath().isEmpty());
        QVERIFY(board.doodleView()->cacheCanvas()->cacheImage().isNull());
        QVERIFY(!board.view()->parentWidget());
        QCOMPARE(board.brushWidth(), 2.0);
        QCOMPARE(board.pageCount(), quint64(1));
        QCOMPARE(board.actionMode(), qint64(DoodleActionModeBrush));

        auto *gone = new RecordingHost; // a destroyed host is never called
        board.setDelegate(gone);
        delete gone;
        QVERIFY(!board.delegate());
        board.undo();
        board.showToolBar();
    }

    void newBackgroundListsRedrawWithoutChangingTheBackground()
    {
        DoodleLayout board(QStringLiteral("u1"));
        board.setBackgroundColor(Qt::yellow);
        board.addAction(strokeAction("u2", {{0, 0}, {0.5, 0.5}}));
        LogCapture log;
        board.setBackgroundColors({Qt::red, Qt::green});
        QCOMPARE(log.lines(), QStringList({"addAction 1"}));
        QCOMPARE(board.doodleView()->backgroundColor(), QColor(Qt::yellow));
        log.clear();
        board.setBackgroundColors(board.backgroundColors()); // the same list again
        QVERIFY(log.lines().isEmpty());
    }

    void becomingActiveAbandonsTheGestureUnderWay_data()
    {
        QTest::addColumn<bool>("leftDuringGesture");
        QTest::newRow("the application left the foreground") << true;
        QTest::newRow("the touch itself activated the window") << false;
    }
    void becomingActiveAbandonsTheGestureUnderWay()
    {
        QFETCH(bool, leftDuringGesture);
        emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
        DoodleLayout board(QStringLiteral("u1"));
        RecordingHost host;
        board.setDelegate(&host);
        board.resetDoodleViewFrame(QRect(0, 0, 200, 200));
        board.showToolBar();
        touchAlong(board, {{50, 50}, {60, 60}}, false);
        if (leftDuringGesture)
            emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
        emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        board.touchesEnded({{70, 70}, {60, 60}});
        QCOMPARE(board.getAllPath().size(), leftDuringGesture ? 0 : 1);
        QCOMPARE(host.generated.size(), board.getAllPath().size());
    }

    void conversions()
    {
        DoodleLayout board(QStringLiteral("u1"));
        board.resetDoodleViewFrame(QRect(0, 0, 400, 300));
        for (const auto &[normal, logic] : {std::pair{QPointF(400, 0), QPointF(1, -1)},
                                            std::pair{QPointF(600, -150), QPointF(2, -2)}}) {
            QCOMPARE(board.logicFromNormal(normal), logic);
            QCOMPARE(board.normalFromLogicPositionX(logic.x(), logic.y()), normal);
        }
        // Sizes: widths (line widths and text sizes too) against the width.
        QCOMPARE(board.normalFromLogicWidth(0.05), 10.0);
        QCOMPARE(board.logicFromNormalHeight(30), 0.2);
        QCOMPARE(board.normalFromLogicRect(QRectF(0, -0.5, 0.5, 1)), QRectF(200, 75, 100, 150));
    }

    void limitTouchPoint_data()
    {
        QTest::addColumn<double>("brushWidth");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<QPointF>("limited");
        QTest::newRow("inside") << 5.0 << QPointF(30, 70) << QPointF(30, 70);
        QTest::newRow("beyond two edges") << 5.0 << QPointF(-20, 200) << QPointF(5, 95);
        QTest::newRow("upper bound wins on a narrow view")
            << 60.0 << QPointF(2, 99) << QPointF(40, 40);
    }
    void limitTouchPoint()
    {
        QFETCH(double, brushWidth);
        QFETCH(QPointF, point);
        QFETCH(QPointF, limited);
        DoodleLayout board(QStringLiteral("u1"));
        board.resetDoodleViewFrame(QRect(0, 0, 100, 100));
        board.setBrushWidth(brushWidth);
        QCOMPARE(board.limitTouchPoint(point, board.doodleView()), limited);
    }
};

QTEST_MAIN(TestDoodleLayout)
#include "tst_DoodleLayout.moc"
