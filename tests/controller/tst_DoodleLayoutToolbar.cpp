// The board's own tool bar, floating button and option pickers, clicked as a
// user clicks them; checked through the tool state, the marks, where the
// pickers open, what is drawn and what the host hears.
#include "../toolbar/ToolbarTesting.h"
#include "BoardHarness.h"

#include <QAccessible>
#include <QDialog>
#include <QtTest>

namespace {

// A shown board 400 x 500 with a recording host; `unfold` taps the floating button.
struct ToolBoard : Participant
{
    explicit ToolBoard(bool unfold = true) : Participant(QStringLiteral("me"), QSize(400, 500))
    {
        board.view()->show();
        if (unfold)
            QTest::mouseClick(board.doodletoolButton(), Qt::LeftButton);
    }
    ZQDoodleButton *button(qint64 type) { return ofType(board.doodletoolbar()->buttons(), type); }
    void click(qint64 type) { QTest::mouseClick(button(type), Qt::LeftButton); }
    QList<ZQDoodleButtonView *> pickers()
    {
        return board.view()->findChildren<ZQDoodleButtonView *>();
    }
    QList<qint64> marked()
    {
        QList<qint64> types;
        for (ZQDoodleButton *b : board.doodletoolbar()->buttons())
            if (b->isSelected())
                types << b->type();
        return types;
    }
    // Where the tool bar and the floating button sit.
    QList<QRect> places()
    {
        return {board.doodletoolbar()->geometry(), board.doodletoolButton()->geometry()};
    }
    void drag() { ::drag(board.view(), Input::Mouse, {{100, 100}, {200, 150}, {260, 210}}); }
};

} // namespace

