// The Quick board's tool bar, floating button and option pickers: built from
// the shared tool table and placed by the shared geometry, as on the Widgets board.
#include "DoodleQuickChrome_p.h"

#include "DoodleBoard.h"
#include "DoodleBoard_p.h"
#include "DoodleQuickTile_p.h"

#include <doodle/support/DoodleBundle_p.h>
#include <doodle/support/DoodleLog_p.h>

#include <QGuiApplication>
#include <QPainter>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>

namespace {

// A tile made from QML carries its accessible role, name and state; the
// properties it reads are the tile's own.
const char kTileQml[] = R"(
import QtQuick
import Doodle
DoodleQuickTile {
    Accessible.role: Accessible.Button
    Accessible.name: accessibleName
    Accessible.description: toolTip
    Accessible.focusable: true
    Accessible.checkable: checkable
    Accessible.checked: selected
    Accessible.onPressAction: click()
}
)";

QImage toolImage(const QString &name)
{
    return DoodleBundle::image(name, QStringLiteral("png"));
}

QString toolTitle(const DoodleToolEntry &entry)
{
    return QCoreApplication::translate("ZQDoodleToolbar", entry.title);
}

constexpr QSizeF kButtonSize(30, 30);

// The floating button's soft shadow all round its disc, as the Widgets
// board's drop shadow (no offset, black at 0.4, blurred over 6 points).
class DoodleQuickShadow : public QQuickPaintedItem
{
public:
    using QQuickPaintedItem::QQuickPaintedItem;
    static constexpr double kReach = 4;
    void paint(QPainter *painter) override
    {
        // Measured off the widget's blurred shadow: strength by distance
        // from the centre, fading within a few points of the disc's edge.
        const QPointF centre(width() / 2, height() / 2);
        const double outer = std::min(width(), height()) / 2;
        const std::pair<double, float> falloff[] = {{20.5, 0.16f}, {21.5, 0.13f},  {22.5, 0.06f},
                                                    {23.5, 0.02f}, {24.5, 0.008f}, {25.5, 0.0f}};
        QRadialGradient shade(centre, outer);
        for (const auto &[radius, alpha] : falloff)
            shade.setColorAt(std::min(radius / outer, 1.0), QColor::fromRgbF(0, 0, 0, alpha));
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(shade);
        painter->drawEllipse(centre, outer, outer);
    }
};

} // namespace

DoodleQuickPanel::DoodleQuickPanel(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setParent(parent);
    setAcceptedMouseButtons(Qt::AllButtons);
    setAcceptTouchEvents(true);
}

void DoodleQuickPanel::setLook(const QColor &color, double radius)
{
    m_color = color;
    m_radius = radius;
    update();
}

void DoodleQuickPanel::setText(const QString &text, double textBottom)
{
    m_text = text;
    m_textBottom = textBottom;
    update();
}

void DoodleQuickPanel::paint(QPainter *painter)
{
    const QRectF bounds(QPointF(), size());
    DoodleTile::paintBackground(*painter, bounds, m_color, m_radius);
    if (m_text.isEmpty())
        return;
    painter->setPen(Qt::white);
    painter->drawText(bounds.adjusted(12, 8, -12, -m_textBottom),
                      Qt::AlignCenter | Qt::TextWordWrap, m_text);
}

void DoodleQuickPanel::mousePressEvent(QMouseEvent *event)
{
    event->accept();
}

void DoodleQuickPanel::touchEvent(QTouchEvent *event)
{
    event->accept();
}

void DoodleQuickPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        emit escapePressed();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        emit enterPressed();
    else
        event->ignore();
}

DoodleQuickChrome::DoodleQuickChrome(DoodleBoard *board) : QObject(board), m_board(board)
{
    if (QQmlEngine *engine = qmlEngine(board)) {
        m_tileComponent = new QQmlComponent(engine, this);
        m_tileComponent->setData(kTileQml, QUrl());
    }
    buildBar();
    m_toolButton = makeTile(board, QStringLiteral("doodleToolButton"));
    m_toolButton->look().normalImage = toolImage(QStringLiteral("doodle"));
    m_toolButton->setTexts(QCoreApplication::translate("DoodleLayout", "Tools"),
                           QCoreApplication::translate("DoodleLayout", "Show or hide the tools"));
    m_toolButton->setZ(2);
    // Under the button and shown with it.
    auto *shadow = new DoodleQuickShadow(m_toolButton);
    const double reach = DoodleQuickShadow::kReach;
    shadow->setZ(-1);
    shadow->setPosition(QPointF(-reach, -reach));
    shadow->setSize(QSizeF(DoodleBarLayout::toolButtonFrame(QSize()).size()) +
                    QSizeF(2 * reach, 2 * reach));
    connect(m_toolButton, &DoodleQuickTile::clicked, this, &DoodleQuickChrome::toggleToolBar);
    showColour(board->brushColor());
    markTool(board->actionMode());
    layout();
}

