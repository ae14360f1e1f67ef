#pragma once

#include <doodle/Doodle.h>

#include <QWidget>

#include <functional>

// One participant of the demo call: a board and the host's side of it. Every
// action the board generates goes out as text through `send`, as a real host
// would put it on its channel.
class DemoParticipant : public QObject, public DoodleLayoutDelegate
{
    Q_OBJECT
public:
    DemoParticipant(const QString &userId, const QSize &boardSize);

    DoodleLayout &board() { return m_board; }
    // A strip of plain controls: the tools, undo and clear.
    QWidget *createControls(QWidget *parent);
    // Hands a text that arrived from `sender` to the board.
    void receive(const QString &sender, const QString &text);

    std::function<void(const QString &sender, const QString &text)> send;

    void onDoodleActionGenerated(const DoodleActionPtr &action) override;

private:
    DoodleLayout m_board;
};

// The demo window: two boards of different sizes, each with its controls.
class DemoWindow : public QWidget
{
    Q_OBJECT
public:
    DemoWindow(DemoParticipant &alice, DemoParticipant &bob);
};
