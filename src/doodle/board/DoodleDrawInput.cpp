#include "DoodleDrawInput.h"

#include <QCoreApplication>
#include <QFontDatabase>
#include <QLocale>
#include <QPolygonF>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <mutex>

namespace {
// Text sizes above this many surface diagonals show only a part of one glyph
// and cost milliseconds per glyph to render.
constexpr double kTextSizeDiagonals = 1.0;
// No visible glyph of the system font advances by less than this share of
// its size, so a line holds at most width / (share * size) visible glyphs.
constexpr double kMinAdvanceShare = 0.1;
// Characters drawn at most, whatever the surface: keeps shaping bounded.
constexpr qsizetype kMaxTextChars = 4096;

double diagonal(const QSizeF &bounds)
{
    return std::hypot(bounds.width(), bounds.height());
}
} // namespace

bool DoodleDrawInput::isFinite(const QPointF &point)
{
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

bool DoodleDrawInput::isFinite(const QRectF &rect)
{
    return isFinite(rect.topLeft()) && std::isfinite(rect.width()) && std::isfinite(rect.height());
}

bool DoodleDrawInput::isFinite(const QPainterPath &path)
{
    for (int i = 0; i < path.elementCount(); ++i) {
        if (!isFinite(QPointF(path.elementAt(i))))
            return false;
    }
    return true;
}

QPointF DoodleDrawInput::bounded(const QPointF &point)
{
    // NaN and infinities stay as they are, for the checks that refuse them.
    if (!isFinite(point))
        return point;
    return QPointF(qBound(-kMaxCoordinate, point.x(), kMaxCoordinate),
                   qBound(-kMaxCoordinate, point.y(), kMaxCoordinate));
}

QRectF DoodleDrawInput::bounded(const QRectF &rect)
{
    if (!isFinite(rect))
        return rect;
    return QRectF(bounded(rect.topLeft()), bounded(rect.bottomRight()));
}

QPainterPath DoodleDrawInput::bounded(const QPainterPath &path)
{
    QPainterPath result = path;
    for (int i = 0; i < result.elementCount(); ++i) {
        const QPointF p(result.elementAt(i));
        const QPointF b = bounded(p);
        if (b != p)
            result.setElementPositionAt(i, b.x(), b.y());
    }
    return result;
}

double DoodleDrawInput::coveringWidth(const QPointF &anchor, const QSizeF &bounds)
{
    const double dx = std::max(std::abs(anchor.x()), std::abs(bounds.width() - anchor.x()));
    const double dy = std::max(std::abs(anchor.y()), std::abs(bounds.height() - anchor.y()));
    return 2.0 * std::hypot(dx, dy);
}

std::optional<double> DoodleDrawInput::lineWidth(double width, const QPointF &anchor,
                                                 const QSizeF &bounds)
{
    if (std::isnan(width) || width < 0.0)
        return std::nullopt;
    return std::min(width, coveringWidth(anchor, bounds) + 2.0);
}

std::optional<double> DoodleDrawInput::textSize(double size, const QSizeF &bounds)
{
    if (!(size > 0.0))
        return std::nullopt;
    return std::min(size, std::max(1.0, kTextSizeDiagonals * diagonal(bounds)));
}

QString DoodleDrawInput::visibleText(const QString &text, double x, double surfaceWidth,
                                     double pixelSize)
{
    // One glyph of slack on the left for overhangs such as italics.
    const double room = std::max(0.0, surfaceWidth - x) + pixelSize;
    const double fitting = std::ceil(room / (kMinAdvanceShare * pixelSize)) + 1.0;
    qsizetype count = qsizetype(std::min(fitting, double(kMaxTextChars)));
    if (count >= text.size())
        return text;
    if (text.at(count - 1).isHighSurrogate())
        --count;
    return text.left(count);
}

QFont DoodleDrawInput::systemFont(double pixelSize)
{
    // The platform's theme is read on the GUI thread only; a worker drawing
    // the board's text takes the font that thread last read.
    static std::mutex lock; // a standard one: ThreadSanitizer sees its ordering
    static QString known;   // the font's description: a worker builds its own
    QFont font;
    const QCoreApplication *app = QCoreApplication::instance();
    if (!app || QThread::currentThread() == app->thread()) {
        font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        const std::lock_guard<std::mutex> locked(lock);
        known = font.toString();
    } else {
        const std::lock_guard<std::mutex> locked(lock);
        font.fromString(known);
    }
    font.setPixelSize(std::max(1, int(std::lround(pixelSize))));
    return font;
}

QPolygonF DoodleDrawInput::ellipseOuterEdge(const QRectF &box, double distance)
{
    constexpr int kSteps = 360;
    const double a = box.width() / 2, b = box.height() / 2;
    QPolygonF edge;
    edge.reserve(kSteps);
    for (int i = 0; i < kSteps; ++i) {
        const double t = 2 * M_PI * i / kSteps;
        QPointF normal(b * std::cos(t), a * std::sin(t));
        const double length = std::hypot(normal.x(), normal.y());
        normal = length > 0 ? normal / length : QPointF(std::cos(t), std::sin(t));
        edge << box.center() + QPointF(a * std::cos(t), b * std::sin(t)) + distance * normal;
    }
    return edge;
}

std::optional<QPainterPath> DoodleDrawInput::arrowPath(const QPointF &start, const QPointF &end,
                                                       double w)
{
    const double dx = end.x() - start.x();
    const double dy = start.y() - end.y();
    const double length = std::hypot(dx, dy);
    if (!(length > 0.0) || !std::isfinite(length))
        return std::nullopt;
    // The head: apex at the end, base 3w back along the shaft, 1.5w to each side.
    const double a = 1.5 * w / length;
    const double b = 3.0 * w / length;
    const QPointF p1(end.x() - a * dy - b * dx, end.y() - a * dx + b * dy);
    const QPointF p2(end.x() + a * dy - b * dx, end.y() + a * dx + b * dy);
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.moveTo(start);
    path.lineTo(end);
    path.addPolygon(QPolygonF({end, p1, p2, end, p1}));
    return path;
}
