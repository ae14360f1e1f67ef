#include "ZQDoodleView.h"

#include <doodle/board/DoodleDrawInput.h>

#include <doodle/support/DoodleLog_p.h>
#include <doodle/support/DoodleScreen.h>

#include <QKeyEvent>
#include <QLineEdit>
#include <QPaintEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QTransform>

#include <cmath>
#include <functional>

namespace {
// Temp canvases a board keeps at most; each is a widget of its own.
constexpr quint64 kMaxTempCanvases = 64;
// Text-field positions beyond this many points from the origin are pulled in.
constexpr double kMaxFieldCoordinate = 1.0e6;
constexpr int kTextFieldWidth = 150;
constexpr int kTextFieldExtraHeight = 10;

// Shows the background picture scaled to fit the bounds, aspect ratio kept.
class ZQDoodleBackgroundView : public QWidget
{
public:
    using QWidget::QWidget;

    void setImage(const QImage &image)
    {
        m_image = image;
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        if (m_image.isNull())
            return;
        const QSizeF fitted = m_image.deviceIndependentSize().scaled(size(), Qt::KeepAspectRatio);
        QRectF target(QPointF(), fitted);
        target.moveCenter(QRectF(rect()).center());
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(target, m_image);
    }

private:
    QImage m_image;
};

double fieldCoordinate(double value)
{
    return std::isfinite(value) ? qBound(-kMaxFieldCoordinate, value, kMaxFieldCoordinate) : 0.0;
}

// The board's text field: Escape abandons it, and it grows with its text from
// its left edge up to its parent's right edge (past that it scrolls).
class DoodleTextField : public QLineEdit
{
public:
    explicit DoodleTextField(QWidget *parent) : QLineEdit(parent)
    {
        connect(this, &QLineEdit::textChanged, this, &DoodleTextField::fitText);
    }
    std::function<void()> onEscape;
    bool reported = false; // the delegate heard of it once; later signals are echoes

    void fitText()
    {
        QStyleOptionFrame option;
        initStyleOption(&option);
        const int advance =
            fontMetrics().horizontalAdvance(text()) + fontMetrics().averageCharWidth();
        const QSize wanted =
            style()->sizeFromContents(QStyle::CT_LineEdit, &option, QSize(advance, height()), this);
        const int room = parentWidget() ? parentWidget()->width() - x() : wanted.width();
        resize(std::max(std::min(wanted.width(), room), std::min(kTextFieldWidth, room)), height());
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Escape && onEscape) {
            onEscape();
            return;
        }
        QLineEdit::keyPressEvent(event);
    }
};
} // namespace

ZQDoodleView::ZQDoodleView(const QRect &frame, const QImage &image, QWidget *parent)
    : QWidget(parent), m_backgroundImage(image)
{
    if (!frame.isNull())
        setGeometry(frame);
    buildLayers();
    layoutSubviews();
}

void ZQDoodleView::setBackgroundColor(const QColor &color)
{
    m_backgroundColor = color;
    update();
}

void ZQDoodleView::setBackgroundImage(const QImage &image)
{
    if (image.cacheKey() == m_backgroundImage.cacheKey())
        return;
    m_backgroundImage = image;
    if (m_backgroundView)
        static_cast<ZQDoodleBackgroundView *>(m_backgroundView)->setImage(image);
}

QWidget *ZQDoodleView::backgroundView()
{
    if (!m_backgroundView) {
        auto *view = new ZQDoodleBackgroundView(this);
        view->setAttribute(Qt::WA_TransparentForMouseEvents);
        view->setImage(m_backgroundImage);
        view->setGeometry(rect());
        view->show();
        m_backgroundView = view;
    }
    return m_backgroundView;
}

ZQDoodleDrawView *ZQDoodleView::cacheCanvas()
{
    if (!m_cacheCanvas)
        m_cacheCanvas = makeCanvas();
    return m_cacheCanvas;
}

// Children stack in creation order: background, cache canvas, temp canvas 0.
void ZQDoodleView::buildLayers()
{
    backgroundView();
    cacheCanvas();
    m_tempCanvasArray.append(makeCanvas());
}

ZQDoodleDrawView *ZQDoodleView::makeCanvas()
{
    auto *canvas = new ZQDoodleDrawView(this);
    canvas->setGeometry(rect());
    canvas->show();
    canvas->raise();
    return canvas;
}

