#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/toolbar/ZQDoodleRoundedView.h>

#include <QColor>
#include <QImage>
#include <QList>
#include <QSizeF>
#include <QStringList>

#include <memory>

class ZQColourToolbar;
class ZQColourToolbarPrivate;
class ZQDoodleButton;

// Told the colour chosen on a colour tool bar.
class DOODLE_EXPORT ColourToolbarDelegate
{
public:
    virtual ~ColourToolbarDelegate() = default;
    virtual void colourToolbar(ZQColourToolbar *toolbar, const QColor &color) = 0;
};

// A row of colour swatches from the bundle's colour table, for a host to
// place beside the board. Choosing a colour hides the bar and reports it.
class DOODLE_EXPORT ZQColourToolbar : public ZQDoodleRoundedView
{
    Q_OBJECT
public:
    explicit ZQColourToolbar(const QRect &frame = QRect(), QWidget *parent = nullptr);
    ~ZQColourToolbar() override;

    QStringList brushColorsArray() const;
    // The colour of the current swatch.
    QColor currentColor() const;
    // One swatch per table entry, in table order.
    QList<ZQDoodleButton *> buttons() const;
    ZQDoodleButton *curBrushButton() const;
    QSizeF buttonSize() const;
    void setButtonSize(const QSizeF &size);
    qint64 buttonSpacing() const;
    void setButtonSpacing(qint64 spacing);
    ColourToolbarDelegate *delegate() const;
    void setDelegate(ColourToolbarDelegate *delegate);

    // Loads the table and builds the swatches, the first one selected.
    void initView();
    // Makes the tapped swatch current, hides the bar and reports its colour;
    // a tap on the current swatch is ignored.
    void chooseColorAction(ZQDoodleButton *button);
    // Centres the swatches as a group.
    void layoutSubviews();

    static QColor colorWithHexString(const QString &text);
    static QImage imageWithColor(const QColor &color, const QImage &image);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    const std::unique_ptr<ZQColourToolbarPrivate> d;
};
