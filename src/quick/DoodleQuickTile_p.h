#pragma once

#include <doodle/board/DoodleTile_p.h>

#include <QBasicTimer>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

// A button of the Quick board's bars and pickers, drawn as the Widgets
// board's buttons are: it carries an integer type, a selected state and the
// tile it paints. Mouse, touch and stylus taps click it, and so do Space and
// Enter when it has the keyboard focus; the arrow keys move the focus to the
// previous or next button beside it. A focus ring shows only when the
// keyboard brought the focus. Hovering asks for its tooltip after a moment.
class DoodleQuickTile : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool selected READ isSelected NOTIFY selectedChanged)
    Q_PROPERTY(bool checkable READ isCheckable CONSTANT)
    Q_PROPERTY(QString accessibleName READ accessibleName NOTIFY textsChanged)
    Q_PROPERTY(QString toolTip READ toolTip NOTIFY textsChanged)
public:
    explicit DoodleQuickTile(QQuickItem *parent = nullptr);

    qint64 type() const { return m_type; }
    void setType(qint64 type) { m_type = type; }
    bool isSelected() const { return m_tile.selected; }
    void setSelected(bool selected);
    // A tool or a choice: announced as checked while selected.
    bool isCheckable() const { return m_checkable; }
    void setCheckable(bool checkable) { m_checkable = checkable; }
    QString accessibleName() const { return m_accessibleName; }
    QString toolTip() const { return m_toolTip; }
    void setTexts(const QString &accessibleName, const QString &toolTip);
    // The title drawn in the tile, in `font`.
    void setTitle(const QString &title, const QFont &font);
    // The look; call update() after changing it.
    DoodleTile &look() { return m_tile; }
    // Places the tile on whole points, as the Widgets board's buttons sit.
    void setFrame(const QRectF &frame);
    bool hasFocusRing() const { return m_ring; }

    void paint(QPainter *painter) override;

public slots:
    void click();

signals:
    void clicked();
    void selectedChanged();
    void textsChanged();
    // Hovered long enough (true) or left (false).
    void toolTipWanted(bool shown);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseUngrabEvent() override;
    void touchEvent(QTouchEvent *event) override;
    void touchUngrabEvent() override;
    void hoverEnterEvent(QHoverEvent *event) override;
    void hoverLeaveEvent(QHoverEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    void setDown(bool down);
    void release(const QPointF &at);
    void moveFocus(bool forward);

    DoodleTile m_tile;
    qint64 m_type = 0;
    bool m_checkable = false;
    bool m_down = false;
    bool m_ring = false;
    QString m_accessibleName;
    QString m_toolTip;
    QString m_title;
    QFont m_font;
    QBasicTimer m_hover;
};
