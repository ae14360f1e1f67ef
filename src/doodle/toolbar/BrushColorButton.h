#pragma once

#include <doodle/DoodleExport.h>

#include <QAbstractButton>
#include <QColor>
#include <QRectF>

// A round colour swatch: a disc of the tint colour, centred and as large as
// the shorter side, with a white ring while selected.
class DOODLE_EXPORT BrushColorButton : public QAbstractButton
{
    Q_OBJECT
public:
    explicit BrushColorButton(QWidget *parent = nullptr);

    bool isSelected() const { return m_selected; }
    // The ring is 2 points wide when selected, absent otherwise.
    void setSelected(bool selected);
    QColor tintColor() const { return m_tintColor; }
    // An invalid colour leaves the disc unfilled.
    void setTintColor(const QColor &color);
    QRectF discRect() const { return m_disc; }
    double discBorderWidth() const { return m_borderWidth; }

    void configInit();
    // Fits the disc to new bounds; unchanged bounds leave it alone.
    void layoutSubviews();

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_selected = false;
    QColor m_tintColor;
    QRectF m_disc;
    double m_borderWidth = 0.0;
    QRectF m_preBounds;
};
