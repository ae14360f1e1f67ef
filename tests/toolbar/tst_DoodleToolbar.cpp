// The main tool bar: its buttons, their places, marks and colours, and the
// taps it reports, driven with the mouse, a finger and a stylus.
#include "ToolbarTesting.h"

#include <doodle/support/DoodleScreen.h>
#include <doodle/toolbar/ZQDoodleButton.h>
#include <doodle/toolbar/ZQDoodleToolbar.h>

namespace {

struct Tap
{
    ZQDoodleToolbar *bar;
    ZQDoodleButton *button;
    qint64 type;
};

struct RecordingDelegate : DoodleToolbarDelegate
{
    QList<Tap> taps;
    void doodleToolbar(ZQDoodleToolbar *bar, ZQDoodleButton *button, qint64 type) override
    {
        taps.append({bar, button, type});
    }
};

// A shown bar of the given size, laid out, on a board that counts the
// presses reaching it.
struct ShownBar
{
    explicit ShownBar(const QSize &size = QSize(400, 30), qint32 mode = 0)
    {
        bar->setActionMode(mode);
        bar->setDelegate(&delegate);
        bar->setGeometry(QRect(QPoint(16, 50), size));
        board.resize(500, 100);
        board.show();
        if (!QTest::qWaitForWindowExposed(&board))
            qWarning("the board's window was not exposed");
        bar->layoutSubviews();
    }
    ZQDoodleButton *button(qint64 type) const { return ofType(bar->buttons(), type); }
    RecordingDelegate delegate;
    PressCounter board;
    ZQDoodleToolbar *bar = new ZQDoodleToolbar(false, &board);
};

// The part of an image in light strokes, as an icon is drawn on the dark bar.
double lit(const QImage &image)
{
    return coverage(image, [](QRgb p) { return QColor::fromRgba(p).lightness() > 200; });
}

} // namespace

class TestDoodleToolbar : public QObject
{
    Q_OBJECT
private slots:
    void init() { DoodleScreen::setScaleOverride(1); }
    void cleanup() { DoodleScreen::setScaleOverride(0); }

    void elementsSitWhereTheLayoutPutsThem_data()
    {
        QTest::addColumn<bool>("horizontal"); // a bar 400 x 44, else 400 x 600
        QTest::addColumn<double>("buttonSide");
        QTest::addColumn<int>("index");
        QTest::addColumn<QRectF>("frame");
        // Twelve buttons and two dividers: the spacing is (400 - 12 * 30 - 2) / 14.
        QTest::newRow("row: first divider")
            << true << 30.0 << 2 << QRectF(66.785714030265808, 11, 1, 22);
        QTest::newRow("row: after a divider")
            << true << 30.0 << 3 << QRectF(70.499999642372131, 7, 30, 30);
        QTest::newRow("row: close") << true << 30.0 << 13 << QRectF(368.64285576343536, 7, 30, 30);
        // Smaller buttons leave the spacing as it was: it counts 30 a button.
        QTest::newRow("row: 24-point buttons")
            << true << 24.0 << 3 << QRectF(58.499999642372131, 10, 24, 24);
        QTest::newRow("column: divider as wide as half the bar")
            << false << 30.0 << 2 << QRectF(100, 69.14285683631897, 1, 200);
        QTest::newRow("column: 24-point buttons")
            << false << 24.0 << 0 << QRectF(188, 4.7142856121063232, 24, 24);
    }
    void elementsSitWhereTheLayoutPutsThem()
    {
        QFETCH(bool, horizontal);
        QFETCH(double, buttonSide);
        QFETCH(int, index);
        QFETCH(QRectF, frame);
        ZQDoodleToolbar bar;
        bar.setHorizontal(horizontal);
        bar.setButtonSize(QSizeF(buttonSide, buttonSide));
        bar.resize(400, horizontal ? 44 : 600);
        bar.show(); // a shown bar lays itself out
        const ZQDoodleButton *element = bar.buttons().at(index);
        QCOMPARE(element->frame(), frame);
        QCOMPARE(element->geometry(), frame.toRect());
    }

