// The three controls offered to hosts: the width preview with its slider, the
// ten-colour picker with its forgiving touch targets, and the colour button.
#include "ToolbarTesting.h"

#include <QAccessible>
#include <QAccessibleValueInterface>

#include <doodle/support/DoodleScreen.h>
#include <doodle/toolbar/BrushColorButton.h>
#include <doodle/toolbar/BrushColorView.h>
#include <doodle/toolbar/BrushLineView.h>
#include <doodle/toolbar/ZQDoodleButton.h>

namespace {

struct RecordingDelegate : BrushColorViewDelegate
{
    QList<QColor> colours;
    void brushColorView(BrushColorView *, const QColor &colour) override { colours << colour; }
};

const QList<QColor> palette = BrushColorView::brushColorArray();

} // namespace

class TestBrushControls : public QObject
{
    Q_OBJECT
private slots:
    void init() { DoodleScreen::setScaleOverride(1); }
    void cleanup() { DoodleScreen::setScaleOverride(0); }

    void thePreviewFollowsTheSliderAroundItsCentre_data()
    {
        QTest::addColumn<Input>("input");
        QTest::addColumn<int>("to");
        QTest::addColumn<double>("width");
        // The slider is 126 wide; its 28-point thumb travels from 14 to 112.
        QTest::newRow("mouse to the end") << Input::Mouse << 200 << 22.0;
        QTest::newRow("touch to the start") << Input::Touch << 0 << 2.0;
        QTest::newRow("stylus to the middle") << Input::Stylus << 63 << 12.0;
    }
    void thePreviewFollowsTheSliderAroundItsCentre()
    {
        QFETCH(Input, input);
        QFETCH(int, to);
        QFETCH(double, width);
        BrushLineView view(QRect(0, 0, 200, 44), Qt::red, 8);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QCOMPARE(view.previewRect(), QRectF(21.2, 18, 8, 8));
        QWidget *slider = view.widthSlider();
        QCOMPARE(slider->geometry(), QRect(50, 0, 126, 44));
        drag(slider, input, {{40, 22}, {(40 + to) / 2, 22}, {to, 22}, {to, 22}});
        QCOMPARE(view.getWidth(), width);
        QCOMPARE(view.previewRect().size(), QSizeF(width, width));
        QCOMPARE(view.previewRect().center(), QPointF(25.2, 22));
        // Even a disc 2 across colours the pixel under its centre.
        const QColor centre = colourAt(rendered(&view), view.previewRect().center());
        QVERIFY2(centre.red() > 200 && centre.green() < 40, qPrintable(centre.name()));
    }

    // An outline, seen on the dark view even in black (a white ring outside it).
    void theEraserPreviewIsAnOutlineThatShows()
    {
        for (const QColor &given : {QColor(), QColor(Qt::black)}) {
            BrushLineView view(QRect(0, 0, 200, 44), given, 20);
            const QColor shown = given.isValid() ? given : QColor(Qt::white);
            QCOMPARE(view.color(), shown);
            const QColor background = colourAt(rendered(&view), {100, 4});
            view.setType(1);
            const QImage image = rendered(&view);
            QCOMPARE(colourAt(image, {25, 22}), background);
            int lightest = 0; // across the top edge of the disc (12 to 13) and just outside it
            for (const double y : {10.5, 11.5, 12.5})
                lightest = std::max(lightest, colourAt(image, {25.2, y}).lightness());
            QVERIFY(lightest > 180);
            view.setType(0);
            QCOMPARE(colourAt(rendered(&view), {25, 22}), shown);
        }
    }

    void theArrowKeysMoveTheSlider()
    {
        BrushLineView view(QRect(0, 0, 200, 44), Qt::red, 8);
        view.show();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QWidget *slider = view.widthSlider();
        QVERIFY(slider->focusPolicy() & Qt::TabFocus);
        slider->setFocus(Qt::TabFocusReason);
        const QList<std::pair<Qt::Key, double>> steps{{Qt::Key_Right, 9},     {Qt::Key_Down, 8},
                                                      {Qt::Key_End, 22},      {Qt::Key_Up, 22},
                                                      {Qt::Key_PageDown, 17}, {Qt::Key_Home, 2}};
        for (const auto &[key, width] : steps) {
            QTest::keyClick(slider, key);
            QCOMPARE(view.getWidth(), width);
            QCOMPARE(view.previewRect().size(), QSizeF(width, width));
        }
        // Screen readers see a slider, with its value, which they may set too.
        QAccessibleInterface *reader = QAccessible::queryAccessibleInterface(slider);
        QCOMPARE(reader->role(), QAccessible::Slider);
        reader->valueInterface()->setCurrentValue(6.0f);
        QCOMPARE(view.getWidth(), 6.0);
    }

