// The Quick board's option pickers and its clear confirmation: placed, styled
// and answered as the Widgets board's are.
#include "DoodleBoard.h"
#include "DoodleBoard_p.h"
#include "DoodleQuickChrome_p.h"
#include "DoodleQuickTile_p.h"

#include <QFontMetricsF>
#include <QGuiApplication>

namespace {

constexpr double kAlertWidth = 260;
constexpr double kAlertHeight = 120;
constexpr double kAlertButtonWidth = 90;
constexpr double kAlertButtonHeight = 32;

} // namespace

void DoodleQuickChrome::togglePicker(const DoodlePickerEntry &picker)
{
    if (m_picker && m_pickerEntry == &picker) {
        closePicker();
        return;
    }
    closePicker();
    openPicker(picker);
}

void DoodleQuickChrome::openPicker(const DoodlePickerEntry &picker)
{
    DoodleQuickTile *anchor = tileOfType(picker.anchorType);
    // A child of the bar, after the button that opened it: the keyboard's
    // path runs from that button through the choices to the next button.
    auto *panel = new DoodleQuickPanel(m_bar);
    panel->setObjectName(QStringLiteral("doodlePicker"));
    if (anchor)
        panel->stackAfter(anchor);
    m_picker = panel;
    m_pickerEntry = &picker;
    m_table = DoodleBarLayout::pickerTable(picker.pickerType);
    m_choices.clear();
    const qint64 selected = m_selectIndex.value(picker.pickerType);
    for (int index = 0; index < m_table.count(); ++index) {
        DoodleQuickTile *choice = makeTile(panel, QStringLiteral("choice%1").arg(index));
        choice->setType(index);
        choice->setCheckable(true);
        choice->setSelected(index == selected);
        styleChoice(choice, index, false);
        connect(choice, &DoodleQuickTile::clicked, this, [this, choice] { choose(choice); });
        m_choices << choice;
    }
    connect(panel, &DoodleQuickPanel::escapePressed, this, [this, anchor] {
        closePicker();
        if (anchor)
            anchor->forceActiveFocus(Qt::TabFocusReason);
    });
    panel->setLook(DoodleBarLayout::pickerColor(), 0);
    const double anchorX = anchor ? anchor->mapToItem(m_board, QPointF()).x() : m_bar->x();
    fitPicker(DoodleBarLayout::pickerStart(picker, anchorX, qRound(m_bar->y())));
    // The keyboard follows into the picker when it was on the button.
    if (anchor && anchor->hasActiveFocus() && !m_choices.isEmpty()) {
        const qint64 at = selected >= 0 && selected < m_choices.size() ? selected : 0;
        m_choices.at(at)->forceActiveFocus(Qt::TabFocusReason);
    }
}

void DoodleQuickChrome::fitPicker(const QRect &start)
{
    if (!m_picker || !m_pickerEntry)
        return;
    const qsizetype count = m_choices.size();
    const DoodleChoiceStyle last =
        DoodleBarLayout::choiceStyle(m_pickerEntry->pickerType, int(count - 1), false, {}, {});
    const int spacing = DoodleBarLayout::choiceSpacing(m_pickerEntry->pickerType);
    const QRect bar(m_bar->position().toPoint(), m_bar->size().toSize());
    const QRect button(m_toolButton->position().toPoint(), m_toolButton->size().toSize());
    const QRect placed =
        DoodleBarLayout::fitPicker(start, bar, button, int(m_board->width()), [&](int available) {
            return DoodleBarLayout::pickerFittingSize(count, last.side, spacing, start.width(),
                                                      available);
        });
    m_picker->setPosition(m_bar->mapFromItem(m_board, QPointF(placed.topLeft())));
    m_picker->setSize(placed.size());
    m_picker->setLook(DoodleBarLayout::pickerColor(),
                      DoodleBarLayout::pickerCornerRadius(placed.height()));
    const QList<QRectF> cells =
        DoodleBarLayout::choiceCells(count, QSizeF(placed.size()), last.side, spacing);
    for (qsizetype i = 0; i < cells.size(); ++i)
        m_choices.at(i)->setFrame(cells.at(i));
}

void DoodleQuickChrome::styleChoice(DoodleQuickTile *choice, int index, bool chosen)
{
    const qint64 type = m_pickerEntry->pickerType;
    const QString colour = m_table.colours.value(index);
    const double value = m_table.sizes.value(index);
    const DoodleChoiceStyle style = DoodleBarLayout::choiceStyle(
        type, index, choice->isSelected() && !chosen, DoodleBarLayout::colorWithHexString(colour),
        m_board->brushColor());
    const bool text = type == ZQDoodleButtonViewTypeTextSize;
    DoodleTile &look = choice->look();
    look.backgroundColor = style.fill;
    look.tileSize = QSizeF(style.side, style.side);
    look.cornerRadius = style.side * 0.5;
    look.borderColor = style.border;
    look.borderWidth = style.borderWidth;
    look.clipsToBounds = !text;
    look.markColor = choice->isSelected() ? DoodleBarLayout::markFor(type) : QColor();
    // After a choice every border is white (clear for text sizes), the eraser
    // dots' light grey included; the chosen one is red (white for text sizes).
    if (chosen)
        look.borderColor = choice->isSelected()
                               ? (text ? QColor(Qt::white) : QColor(Qt::red))
                               : (text ? QColor(Qt::transparent) : QColor(Qt::white));
    if (text) {
        QFont font = QGuiApplication::font();
        font.setPixelSize(qMax(1, qRound(style.side - 2)));
        choice->setTitle(QStringLiteral("T"), font);
    }
    const QString name = DoodleBarLayout::choiceName(type, colour, value);
    choice->setTexts(name, QString());
    choice->update();
}

