// The option picker and the colour tool bar: their choices read from the
// bundle's tables, where they sit, how they look, and what a tap reports.
#include "ToolbarTesting.h"

#include <doodle/support/DoodleScreen.h>
#include <doodle/toolbar/ZQColourToolbar.h>
#include <doodle/toolbar/ZQDoodleButton.h>
#include <doodle/toolbar/ZQDoodleButtonView.h>

namespace {

// What a picker reported: itself, the index and its type.
using Choice = std::tuple<ZQDoodleButtonView *, qint64, qint64>;

struct RecordingDelegate : ZQDoodleButtonViewDelegate, ColourToolbarDelegate
{
    QList<Choice> choices;
    QList<QColor> colours;
    void doodleButtonView(ZQDoodleButtonView *picker, qint64 index, qint64 type) override
    {
        choices.append({picker, index, type});
    }
    void colourToolbar(ZQColourToolbar *, const QColor &colour) override { colours << colour; }
};

// A picker 32 high, as the board opens it, on a board counting the presses it gets.
struct ShownPicker
{
    ShownPicker(qint64 type, int width, qint64 selectIndex = 0,
                const QColor &colour = QColor(Qt::blue))
        : picker(
              new ZQDoodleButtonView(QRect(10, 10, width, 32), selectIndex, type, colour, &board))
    {
        picker->setDelegate(&delegate);
        board.resize(300, 100);
        board.show();
        if (!QTest::qWaitForWindowExposed(&board))
            qWarning("the picker's window was not exposed");
    }
    ZQDoodleButton *choice(int index) const { return picker->buttons().at(index); }
    RecordingDelegate delegate;
    PressCounter board;
    ZQDoodleButtonView *picker;
};

} // namespace

class TestOptionPickers : public QObject
{
    Q_OBJECT
private slots:
    void init() { DoodleScreen::setScaleOverride(1); }
    void cleanup() { DoodleScreen::setScaleOverride(0); }

    // Each choice takes taps in a cell of 32 points, its dot at its own size in
    // the middle; the cells sit centred in one row, or two in a taller picker.
    void choicesSitInCellsAFingerHits_data()
    {
        QTest::addColumn<qint64>("type");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QList<QPointF>>("cells"); // top left of the first, the second, the last
        QTest::addColumn<QList<double>>("sides");
        QTest::newRow("colours") << qint64(ZQDoodleButtonViewTypeColour) << QSize(320, 32)
                                 << QList<QPointF>({{0, 0}, {32, 0}, {288, 0}})
                                 << QList<double>(10, 14);
        QTest::newRow("colours, two rows")
            << qint64(ZQDoodleButtonViewTypeColour) << QSize(170, 64)
            << QList<QPointF>({{5, 0}, {37, 0}, {133, 32}}) << QList<double>(10, 14);
        // Narrower than it asks for: the designed step, the dots where they were.
        QTest::newRow("colours, 220 wide")
            << qint64(ZQDoodleButtonViewTypeColour) << QSize(220, 32)
            << QList<QPointF>({{0, 0}, {22, 0}, {198, 0}}) << QList<double>(10, 14);
        QTest::newRow("brush widths")
            << qint64(ZQDoodleButtonViewTypeBrushWidth) << QSize(128, 32)
            << QList<QPointF>({{0, 0}, {32, 0}, {96, 0}}) << QList<double>({10, 12, 14, 16});
        QTest::newRow("text sizes")
            << qint64(ZQDoodleButtonViewTypeTextSize) << QSize(140, 32)
            << QList<QPointF>({{6, 0}, {38, 0}, {102, 0}}) << QList<double>({12, 14, 16, 18});
    }
    void choicesSitInCellsAFingerHits()
    {
        QFETCH(qint64, type);
        QFETCH(QSize, size);
        QFETCH(QList<QPointF>, cells);
        QFETCH(QList<double>, sides);
        ShownPicker shown(type, size.width());
        shown.picker->resize(size);
        const QList<ZQDoodleButton *> choices = shown.picker->buttons();
        QCOMPARE(choices.size(), sides.size());
        const QList<ZQDoodleButton *> probed{choices.at(0), choices.at(1), choices.last()};
        const double pitch = cells.at(1).x() - cells.at(0).x();
        for (int i = 0; i < 3; ++i)
            QCOMPARE(probed.at(i)->frame(), QRectF(cells.at(i), QSizeF(pitch, 32)));
        for (int i = 0; i < choices.size(); ++i) {
            const QRectF dot = choices.at(i)->tileRect();
            QCOMPARE(dot.size(), QSizeF(sides.at(i), sides.at(i)));
            QCOMPARE(dot.center(), QPointF(pitch / 2, 16));
        }
        QCOMPARE(shown.picker->cornerRadius(), 16.0);
    }

