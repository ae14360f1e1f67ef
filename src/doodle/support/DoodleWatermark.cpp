#include "DoodleWatermark_p.h"

#include <doodle/support/DoodleScreen.h>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QtMath>

#include <cmath>

namespace {

constexpr double kPointSize = 15.0;
constexpr double kColumnGap = 80.0;
constexpr double kRowGap = 160.0;
constexpr double kTurnDegrees = -30.0;

} // namespace

QFont DoodleWatermark::font()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    // Points of the picture, whatever the screen's resolution.
    font.setPixelSize(int(kPointSize));
    return font;
}

QColor DoodleWatermark::textColor()
{
    return QColor::fromRgbF(2 / 3.0f, 2 / 3.0f, 2 / 3.0f, 1.0f);
}

QList<QRectF> DoodleWatermark::grid(const QSizeF &pictureSize, const QSizeF &textSize)
{
    const double w = pictureSize.width(), h = pictureSize.height();
    const double diagonal = std::sqrt(w * w + h * h);
    const double stepX = textSize.width() + kColumnGap;
    const double stepY = textSize.height() + kRowGap;
    const double columns = std::trunc(diagonal / stepX + 1.0);
    const double rows = std::trunc(diagonal / stepY + 1.0);
    QList<QRectF> places;
    if (!std::isfinite(columns) || !std::isfinite(rows) || rows * columns < 1)
        return places;
    const auto cols = qint64(columns);
    const qint64 count = qint64(rows) * cols;
    const double x0 = (diagonal - w) * -0.5;
    double x = x0;
    double y = (diagonal - h) * -0.5;
    places.reserve(count);
    for (qint64 i = 0; i < count; ++i) {
        places.append(QRectF(QPointF(x, y), textSize));
        if (i != 0 && i % cols == 0) {
            y += stepY;
            x = x0;
        } else {
            x += stepX;
        }
    }
    return places;
}

void DoodleWatermark::paint(QPainter &painter, const QSizeF &pictureSize, const QString &text)
{
    const QFont watermarkFont = font();
    const QSizeF textSize = QFontMetricsF(watermarkFont).size(Qt::TextSingleLine, text);
    const QPointF centre(pictureSize.width() * 0.5, pictureSize.height() * 0.5);
    painter.translate(centre);
    painter.rotate(kTurnDegrees);
    painter.translate(-centre);
    painter.setFont(watermarkFont);
    painter.setPen(textColor());
    painter.setBackgroundMode(Qt::TransparentMode);
    for (const QRectF &place : grid(pictureSize, textSize))
        painter.drawText(place, Qt::TextSingleLine | Qt::AlignLeft | Qt::AlignTop, text);
}

QImage DoodleWatermark::applied(const QImage &image, const QString &text)
{
    const QSizeF size = image.deviceIndependentSize();
    const double scale = DoodleScreen::scale();
    const QSize pixels(qCeil(size.width() * scale), qCeil(size.height() * scale));
    if (size.isEmpty() || pixels.isEmpty())
        return QImage();
    QImage result(pixels, QImage::Format_ARGB32_Premultiplied);
    if (result.isNull())
        return result;
    result.setDevicePixelRatio(scale);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(QPointF(), size), image);
    if (!text.isEmpty())
        paint(painter, size, text);
    return result;
}
