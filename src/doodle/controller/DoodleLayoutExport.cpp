// Board controller: the board's drawing as vectors (SVG and PDF), built from
// the cache in its order with the geometry the surfaces draw.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayout_p.h"

#include <doodle/board/DoodleDrawInput.h>
#include <doodle/support/DoodleWatermark_p.h>

#include <QBuffer>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QHash>
#include <QPageSize>
#include <QPainter>
#include <QPainterPathStroker>
#include <QPdfWriter>
#include <QXmlStreamWriter>

#include <optional>

namespace {

// As the surfaces draw: joins stay mitred up to five widths from the corner.
constexpr double kMiterLimit = 5.0;

// One drawing of the cache in view points, as a painter draws it: a path
// stroked with `pen` and filled with `brush`, or a line of text.
struct VectorShape
{
    QPainterPath path;
    QPen pen{Qt::NoPen};
    QBrush brush{Qt::NoBrush};
    bool erase = false; // an eraser: it cuts what was drawn before it
    QString text;
    QFont font;
    QPointF baseline;
};

QColor orBlack(const QColor &color)
{
    return color.isValid() ? color : QColor(Qt::black);
}

QPen outlinePen(const QColor &color, double width, Qt::PenCapStyle cap, Qt::PenJoinStyle join)
{
    QPen pen(orBlack(color), width, Qt::SolidLine, cap, join);
    pen.setMiterLimit(kMiterLimit);
    return pen;
}

// The area a shape covers: what an eraser takes away.
QPainterPath coveredArea(const VectorShape &shape)
{
    if (shape.pen.style() == Qt::NoPen)
        return shape.path;
    return QPainterPathStroker(shape.pen).createStroke(shape.path);
}

// Builds the shapes of a board's drawings as its surfaces draw them.
class ShapeBuilder
{
public:
    ShapeBuilder(const DoodleLayout &board, const DoodleLayoutPrivate &d)
        : m_board(board), m_d(d), m_size(board.getScaleSize())
    {}

    std::optional<VectorShape> shapeOf(const DoodleAction &a) const
    {
        switch (a.actionType()) {
        case DoodleActionTypeStroke:
        case DoodleActionTypeEraser:
            return stroke(a);
        case DoodleActionTypeRectangle:
        case DoodleActionTypeEllipse:
            return box(a);
        case DoodleActionTypeArrow:
            return arrow(a);
        case DoodleActionTypeText:
            return text(a);
        default:
            return std::nullopt;
        }
    }

private:
    std::optional<double> width(const DoodleAction &a, const QPointF &anchor) const
    {
        return DoodleDrawInput::lineWidth(m_board.normalFromLogicWidth(double(a.brushWidth())),
                                          anchor, m_size);
    }

