#pragma once

// Taps as a user makes them, and what a user sees of an image.
#include <QImage>
#include <QPointingDevice>
#include <QTabletEvent>
#include <QWidget>
#include <QtTest>

#include <algorithm>
#include <functional>

enum class Input
{
    Mouse,
    Touch,
    Stylus
};
Q_DECLARE_METATYPE(Input)

inline QPointingDevice *touchscreen()
{
    static QPointingDevice *device = QTest::createTouchDevice();
    return device;
}

inline void addInputRows()
{
    QTest::addColumn<Input>("input");
    QTest::newRow("mouse") << Input::Mouse;
    QTest::newRow("touch") << Input::Touch;
    QTest::newRow("stylus") << Input::Stylus;
}

// Presses at the first point, moves through the others and lifts at the last
// (`lift` false leaves it pressed there), in `widget`'s coordinates. Touches
// go through the window, so `widget` must be shown.
inline void drag(QWidget *widget, Input input, const QList<QPoint> &points, bool lift = true)
{
    for (qsizetype i = 0; i < points.size(); ++i) {
        const QPoint p = points.at(i);
        const int step = i == 0 ? 0 : lift && i + 1 == points.size() ? 2 : 1; // press, move, lift
        if (input == Input::Touch) {
            auto touch = QTest::touchEvent(widget, touchscreen());
            step == 0   ? touch.press(0, p, widget)
            : step == 2 ? touch.release(0, p, widget)
                        : touch.move(0, p, widget);
        } else if (input == Input::Stylus) {
            const QEvent::Type types[] = {QEvent::TabletPress, QEvent::TabletMove,
                                          QEvent::TabletRelease};
            QTabletEvent event(types[step], QPointingDevice::primaryPointingDevice(), p,
                               widget->mapToGlobal(p), 0.5, 0, 0, 0, 0, 0, {}, Qt::LeftButton,
                               step == 2 ? Qt::NoButton : Qt::LeftButton);
            QCoreApplication::sendEvent(widget, &event);
        } else {
            step == 0   ? QTest::mousePress(widget, Qt::LeftButton, {}, p)
            : step == 2 ? QTest::mouseRelease(widget, Qt::LeftButton, {}, p)
                        : QTest::mouseMove(widget, p);
        }
    }
}

// Presses and lifts at `at` (the centre when null).
inline void tap(QWidget *widget, Input input, QPoint at = QPoint())
{
    if (at.isNull())
        at = widget->rect().center();
    drag(widget, input, {at, at});
}

// A widget under the controls that counts the presses of any kind reaching it.
struct PressCounter : QWidget
{
    PressCounter() { setAttribute(Qt::WA_AcceptTouchEvents); }
    int presses = 0;
    bool event(QEvent *e) override
    {
        presses += e->type() == QEvent::TouchBegin || e->type() == QEvent::MouseButtonPress ||
                   e->type() == QEvent::TabletPress;
        return QWidget::event(e);
    }
};

inline void addScaleRows()
{
    QTest::addColumn<double>("scale");
    for (const double scale : {1.0, 2.0, 3.0})
        QTest::addRow("%g", scale) << scale;
}

// The button of `type` among `buttons`, or none.
template <typename Button> Button *ofType(const QList<Button *> &buttons, qint64 type)
{
    const auto found = std::find_if(buttons.begin(), buttons.end(),
                                    [type](Button *b) { return b->type() == type; });
    return found == buttons.end() ? nullptr : *found;
}

// The fraction of an image's pixels that pass `test`: by default, those at
// least half opaque.
inline double coverage(
    const QImage &image,
    const std::function<bool(QRgb)> &test = [](QRgb p) { return qAlpha(p) >= 128; })
{
    if (image.isNull())
        return 0.0;
    qsizetype covered = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            covered += test(image.pixel(x, y)) ? 1 : 0;
    return double(covered) / double(image.width() * image.height());
}

// The colour at a point given in device-independent pixels.
inline QColor colourAt(const QImage &image, QPointF point)
{
    point *= image.devicePixelRatio();
    return image.pixelColor(int(point.x()), int(point.y()));
}

// `widget` as it paints itself on a transparent bitmap at `scale`.
inline QImage rendered(QWidget *widget, double scale = 1.0)
{
    QImage image(widget->size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    widget->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

// Whether two colours agree within a rounding step per channel.
inline bool closeColours(const QColor &a, const QColor &b, int tolerance = 2)
{
    return qAbs(a.red() - b.red()) <= tolerance && qAbs(a.green() - b.green()) <= tolerance &&
           qAbs(a.blue() - b.blue()) <= tolerance && qAbs(a.alpha() - b.alpha()) <= tolerance;
}
