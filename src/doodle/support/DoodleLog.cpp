#include "DoodleLog_p.h"

#include <QLocale>

#include <charconv>
#include <cmath>
#include <cstdio>

Q_LOGGING_CATEGORY(lcDoodle, "doodle", QtWarningMsg)

QString DoodleNumber::printfD(qint64 value)
{
    return QString::number(value);
}

QString DoodleNumber::printfF(double value)
{
    if (std::isnan(value))
        return std::signbit(value) ? QStringLiteral("-nan") : QStringLiteral("nan");
    if (std::isinf(value))
        return value < 0 ? QStringLiteral("-inf") : QStringLiteral("inf");
    // 309 integer digits, the point and six decimals fit easily.
    char buffer[400];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 6);
    return QString::fromLatin1(buffer, int(result.ptr - buffer));
}

double DoodleNumber::shortestFloat(float value)
{
    if (!std::isfinite(value))
        return double(value);
    char buffer[64];
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, value);
    double widened = double(value);
    std::from_chars(buffer, written.ptr, widened);
    return widened;
}

QString DoodleNumber::pointText(const QPointF &point)
{
    const auto number = [](double value) {
        return QString::number(value, 'g', QLocale::FloatingPointShortest);
    };
    return QStringLiteral("{%1, %2}").arg(number(point.x()), number(point.y()));
}

QString DoodleNumber::rectText(const QRectF &rect)
{
    return QStringLiteral("{%1, %2}")
        .arg(pointText(rect.topLeft()), pointText(QPointF(rect.width(), rect.height())));
}
