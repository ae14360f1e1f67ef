#include "BrushColorView.h"

#include "DoodlePointer_p.h"
#include "ZQDoodleButton.h"

#include <QEvent>

#include <cmath>
#include <limits>

namespace {

struct PaletteEntry
{
    int red, green, blue;
    const char *name;
};

const PaletteEntry kPalette[] = {
    {255, 0, 0, QT_TRANSLATE_NOOP("BrushColorView", "Red")},
    {255, 121, 0, QT_TRANSLATE_NOOP("BrushColorView", "Orange")},
    {255, 241, 0, QT_TRANSLATE_NOOP("BrushColorView", "Yellow")},
    {143, 195, 31, QT_TRANSLATE_NOOP("BrushColorView", "Green")},
    {1, 130, 255, QT_TRANSLATE_NOOP("BrushColorView", "Blue")},
    {145, 0, 239, QT_TRANSLATE_NOOP("BrushColorView", "Purple")},
    {255, 0, 148, QT_TRANSLATE_NOOP("BrushColorView", "Magenta")},
    {253, 165, 165, QT_TRANSLATE_NOOP("BrushColorView", "Pink")},
    {150, 190, 214, QT_TRANSLATE_NOOP("BrushColorView", "Light blue")},
    {0, 0, 0, QT_TRANSLATE_NOOP("BrushColorView", "Black")},
};

float component(int byte)
{
    return float(byte) / 255.0f;
}

} // namespace

BrushColorView::BrushColorView(const QRect &frame, const QColor &color, QWidget *parent)
    : ZQDoodleRoundedView(parent)
{
    setGeometry(frame);
    setAttribute(Qt::WA_AcceptTouchEvents);
    setCornerRadius(8.0);
    setBackgroundColor(QColor::fromRgbF(22 / 255.0f, 22 / 255.0f, 22 / 255.0f, 0.9f));
    m_colorArray = brushColorArray();
    configWithColor(color);
}

QList<QColor> BrushColorView::brushColorArray()
{
    QList<QColor> colours;
    for (const PaletteEntry &entry : kPalette)
        colours.append(QColor::fromRgbF(component(entry.red), component(entry.green),
                                        component(entry.blue), 1.0f));
    return colours;
}

void BrushColorView::configWithColor(const QColor &color)
{
    const double side = width() / 11.0;
    const double gap = (height() - 2 * side) / 3.0;
    for (int index = 0; index < m_colorArray.size(); ++index) {
        const QColor swatchColour = m_colorArray.at(index);
        auto *swatch = new ZQDoodleButton(this);
        swatch->setType(index + 1);
        swatch->setBackgroundColor(swatchColour);
        swatch->setClipsToBounds(true);
        swatch->setCornerRadius(side * 0.5);
        swatch->setBorderColor(Qt::white);
        const bool matches = swatchColour == color;
        if (matches)
            m_selectedTag = index + 1;
        swatch->setBorderWidth(matches ? 2.0 : 0.0);
        if (index < int(std::size(kPalette)))
            swatch->setAccessibleName(tr(kPalette[index].name));
        connect(swatch, &ZQDoodleButton::clicked, this, [this, swatch] { selectedColor(swatch); });
        const double x = side * (2 * (index % 5) + 1);
        swatch->setFrame(QRectF(x, index < 5 ? gap : side + 2 * gap, side, side));
        swatch->show();
    }
}

void BrushColorView::selectedColor(ZQDoodleButton *swatch)
{
    // The ring stays on the swatch that matched at configuration.
    swatch->setSelected(true);
    m_selectedTag = swatch->type();
    if (BrushColorViewDelegate *delegate = m_delegate.get())
        delegate->brushColorView(this, m_colorArray.value(m_selectedTag - 1));
}

ZQDoodleButton *BrushColorView::swatchWithTag(qint64 tag) const
{
    const auto swatches = findChildren<ZQDoodleButton *>(Qt::FindDirectChildrenOnly);
    for (ZQDoodleButton *swatch : swatches) {
        if (swatch->type() == tag)
            return swatch;
    }
    return nullptr;
}

QWidget *BrushColorView::hitTest(const QPointF &point) const
{
    if (!rect().contains(point.toPoint()))
        return nullptr;
    if (QWidget *child = childAt(point.toPoint()))
        return child;
    double best = std::numeric_limits<double>::max();
    QWidget *result = const_cast<BrushColorView *>(this);
    for (qint64 tag = 1; tag <= m_colorArray.size(); ++tag) {
        ZQDoodleButton *swatch = swatchWithTag(tag);
        if (!swatch)
            continue;
        const QPointF centre = swatch->frame().center();
        const double dx = point.x() - centre.x(), dy = point.y() - centre.y();
        // The minus sign is the rule: a touch straight above or below a
        // centre gives no number and never picks that swatch.
        const float distance = std::sqrt(float(dx * dx - dy * dy));
        if (best > double(distance)) {
            result = swatch;
            best = double(distance);
        }
    }
    return result;
}

void BrushColorView::setVisible(bool visible)
{
    ZQDoodleRoundedView::setVisible(visible);
    if (visible)
        return;
    // With no swatch selected there is no colour to report.
    if (ZQDoodleButton *swatch = swatchWithTag(m_selectedTag); swatch && m_selectedTag != 0)
        selectedColor(swatch);
}

bool BrushColorView::event(QEvent *event)
{
    return trackBackgroundTouch(event) || ZQDoodleRoundedView::event(event);
}

// A press on the background that hitTest() gives to a swatch presses that
// swatch, and lifting inside the view clicks it. Presses that land on no
// swatch pass to the widget under the view.
bool BrushColorView::trackBackgroundTouch(QEvent *event)
{
    const std::optional<DoodlePointer> pointer = DoodlePointer::read(event);
    if (!pointer)
        return false;
    if (pointer->phase == DoodlePointer::Phase::Press)
        m_tracked = qobject_cast<ZQDoodleButton *>(hitTest(pointer->position));
    ZQDoodleButton *swatch = m_tracked;
    if (!swatch)
        return false;
    const bool inside = rect().contains(pointer->position.toPoint());
    switch (pointer->phase) {
    case DoodlePointer::Phase::Press:
    case DoodlePointer::Phase::Move:
        swatch->setDown(inside);
        break;
    case DoodlePointer::Phase::Release:
        m_tracked.clear();
        swatch->setDown(false);
        if (inside)
            swatch->click();
        break;
    case DoodlePointer::Phase::Cancel:
        m_tracked.clear();
        swatch->setDown(false);
        break;
    }
    event->accept();
    return true;
}
