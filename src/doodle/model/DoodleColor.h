#pragma once

#include <doodle/DoodleExport.h>

#include <QColor>

// A colour as four float components between 0 and 1, kept exactly as given.
// QColor keeps 16 bits per channel, which is too coarse for the wire form:
// its bytes are truncated from the float components themselves. A
// default-constructed colour is none.
class DOODLE_EXPORT DoodleColor
{
public:
    DoodleColor() = default;
    // Implicit both ways, so that QColor values can be stored and the colour
    // handed to drawing code as it is. An invalid QColor is none.
    DoodleColor(const QColor &color);
    DoodleColor(Qt::GlobalColor color) : DoodleColor(QColor(color)) {}
    operator QColor() const;

    static DoodleColor fromRgbF(float red, float green, float blue, float alpha = 1.0f);

    bool isValid() const { return m_valid; }
    float redF() const { return m_red; }
    float greenF() const { return m_green; }
    float blueF() const { return m_blue; }
    float alphaF() const { return m_alpha; }

    friend bool operator==(const DoodleColor &a, const DoodleColor &b)
    {
        return a.m_valid == b.m_valid && a.m_red == b.m_red && a.m_green == b.m_green &&
               a.m_blue == b.m_blue && a.m_alpha == b.m_alpha;
    }
    friend bool operator!=(const DoodleColor &a, const DoodleColor &b) { return !(a == b); }

private:
    float m_red = 0;
    float m_green = 0;
    float m_blue = 0;
    float m_alpha = 0;
    bool m_valid = false;
};