    std::optional<VectorShape> stroke(const DoodleAction &a) const
    {
        bool dot = false;
        const QPainterPath path = m_d.smoothedPath(a.pathPoints(), &dot);
        const QPointF first = path.elementCount() > 0 ? QPointF(path.elementAt(0)) : QPointF();
        const auto w = width(a, first);
        // A single point strokes nothing.
        if (!w || (!dot && path.elementCount() < 2))
            return std::nullopt;
        VectorShape shape;
        shape.erase = a.actionType() == DoodleActionTypeEraser;
        const QColor color = orBlack(a.brushColor());
        if (*w >= DoodleDrawInput::coveringWidth(first, m_size)) {
            shape.path.addRect(QRectF(QPointF(), m_size));
            shape.brush = color;
        } else if (dot) {
            shape.path.addEllipse(path.currentPosition(), *w / 2, *w / 2);
            shape.brush = color;
        } else {
            shape.path = path;
            shape.pen = QPen(color, *w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        }
        return shape;
    }

    std::optional<VectorShape> box(const DoodleAction &a) const
    {
        const QRectF rect = m_board.normalFromLogicRect(
            QRectF(double(a.x()), double(a.y()), double(a.width()), double(a.height())));
        const bool isRect = a.actionType() == DoodleActionTypeRectangle;
        const auto w = width(a, isRect ? rect.topLeft() : QPointF(rect.right(), rect.center().y()));
        if (!w || !DoodleDrawInput::isFinite(rect))
            return std::nullopt;
        const QRectF bounds = rect.normalized();
        VectorShape shape;
        if (isRect) {
            shape.pen = outlinePen(a.brushColor(), *w, Qt::FlatCap, Qt::SvgMiterJoin);
            shape.path.addRect(bounds);
        } else if (*w > 0 && *w >= std::min(bounds.width(), bounds.height())) {
            // So wide that it covers the inside: its outer edge, filled.
            shape.path.addPolygon(DoodleDrawInput::ellipseOuterEdge(bounds, *w / 2));
            shape.brush = orBlack(a.brushColor());
        } else {
            shape.pen = outlinePen(a.brushColor(), *w, Qt::FlatCap, Qt::MiterJoin);
            shape.path.addEllipse(bounds);
        }
        return shape;
    }

    std::optional<VectorShape> arrow(const DoodleAction &a) const
    {
        const QPointF start = m_board.normalFromLogicPositionX(double(a.x()), double(a.y()));
        const QPointF end = m_board.normalFromLogicPositionX(double(a.endX()), double(a.endY()));
        const auto w = width(a, end);
        if (!w || !DoodleDrawInput::isFinite(start) || !DoodleDrawInput::isFinite(end))
            return std::nullopt;
        const auto path = DoodleDrawInput::arrowPath(start, end, *w);
        if (!path)
            return std::nullopt;
        VectorShape shape;
        shape.path = *path;
        shape.pen = outlinePen(a.brushColor(), *w, Qt::FlatCap, Qt::MiterJoin);
        shape.brush = orBlack(a.brushColor());
        return shape;
    }

    std::optional<VectorShape> text(const DoodleAction &a) const
    {
        const QPointF point = m_board.normalFromLogicPositionX(double(a.x()), double(a.y()));
        const auto px =
            DoodleDrawInput::textSize(m_board.normalFromLogicWidth(double(a.textSize())), m_size);
        if (!px || !DoodleDrawInput::isFinite(point))
            return std::nullopt;
        VectorShape shape;
        shape.text = DoodleDrawInput::visibleText(a.text(), point.x(), m_size.width(), *px);
        if (shape.text.isEmpty())
            return std::nullopt;
        shape.font = DoodleDrawInput::systemFont(*px);
        shape.baseline = point + QPointF(0, QFontMetricsF(shape.font).ascent());
        shape.brush = orBlack(a.brushColor());
        return shape;
    }

    const DoodleLayout &m_board;
    const DoodleLayoutPrivate &m_d;
    QSizeF m_size;
};

// Numbers as SVG reads them, whatever the locale.
QString number(double value)
{
    return QString::number(value, 'g', 8);
}

QString svgPath(const QPainterPath &path)
{
    QString d;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (e.isMoveTo()) {
            d += QStringLiteral("M%1 %2").arg(number(e.x), number(e.y));
        } else if (e.isLineTo()) {
            d += QStringLiteral("L%1 %2").arg(number(e.x), number(e.y));
        } else if (e.isCurveTo() && i + 2 < path.elementCount()) {
            const QPainterPath::Element c2 = path.elementAt(i + 1), to = path.elementAt(i + 2);
            d += QStringLiteral("C%1 %2 %3 %4 %5 %6")
                     .arg(number(e.x), number(e.y), number(c2.x), number(c2.y), number(to.x),
                          number(to.y));
            i += 2;
        }
    }
    return d;
}

void writeColor(QXmlStreamWriter &xml, const QString &name, const QColor &color)
{
    xml.writeAttribute(name, color.name(QColor::HexRgb));
    if (color.alpha() != 255)
        xml.writeAttribute(name + QStringLiteral("-opacity"), number(color.alphaF()));
}

// A shape's paint as SVG attributes; an eraser's mask paints it black.
void writePaint(QXmlStreamWriter &xml, const VectorShape &shape, bool inMask)
{
    const auto paint = [inMask](const QColor &color) { return inMask ? QColor(Qt::black) : color; };
    if (shape.brush.style() == Qt::NoBrush)
        xml.writeAttribute("fill", "none");
    else
        writeColor(xml, "fill", paint(shape.brush.color()));
    if (shape.pen.style() == Qt::NoPen)
        return;
    writeColor(xml, "stroke", paint(shape.pen.color()));
    xml.writeAttribute("stroke-width", number(shape.pen.widthF()));
    const Qt::PenCapStyle cap = shape.pen.capStyle();
    xml.writeAttribute("stroke-linecap", cap == Qt::RoundCap    ? "round"
                                         : cap == Qt::SquareCap ? "square"
                                                                : "butt");
    const Qt::PenJoinStyle join = shape.pen.joinStyle();
    xml.writeAttribute("stroke-linejoin", join == Qt::RoundJoin ? "round" : "miter");
    // SVG's limit is the miter's length in widths; Qt's, its reach in half as many.
    xml.writeAttribute("stroke-miterlimit", number(2 * shape.pen.miterLimit()));
}

void writeFont(QXmlStreamWriter &xml, const QFont &font)
{
    xml.writeAttribute("font-family", QFontInfo(font).family());
    xml.writeAttribute("font-size", number(font.pixelSize()));
}

void writeShape(QXmlStreamWriter &xml, const VectorShape &shape, bool inMask = false)
{
    if (!shape.text.isEmpty()) {
        xml.writeStartElement("text");
        xml.writeAttribute("x", number(shape.baseline.x()));
        xml.writeAttribute("y", number(shape.baseline.y()));
        xml.writeAttribute("xml:space", "preserve");
        writeFont(xml, shape.font);
        writePaint(xml, shape, inMask);
        xml.writeCharacters(shape.text);
        xml.writeEndElement();
        return;
    }
    xml.writeStartElement("path");
    xml.writeAttribute("d", svgPath(shape.path));
    if (shape.path.fillRule() == Qt::OddEvenFill && shape.brush.style() != Qt::NoBrush)
        xml.writeAttribute("fill-rule", "evenodd");
    writePaint(xml, shape, inMask);
    xml.writeEndElement();
}

// Eraser `index`: white (shown) everywhere but under the eraser.
void writeMask(QXmlStreamWriter &xml, int index, const QSizeF &size, const VectorShape &eraser)
{
    xml.writeStartElement("mask");
    xml.writeAttribute("id", QStringLiteral("erase%1").arg(index));
    xml.writeAttribute("maskUnits", "userSpaceOnUse");
    xml.writeAttribute("x", "0");
    xml.writeAttribute("y", "0");
    xml.writeAttribute("width", number(size.width()));
    xml.writeAttribute("height", number(size.height()));
    xml.writeStartElement("rect");
    xml.writeAttribute("width", number(size.width()));
    xml.writeAttribute("height", number(size.height()));
    xml.writeAttribute("fill", "white");
    xml.writeEndElement();
    writeShape(xml, eraser, true);
    xml.writeEndElement();
}

void writeSvgWatermark(QXmlStreamWriter &xml, const QSizeF &size, const QString &text)
{
    const QFont font = DoodleWatermark::font();
    const QFontMetricsF metrics(font);
    const QSizeF textSize = metrics.size(Qt::TextSingleLine, text);
    xml.writeStartElement("g");
    xml.writeAttribute("transform", QStringLiteral("rotate(-30 %1 %2)")
                                        .arg(number(size.width() / 2), number(size.height() / 2)));
    writeFont(xml, font);
    writeColor(xml, "fill", DoodleWatermark::textColor());
    for (const QRectF &place : DoodleWatermark::grid(size, textSize)) {
        xml.writeStartElement("text");
        xml.writeAttribute("x", number(place.x()));
        xml.writeAttribute("y", number(place.y() + metrics.ascent()));
        xml.writeAttribute("xml:space", "preserve");
        xml.writeCharacters(text);
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

QList<VectorShape> shapesOf(const DoodleLayout &board, const DoodleLayoutPrivate &d)
{
    const ShapeBuilder builder(board, d);
    QList<VectorShape> shapes;
    for (const DoodleCacheEntry &entry : d.m_doodlePathCache.entries()) {
        if (auto shape = builder.shapeOf(*entry.action))
            shapes.append(std::move(*shape));
    }
    return shapes;
}

QColor visibleBackground(const QColor &color)
{
    return color.isValid() && color.alpha() > 0 ? color : QColor();
}

// For each run of drawings between two erasers, keyed by the run's first
// index: the board less everything the erasers after the run cover. The run
// after the last eraser has none.
QHash<qsizetype, QPainterPath> clipsOf(const QList<VectorShape> &shapes, const QSizeF &size)
{
    QHash<qsizetype, QPainterPath> clips;
    QPainterPath erased, board;
    board.addRect(QRectF(QPointF(), size));
    for (qsizetype i = shapes.size() - 1; i >= 0; --i) {
        if (!shapes.at(i).erase)
            continue;
        erased = erased.united(coveredArea(shapes.at(i)));
        // The run before this eraser starts after the previous eraser.
        qsizetype start = i - 1;
        while (start > 0 && !shapes.at(start - 1).erase)
            --start;
        if (start >= 0 && !shapes.at(start).erase)
            clips.insert(start, board.subtracted(erased));
    }
    return clips;
}

void paintShape(QPainter &painter, const VectorShape &shape)
{
    painter.setPen(shape.pen);
    painter.setBrush(shape.brush);
    if (shape.text.isEmpty()) {
        painter.drawPath(shape.path);
        return;
    }
    painter.setPen(shape.brush.color());
    painter.setFont(shape.font);
    painter.drawText(shape.baseline, shape.text);
}

} // namespace

QByteArray DoodleLayout::exportSvg() const
{
    const QSizeF size = getScaleSize();
    if (size.isEmpty())
        return QByteArray();
    const QList<VectorShape> shapes = shapesOf(*this, *d);
    QByteArray svg;
    QXmlStreamWriter xml(&svg);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement("svg");
    xml.writeDefaultNamespace("http://www.w3.org/2000/svg");
    xml.writeAttribute("width", number(size.width()));
    xml.writeAttribute("height", number(size.height()));
    xml.writeAttribute(
        "viewBox", QStringLiteral("0 0 %1 %2").arg(number(size.width()), number(size.height())));
    xml.writeStartElement("defs");
    int erasers = 0;
    for (const VectorShape &shape : shapes) {
        if (shape.erase)
            writeMask(xml, ++erasers, size, shape);
    }
    xml.writeEndElement();
    if (const QColor background = visibleBackground(d->m_backgroundColor); background.isValid()) {
        xml.writeStartElement("rect");
        xml.writeAttribute("width", number(size.width()));
        xml.writeAttribute("height", number(size.height()));
        writeColor(xml, "fill", background);
        xml.writeEndElement();
    }
    // One group per eraser, the first innermost: each eraser closes the group
    // of everything drawn before it, which its mask cuts.
    for (int e = erasers; e >= 1; --e) {
        xml.writeStartElement("g");
        xml.writeAttribute("mask", QStringLiteral("url(#erase%1)").arg(e));
    }
    for (const VectorShape &shape : shapes) {
        if (shape.erase)
            xml.writeEndElement();
        else
            writeShape(xml, shape);
    }
    if (!d->m_waterString.isEmpty())
        writeSvgWatermark(xml, size, d->m_waterString);
    xml.writeEndDocument();
    return svg;
}

QByteArray DoodleLayout::exportPdf() const
{
    const QSizeF size = getScaleSize();
    if (size.isEmpty())
        return QByteArray();
    const QList<VectorShape> shapes = shapesOf(*this, *d);
    QByteArray pdf;
    QBuffer buffer(&pdf);
    buffer.open(QIODevice::WriteOnly);
    {
        // One device unit a point: the board's points are the page's.
        QPdfWriter writer(&buffer);
        writer.setCreator(QStringLiteral("doodle"));
        writer.setResolution(72);
        writer.setPageSize(QPageSize(size, QPageSize::Point, QString(), QPageSize::ExactMatch));
        writer.setPageMargins(QMarginsF());
        QPainter painter(&writer);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        if (const QColor background = visibleBackground(d->m_backgroundColor); background.isValid())
            painter.fillRect(QRectF(QPointF(), size), background);
        // A clip changes only at the start of a run, so it is written once a run.
        const QHash<qsizetype, QPainterPath> clips = clipsOf(shapes, size);
        for (qsizetype i = 0; i < shapes.size(); ++i) {
            if (shapes.at(i).erase) {
                painter.setClipping(false);
                continue;
            }
            if (const auto clip = clips.constFind(i); clip != clips.constEnd())
                painter.setClipPath(*clip);
            paintShape(painter, shapes.at(i));
        }
        painter.setClipping(false);
        if (!d->m_waterString.isEmpty())
            DoodleWatermark::paint(painter, size, d->m_waterString);
    }
    return pdf;
}