void ZQDoodleView::setTempCanvasCount(quint64 count)
{
    if (count > kMaxTempCanvases) {
        DOODLE_LOG(QStringLiteral("setTempCanvasCount %1 lowered to %2")
                       .arg(QString::number(count), QString::number(kMaxTempCanvases)));
        count = kMaxTempCanvases;
    }
    while (tempCanvasCount() < count)
        m_tempCanvasArray.append(makeCanvas());
}

ZQDoodleDrawView *ZQDoodleView::getTempCanvas(quint64 index) const
{
    return index < tempCanvasCount() ? m_tempCanvasArray.at(qsizetype(index)) : nullptr;
}

void ZQDoodleView::layoutSubviews()
{
    if (m_backgroundView)
        m_backgroundView->setGeometry(rect());
    if (m_cacheCanvas)
        m_cacheCanvas->setGeometry(rect());
    for (ZQDoodleDrawView *canvas : std::as_const(m_tempCanvasArray))
        canvas->setGeometry(rect());
}

QLineEdit *ZQDoodleView::tempTextField() const
{
    return m_tempTextField;
}

ZQDoodleDrawView *ZQDoodleView::cleanedTempCanvas(quint64 index, bool redraw)
{
    ZQDoodleDrawView *canvas = getTempCanvas(index);
    if (!canvas)
        return nullptr;
    // A hidden board gets its resize event only when shown.
    canvas->setGeometry(rect());
    if (redraw)
        canvas->cleanForRedraw();
    else
        canvas->cleanAllPath();
    return canvas;
}

ZQDoodleDrawView *ZQDoodleView::laidOutCacheCanvas()
{
    if (m_cacheCanvas)
        m_cacheCanvas->setGeometry(rect());
    return m_cacheCanvas;
}

void ZQDoodleView::drawInTempWithPath(const QPainterPath &path, double lineWidth,
                                      const QColor &lineColor, quint64 index)
{
    if (ZQDoodleDrawView *canvas = getTempCanvas(index)) {
        canvas->setGeometry(rect());
        canvas->drawInCacheWithPath(path, lineWidth, lineColor);
    }
}

void ZQDoodleView::drawInCacheWithPath(const QPainterPath &path, double lineWidth,
                                       const QColor &lineColor, quint64 index)
{
    cleanedTempCanvas(index, false);
    if (ZQDoodleDrawView *cache = laidOutCacheCanvas())
        cache->drawInCacheWithPath(path, lineWidth, lineColor);
}

void ZQDoodleView::rectInTempWithPath(const QRectF &rect, double lineWidth, const QColor &lineColor,
                                      quint64 index)
{
    if (ZQDoodleDrawView *canvas = cleanedTempCanvas(index, true))
        canvas->rectangleInCacheWithRect(rect, lineWidth, lineColor);
}

void ZQDoodleView::rectInCatchWithPath(const QRectF &rect, double lineWidth,
                                       const QColor &lineColor, quint64 index)
{
    cleanedTempCanvas(index, false);
    if (ZQDoodleDrawView *cache = laidOutCacheCanvas())
        cache->rectangleInCacheWithRect(rect, lineWidth, lineColor);
}

void ZQDoodleView::ellipseInTempWithPath(const QRectF &rect, double lineWidth,
                                         const QColor &lineColor, quint64 index)
{
    if (ZQDoodleDrawView *canvas = cleanedTempCanvas(index, true))
        canvas->ellipseInCacheWithRect(rect, lineWidth, lineColor);
}

void ZQDoodleView::ellipseInCatchWithPath(const QRectF &rect, double lineWidth,
                                          const QColor &lineColor, quint64 index)
{
    cleanedTempCanvas(index, false);
    if (ZQDoodleDrawView *cache = laidOutCacheCanvas())
        cache->ellipseInCacheWithRect(rect, lineWidth, lineColor);
}

void ZQDoodleView::arrowInTempWithStartPoint(const QPointF &start, const QPointF &end,
                                             double lineWidth, const QColor &lineColor,
                                             quint64 index)
{
    if (ZQDoodleDrawView *canvas = cleanedTempCanvas(index, true))
        canvas->arrowInCacheWithStartPoint(start, end, lineWidth, lineColor);
}

