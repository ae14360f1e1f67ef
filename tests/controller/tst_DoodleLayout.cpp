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

    void constructionLoadsTheViewAndFoldsTheBar()
    {
        DoodleLayout board(QStringLiteral("u1"));
        RecordingHost host;
        board.setDelegate(&host);
        QVERIFY(board.isViewLoaded());
        QVERIFY(board.isMinToolBar());
        QCOMPARE(board.actionMode(), qint64(DoodleActionModeBrush));
        QCOMPARE(board.brushColor(), QColor(Qt::black));
        QCOMPARE(board.userId(), QStringLiteral("u1"));
        QCOMPARE(board.doodleView()->tempCanvasCount(), quint64(2));
        QVERIFY(board.getAllPath().isEmpty());
        QVERIFY(host.calls.isEmpty());
        board.setPageCount(0);
        QCOMPARE(board.pageCount(), quint64(1));
        board.setPageCount(7);
        QCOMPARE(board.pageCount(), quint64(7));
    }

    void sizeTablesFollowTheScreenScale_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QList<double>>("brushWidths");
        QTest::newRow("1x uses the 3x tables") << 1.0 << QList<double>{2, 4, 6, 9};
        QTest::newRow("2x") << 2.0 << QList<double>{2, 3, 5, 8};
        QTest::newRow("3x") << 3.0 << QList<double>{2, 4, 6, 9};
    }
    void sizeTablesFollowTheScreenScale()
    {
        QFETCH(double, scale);
        QFETCH(QList<double>, brushWidths);
        DoodleScreen::setScaleOverride(scale);
        DoodleLayout board(QStringLiteral("u1"));
        QCOMPARE(board.brushWidthArray(), brushWidths);
        QCOMPARE(board.brushWidth(), brushWidths.first());
        QCOMPARE(board.eraserWidthArray().size(), 4);
        QCOMPARE(board.eraserWidth(), board.eraserWidthArray().first());
        QCOMPARE(board.textSizeArray().size(), 4);
        QCOMPARE(board.textSize(), board.textSizeArray().first());
    }

    void foldingReportsPauseAndRestartOnce()
    {
        DoodleLayout board(QStringLiteral("u1"));
        RecordingHost host;
        board.setDelegate(&host);
        board.canEdit(false); // already folded: nothing to report
        board.showToolBar();  // unfold
        board.canEdit(true);  // folds
        board.canEdit(true);
        QCOMPARE(host.calls, QStringList({"restart", "pause"}));
        QVERIFY(board.isMinToolBar());

        auto *gone = new RecordingHost; // a destroyed host is never called
        board.setDelegate(gone);
        delete gone;
        QVERIFY(!board.delegate());
        board.undo();
        board.showToolBar();
    }

    void dismissEmptiesTheBoardAndReportsPauseBeforeClose()
    {
        QWidget window;
        DoodleLayout board(QStringLiteral("u1"));
        board.view()->setParent(&window);
        RecordingHost host;
        board.setDelegate(&host);
        board.addAction(strokeAction("u2", {{-0.5, -0.5}, {0.5, 0.5}}));
        board.setBrushWidth(40);
        board.setPageCount(3);
        board.showToolBar();
        host.calls.clear();

        board.dismissDoodle();
        QCOMPARE(host.calls, QStringList({"pause", "close"}));
        QVERIFY(board.getAllPath().isEmpty());
        QVERIFY(board.doodleView()->cacheCanvas()->cacheImage().isNull());
        QVERIFY(!board.view()->parentWidget());
        QCOMPARE(board.brushWidth(), board.brushWidthArray().value(0));
        QCOMPARE(board.pageCount(), quint64(1));
        QCOMPARE(board.actionMode(), qint64(DoodleActionModeBrush));
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
        board.touchesBegan({{50, 50}, {50, 50}});
        board.touchesMoved({{60, 60}, {50, 50}});
        if (leftDuringGesture)
            emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
        emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        board.touchesEnded({{70, 70}, {60, 60}});
        QCOMPARE(board.getAllPath().size(), leftDuringGesture ? 0 : 1);
        QCOMPARE(host.generated.size(), board.getAllPath().size());
    }

    void frameResetRedrawsAtTheNewSize()
    {
        DoodleScreen::setScaleOverride(1);
        DoodleLayout board(QStringLiteral("u1"));
        board.resetDoodleViewFrame(QRect(0, 0, 100, 100));
        board.addAction(boxAction(DoodleActionTypeRectangle, "u2", {-1, -1, 1, 1}, Qt::blue, 0.1f));
        board.resetDoodleViewFrame(QRect(0, 0, 300, 200));
        QCOMPARE(board.getScaleSize(), QSizeF(300, 200));
        const QImage cache = board.doodleView()->cacheCanvas()->cacheImage();
        QCOMPARE(cache.size(), QSize(300, 200));
        // Redrawn, not stretched: the bottom edge at y = 100 is 15 thick (a
        // stretched picture would make it 10) and the right edge lies at x = 150.
        QCOMPARE(QColor(cache.pixel(75, 93)), QColor(Qt::blue));
        QCOMPARE(QColor(cache.pixel(150, 50)), QColor(Qt::blue));
        QCOMPARE(qAlpha(cache.pixel(75, 110)), 0);
    }

    void conversions_data()
    {
        QTest::addColumn<QPointF>("normal");
        QTest::addColumn<QPointF>("logic");
        QTest::newRow("top-left") << QPointF(0, 0) << QPointF(-1, -1);
        QTest::newRow("centre") << QPointF(200, 150) << QPointF(0, 0);
        QTest::newRow("bottom-right") << QPointF(400, 300) << QPointF(1, 1);
        QTest::newRow("top-right") << QPointF(400, 0) << QPointF(1, -1);
        QTest::newRow("outside stays outside") << QPointF(600, -150) << QPointF(2, -2);
    }
    void conversions()
    {
        QFETCH(QPointF, normal);
        QFETCH(QPointF, logic);
        DoodleLayout board(QStringLiteral("u1"));
        board.resetDoodleViewFrame(QRect(0, 0, 400, 300));
        QCOMPARE(board.logicFromNormal(normal), logic);
        QCOMPARE(board.normalFromLogicPositionX(logic.x(), logic.y()), normal);
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
        QTest::newRow("left edge") << 5.0 << QPointF(2, 50) << QPointF(5, 50);
        QTest::newRow("bottom-right corner") << 5.0 << QPointF(99, 99) << QPointF(95, 95);
        QTest::newRow("inside") << 5.0 << QPointF(30, 70) << QPointF(30, 70);
        QTest::newRow("negative") << 5.0 << QPointF(-20, 200) << QPointF(5, 95);
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