DoodleQuickChrome::~DoodleQuickChrome() = default;

DoodleQuickTile *DoodleQuickChrome::makeTile(QQuickItem *parent, const QString &name)
{
    DoodleQuickTile *tile = nullptr;
    if (m_tileComponent) {
        QObject *made = m_tileComponent->create(qmlContext(m_board));
        tile = qobject_cast<DoodleQuickTile *>(made);
        if (!tile) {
            qCWarning(lcDoodle).noquote()
                << "a button could not be made from QML:" << m_tileComponent->errorString();
            delete made;
        }
    }
    // Without an engine (a C++ host) the tile is made directly.
    if (!tile)
        tile = new DoodleQuickTile;
    tile->setParent(parent);
    tile->setParentItem(parent);
    tile->setObjectName(name);
    connect(tile, &DoodleQuickTile::toolTipWanted, this,
            [this, tile](bool shown) { showToolTip(tile, shown); });
    return tile;
}

void DoodleQuickChrome::buildBar()
{
    m_bar = new DoodleQuickPanel(m_board);
    m_bar->setObjectName(QStringLiteral("doodleToolBar"));
    m_bar->setLook(DoodleBarLayout::barColor(), DoodleBarLayout::barCornerRadius());
    m_bar->setZ(1);
    m_bar->setVisible(false); // folded at first, as on the Widgets board
    connect(m_bar, &DoodleQuickPanel::escapePressed, this, [this] {
        const qint64 anchor = m_pickerEntry ? m_pickerEntry->anchorType : 0;
        closePicker();
        if (DoodleQuickTile *tile = tileOfType(anchor))
            tile->forceActiveFocus(Qt::TabFocusReason);
    });
    for (const DoodleToolEntry &entry : DoodleBarLayout::tools()) {
        DoodleQuickTile *tile = makeTile(m_bar, QLatin1String(entry.name));
        tile->setType(entry.type);
        m_tools << tile;
        if (DoodleBarLayout::isDivider(entry.type)) {
            tile->look().backgroundColor = QColor::fromRgbF(2 / 3.0f, 2 / 3.0f, 2 / 3.0f);
            tile->setActiveFocusOnTab(false);
            tile->setAcceptedMouseButtons(Qt::NoButton);
            tile->setAcceptTouchEvents(false);
            continue;
        }
        tile->setTexts(toolTitle(entry), toolTitle(entry));
        tile->look().normalImage = toolImage(QLatin1String(entry.name));
        if (entry.selectedMode != 0) {
            tile->look().selectedImage =
                toolImage(QLatin1String(entry.name) + QStringLiteral("_select"));
            tile->setCheckable(true);
        }
        connect(tile, &DoodleQuickTile::clicked, this, [this, entry] { tapped(entry); });
    }
}

DoodleQuickTile *DoodleQuickChrome::tileOfType(qint64 type) const
{
    // The last button of that type, as the Widgets board anchors its pickers.
    DoodleQuickTile *found = nullptr;
    for (DoodleQuickTile *tile : m_tools)
        found = tile->type() == type ? tile : found;
    return found;
}

void DoodleQuickChrome::layout()
{
    const QSize view = m_board->size().toSize();
    QList<qint64> types;
    for (const DoodleQuickTile *tile : std::as_const(m_tools))
        types << tile->type();
    const QSize barSize =
        DoodleBarLayout::sizeThatFits(types, view.width() - 2 * DoodleBarLayout::kBarMargin)
            .toSize();
    const QRect bar = DoodleBarLayout::barFrame(view, barSize);
    m_bar->setPosition(bar.topLeft());
    m_bar->setSize(bar.size());
    const QList<QRectF> frames =
        DoodleBarLayout::frames(types, QSizeF(bar.size()), kButtonSize, true);
    for (qsizetype i = 0; i < frames.size(); ++i)
        m_tools.at(i)->setFrame(frames.at(i));
    m_toolButton->setFrame(DoodleBarLayout::toolButtonFrame(view));
    if (m_alert)
        m_alert->setSize(m_board->size());
    if (m_picker)
        fitPicker(m_picker->mapRectToItem(m_board, QRectF(QPointF(), m_picker->size())).toRect());
}

