#include "DoodlePoint.h"

#include <doodle/support/DoodleLog_p.h>

#include <charconv>
#include <cmath>

namespace {

constexpr qint64 kMillion = 1000000;

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

// Reads digits from `at` into `value` as printf writes them: no leading zero
// but for "0" itself, and no more than `limit`.
bool readDigits(const char16_t *&at, const char16_t *end, qint64 limit, qint64 &value)
{
    const char16_t *start = at;
    for (value = 0; at != end && isDigit(*at); ++at) {
        value = value * 10 + (*at - u'0');
        if (value > limit)
            return false;
    }
    return at != start && (*start != u'0' || at - start == 1);
}

bool readMinus(const char16_t *&at, const char16_t *end)
{
    if (at == end || *at != u'-')
        return false;
    ++at;
    return true;
}

// "%d" output of a 32-bit integer ("-0" is never written).
bool parseInterval(QStringView text, qint32 &value)
{
    const char16_t *at = text.utf16();
    const char16_t *end = at + text.size();
    const bool negative = readMinus(at, end);
    qint64 magnitude = 0;
    if (!readDigits(at, end, negative ? 2147483648 : 2147483647, magnitude) || at != end)
        return false;
    if (negative && magnitude == 0)
        return false;
    value = qint32(negative ? -magnitude : magnitude);
    return true;
}

// "%f" output (six decimals) of a value whose millionths fit 32 bits, but for
// -2^31, which marks a point that keeps its strings. "-0.000000", written for
// tiny negative values, is kept as strings too.
bool parseMillionths(QStringView text, qint32 &value)
{
    const char16_t *at = text.utf16();
    const char16_t *end = at + text.size();
    const bool negative = readMinus(at, end);
    qint64 whole = 0;
    qint64 fraction = 0;
    if (!readDigits(at, end, 2147, whole) || at == end || *at++ != u'.' || end - at != 6)
        return false;
    for (; at != end; ++at) {
        if (!isDigit(*at))
            return false;
        fraction = fraction * 10 + (*at - u'0');
    }
    const qint64 magnitude = whole * kMillion + fraction;
    if (magnitude > 2147483647 || (negative && magnitude == 0))
        return false;
    value = qint32(negative ? -magnitude : magnitude);
    return true;
}

// The "%f" text of a value given in millionths.
QString millionthsText(qint32 value)
{
    char buffer[16];
    char *const end = buffer + sizeof buffer;
    char *at = end;
    qint64 rest = value < 0 ? -qint64(value) : qint64(value);
    for (int digit = 0; digit < 6; ++digit, rest /= 10)
        *--at = char('0' + rest % 10);
    *--at = '.';
    do {
        *--at = char('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (value < 0)
        *--at = '-';
    return QString::fromLatin1(at, end - at);
}

} // namespace

DoodlePoint::DoodlePoint(const QStringList &strings)
{
    qint32 interval = 0;
    qint32 x = 0;
    qint32 y = 0;
    if (strings.size() == 3 && parseInterval(strings.at(0), interval) &&
        parseMillionths(strings.at(1), x) && parseMillionths(strings.at(2), y)) {
        m_interval = interval;
        m_x = x;
        m_y = y;
    } else {
        m_strings = strings;
    }
}

DoodlePoint::DoodlePoint(qint32 timeInterval, float x, float y)
    : DoodlePoint(QStringList{DoodleNumber::printfD(timeInterval), DoodleNumber::printfF(double(x)),
                              DoodleNumber::printfF(double(y))})
{}

qsizetype DoodlePoint::size() const
{
    return isCompact() ? 3 : m_strings.size();
}

QString DoodlePoint::at(qsizetype index) const
{
    if (!isCompact())
        return m_strings.value(index);
    switch (index) {
    case 0:
        return QString::number(m_interval);
    case 1:
        return millionthsText(m_x);
    case 2:
        return millionthsText(m_y);
    default:
        return QString();
    }
}

QStringList DoodlePoint::toStringList() const
{
    if (!isCompact())
        return m_strings;
    return QStringList{at(0), at(1), at(2)};
}

// Dividing the millionths by 10^6 rounds once, exactly as parsing the decimal
// text to a double does, so readers get the very numbers they parsed before.
float DoodlePoint::x() const
{
    return isCompact() ? float(double(m_x) / double(kMillion)) : m_strings.value(1).toFloat();
}

float DoodlePoint::y() const
{
    return isCompact() ? float(double(m_y) / double(kMillion)) : m_strings.value(2).toFloat();
}

DoodlePointList::DoodlePointList(std::initializer_list<DoodlePoint> points)
{
    reserve(qsizetype(points.size()));
    for (const DoodlePoint &point : points)
        append(point);
}

DoodlePoint DoodlePointList::at(qsizetype index) const
{
    const Packed &packed = m_points.at(index);
    DoodlePoint point;
    if (packed.x == DoodlePoint::kKeptStrings) {
        point.m_strings = m_keptStrings.at(packed.interval);
    } else {
        point.m_interval = packed.interval;
        point.m_x = packed.x;
        point.m_y = packed.y;
    }
    return point;
}

void DoodlePointList::append(const DoodlePoint &point)
{
    if (point.isCompact()) {
        m_points.append(Packed{point.m_interval, point.m_x, point.m_y});
        return;
    }
    m_points.append(Packed{qint32(m_keptStrings.size()), DoodlePoint::kKeptStrings, 0});
    m_keptStrings.append(point.m_strings);
}

void DoodlePointList::clear()
{
    m_points.clear();
    m_keptStrings.clear();
}

bool operator==(const DoodlePointList &a, const DoodlePointList &b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (a.at(i) != b.at(i))
            return false;
    }
    return true;
}
