#pragma once

#include <QColor>
#include <QImage>
#include <QWidget>

// The width slider of a BrushLineView: a float value between a minimum and a
// maximum, a thin track (one colour left of the thumb, another right of it)
// and a thumb image. Pressing anywhere on it moves the thumb there; dragging
// reports every change. Tab reaches it, and the arrow keys move it.
class BrushWidthSlider : public QWidget
{
    Q_OBJECT
public:
    explicit BrushWidthSlider(QWidget *parent = nullptr);

    void setRange(float minimum, float maximum);
    float minimum() const { return m_minimum; }
    float maximum() const { return m_maximum; }
    float value() const { return m_value; }
    // Clamped to the range; reports nothing.
    void setValue(float value);
    // Clamped to the range; a change is reported as the user's.
    void moveToValue(float value);
    void setThumbImage(const QImage &image);
    void setTrackColors(const QColor &minimumSide, const QColor &maximumSide);
    // Where the thumb's centre is for `value`, in the slider's coordinates.
    double positionOf(float value) const;

signals:
    // A change made by the user.
    void valueChanged(float value);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    double thumbWidth() const;
    void moveTo(double x);

    float m_minimum = 0.0f;
    float m_maximum = 1.0f;
    float m_value = 0.0f;
    QImage m_thumb;
    QColor m_minimumTrack = Qt::white;
    QColor m_maximumTrack = Qt::gray;
    bool m_tracking = false;
};