void ZQDoodleView::arrowInCatchWithStartPoint(const QPointF &start, const QPointF &end,
                                              double lineWidth, const QColor &lineColor,
                                              quint64 index)
{
    cleanedTempCanvas(index, false);
    if (ZQDoodleDrawView *cache = laidOutCacheCanvas())
        cache->arrowInCacheWithStartPoint(start, end, lineWidth, lineColor);
}

// Opens an empty one-line field at the point on temp canvas `index`; the
// text argument is not used.
void ZQDoodleView::textInTempWithStartPoint(const QPointF &point, const QString &, double textSize,
                                            const QColor &color, quint64 index)
{
    ZQDoodleDrawView *canvas = cleanedTempCanvas(index, false);
    if (!canvas)
        return;
    const double size = DoodleDrawInput::textSize(textSize, canvas->size()).value_or(0.0);
    auto *field = new DoodleTextField(canvas);
    m_tempTextField = field;
    field->setGeometry(qRound(fieldCoordinate(point.x())), qRound(fieldCoordinate(point.y())),
                       kTextFieldWidth, int(std::lround(size)) + kTextFieldExtraHeight);
    field->setFont(DoodleDrawInput::systemFont(size));
    field->fitText();
    if (color.isValid()) {
        QPalette palette = field->palette();
        palette.setColor(QPalette::Text, color);
        field->setPalette(palette);
    }
    // Return, or the focus going elsewhere (another control, another window).
    connect(field, &QLineEdit::editingFinished, this,
            [this, field] { onTextFieldDone(field, false); });
    field->onEscape = [this, field] { onTextFieldDone(field, true); };
    field->show();
    field->setFocus(Qt::OtherFocusReason);
}

void ZQDoodleView::textInCatchWithStartPoint(const QPointF &point, const QString &text,
                                             double textSize, const QColor &color, quint64 index)
{
    cleanedTempCanvas(index, false);
    if (ZQDoodleDrawView *cache = laidOutCacheCanvas())
        cache->textInCacheWithStartPoint(point, text, textSize, color);
}

void ZQDoodleView::onTextFieldDone(QLineEdit *field, bool cancelled)
{
    auto *ours = static_cast<DoodleTextField *>(field);
    if (ours->reported)
        return;
    ours->reported = true;
    field->clearFocus();
    ZQDoodleViewDelegate *delegate = m_delegate.get();
    if (delegate && cancelled)
        delegate->textEditCancelled(field);
    else if (delegate)
        delegate->textEditDone(field);
}

void ZQDoodleView::eraseInCacheWithPath(const QPainterPath &path, double lineWidth)
{
    if (ZQDoodleDrawView *cache = laidOutCacheCanvas())
        cache->eraseInCacheWithPath(path, lineWidth);
}

void ZQDoodleView::clearAll()
{
    if (m_cacheCanvas)
        m_cacheCanvas->cleanAllPath();
    for (ZQDoodleDrawView *canvas : std::as_const(m_tempCanvasArray))
        canvas->cleanAllPath();
}

void ZQDoodleView::drawImageInCache(const QImage &image, const QRectF &rect, qint32 orientation)
{
    ZQDoodleDrawView *cache = laidOutCacheCanvas();
    if (!cache)
        return;
    // Codes 1, 2 and 3 show the picture turned a quarter clockwise, half
    // round and a quarter anticlockwise.
    const qreal angles[] = {0, 90, 180, 270};
    if (orientation < 1 || orientation > 3 || image.isNull()) {
        cache->drawImage(image, rect);
        return;
    }
    QImage turned = image.transformed(QTransform().rotate(angles[orientation]));
    turned.setDevicePixelRatio(image.devicePixelRatio());
    cache->drawImage(turned, rect);
}

// Every layer and child widget, over a transparent background, at the
// screen's scale.
QImage ZQDoodleView::convertViewToImage()
{
    if (size().isEmpty())
        return QImage();
    const double scale = DoodleScreen::scale();
    QImage image((QSizeF(size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return image;
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    layoutSubviews();
    render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

void ZQDoodleView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutSubviews();
}

void ZQDoodleView::paintEvent(QPaintEvent *event)
{
    if (!m_backgroundColor.isValid())
        return;
    QPainter painter(this);
    painter.fillRect(event->rect(), m_backgroundColor);
}