void DoodleQuickChrome::choose(DoodleQuickTile *choice)
{
    const qint64 type = m_pickerEntry->pickerType;
    const int index = int(choice->type());
    if (index == m_selectIndex.value(type))
        return;
    m_selectIndex[type] = index;
    for (DoodleQuickTile *other : std::as_const(m_choices)) {
        other->setSelected(other == choice);
        styleChoice(other, int(other->type()), true);
    }
    // A choice leaves its picker open.
    switch (type) {
    case ZQDoodleButtonViewTypeColour:
        m_board->setBrushColor(DoodleBarLayout::colorWithHexString(m_table.colours.value(index)));
        break;
    case ZQDoodleButtonViewTypeBrushWidth:
        m_board->setBrushWidth(double(float(m_table.sizes.value(index))));
        break;
    case ZQDoodleButtonViewTypeEraserWidth:
        m_board->setEraserWidth(double(float(m_table.sizes.value(index))));
        break;
    default:
        m_board->setTextSize(double(float(m_table.sizes.value(index))));
        break;
    }
}

void DoodleQuickChrome::closePicker()
{
    m_choices.clear();
    m_pickerEntry = nullptr;
    if (QQuickItem *picker = m_picker.data()) {
        m_picker.clear();
        // Off the bar at once; deleted later, as a choice on it may be the
        // sender of the tap that led here.
        picker->setVisible(false);
        picker->setParentItem(nullptr);
        picker->setParent(nullptr);
        picker->deleteLater();
    }
}

void DoodleQuickChrome::confirmClear()
{
    DoodleBoardPrivate *d = m_board->d.get();
    if (!m_board->confirmsClear()) {
        m_board->clear();
        return;
    }
    if (m_alert || d->m_doodlePathCache.size() == 0)
        return;
    // A backdrop over the whole board that takes every press while the question is open.
    auto *backdrop = new DoodleQuickPanel(m_board);
    backdrop->setObjectName(QStringLiteral("doodleAlert"));
    backdrop->setLook(QColor(0, 0, 0, 100), 0);
    backdrop->setSize(m_board->size());
    backdrop->setZ(3);
    auto *box = new DoodleQuickPanel(backdrop);
    box->setLook(QColor(30, 30, 30, 240), 8);
    const QString message =
        QCoreApplication::translate("DoodleLayout", "Clear the board for everyone in the call?");
    box->setText(message, kAlertButtonHeight + 16);
    // Wide enough for the question on one line where the board allows.
    const double wanted = QFontMetricsF(QGuiApplication::font()).horizontalAdvance(message) + 32;
    box->setSize(
        QSizeF(std::min(std::max(kAlertWidth, wanted), m_board->width() - 16), kAlertHeight));
    box->setPosition(QPointF(qRound((m_board->width() - box->width()) / 2),
                             qRound((m_board->height() - box->height()) / 2)));
    // The platform's titles for the standard buttons, as the Widgets alert shows them.
    const QString titles[] = {QCoreApplication::translate("QPlatformTheme", "Cancel"),
                              QCoreApplication::translate("QPlatformTheme", "OK")};
    for (int i = 0; i < 2; ++i) {
        DoodleQuickTile *button =
            makeTile(box, i == 0 ? QStringLiteral("cancel") : QStringLiteral("ok"));
        button->look().backgroundColor = QColor(70, 70, 70);
        button->look().cornerRadius = 6;
        button->setTitle(titles[i], QGuiApplication::font());
        button->setTexts(titles[i], QString());
        const double gap = (box->width() - 2 * kAlertButtonWidth) / 3;
        button->setFrame(QRectF(gap + i * (kAlertButtonWidth + gap),
                                box->height() - kAlertButtonHeight - 12, kAlertButtonWidth,
                                kAlertButtonHeight));
        connect(button, &DoodleQuickTile::clicked, this, [this, i] { answerClear(i == 1); });
        if (i == 1)
            button->forceActiveFocus(Qt::OtherFocusReason);
    }
    // Escape answers no, Enter yes, as in the Widgets alert.
    connect(box, &DoodleQuickPanel::escapePressed, this, [this] { answerClear(false); });
    connect(box, &DoodleQuickPanel::enterPressed, this, [this] { answerClear(true); });
    m_alert = backdrop;
}

void DoodleQuickChrome::answerClear(bool clear)
{
    if (QQuickItem *alert = m_alert.data()) {
        m_alert.clear();
        alert->setVisible(false);
        alert->setParentItem(nullptr);
        alert->setParent(nullptr);
        alert->deleteLater();
    }
    // The board may have changed meanwhile; the clear takes what it holds now.
    if (clear)
        m_board->clear();
}
