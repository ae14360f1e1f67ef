// Board controller: the tool state, the main tool bar with its floating
// button, the option pickers above the bar and the answers to their taps.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"
#include "DoodleLayout_p.h"

#include <doodle/alert/RoShow.h>
#include <doodle/board/DoodleBarLayout_p.h>
#include <doodle/support/DoodleBundle_p.h>
#include <doodle/toolbar/ZQDoodleButton.h>

#include <QAbstractButton>
#include <QEvent>
#include <QGraphicsDropShadowEffect>
#include <QIcon>
#include <QKeyEvent>
#include <QPixmap>

#include <algorithm>
#include <limits>

// One of the four option pickers: the field that holds it while open, the
// tool-bar button it opens above, what it offers, its saved selection and width.
struct DoodlePicker
{
    QPointer<ZQDoodleButtonView> DoodleLayoutPrivate::*field;
    const DoodlePickerEntry &entry;
    qint64 DoodleLayoutPrivate::*selectIndex;
};

namespace {

// The pickers' fields here, in the order of the shared picker table.
const DoodlePicker kLinePicker{&DoodleLayoutPrivate::m_lineView, DoodleBarLayout::pickers().at(0),
                               &DoodleLayoutPrivate::m_widthSelectIndex};
const DoodlePicker kEraserPicker{&DoodleLayoutPrivate::m_eraserView,
                                 DoodleBarLayout::pickers().at(1),
                                 &DoodleLayoutPrivate::m_eraserSelectIndex};
const DoodlePicker kColorPicker{&DoodleLayoutPrivate::m_colorView, DoodleBarLayout::pickers().at(2),
                                &DoodleLayoutPrivate::m_colorSelectIndex};
const DoodlePicker kTextSizePicker{&DoodleLayoutPrivate::m_textSizeView,
                                   DoodleBarLayout::pickers().at(3),
                                   &DoodleLayoutPrivate::m_textSizeSelectIndex};
// Closed in this order when the bar folds or a touch begins on the board.
const DoodlePicker *const kPickers[] = {&kLinePicker, &kEraserPicker, &kColorPicker,
                                        &kTextSizePicker};

// Keeps a picker inside the board, above the bar and left of the floating
// button: wider or in more rows where its choices need the room, moved left
// where it would not fit.
void fitPicker(ZQDoodleButtonView *view, const QWidget *bar, const QWidget *toolButton)
{
    view->setGeometry(DoodleBarLayout::fitPicker(
        view->geometry(), bar->geometry(), toolButton->geometry(), view->parentWidget()->width(),
        [view](int available) { return view->fittingSize(available); }));
}

// The last button of `type` on the bar, or none.
ZQDoodleButton *anchorButton(ZQDoodleToolbar *bar, qint64 type)
{
    ZQDoodleButton *anchor = nullptr;
    for (ZQDoodleButton *button : bar->buttons())
        anchor = button->type() == type ? button : anchor;
    return anchor;
}

// Escape, pressed in an open picker or on the bar, closes the picker and
// gives the keyboard back to the button that opened it.
class DoodlePickerEscape : public QObject
{
public:
    DoodlePickerEscape(DoodleLayoutPrivate *d, const DoodlePicker &picker, ZQDoodleButton *anchor,
                       QObject *parent)
        : QObject(parent), m_d(d), m_picker(picker), m_anchor(anchor)
    {}
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::KeyPress ||
            static_cast<QKeyEvent *>(event)->key() != Qt::Key_Escape)
            return false;
        QPointer<ZQDoodleButton> anchor = m_anchor;
        m_d->closePicker(m_picker); // deletes this filter later
        if (anchor)
            anchor->setFocus(Qt::OtherFocusReason);
        return true;
    }

private:
    DoodleLayoutPrivate *m_d;
    const DoodlePicker &m_picker;
    QPointer<ZQDoodleButton> m_anchor;
};

// Puts the picker's choices in the keyboard's path right after the button
// that opened it, hands them the focus when that button had it, and lets
// Escape close the picker.
void linkPickerKeys(DoodleLayoutPrivate *d, const DoodlePicker &picker, ZQDoodleButtonView *view,
                    ZQDoodleButton *anchor)
{
    auto *escape = new DoodlePickerEscape(d, picker, anchor, view);
    view->installEventFilter(escape);
    if (!anchor)
        return;
    anchor->parentWidget()->installEventFilter(escape);
    QWidget *previous = anchor;
    ZQDoodleButton *selected = nullptr;
    for (ZQDoodleButton *choice : view->buttons()) {
        QWidget::setTabOrder(previous, choice);
        previous = choice;
        selected = choice->isSelected() ? choice : selected;
    }
    if (anchor->hasFocus() && !view->buttons().isEmpty())
        (selected ? selected : view->buttons().constFirst())->setFocus(Qt::TabFocusReason);
}

