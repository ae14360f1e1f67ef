#include "BrushWidthSlider_p.h"

#include "DoodlePointer_p.h"

#include <QAccessible>
#include <QAccessibleValueInterface>
#include <QAccessibleWidget>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace {
constexpr double kTrackHeight = 2.0;

// What screen readers see of the slider: a slider with a value, which they
// may also set.
class BrushWidthSliderAccessible : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit BrushWidthSliderAccessible(BrushWidthSlider *slider)
        : QAccessibleWidget(slider, QAccessible::Slider)
    {}
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QVariant currentValue() const override { return slider()->value(); }
    void setCurrentValue(const QVariant &value) override { slider()->moveToValue(value.toFloat()); }
    QVariant maximumValue() const override { return slider()->maximum(); }
    QVariant minimumValue() const override { return slider()->minimum(); }
    QVariant minimumStepSize() const override { return 1.0f; }

private:
    BrushWidthSlider *slider() const { return static_cast<BrushWidthSlider *>(widget()); }
};

QAccessibleInterface *accessibleSlider(const QString &className, QObject *object)
{
    if (className == QLatin1String("BrushWidthSlider") && object && object->isWidgetType())
        return new BrushWidthSliderAccessible(static_cast<BrushWidthSlider *>(object));
    return nullptr;
}
} // namespace

BrushWidthSlider::BrushWidthSlider(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_AcceptTouchEvents);
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(tr("Width"));
    static const bool registered = [] {
        QAccessible::installFactory(accessibleSlider);
        return true;
    }();
    Q_UNUSED(registered)
}

void BrushWidthSlider::setRange(float minimum, float maximum)
{
    m_minimum = minimum;
    m_maximum = std::max(minimum, maximum);
    setValue(m_value);
}

void BrushWidthSlider::setValue(float value)
{
    m_value = std::clamp(value, m_minimum, m_maximum);
    update();
}

void BrushWidthSlider::setThumbImage(const QImage &image)
{
    m_thumb = image;
    update();
}

void BrushWidthSlider::setTrackColors(const QColor &minimumSide, const QColor &maximumSide)
{
    m_minimumTrack = minimumSide;
    m_maximumTrack = maximumSide;
    update();
}

double BrushWidthSlider::thumbWidth() const
{
    return m_thumb.isNull() ? 0.0 : m_thumb.deviceIndependentSize().width();
}

double BrushWidthSlider::positionOf(float value) const
{
    const double travel = width() - thumbWidth();
    const double range = double(m_maximum) - double(m_minimum);
    const double fraction = range > 0 ? (double(value) - double(m_minimum)) / range : 0.0;
    return thumbWidth() * 0.5 + travel * fraction;
}

void BrushWidthSlider::keyPressEvent(QKeyEvent *event)
{
    // The arrows move by a point, Page Up and Down by five, Home and End to the ends.
    const float range = m_maximum - m_minimum;
    float target = m_value;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        target -= 1.0f;
        break;
    case Qt::Key_Right:
    case Qt::Key_Up:
        target += 1.0f;
        break;
    case Qt::Key_PageDown:
        target -= range / 4.0f;
        break;
    case Qt::Key_PageUp:
        target += range / 4.0f;
        break;
    case Qt::Key_Home:
        target = m_minimum;
        break;
    case Qt::Key_End:
        target = m_maximum;
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    moveToValue(target);
}

void BrushWidthSlider::moveToValue(float value)
{
    const float before = m_value;
    setValue(value);
    if (m_value == before)
        return;
    QAccessibleValueChangeEvent change(this, m_value);
    QAccessible::updateAccessibility(&change);
    emit valueChanged(m_value);
}

void BrushWidthSlider::moveTo(double x)
{
    const double travel = width() - thumbWidth();
    const double fraction =
        travel > 0 ? std::clamp((x - thumbWidth() * 0.5) / travel, 0.0, 1.0) : 0.0;
    const float value =
        float(double(m_minimum) + fraction * (double(m_maximum) - double(m_minimum)));
    moveToValue(value);
}

bool BrushWidthSlider::event(QEvent *event)
{
    const std::optional<DoodlePointer> pointer = DoodlePointer::read(event);
    if (!pointer)
        return QWidget::event(event);
    switch (pointer->phase) {
    case DoodlePointer::Phase::Press:
        m_tracking = true;
        moveTo(pointer->position.x());
        break;
    case DoodlePointer::Phase::Move:
        if (!m_tracking)
            return QWidget::event(event);
        moveTo(pointer->position.x());
        break;
    case DoodlePointer::Phase::Release:
        if (m_tracking)
            moveTo(pointer->position.x());
        m_tracking = false;
        break;
    case DoodlePointer::Phase::Cancel:
        m_tracking = false;
        break;
    }
    event->accept();
    return true;
}

void BrushWidthSlider::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const double thumbX = positionOf(m_value);
    const double trackY = (height() - kTrackHeight) * 0.5;
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_maximumTrack);
    painter.drawRoundedRect(QRectF(0, trackY, width(), kTrackHeight), 1, 1);
    painter.setBrush(m_minimumTrack);
    painter.drawRoundedRect(QRectF(0, trackY, thumbX, kTrackHeight), 1, 1);
    if (m_thumb.isNull())
        return;
    QRectF thumb(QPointF(), m_thumb.deviceIndependentSize());
    thumb.moveCenter(QPointF(thumbX, height() * 0.5));
    painter.drawImage(thumb, m_thumb);
    if (hasFocus() && window()->testAttribute(Qt::WA_KeyboardFocusChange)) { // the keyboard's ring
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2.0));
        painter.drawEllipse(thumb.adjusted(-2, -2, 2, 2));
    }
}
