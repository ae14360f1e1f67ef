#pragma once

#include <doodle/DoodleExport.h>

#include <QColor>
#include <QWidget>

// A view that paints its background colour as a rectangle with rounded
// corners, as the tool bars and pickers are drawn. It lets every event it
// does not handle itself pass to the widget under it.
class DOODLE_EXPORT ZQDoodleRoundedView : public QWidget
{
    Q_OBJECT
public:
    explicit ZQDoodleRoundedView(QWidget *parent = nullptr);

    // None (an invalid colour) or transparent paints nothing.
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor &color);
    double cornerRadius() const { return m_cornerRadius; }
    void setCornerRadius(double radius);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_backgroundColor;
    double m_cornerRadius = 0.0;
};