class TestDoodleLayoutToolbar : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { DoodleScreen::setScaleOverride(2); }

    void theFloatingButtonFoldsAndUnfolds()
    {
        ToolBoard t(false);
        // Twelve buttons would crowd one row 368 points wide: two rows.
        QCOMPARE(t.places(), QList<QRect>({{16, 420, 223, 64}, {350, 400, 44, 44}}));
        QVERIFY(!t.board.doodletoolbar()->isVisible() && t.board.doodletoolButton()->isVisible());
        QVERIFY(!t.board.doodletoolButton()->toolTip().isEmpty()); // it says what it does
        t.drag();                                                  // folded: drawing is paused
        QTest::mouseClick(t.board.doodletoolButton(), Qt::LeftButton);
        QVERIFY(t.board.doodletoolbar()->isVisible());
        t.drag();
        // A press between the bar's buttons draws nothing.
        ::drag(t.board.doodletoolbar(), Input::Mouse, {{1, 15}, {60, 10}, {60, 10}});
        t.click(DoodleToolbarButtonTypeWidth); // a picker, closed by the fold
        QTest::mouseClick(t.board.doodletoolButton(), Qt::LeftButton);
        QVERIFY(!t.board.doodletoolbar()->isVisible() && t.pickers().isEmpty());
        QCOMPARE(t.host.calls, QStringList({"restart", "generated 260", "pause"}));
        t.board.resetDoodleViewFrame(QRect(0, 0, 500, 300));
        QCOMPARE(t.places(), QList<QRect>({{16, 254, 468, 30}, {450, 200, 44, 44}}));
        t.board.view()->resize(300, 400); // the host's own layout: too narrow for one row
        QCOMPARE(t.places(), QList<QRect>({{16, 320, 223, 64}, {250, 300, 44, 44}}));
    }

    void toolsSetTheModeAndMarkTheirButton_data()
    {
        QTest::addColumn<qint64>("button");
        QTest::addColumn<qint64>("mode");
        QTest::addColumn<qint64>("drawn"); // -1: a text tool draws on its own terms
        QTest::newRow("pen") << qint64(3) << qint64(1) << qint64(DoodleActionTypeStroke);
        QTest::newRow("eraser") << qint64(4) << qint64(2) << qint64(DoodleActionTypeEraser);
        QTest::newRow("oval: ellipse") << qint64(5) << qint64(4) << qint64(DoodleActionTypeEllipse);
        QTest::newRow("rect: rectangle")
            << qint64(6) << qint64(3) << qint64(DoodleActionTypeRectangle);
        QTest::newRow("arrow") << qint64(7) << qint64(5) << qint64(DoodleActionTypeArrow);
        QTest::newRow("text") << qint64(8) << qint64(6) << qint64(-1);
    }
    void toolsSetTheModeAndMarkTheirButton()
    {
        QFETCH(qint64, button);
        QFETCH(qint64, mode);
        QFETCH(qint64, drawn);
        ToolBoard t;
        t.click(button);
        QCOMPARE(t.board.actionMode(), mode);
        QCOMPARE(t.marked(), QList<qint64>{button});
        if (drawn > 0) {
            t.drag();
            QCOMPARE(t.host.generated.value(0)->actionType(), drawn);
        }
        t.board.setActionMode(8); // a mode without a button leaves the marks
        QCOMPARE(t.marked(), QList<qint64>{button});
    }

    void pickersToggleAndOpenAboveTheirButton_data()
    {
        QTest::addColumn<QList<qint64>>("clicks");
        QTest::addColumn<qint64>("anchor"); // 0: none open
        QTest::addColumn<qint64>("pickerType");
        QTest::addColumn<int>("width");
        // Ten colours of 32 points make the colour picker 320 wide.
        QTest::newRow("colour") << QList<qint64>{2} << qint64(2) << qint64(0) << 320;
        QTest::newRow("pen") << QList<qint64>{3} << qint64(3) << qint64(1) << 128;
        QTest::newRow("eraser") << QList<qint64>{4} << qint64(4) << qint64(2) << 128;
        QTest::newRow("text") << QList<qint64>{8} << qint64(8) << qint64(3) << 128;
        QTest::newRow("pen twice") << QList<qint64>{3, 3} << qint64(0) << qint64(0) << 0;
        QTest::newRow("eraser, colour") << QList<qint64>{4, 2} << qint64(2) << qint64(0) << 320;
        QTest::newRow("pen, oval") << QList<qint64>{3, 5} << qint64(3) << qint64(1) << 128;
    }
    void pickersToggleAndOpenAboveTheirButton()
    {
        QFETCH(QList<qint64>, clicks);
        QFETCH(qint64, anchor);
        QFETCH(qint64, pickerType);
        QFETCH(int, width);
        ToolBoard t;
        for (qint64 type : clicks)
            t.click(type);
        const QList<ZQDoodleButtonView *> open = t.pickers();
        QCOMPARE(open.size(), anchor ? 1 : 0);
        if (!anchor)
            return;
        // Above its button, or moved left to stay clear of the floating button at 350.
        const int x = qMin(t.button(anchor)->mapTo(t.board.view(), QPoint()).x(), 346 - width);
        QCOMPARE(open.first()->type(), pickerType);
        QCOMPARE(open.first()->geometry(),
                 QRect(x, 420 - 9 - 32, width, 32)); // over the bar's two rows
        QTest::mousePress(t.board.view(), Qt::LeftButton, {}, {100, 100});
        QVERIFY(t.pickers().isEmpty()); // a touch beginning on the board closes it
    }

    void barAndPickersFitTheBoard_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<double>("scale");
        for (const int width : {320, 390, 800})
            for (const double scale : {1.0, 3.0})
                QTest::addRow("%d, scale %g", width, scale) << width << scale;
    }
    void barAndPickersFitTheBoard()
    {
        QFETCH(int, width);
        QFETCH(double, scale);
        DoodleScreen::setScaleOverride(scale);
        ToolBoard t;
        t.click(DoodleToolbarButtonTypeColour); // open while the board changes size
        t.board.resetDoodleViewFrame(QRect(0, 0, width, 700));
        const QRect board(0, 0, width, 700), floating(width - 50, 600, 44, 44);
        QCOMPARE(t.board.doodletoolButton()->geometry(), floating);
        const auto fits = [&](QWidget *w, const QList<ZQDoodleButton *> &parts, double least) {
            const QRect frame(w->mapTo(t.board.view(), QPoint()), w->size());
            QVERIFY2(board.contains(frame) && !frame.intersects(floating),
                     qPrintable(QString("%1 %2").arg(w->metaObject()->className()).arg(frame.x())));
            for (qsizetype i = 0; i < parts.size(); ++i) { // apart, inside, big enough
                const QRectF part = parts.at(i)->frame();
                QVERIFY(QRectF(w->rect()).contains(part) && part.width() >= least);
                if (i > 0)
                    QVERIFY(!parts.at(i - 1)->frame().intersects(part));
            }
        };
        fits(t.board.doodletoolbar(), t.board.doodletoolbar()->buttons(), 1);
        QVERIFY(t.board.doodletoolbar()->buttonSpacing() >= 2); // not crowded
        fits(t.pickers().value(0), t.pickers().value(0)->buttons(), 32);
        for (const qint64 anchor : {3, 4, 8, 2}) {
            t.click(anchor);
            fits(t.pickers().value(0), t.pickers().value(0)->buttons(), 32);
            // The designed place, above its button, wherever the board has room.
            if (width == 800)
                QCOMPARE(t.pickers().value(0)->x(),
                         t.button(anchor)->mapTo(t.board.view(), QPoint()).x());
        }
    }

    // The keyboard reaches every button and choice, Space and Enter press
    // them, Escape closes a picker, and the chosen tool is checked for
    // accessibility tools.
    void theKeyboardDrivesTheBar()
    {
        ToolBoard t;
        t.drag(); // something to undo and clear: their buttons take the focus too
        QCoreApplication::processEvents();
        QApplication::setActiveWindow(t.board.view());
        QList<qint64> reached;
        t.button(DoodleToolbarButtonTypeUndo)->setFocus(Qt::TabFocusReason);
        for (int i = 0; i < 13; ++i) {
            const auto *focused = qobject_cast<ZQDoodleButton *>(QApplication::focusWidget());
            reached << (focused ? focused->type() : -1);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(reached, QList<qint64>({1, 9, 2, 3, 4, 5, 6, 7, 8, 12, 10, 11, 0})); // 0: floating
        ZQDoodleButton *eraser = t.button(DoodleToolbarButtonTypeEraser);
        const QImage unfocused = rendered(eraser);
        eraser->setFocus(Qt::TabFocusReason);
        QVERIFY(rendered(eraser) != unfocused); // a ring shows where the keyboard is
        QTest::keyClick(eraser, Qt::Key_Space);
        QCOMPARE(t.board.actionMode(), qint64(2));
        ZQDoodleButtonView *picker = t.pickers().value(0);
        QCOMPARE(QApplication::focusWidget(), picker->buttons().at(0)); // the selected choice
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QTRY_COMPARE(t.board.eraserSelectIndex(), qint64(1));
        const auto checked = [](QWidget *w) {
            const QAccessible::State state = QAccessible::queryAccessibleInterface(w)->state();
            return state.checkable && state.checked;
        };
        QVERIFY(checked(picker->buttons().at(1)) && !checked(picker->buttons().at(0)));
        QVERIFY(checked(eraser) && !checked(t.button(DoodleToolbarButtonTypeWidth)));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QVERIFY(t.pickers().isEmpty());
        QCOMPARE(QApplication::focusWidget(), eraser);
    }

    void choicesReachTheToolStateAndTheNextPicker_data()
    {
        QTest::addColumn<qint64>("button");
        QTest::addColumn<int>("row");
        QTest::newRow("brush width") << qint64(3) << 2;
        QTest::newRow("eraser width") << qint64(4) << 3;
        QTest::newRow("text size") << qint64(8) << 1;
        QTest::newRow("colour") << qint64(2) << 4;
    }
    void choicesReachTheToolStateAndTheNextPicker()
    {
        QFETCH(qint64, button);
        QFETCH(int, row);
        ToolBoard t;
        t.click(button);
        ZQDoodleButtonView *picker = t.pickers().value(0);
        QTest::mouseClick(picker->buttons().at(row), Qt::LeftButton);
        QCOMPARE(t.pickers(), QList<ZQDoodleButtonView *>{picker}); // a choice keeps it open
        DoodleLayout &b = t.board;
        const QHash<qint64, std::pair<double, qint64>> chosen{
            {3, {b.brushWidth() - b.brushWidthArray().value(row), b.widthSelectIndex()}},
            {4, {b.eraserWidth() - b.eraserWidthArray().value(row), b.eraserSelectIndex()}},
            {8, {b.textSize() - b.textSizeArray().value(row), b.textSizeSelectIndex()}},
            {2, {b.brushColor() == picker->getColor() ? 0.0 : 1.0, b.colorSelectIndex()}}};
        QCOMPARE(chosen.value(button), std::make_pair(0.0, qint64(row)));
        if (button == DoodleToolbarButtonTypeColour) {
            // The bar's colour button shows it on the disc in (8, 8, w - 22, h - 22).
            const QImage icon = t.button(button)->normalImage();
            const QSizeF disc = icon.deviceIndependentSize() - QSizeF(22, 22);
            const QPointF centre = QPointF(8, 8) + QPointF(disc.width(), disc.height()) / 2;
            QCOMPARE(icon.pixelColor((centre * 2).toPoint()), picker->getColor());
        }
        t.click(button); // closed, then open again
        t.click(button);
        QCOMPARE(t.pickers().value(0)->selectIndex(), qint64(row));
    }

    void hostPlacedColourControlsSetTheColour()
    {
        ToolBoard t;
        ZQColourToolbar strip(QRect(0, 0, 400, 40));
        strip.setDelegate(&t.board); // the host set no colour button: still taken
        QTest::mouseClick(strip.buttons().at(3), Qt::LeftButton);
        QCOMPARE(t.board.brushColor(), strip.currentColor());
        t.click(DoodleToolbarButtonTypeColour);
        BrushColorView palette(QRect(0, 0, 220, 80), Qt::black);
        palette.setDelegate(&t.board);
        QTest::mouseClick(palette.swatchWithTag(1), Qt::LeftButton);
        QCOMPARE(t.board.brushColor(), BrushColorView::brushColorArray().first());
        QVERIFY(t.pickers().isEmpty()); // the board's colour picker closed
    }

    void commandsFromTheBar_data()
    {
        QTest::addColumn<qint64>("button");
        QTest::addColumn<QStringList>("heard");
        QTest::addColumn<int>("left"); // drawings left on the board
        QTest::newRow("undo") << qint64(1) << QStringList{"generated 258"} << 0;
        QTest::newRow("clear") << qint64(9)
                               << QStringList{"generated 259", "willClean", "cleared me"} << 0;
        QTest::newRow("save") << qint64(10) << QStringList{} << 1;
        QTest::newRow("close") << qint64(11) << QStringList{"pause", "close"} << 0;
    }
    void commandsFromTheBar()
    {
        QFETCH(qint64, button);
        QFETCH(QStringList, heard);
        QFETCH(int, left);
        QWidget window;
        ToolBoard t;
        t.board.view()->setParent(&window);
        int saved = 0;
        t.board.setPictureSink([&saved](const QImage &) { ++saved; });
        t.board.setConfirmsClear(false);
        t.drag();
        QCoreApplication::processEvents(); // as between two taps: the bar follows the board
        t.host.calls.clear();
        t.click(button);
        QCOMPARE(t.host.calls, heard);
        QCOMPARE(t.board.getAllPath().size(), left);
        QCOMPARE(saved, button == DoodleToolbarButtonTypeSave ? 1 : 0);
        QCOMPARE(!t.board.view()->parentWidget(), button == DoodleToolbarButtonTypeClose);
    }

    // Undo and clear are unavailable with nothing to do, and the clear button
    // asks before it clears everybody's board.
    void clearAsksAndNothingIsSentThatDoesNothing_data()
    {
        QTest::addColumn<bool>("drawn");
        QTest::addColumn<bool>("accept");
        QTest::addColumn<QStringList>("heard");
        QTest::newRow("yes") << true << true
                             << QStringList{"generated 259", "willClean", "cleared me"};
        QTest::newRow("no") << true << false << QStringList{};
        QTest::newRow("empty board") << false << true << QStringList{};
    }
    void clearAsksAndNothingIsSentThatDoesNothing()
    {
        QFETCH(bool, drawn);
        QFETCH(bool, accept);
        QFETCH(QStringList, heard);
        ToolBoard t;
        const auto available = [&t] {
            QCoreApplication::processEvents();
            return QList<bool>{t.button(DoodleToolbarButtonTypeUndo)->isEnabled(),
                               t.button(DoodleToolbarButtonTypeClear)->isEnabled()};
        };
        QCOMPARE(available(), QList<bool>({false, false}));
        t.host.calls.clear();
        if (drawn)
            t.drag();
        QCOMPARE(available(), QList<bool>({drawn, drawn}));
        t.click(DoodleToolbarButtonTypeUndo);
        t.click(DoodleToolbarButtonTypeClear);
        QVERIFY(t.host.calls.filter("generated").size() <= 2); // the drag and its undo
        if (drawn) {
            QCOMPARE(t.host.calls.takeLast(), "generated 258");
            t.drag();
            QCOMPARE(available(), QList<bool>({true, true}));
            t.host.calls.clear();
            t.click(DoodleToolbarButtonTypeClear);
        }
        auto *question = t.board.view()->findChild<QDialog *>();
        QCOMPARE(bool(question), drawn);
        QVERIFY(t.host.calls.isEmpty()); // nothing happens before the answer
        if (question)
            accept ? question->accept() : question->reject();
        QCOMPARE(t.host.calls, heard);
        QCOMPARE(t.board.getAllPath().isEmpty(), accept || !drawn);
        QCOMPARE(available(), QList<bool>({drawn && !accept, drawn && !accept}));
    }
};

QTEST_MAIN(TestDoodleLayoutToolbar)
#include "tst_DoodleLayoutToolbar.moc"