    void aTapReportsTheEntryAndItsValueOnce_data()
    {
        QTest::addColumn<qint64>("type");
        QTest::addColumn<double>("scale");
        QTest::addColumn<Input>("input");
        QTest::addColumn<QList<double>>("values");
        QTest::newRow("brush, scale 2, touch")
            << qint64(1) << 2.0 << Input::Touch << QList<double>({2, 3, 5, 8});
        QTest::newRow("eraser, scale 2, mouse")
            << qint64(2) << 2.0 << Input::Mouse << QList<double>({10, 16, 24, 32});
        QTest::newRow("text, scale 3, stylus")
            << qint64(3) << 3.0 << Input::Stylus << QList<double>({16, 20, 26, 32});
    }
    void aTapReportsTheEntryAndItsValueOnce()
    {
        QFETCH(qint64, type);
        QFETCH(double, scale);
        QFETCH(Input, input);
        QFETCH(QList<double>, values);
        DoodleScreen::setScaleOverride(scale);
        ShownPicker shown(type, 140, 1); // 128 of choices, 6 to spare at each end
        QCOMPARE(shown.picker->getWidth(), 0.0);
        for (const int index : {3, 0, 2}) {
            tap(shown.choice(index), input);
            QCOMPARE(shown.picker->getWidth(), values.at(index));
            QCOMPARE(shown.picker->selectIndex(), index);
        }
        tap(shown.choice(2), input); // already selected: nothing
        // Nor beside the choices, and the board below never hears of a tap.
        const QPoint gap(2, 16);
        QWidget *under = shown.picker->childAt(gap);
        QVERIFY(under && !shown.picker->buttons().contains(under));
        tap(under, input, under->mapFrom(shown.picker, gap));
        QCOMPARE(shown.board.presses, 0);
        ZQDoodleButtonView *p = shown.picker;
        QCOMPARE(shown.delegate.choices, QList<Choice>({{p, 3, type}, {p, 0, type}, {p, 2, type}}));
    }

    // Every dot is filled in its colour (the table's, the brush's, white for the
    // eraser), outlined on the dark pill; a ring past a gap marks the selected one.
    void theDotsAndTheMarkShowOnThePill_data()
    {
        QTest::addColumn<qint64>("type");
        QTest::addColumn<QColor>("brush");
        QTest::addColumn<int>("selected");
        QTest::addColumn<QList<QColor>>("fills"); // of the first four dots
        const QList<QColor> table{Qt::black, Qt::white, {0xFF, 0x3B, 0x30}, {0xFF, 0x95, 0x00}};
        const QList<QColor> black(4, Qt::black), white(4, Qt::white);
        QTest::newRow("colours, black chosen") << qint64(0) << QColor(Qt::blue) << 0 << table;
        QTest::newRow("colours, white chosen") << qint64(0) << QColor(Qt::blue) << 1 << table;
        QTest::newRow("widths, black brush") << qint64(1) << QColor(Qt::black) << 0 << black;
        QTest::newRow("widths, white brush") << qint64(1) << QColor(Qt::white) << 2 << white;
        QTest::newRow("eraser widths") << qint64(2) << QColor(Qt::blue) << 3 << white;
    }
    void theDotsAndTheMarkShowOnThePill()
    {
        QFETCH(qint64, type);
        QFETCH(QColor, brush);
        QFETCH(int, selected);
        QFETCH(QList<QColor>, fills);
        ShownPicker shown(type, type == 0 ? 320 : 128, selected, brush);
        // A colour picker starts from the table's first colour, not the one given.
        QCOMPARE(shown.picker->getColor(), type == 0 ? fills.first() : brush);
        for (const int chosen : {selected, (selected + 1) % 4}) { // the mark moves with a tap
            tap(shown.choice(chosen), Input::Mouse);
            if (type == 0 && chosen != selected)
                QCOMPARE(shown.picker->getColor(), fills.at(chosen));
            const QImage image = rendered(shown.picker);
            const auto opaque = [&image](QPointF at) { return QColor(colourAt(image, at).rgb()); };
            const auto pillLike = [&](QPointF at, int tolerance) {
                return closeColours(opaque(at), opaque({32, 3}), tolerance);
            };
            for (int i = 0; i < shown.picker->buttons().size(); ++i) {
                const QPointF centre = shown.choice(i)->frame().center();
                const double half = shown.choice(i)->tileRect().width() / 2;
                if (i < fills.size())
                    QCOMPARE(colourAt(image, centre), fills.at(i));
                QVERIFY2(!pillLike(centre + QPointF(half - 0.5, 0), 150), "outline");
                QCOMPARE(!pillLike(centre + QPointF(half + 3, 0), 150), i == chosen);
                QVERIFY2(pillLike(centre + QPointF(half + 1, 0), 59), "gap");
            }
        }
    }

