#pragma once

#include <doodle/DoodleExport.h>

#include <QAbstractButton>
#include <QColor>
#include <QImage>
#include <QRectF>

#include <memory>

class QPainter;
class ZQDoodleButtonPrivate;

// The button of the tool bars and pickers: it carries an integer type (its
// tag), a selected state with an image for the normal and the selected state,
// and the look of a round-cornered tile with a fill, a border and a title.
// Mouse, touch and stylus taps all click it, and so do Space and Enter when it
// has the keyboard focus, which it shows with a ring. A disabled button is
// drawn dimmed. A checkable button is checked exactly while it is selected,
// so that accessibility tools announce the selection; a tap does not toggle it.
class DOODLE_EXPORT ZQDoodleButton : public QAbstractButton
{
    Q_OBJECT
public:
    explicit ZQDoodleButton(QWidget *parent = nullptr);
    ~ZQDoodleButton() override;

    qint64 type() const;
    void setType(qint64 type);
    // Shows the selected image (and marks it checked when checkable); a tap
    // does not change it.
    bool isSelected() const;
    void setSelected(bool selected);
    QImage normalImage() const;
    void setNormalImage(const QImage &image);
    QImage selectedImage() const;
    void setSelectedImage(const QImage &image);
    // The selected image while selected, when there is one; else the normal image.
    QImage currentImage() const;

    // The frame in the parent's coordinates as it was set, fractions kept;
    // the widget itself sits on the nearest whole pixels.
    QRectF frame() const;
    void setFrame(const QRectF &frame);

    QColor backgroundColor() const;
    void setBackgroundColor(const QColor &color);
    double cornerRadius() const;
    void setCornerRadius(double radius);
    // The border is drawn inside the bounds along the rounded corners.
    QColor borderColor() const;
    void setBorderColor(const QColor &color);
    double borderWidth() const;
    void setBorderWidth(double width);
    // Whether the image and the title are cut to the rounded shape.
    bool clipsToBounds() const;
    void setClipsToBounds(bool clips);
    QColor titleColor() const;
    void setTitleColor(const QColor &color);
    // The tile's size, centred in the bounds; an empty size (the default)
    // fills them. Around a smaller tile the bounds still take taps.
    QSizeF tileSize() const;
    void setTileSize(const QSizeF &size);
    // The tile in the button's coordinates.
    QRectF tileRect() const;
    // None (the default), or a ring of this colour 2 points outside the tile
    // with a gap of the background between, which shows on a tile of any colour.
    QColor markColor() const;
    void setMarkColor(const QColor &color);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void nextCheckState() override;
    void paintEvent(QPaintEvent *event) override;

private:
    const std::unique_ptr<ZQDoodleButtonPrivate> d;
};