// Takes the presses that land on the bar between its buttons, so that no
// gesture starts under the bar.
class DoodleBarInputSink : public QObject
{
public:
    using QObject::QObject;
    bool eventFilter(QObject *, QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::MouseButtonRelease:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::TabletRelease:
            event->accept();
            return true;
        default:
            return false;
        }
    }
};

QImage bundleImage(const QString &name)
{
    return DoodleBundle::image(name, QStringLiteral("png"));
}

// A host's button shows the image: as its own image when it is one of ours,
// else as its icon.
void setNormalImage(QAbstractButton *button, const QImage &image)
{
    if (auto *ours = qobject_cast<ZQDoodleButton *>(button))
        ours->setNormalImage(image);
    else
        button->setIcon(QIcon(QPixmap::fromImage(image)));
}

} // namespace

void DoodleLayout::setActionMode(qint64 mode)
{
    // Moving on to another tool finishes the text being typed.
    if (mode != DoodleActionModeText)
        d->commitOpenText();
    d->m_actionMode = mode;
    const qint64 marked = DoodleBarLayout::markedButtonType(mode);
    if (marked == 0)
        return;
    // Asking for the bar creates it, which loads the view (see doodletoolbar()).
    for (ZQDoodleButton *button : doodletoolbar()->buttons())
        button->setSelected(button->type() == marked);
}

ZQDoodleToolbar *DoodleLayout::doodletoolbar()
{
    if (!d->m_doodletoolbar) {
        // Stored before the view is asked for its size: loading the view adds
        // this very bar to it.
        auto *bar = new ZQDoodleToolbar(false);
        d->m_doodletoolbar = bar;
        bar->setAttribute(Qt::WA_AcceptTouchEvents);
        bar->installEventFilter(new DoodleBarInputSink(bar));
        d->styleToolBar();
        d->updateCommandButtons();
    }
    return d->m_doodletoolbar;
}

void DoodleLayoutPrivate::styleToolBar()
{
    // One row across the board; two narrower rows, clear of the floating
    // button, where one row would crowd its buttons.
    const QSize size = q->view()->size();
    const QSize bar =
        m_doodletoolbar->sizeThatFits(size.width() - 2 * DoodleBarLayout::kBarMargin).toSize();
    m_doodletoolbar->setGeometry(DoodleBarLayout::barFrame(size, bar));
    m_doodletoolbar->setCornerRadius(DoodleBarLayout::barCornerRadius());
    m_doodletoolbar->setBackgroundColor(DoodleBarLayout::barColor());
    m_doodletoolbar->setDelegate(q);
    m_doodletoolbar->setColourButton(m_brushColor);
}

ZQDoodleButton *DoodleLayout::doodletoolButton()
{
    if (!d->m_doodletoolButton) {
        auto *button = new ZQDoodleButton;
        d->m_doodletoolButton = button;
        button->setNormalImage(bundleImage(QStringLiteral("doodle")));
        button->setAccessibleName(tr("Tools")); // Tab reaches it, as the bar's buttons
        button->setToolTip(tr("Show or hide the tools"));
        connect(button, &ZQDoodleButton::clicked, this, &DoodleLayout::showToolBar);
        auto *shadow = new QGraphicsDropShadowEffect(button);
        shadow->setOffset(0, 0);
        shadow->setColor(QColor::fromRgbF(0, 0, 0, double(0.4f)));
        shadow->setBlurRadius(6);
        button->setGraphicsEffect(shadow);
        d->placeToolButton();
    }
    return d->m_doodletoolButton;
}

void DoodleLayoutPrivate::placeToolButton()
{
    const QSize size = q->view()->size();
    m_doodletoolButton->setGeometry(DoodleBarLayout::toolButtonFrame(size));
    // An open picker follows the board's new size.
    for (const DoodlePicker *picker : kPickers) {
        if (ZQDoodleButtonView *open = this->*picker->field; open && m_doodletoolbar)
            fitPicker(open, m_doodletoolbar, m_doodletoolButton);
    }
}

void DoodleLayoutPrivate::addToolBarToView()
{
    // Both lie above the board.
    for (QWidget *widget : {static_cast<QWidget *>(q->doodletoolbar()),
                            static_cast<QWidget *>(q->doodletoolButton())}) {
        if (widget->parentWidget())
            continue;
        widget->setParent(m_view);
        widget->show();
        widget->raise();
    }
}