    void hexTextsDecodeToOpaqueColoursOrClear_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("blanks around") << " #ff0000 " << QColor(255, 0, 0);
        QTest::newRow("0x and #") << "0x#0000ff" << QColor(0, 0, 255);
        QTest::newRow("three digits") << "#FFF" << QColor(Qt::transparent);
        QTest::newRow("eight digits") << "FF000000" << QColor(Qt::transparent);
    }
    void hexTextsDecodeToOpaqueColoursOrClear()
    {
        QFETCH(QString, text);
        QFETCH(QColor, colour);
        QCOMPARE(ZQDoodleButtonView::colorWithHexString(text), colour);
    }

    // Swatches sit centred as a group, each a disc in its colour drawn at the
    // screen's scale, the selected one with a gap and a ring; a tap reports
    // the colour and hides the bar, once.
    void swatchesSitCentredAndATapReportsOnce_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<double>("left");
        QTest::addColumn<Input>("input");
        QTest::addColumn<double>("scale");
        QTest::newRow("room to spare, touch, 1x") << 560 << 14.0 << Input::Touch << 1.0;
        QTest::newRow("too narrow, stylus, 2x") << 300 << -116.0 << Input::Stylus << 2.0;
        QTest::newRow("room to spare, mouse, 3x") << 560 << 14.0 << Input::Mouse << 3.0;
    }
    void swatchesSitCentredAndATapReportsOnce()
    {
        QFETCH(int, width);
        QFETCH(double, left);
        QFETCH(Input, input);
        QFETCH(double, scale);
        DoodleScreen::setScaleOverride(scale);
        ZQColourToolbar bar(QRect(0, 0, width, 40));
        RecordingDelegate delegate;
        bar.setDelegate(&delegate);
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        QCOMPARE(bar.buttons().size(), 10);
        for (int i = 0; i < 10; ++i)
            QCOMPARE(bar.buttons().at(i)->frame(), QRectF(left + 56 * i, 6, 28, 28));
        const QColor orange(0xFF, 0x95, 0x00);
        const ZQDoodleButton *swatch = bar.buttons().at(3);
        // Across the swatch from its centre: disc, then a gap and a ring when selected.
        const auto profile = [](const QImage &image) {
            QList<int> alphas;
            for (const double x : {14.0, 21.0, 23.5, 26.0})
                alphas << (colourAt(image, {x, 14}).alpha() > 128 ? 1 : 0);
            return alphas;
        };
        QCOMPARE(profile(swatch->normalImage()), QList<int>({1, 1, 1, 0}));
        QCOMPARE(profile(swatch->selectedImage()), QList<int>({1, 1, 0, 1}));
        QVERIFY(closeColours(colourAt(swatch->normalImage(), {14, 14}), orange));
        // The ring's edge pixels are partly covered; their colour is the swatch's.
        QVERIFY(closeColours(QColor(colourAt(swatch->selectedImage(), {26, 14}).rgb()), orange));
        QCOMPARE(bar.currentColor(), QColor(Qt::black));
        QVERIFY(bar.curBrushButton() == bar.buttons().first() &&
                bar.curBrushButton()->isSelected());
        tap(bar.buttons().at(3), input);
        QVERIFY(bar.isHidden());
        bar.show();
        tap(bar.buttons().at(3), input);
        QVERIFY(!bar.isHidden());
        QCOMPARE(delegate.colours, QList<QColor>({orange}));
        QCOMPARE(bar.currentColor(), orange);
        for (int i = 0; i < bar.buttons().size(); ++i)
            QCOMPARE(bar.buttons().at(i)->isSelected(), i == 3);
    }
};

QTEST_MAIN(TestOptionPickers)
#include "tst_OptionPickers.moc"
