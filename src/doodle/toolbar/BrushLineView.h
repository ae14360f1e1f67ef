#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/toolbar/ZQDoodleRoundedView.h>

#include <QColor>
#include <QImage>
#include <QRectF>

class BrushWidthSlider;

// A width chooser: a slider from 2 to 22 points beside a live preview of the
// brush (a filled disc) or the eraser (an outline) at the chosen width.
class DOODLE_EXPORT BrushLineView : public ZQDoodleRoundedView
{
    Q_OBJECT
public:
    // An invalid colour previews in white.
    BrushLineView(const QRect &frame, const QColor &color, double width, QWidget *parent = nullptr);

    QColor color() const { return m_color; }
    double getWidth() const { return m_curWidth; }
    // 0 previews a filled disc; any other type an outline of width 1.
    void setType(qint64 type);
    // The preview disc in this view's coordinates.
    QRectF previewRect() const { return m_preview; }
    QWidget *widthSlider() const;

    void configInit();
    // Resizes the preview to the current width around its centre.
    void updatePreview();
    // The slider's thumb: a white disc 28 points across at the screen scale.
    static QImage thumbImage();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void sliderValueChanged(float value);

    QColor m_color;
    double m_curWidth = 0.0;
    bool m_outline = false;
    QRectF m_preview;
    BrushWidthSlider *m_widthSlider = nullptr;
};