    // Two rows of five swatches in their palette colours; the given colour's is
    // ringed, for good, and reported on hiding. A tap, even between swatches,
    // picks the nearest; straight above a centre its radicand is negative.
    void swatchesAreRingedAndTheNearestIsPicked_data()
    {
        QTest::addColumn<QColor>("given");
        QTest::addColumn<int>("ringed");
        QTest::addColumn<Input>("input");
        QTest::addColumn<QPoint>("at");
        QTest::addColumn<int>("picked");
        const QColor blue(1, 130, 255), other(1, 2, 3);
        QTest::newRow("on a swatch, mouse") << blue << 5 << Input::Mouse << QPoint(150, 60) << 9;
        QTest::newRow("right of the first, stylus, colour not in the palette")
            << other << 0 << Input::Stylus << QPoint(45, 23) << 1;
        QTest::newRow("above the first, touch") << blue << 5 << Input::Touch << QPoint(30, 5) << 2;
    }
    void swatchesAreRingedAndTheNearestIsPicked()
    {
        QFETCH(QColor, given);
        QFETCH(int, ringed);
        QFETCH(Input, input);
        QFETCH(QPoint, at);
        QFETCH(int, picked);
        RecordingDelegate delegate;
        BrushColorView view(QRect(0, 0, 220, 80), given); // swatches 20 across
        view.setDelegate(&delegate);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QCOMPARE(view.selectedTag(), ringed);
        QCOMPARE(view.swatchWithTag(1)->frame(), QRectF(20, 40 / 3.0, 20, 20));
        QCOMPARE(view.swatchWithTag(10)->frame(), QRectF(180, 20 + 80 / 3.0, 20, 20));
        const QImage image = rendered(&view);
        for (int t = 1; t <= 10; ++t)
            QCOMPARE(colourAt(image, view.swatchWithTag(t)->frame().center()), palette.at(t - 1));
        view.hide();
        QCOMPARE(delegate.colours,
                 ringed ? QList<QColor>({palette.at(ringed - 1)}) : QList<QColor>());
        delegate.colours.clear();
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        // A tie keeps the lower tag; outside the picker there is nothing.
        QCOMPARE(view.hitTest({50, 70 / 3.0}), view.swatchWithTag(1));
        QCOMPARE(view.hitTest({-1, 10}), nullptr);
        QWidget *target = view.childAt(at) ? view.childAt(at) : &view;
        tap(target, input, target->mapFrom(&view, at));
        QCOMPARE(delegate.colours, QList<QColor>({palette.at(picked - 1)}));
        QCOMPARE(view.selectedTag(), picked);
        QVERIFY(view.swatchWithTag(picked)->isSelected());
        for (int t = 1; t <= 10; ++t)
            QCOMPARE(view.swatchWithTag(t)->borderWidth(), t == ringed ? 2.0 : 0.0);
    }

    // The colour button is a disc as large as its shorter side, and clicks on
    // every kind of tap.
    void theColourButton_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRectF>("disc");
        QTest::addColumn<Input>("input");
        QTest::newRow("wide, mouse") << QSize(40, 30) << QRectF(5, 0, 30, 30) << Input::Mouse;
        QTest::newRow("tall, touch") << QSize(30, 50) << QRectF(0, 10, 30, 30) << Input::Touch;
        QTest::newRow("round, stylus") << QSize(40, 40) << QRectF(0, 0, 40, 40) << Input::Stylus;
    }
    void theColourButton()
    {
        QFETCH(QSize, size);
        QFETCH(QRectF, disc);
        QFETCH(Input, input);
        BrushColorButton button;
        button.setTintColor(Qt::green);
        button.resize(size);
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        QCOMPARE(button.discRect(), disc);
        const QPointF edge(disc.left() + 1, disc.center().y());
        QCOMPARE(colourAt(rendered(&button), disc.center()), QColor(Qt::green));
        QCOMPARE(colourAt(rendered(&button), edge), QColor(Qt::green));
        QCOMPARE(colourAt(rendered(&button), {disc.left() + 2, disc.top() + 2}).alpha(), 0);
        button.setSelected(true);
        QCOMPARE(button.discBorderWidth(), 2.0);
        QCOMPARE(colourAt(rendered(&button), edge), QColor(Qt::white));
        button.setSelected(false);
        QCOMPARE(colourAt(rendered(&button), edge), QColor(Qt::green));
        QSignalSpy clicks(&button, &BrushColorButton::clicked);
        tap(&button, input);
        QCOMPARE(clicks.size(), 1);
    }
};

QTEST_MAIN(TestBrushControls)
#include "tst_BrushControls.moc"