void DoodleQuickChrome::toggleToolBar()
{
    if (m_folded) {
        m_folded = false;
        m_bar->setVisible(true);
        emit m_board->unfolded();
        return;
    }
    closePicker();
    delete m_tip;
    m_board->d->commitOpenText();
    m_bar->setVisible(false);
    m_folded = true;
    emit m_board->folded();
}

void DoodleQuickChrome::setEditable(bool editable)
{
    if (!m_folded)
        toggleToolBar();
    m_toolButton->setVisible(editable);
}

void DoodleQuickChrome::markTool(qint64 mode)
{
    const qint64 marked = DoodleBarLayout::markedButtonType(mode);
    if (marked == 0)
        return;
    for (DoodleQuickTile *tile : std::as_const(m_tools))
        tile->setSelected(tile->type() == marked);
}

void DoodleQuickChrome::showColour(const QColor &color)
{
    for (DoodleQuickTile *tile : std::as_const(m_tools)) {
        if (tile->type() != DoodleToolbarButtonTypeColour)
            continue;
        tile->look().normalImage =
            DoodleBarLayout::imageWithBackgroundColor(color, toolImage(QStringLiteral("color")));
        tile->update();
    }
}

void DoodleQuickChrome::updateCommandButtons(bool canUndo, bool canClear)
{
    for (DoodleQuickTile *tile : std::as_const(m_tools)) {
        if (tile->type() == DoodleToolbarButtonTypeUndo)
            tile->setEnabled(canUndo);
        else if (tile->type() == DoodleToolbarButtonTypeClear)
            tile->setEnabled(canClear);
    }
}

void DoodleQuickChrome::tapped(const DoodleToolEntry &entry)
{
    switch (entry.type) {
    case DoodleToolbarButtonTypeUndo:
        m_board->undo();
        return;
    case DoodleToolbarButtonTypeClear:
        confirmClear();
        return;
    case DoodleToolbarButtonTypeSave:
        m_board->saveImage();
        return;
    case DoodleToolbarButtonTypeClose:
        if (!m_folded)
            toggleToolBar();
        emit m_board->closeRequested();
        return;
    default:
        break;
    }
    // A tool is taken up; a tool with a picker opens or closes it, while
    // the other tools leave an open picker as it is.
    if (entry.selectedMode != 0)
        m_board->setActionMode(entry.selectedMode);
    if (const DoodlePickerEntry *picker = DoodleBarLayout::pickerOpenedBy(entry.type))
        togglePicker(*picker);
}

void DoodleQuickChrome::showToolTip(DoodleQuickTile *tile, bool shown)
{
    delete m_tip;
    if (!shown || tile->toolTip().isEmpty() || !tile->isVisible())
        return;
    auto *tip = new DoodleQuickPanel(m_board);
    tip->setObjectName(QStringLiteral("doodleToolTip"));
    tip->setLook(QColor(40, 40, 40, 230), 3.0);
    tip->setText(tile->toolTip(), 4);
    tip->setAcceptedMouseButtons(Qt::NoButton);
    tip->setAcceptTouchEvents(false);
    tip->setZ(4);
    const QFontMetrics metrics(QGuiApplication::font());
    const QSizeF size(metrics.horizontalAdvance(tile->toolTip()) + 24, metrics.height() + 12);
    // Above the button, kept inside the board.
    const QRectF at = tile->mapRectToItem(m_board, QRectF(QPointF(), tile->size()));
    const double x = std::clamp(at.center().x() - size.width() / 2, 0.0,
                                std::max(0.0, m_board->width() - size.width()));
    tip->setPosition(QPointF(qRound(x), qRound(std::max(0.0, at.top() - size.height() - 4))));
    tip->setSize(size);
    m_tip = tip;
}