void DoodleLayout::showToolBar()
{
    ZQDoodleToolbar *bar = doodletoolbar();
    if (d->m_isMinToolBar) {
        bar->show();
        bar->raise();
        d->m_isMinToolBar = false;
        bar->setIsHost(false);
        const bool fits = d->m_actionMode >= std::numeric_limits<qint32>::min() &&
                          d->m_actionMode <= std::numeric_limits<qint32>::max();
        bar->setActionMode(fits ? qint32(d->m_actionMode) : 0);
        bar->setBrushColor(d->m_brushColor);
        bar->layoutSubviews();
        d->updateCommandButtons();
        if (DoodleLayoutDelegate *host = d->m_delegate.get())
            host->onRestartDoodle();
        return;
    }
    d->closePickers();
    d->commitOpenText();
    bar->hide();
    d->m_isMinToolBar = true;
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onPauseDoodle();
}

void DoodleLayout::hideToolBar(bool hidden)
{
    doodletoolbar()->setHidden(hidden);
    doodletoolButton()->setHidden(hidden);
}

void DoodleLayout::reloadToolBar()
{
    ZQDoodleToolbar *bar = doodletoolbar();
    doodletoolButton();
    d->styleToolBar();
    bar->layoutSubviews();
    d->placeToolButton();
    bar->setColourButton(d->m_brushColor);
}

void DoodleLayoutPrivate::setToolButtonVisible(bool visible)
{
    q->doodletoolButton()->setVisible(visible);
}

QAbstractButton *DoodleLayout::brushButton() const
{
    return d->m_brushButton;
}

void DoodleLayout::setBrushButton(QAbstractButton *button)
{
    d->m_brushButton = button;
}

QAbstractButton *DoodleLayout::colourButton() const
{
    return d->m_colourButton;
}

void DoodleLayout::setColourButton(QAbstractButton *button)
{
    d->m_colourButton = button;
}

void DoodleLayoutPrivate::closePickers()
{
    for (const DoodlePicker *picker : kPickers)
        closePicker(*picker);
}

void DoodleLayoutPrivate::openPicker(const DoodlePicker &picker)
{
    if (this->*picker.field)
        return;
    for (const DoodlePicker *other : kPickers) {
        if (other != &picker)
            closePicker(*other);
    }
    ZQDoodleToolbar *bar = q->doodletoolbar();
    // Above the last button of its anchor type; above the bar's own origin
    // when the bar has none.
    QPointF origin;
    for (ZQDoodleButton *button : bar->buttons()) {
        if (button->type() == picker.entry.anchorType)
            origin = button->frame().topLeft();
    }
    QWidget *board = q->view();
    const double x = bar->mapTo(board, origin).x();
    auto *view = new ZQDoodleButtonView(
        DoodleBarLayout::pickerStart(picker.entry, x, bar->geometry().y()),
        this->*picker.selectIndex, picker.entry.pickerType, m_brushColor, board);
    view->setDelegate(q);
    view->setBackgroundColor(DoodleBarLayout::pickerColor());
    fitPicker(view, bar, q->doodletoolButton());
    view->show();
    view->raise();
    this->*picker.field = view;
    linkPickerKeys(this, picker, view, anchorButton(bar, picker.entry.anchorType));
}

void DoodleLayoutPrivate::closePicker(const DoodlePicker &picker)
{
    QPointer<ZQDoodleButtonView> &field = this->*picker.field;
    if (!field)
        return;
    // Deferred: the picker may be the sender of the tap that led here.
    field->hide();
    field->setParent(nullptr);
    field->deleteLater();
    field = nullptr;
}

void DoodleLayoutPrivate::togglePicker(const DoodlePicker &picker)
{
    if (this->*picker.field)
        closePicker(picker);
    else
        openPicker(picker);
}

void DoodleLayout::addLineView()
{
    d->openPicker(kLinePicker);
}

void DoodleLayout::addEraserView()
{
    d->openPicker(kEraserPicker);
}

void DoodleLayout::addTextSizeView()
{
    d->openPicker(kTextSizePicker);
}

void DoodleLayout::addColorView()
{
    d->openPicker(kColorPicker);
}

void DoodleLayout::removeLineView()
{
    d->closePicker(kLinePicker);
}

void DoodleLayout::removeEraserView()
{
    d->closePicker(kEraserPicker);
}

void DoodleLayout::removeTextSizeView()
{
    d->closePicker(kTextSizePicker);
}

void DoodleLayout::removeColorView()
{
    d->closePicker(kColorPicker);
}

