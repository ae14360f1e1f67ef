#include "DemoHost.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

DemoParticipant::DemoParticipant(const QString &userId, const QSize &boardSize) : m_board(userId)
{
    m_board.setDelegate(this);
    m_board.setBackgroundColor(Qt::white);
    m_board.resetDoodleViewFrame(QRect(QPoint(0, 0), boardSize));
    m_board.view()->setFixedSize(boardSize);
    // Without the library's tool bar the host unfolds the board itself.
    m_board.showToolBar();
}

void DemoParticipant::onDoodleActionGenerated(const DoodleActionPtr &action)
{
    if (send)
        send(m_board.userId(), m_board.doodleActionToString(action));
}

void DemoParticipant::receive(const QString &sender, const QString &text)
{
    if (const DoodleActionPtr action = m_board.stringToDoodleAction(text))
        m_board.onDoodleActionReceived(sender, action);
}

QWidget *DemoParticipant::createControls(QWidget *parent)
{
    auto *strip = new QWidget(parent);
    auto *layout = new QHBoxLayout(strip);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *tools = new QButtonGroup(strip);
    const std::pair<const char *, qint64> modes[] = {
        {"Pen", DoodleActionModeBrush},           {"Eraser", DoodleActionModeEraser},
        {"Rectangle", DoodleActionModeRectangle}, {"Ellipse", DoodleActionModeEllipse},
        {"Arrow", DoodleActionModeArrow},         {"Text", DoodleActionModeText}};
    for (const auto &[title, mode] : modes) {
        auto *button = new QToolButton(strip);
        button->setText(QString::fromLatin1(title));
        button->setCheckable(true);
        button->setChecked(mode == m_board.actionMode());
        tools->addButton(button, int(mode));
        layout->addWidget(button);
    }
    connect(tools, &QButtonGroup::idClicked, this,
            [this](int mode) { m_board.setActionMode(mode); });
    auto *undo = new QPushButton(QStringLiteral("Undo"), strip);
    auto *clear = new QPushButton(QStringLiteral("Clear"), strip);
    connect(undo, &QPushButton::clicked, this, [this] { m_board.undo(); });
    connect(clear, &QPushButton::clicked, this, [this] { m_board.cleanDoodle(); });
    layout->addWidget(undo);
    layout->addWidget(clear);
    layout->addStretch();
    return strip;
}

DemoWindow::DemoWindow(DemoParticipant &alice, DemoParticipant &bob)
{
    setWindowTitle(QStringLiteral("Doodle: alice and bob"));
    auto *row = new QHBoxLayout(this);
    for (DemoParticipant *p : {&alice, &bob}) {
        auto *column = new QVBoxLayout;
        column->addWidget(new QLabel(p->board().userId(), this));
        column->addWidget(p->createControls(this));
        p->board().view()->setParent(this);
        column->addWidget(p->board().view(), 0, Qt::AlignLeft | Qt::AlignTop);
        column->addStretch();
        row->addLayout(column);
    }
}
