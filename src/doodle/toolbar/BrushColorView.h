#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/support/DoodleWeak.h>
#include <doodle/toolbar/ZQDoodleRoundedView.h>

#include <QColor>
#include <QList>
#include <QPointer>

class BrushColorView;
class ZQDoodleButton;

// Told the colour chosen in a BrushColorView.
class DOODLE_EXPORT BrushColorViewDelegate
{
public:
    virtual ~BrushColorViewDelegate() = default;
    virtual void brushColorView(BrushColorView *view, const QColor &color) = 0;
};

// Ten colour swatches in two rows of five. A touch between the swatches goes
// to the swatch found by hitTest(); hiding the view reports the selected
// swatch's colour once more.
class DOODLE_EXPORT BrushColorView : public ZQDoodleRoundedView
{
    Q_OBJECT
public:
    // The swatch equal to `color`, if any, is selected and ringed.
    BrushColorView(const QRect &frame, const QColor &color, QWidget *parent = nullptr);

    // The fixed palette, a new list each time.
    static QList<QColor> brushColorArray();
    QList<QColor> colorArray() const { return m_colorArray; }
    // 1 to 10 for the selected swatch; 0 when none is.
    qint64 selectedTag() const { return m_selectedTag; }
    BrushColorViewDelegate *delegate() const { return m_delegate.get(); }
    void setDelegate(BrushColorViewDelegate *delegate) { m_delegate = delegate; }

    void configWithColor(const QColor &color);
    // Selects `swatch` and reports its colour.
    void selectedColor(ZQDoodleButton *swatch);
    // The swatch whose type is `tag`; nullptr when there is none.
    ZQDoodleButton *swatchWithTag(qint64 tag) const;
    // What a touch at `point` lands on: a swatch, this view, or nullptr
    // outside it. On the background between swatches the swatch with the
    // smallest sqrt(dx * dx - dy * dy) to its centre wins; a negative radicand
    // never does.
    QWidget *hitTest(const QPointF &point) const;
    void setVisible(bool visible) override;

protected:
    bool event(QEvent *event) override;

private:
    bool trackBackgroundTouch(QEvent *event);

    QList<QColor> m_colorArray;
    qint64 m_selectedTag = 0;
    DoodleWeak<BrushColorViewDelegate> m_delegate;
    QPointer<ZQDoodleButton> m_tracked;
};