void DoodleLayout::doodleToolbar(ZQDoodleToolbar *, ZQDoodleButton *, qint64 buttonType)
{
    switch (buttonType) {
    case DoodleToolbarButtonTypeUndo:
        undo();
        break;
    case DoodleToolbarButtonTypeColour:
        d->togglePicker(kColorPicker);
        break;
    case DoodleToolbarButtonTypeWidth:
        setActionMode(DoodleActionModeBrush);
        d->togglePicker(kLinePicker);
        break;
    case DoodleToolbarButtonTypeEraser:
        setActionMode(DoodleActionModeEraser);
        d->togglePicker(kEraserPicker);
        break;
    case DoodleToolbarButtonTypeOval: // the ellipse tool; an open picker stays
        setActionMode(DoodleActionModeEllipse);
        break;
    case DoodleToolbarButtonTypeRect:
        setActionMode(DoodleActionModeRectangle);
        break;
    case DoodleToolbarButtonTypeArrow:
        setActionMode(DoodleActionModeArrow);
        break;
    case DoodleToolbarButtonTypeText:
        setActionMode(DoodleActionModeText);
        d->togglePicker(kTextSizePicker);
        break;
    case DoodleToolbarButtonTypeLaser:
        setActionMode(DoodleActionModeLaser);
        break;
    case DoodleToolbarButtonTypeClear:
        d->confirmClear();
        break;
    case DoodleToolbarButtonTypeSave:
        saveImage();
        break;
    case DoodleToolbarButtonTypeClose:
        dismissDoodle();
        break;
    default:
        break;
    }
}

void DoodleLayout::doodleButtonView(ZQDoodleButtonView *view, qint64 selectIndex, qint64 buttonType)
{
    // A choice leaves its picker open.
    switch (buttonType) {
    case ZQDoodleButtonViewTypeColour:
        d->m_brushColor = view->getColor();
        d->m_colorSelectIndex = selectIndex;
        d->showColour(d->m_brushColor);
        break;
    case ZQDoodleButtonViewTypeBrushWidth:
        d->m_brushWidth = view->getWidth();
        d->m_widthSelectIndex = selectIndex;
        break;
    case ZQDoodleButtonViewTypeEraserWidth:
        d->m_eraserWidth = view->getWidth();
        d->m_eraserSelectIndex = selectIndex;
        break;
    case ZQDoodleButtonViewTypeTextSize:
        d->m_textSize = view->getWidth();
        d->m_textSizeSelectIndex = selectIndex;
        break;
    default:
        break;
    }
}

void DoodleLayoutPrivate::showColour(const QColor &color)
{
    // Only the normal image: the bar's own colour catches up when it unfolds.
    const QImage image =
        DoodleLayout::imageWithBackgroundColor(color, bundleImage(QStringLiteral("color")));
    const auto buttons =
        q->doodletoolbar()->findChildren<ZQDoodleButton *>(QString(), Qt::FindDirectChildrenOnly);
    for (ZQDoodleButton *button : buttons) {
        if (button->type() == DoodleToolbarButtonTypeColour)
            button->setNormalImage(image);
    }
}

void DoodleLayout::colourToolbar(ZQColourToolbar *, const QColor &color)
{
    if (d->m_colourButton) {
        setNormalImage(d->m_colourButton,
                       imageWithColor(color, bundleImage(QStringLiteral("colour@2x"))));
    }
    d->m_brushColor = color;
}

void DoodleLayout::brushColorView(BrushColorView *, const QColor &color)
{
    d->m_brushColor = color;
    doodletoolbar()->setColourButton(color);
    removeColorView();
}

bool DoodleLayout::confirmsClear() const
{
    return d->m_confirmsClear;
}

void DoodleLayout::setConfirmsClear(bool confirms)
{
    d->m_confirmsClear = confirms;
}

void DoodleLayoutPrivate::confirmClear()
{
    if (!m_confirmsClear) {
        q->cleanDoodle();
        return;
    }
    if (m_askingToClear || m_doodlePathCache.size() == 0)
        return;
    m_askingToClear = true;
    // Asked over the board's own window; the board may have changed meanwhile,
    // and cleanDoodle() clears what it holds when the answer comes.
    QPointer<DoodleLayout> board(q);
    const auto answered = [board](bool clear) {
        if (!board)
            return;
        board->d->m_askingToClear = false;
        if (clear)
            board->cleanDoodle();
    };
    RoShow::showAlertWith(
        q->doodleView(), DoodleLayout::tr("Clear the board for everyone in the call?"),
        [answered] { answered(true); }, [answered] { answered(false); });
}

void DoodleLayoutPrivate::scheduleCommandUpdate()
{
    if (m_commandUpdatePending)
        return;
    m_commandUpdatePending = true;
    QMetaObject::invokeMethod(
        q, [this] { updateCommandButtons(); }, Qt::QueuedConnection);
}

void DoodleLayoutPrivate::updateCommandButtons()
{
    m_commandUpdatePending = false;
    if (!m_doodletoolbar)
        return;
    m_doodletoolbar->setButtonEnabled(DoodleToolbarButtonTypeUndo, lastIndexOwnedBy(m_userId) >= 0);
    m_doodletoolbar->setButtonEnabled(DoodleToolbarButtonTypeClear, m_doodlePathCache.size() > 0);
}
