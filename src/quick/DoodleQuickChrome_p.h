#pragma once

// The Quick board's chrome: its tool bar, the floating button that folds and
// unfolds it, the option pickers above it, the clear confirmation and the
// tooltips, laid out and answered as the Widgets board's are. Not installed.
#include <doodle/board/DoodleBarLayout_p.h>

#include <QHash>
#include <QPointer>
#include <QQuickPaintedItem>

class DoodleBoard;
class DoodleQuickTile;
class QQmlComponent;

// A round-cornered panel (the bar, a picker, an alert and its backdrop) that
// takes the presses landing on it between its buttons, so that no gesture
// starts under it, and tells of Escape and Enter pressed inside it.
class DoodleQuickPanel : public QQuickPaintedItem
{
    Q_OBJECT
public:
    explicit DoodleQuickPanel(QQuickItem *parent);

    void setLook(const QColor &color, double radius);
    // A message drawn centred above `textBottom` points from the bottom.
    void setText(const QString &text, double textBottom);
    void paint(QPainter *painter) override;

signals:
    void escapePressed();
    void enterPressed();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void touchEvent(QTouchEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QColor m_color;
    double m_radius = 0.0;
    QString m_text;
    double m_textBottom = 0.0;
};

class DoodleQuickChrome : public QObject
{
    Q_OBJECT
public:
    explicit DoodleQuickChrome(DoodleBoard *board);
    ~DoodleQuickChrome() override;

    // Follows the board's size: the bar, the floating button and an open picker.
    void layout();
    // The floating button's tap: unfolds a folded bar, folds an open one.
    void toggleToolBar();
    bool isFolded() const { return m_folded; }
    // A board that cannot be edited folds its bar and hides the floating button.
    void setEditable(bool editable);
    // Marks the tool of `mode` selected; other modes leave the marks.
    void markTool(qint64 mode);
    void showColour(const QColor &color);
    // Undo dims when this user has nothing to undo, clear when the board is empty.
    void updateCommandButtons(bool canUndo, bool canClear);
    bool isAskingToClear() const { return m_alert != nullptr; }
    // Closes the open picker, if any, as a gesture on the board does.
    void closePicker();

private:
    DoodleQuickTile *makeTile(QQuickItem *parent, const QString &name);
    void buildBar();
    DoodleQuickTile *tileOfType(qint64 type) const;
    void tapped(const DoodleToolEntry &entry);
    void togglePicker(const DoodlePickerEntry &picker);
    void openPicker(const DoodlePickerEntry &picker);
    void fitPicker(const QRect &start);
    void choose(DoodleQuickTile *choice);
    void styleChoice(DoodleQuickTile *choice, int index, bool chosen);
    void confirmClear();
    void answerClear(bool clear);
    void showToolTip(DoodleQuickTile *tile, bool shown);

    DoodleBoard *m_board;
    QPointer<QQmlComponent> m_tileComponent;
    DoodleQuickPanel *m_bar = nullptr;
    DoodleQuickTile *m_toolButton = nullptr;
    QList<DoodleQuickTile *> m_tools; // the bar's buttons and dividers, in display order
    bool m_folded = true;
    // The open picker, what it offers and the entries of its table.
    QPointer<DoodleQuickPanel> m_picker;
    const DoodlePickerEntry *m_pickerEntry = nullptr;
    DoodlePickerTable m_table;
    QList<DoodleQuickTile *> m_choices;
    QHash<qint64, qint64> m_selectIndex; // each picker type's saved choice
    QPointer<DoodleQuickPanel> m_alert;
    QPointer<DoodleQuickPanel> m_tip;
};
