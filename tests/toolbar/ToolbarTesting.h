#pragma once

// Taps as a user makes them, and what a user sees of an image.
#include <QImage>
#include <QPointingDevice>
#include <QTabletEvent>
#include <QWidget>
#include <QtTest>

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

inline void sendStylus(QWidget *widget, QEvent::Type type, const QPoint &at)
{
    const bool down = type != QEvent::TabletRelease;
    QTabletEvent event(type, QPointingDevice::primaryPointingDevice(), at, widget->mapToGlobal(at),
                       0.5, 0, 0, 0, 0, 0, {}, Qt::LeftButton,
                       down ? Qt::LeftButton : Qt::NoButton);
    QCoreApplication::sendEvent(widget, &event);
}

// Presses and lifts at `at` (the centre when null) in `widget`'s coordinates.
// Touches go through the window, so `widget` must be shown.
inline void tap(QWidget *widget, Input input, QPoint at = QPoint())
{
    if (at.isNull())
        at = widget->rect().center();
    switch (input) {
    case Input::Mouse:
        QTest::mouseClick(widget, Qt::LeftButton, {}, at);
        break;
    case Input::Touch:
        QTest::touchEvent(widget, touchscreen()).press(0, at, widget);
        QTest::touchEvent(widget, touchscreen()).release(0, at, widget);
        break;
    case Input::Stylus:
        sendStylus(widget, QEvent::TabletPress, at);
        sendStylus(widget, QEvent::TabletRelease, at);
        break;
    }
}

// Presses at `from`, moves halfway and to `to`, and lifts there.
inline void drag(QWidget *widget, Input input, const QPoint &from, const QPoint &to)
{
    const QPoint middle = (from + to) / 2;
    switch (input) {
    case Input::Mouse:
        QTest::mousePress(widget, Qt::LeftButton, {}, from);
        QTest::mouseMove(widget, middle);
        QTest::mouseMove(widget, to);
        QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
        break;
    case Input::Touch:
        QTest::touchEvent(widget, touchscreen()).press(0, from, widget);
        QTest::touchEvent(widget, touchscreen()).move(0, middle, widget);
        QTest::touchEvent(widget, touchscreen()).move(0, to, widget);
        QTest::touchEvent(widget, touchscreen()).release(0, to, widget);
        break;
    case Input::Stylus:
        sendStylus(widget, QEvent::TabletPress, from);
        sendStylus(widget, QEvent::TabletMove, middle);
        sendStylus(widget, QEvent::TabletMove, to);
        sendStylus(widget, QEvent::TabletRelease, to);
        break;
    }
}

// The fraction of an image's pixels that are at least half opaque.
inline double coverage(const QImage &image)
{
    if (image.isNull())
        return 0.0;
    qsizetype covered = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            covered += qAlpha(image.pixel(x, y)) >= 128 ? 1 : 0;
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
