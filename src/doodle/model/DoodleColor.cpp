#include "DoodleColor.h"

DoodleColor::DoodleColor(const QColor &color)
{
    if (color.isValid())
        *this = fromRgbF(color.redF(), color.greenF(), color.blueF(), color.alphaF());
}

DoodleColor::operator QColor() const
{
    return m_valid ? QColor::fromRgbF(m_red, m_green, m_blue, m_alpha) : QColor();
}

DoodleColor DoodleColor::fromRgbF(float red, float green, float blue, float alpha)
{
    DoodleColor color;
    color.m_red = red;
    color.m_green = green;
    color.m_blue = blue;
    color.m_alpha = alpha;
    color.m_valid = true;
    return color;
}
