#include "BrushLineView.h"

#include "BrushWidthSlider_p.h"
#include <doodle/board/DoodleBitmap_p.h>

#include <doodle/support/DoodleScreen.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {
constexpr float kMinimumWidth = 2.0f;
constexpr float kMaximumWidth = 22.0f;
constexpr double kThumbSide = 28.0;

// WCAG's relative luminance of an sRGB colour.
double luminance(const QColor &colour)
{
    const auto linear = [](double c) {
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

// Whether `colour` stands out from `background` at WCAG's ratio for graphics, 3:1.
bool standsOut(const QColor &colour, const QColor &background)
{
    const double a = luminance(colour), b = luminance(background);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05) >= 3.0;
}
} // namespace

BrushLineView::BrushLineView(const QRect &frame, const QColor &color, double width, QWidget *parent)
    : ZQDoodleRoundedView(parent), m_color(color.isValid() ? color : QColor(Qt::white)),
      m_curWidth(width)
{
    setGeometry(frame);
    configInit();
}

void BrushLineView::configInit()
{
    const double viewWidth = width();
    const double midY = height() * 0.5, maxY = height();
    setBackgroundColor(QColor::fromRgbF(22 / 255.0f, 22 / 255.0f, 22 / 255.0f, 0.9f));
    setCornerRadius(8.0);
    m_preview = QRectF(0, 0, m_curWidth, m_curWidth);
    m_preview.moveCenter(QPointF(viewWidth * 0.126, midY));

    m_widthSlider = new BrushWidthSlider(this);
    const QRectF sliderFrame(viewWidth * 0.252, midY - maxY * 0.5, viewWidth * 0.63, maxY);
    m_widthSlider->setGeometry(sliderFrame.toRect());
    m_widthSlider->setRange(kMinimumWidth, kMaximumWidth);
    m_widthSlider->setTrackColors(Qt::white, QColor(81, 78, 77));
    m_widthSlider->setValue(float(m_curWidth));
    m_widthSlider->setThumbImage(thumbImage());
    connect(m_widthSlider, &BrushWidthSlider::valueChanged, this,
            &BrushLineView::sliderValueChanged);
    m_widthSlider->show();
}

void BrushLineView::setType(qint64 type)
{
    m_outline = type != 0;
    update();
}

QWidget *BrushLineView::widthSlider() const
{
    return m_widthSlider;
}

void BrushLineView::sliderValueChanged(float value)
{
    m_curWidth = double(value);
    updatePreview();
}

void BrushLineView::updatePreview()
{
    const QPointF centre = m_preview.center();
    m_preview.setSize(QSizeF(m_curWidth, m_curWidth));
    m_preview.moveCenter(centre);
    update();
}

QImage BrushLineView::thumbImage()
{
    QImage image = DoodleBitmap::create(QSizeF(kThumbSide, kThumbSide), DoodleScreen::scale());
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(kThumbSide * 0.5, kThumbSide * 0.5), kThumbSide * 0.5,
                        kThumbSide * 0.5);
    return image;
}

void BrushLineView::paintEvent(QPaintEvent *event)
{
    ZQDoodleRoundedView::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!standsOut(m_color, backgroundColor())) {
        // A dark colour on the dark view: a white ring just outside shows the size.
        painter.setPen(QPen(Qt::white, 1.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(m_preview.adjusted(-1.5, -1.5, 1.5, 1.5));
    }
    if (m_outline) {
        // The border lies inside the disc's bounds.
        painter.setPen(QPen(m_color, 1.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(m_preview.adjusted(0.5, 0.5, -0.5, -0.5));
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_color);
        painter.drawEllipse(m_preview);
    }
}