    void aLayoutMarksTheActionModesTool_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<qint64>("selected");
        QTest::newRow("none") << 0 << qint64(0);
        QTest::newRow("rectangle") << 3 << qint64(DoodleToolbarButtonTypeRect);
        QTest::newRow("ellipse") << 4 << qint64(DoodleToolbarButtonTypeOval);
        QTest::newRow("text") << 6 << qint64(DoodleToolbarButtonTypeText);
        QTest::newRow("laser") << 7 << qint64(DoodleToolbarButtonTypeLaser);
        QTest::newRow("unknown") << 8 << qint64(0);
    }
    void aLayoutMarksTheActionModesTool()
    {
        QFETCH(int, mode);
        QFETCH(qint64, selected);
        ShownBar shown(QSize(400, 30), 1);
        shown.button(DoodleToolbarButtonTypeOval)->setSelected(true); // lost at the next layout
        shown.bar->setActionMode(mode);
        QCOMPARE(shown.button(DoodleToolbarButtonTypeWidth)->isSelected(), true); // not yet
        shown.bar->layoutSubviews();
        for (ZQDoodleButton *button : shown.bar->buttons()) {
            QCOMPARE(button->isSelected(), button->type() == selected);
            if (button->isSelected())
                QCOMPARE(button->currentImage(), button->selectedImage());
        }
    }

    void tapsReportTheButtonAndItsTypeOnly_data() { addInputRows(); }
    void tapsReportTheButtonAndItsTypeOnly()
    {
        QFETCH(Input, input);
        ShownBar shown(QSize(400, 30), 1);
        QList<qint64> reported;
        for (ZQDoodleButton *button : shown.bar->buttons()) {
            const qsizetype before = shown.delegate.taps.size();
            tap(button, input);
            if (shown.delegate.taps.size() == before)
                continue;
            const Tap &last = shown.delegate.taps.constLast();
            QCOMPARE(last.bar, shown.bar);
            QCOMPARE(last.button, button);
            reported << last.type;
        }
        // Dividers report nothing, and the bar keeps no tool of its own.
        QCOMPARE(reported, QList<qint64>({1, 9, 2, 3, 4, 5, 6, 7, 8, 12, 10, 11}));
        QCOMPARE(shown.board.presses, 0); // nothing reached the board below
        QVERIFY(shown.button(DoodleToolbarButtonTypeWidth)->isSelected());
        QVERIFY(!shown.button(DoodleToolbarButtonTypeOval)->isSelected());
    }

    void aTapThatLaysTheBarOutAgainIsSafe()
    {
        ShownBar shown;
        QObject::connect(shown.button(DoodleToolbarButtonTypeClose), &ZQDoodleButton::clicked,
                         shown.bar, [&] { shown.bar->layoutSubviews(); });
        QPointer<ZQDoodleButton> old = shown.button(DoodleToolbarButtonTypeClose);
        tap(old, Input::Mouse);
        QCOMPARE(shown.delegate.taps.size(), 1);
        QVERIFY(!shown.bar->buttons().contains(old.data()));
        QVERIFY(!shown.bar->findChildren<ZQDoodleButton *>().contains(old.data()));
        QTRY_VERIFY(old.isNull());
    }

    // The controller's way to show undo or clear unavailable: dimmed and deaf,
    // also after a layout has built the buttons anew.
    void aDisabledButtonIsDimmedAcrossLayouts()
    {
        ShownBar shown;
        const double enabled = lit(rendered(shown.button(DoodleToolbarButtonTypeUndo)));
        shown.bar->setButtonEnabled(DoodleToolbarButtonTypeUndo, false);
        shown.bar->layoutSubviews();
        ZQDoodleButton *undo = shown.button(DoodleToolbarButtonTypeUndo);
        QVERIFY(!undo->isEnabled() && shown.button(DoodleToolbarButtonTypeClear)->isEnabled());
        QVERIFY(lit(rendered(undo)) < enabled / 2);
        tap(undo, Input::Mouse);
        QVERIFY(shown.delegate.taps.isEmpty());
        shown.bar->setButtonEnabled(DoodleToolbarButtonTypeUndo, true);
        QVERIFY(undo->isEnabled());
    }

    // The disc shows the colour set for the button, until a layout paints the
    // bar's own brush colour.
    void theColourButtonShowsAColourDiscBehindItsIcon()
    {
        ShownBar shown;
        const auto disc = [&shown](bool selected = false) {
            const ZQDoodleButton *colour = shown.button(DoodleToolbarButtonTypeColour);
            return colourAt(selected ? colour->selectedImage() : colour->normalImage(), {19, 19});
        };
        QCOMPARE(disc().alpha(), 0); // no colour yet: the ring's middle is empty
        QVERIFY(shown.button(DoodleToolbarButtonTypeColour)->selectedImage().isNull());
        shown.bar->setColourButton(Qt::green);
        QCOMPARE(disc(), QColor(Qt::green));
        QCOMPARE(disc(true), QColor(Qt::green));
        QVERIFY(!shown.bar->brushColor().isValid());
        shown.bar->setBrushColor(Qt::red);
        QCOMPARE(disc(), QColor(Qt::green));
        shown.bar->layoutSubviews();
        QCOMPARE(disc(), QColor(Qt::red));
    }

    void everyToolShowsItsIconAtEveryScale_data() { addScaleRows(); }
    void everyToolShowsItsIconAtEveryScale()
    {
        QFETCH(double, scale);
        DoodleScreen::setScaleOverride(scale);
        ShownBar shown(QSize(400, 30), 1);
        for (ZQDoodleButton *button : shown.bar->buttons()) {
            if (button->type() == DoodleToolbarButtonTypeDivider)
                continue;
            const QByteArray name = button->accessibleName().toLatin1();
            QCOMPARE(button->normalImage().devicePixelRatio(), scale);
            const double drawn = lit(rendered(button, scale)); // a part, in light strokes
            QVERIFY2(drawn > 0.03 && drawn < 0.6, name);
            // A selected tool is a filled tile, clearly not its line icon.
            if (!button->selectedImage().isNull()) {
                QVERIFY2(coverage(button->normalImage()) < 0.35, name);
                QVERIFY2(coverage(button->selectedImage()) > 0.75, name);
            }
        }
    }
};

QTEST_MAIN(TestDoodleToolbar)
#include "tst_DoodleToolbar.moc"
