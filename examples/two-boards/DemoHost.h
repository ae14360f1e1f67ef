#pragma once

#include <doodle/Doodle.h>

#include <QWidget>

#include <functional>

// One participant of the demo call: a board with the library's own tool bar
// and the host's side of it. Every action the board generates goes out as
// text through `send`, as a real host would put it on its channel; pictures
// saved from the tool bar go into the output folder, numbered past those there.
class DemoParticipant : public QObject, public DoodleLayoutDelegate
{
    Q_OBJECT
public:
    DemoParticipant(const QString &userId, const QSize &boardSize, const QString &outputFolder);

    DoodleLayout &board() { return m_board; }
    // Hands a text that arrived from `sender` to the board.
    void receive(const QString &sender, const QString &text);
    // Shows the board again after it was closed, caught up with `peer`'s drawing.
    void reopen(DoodleLayout &peer);

    std::function<void(const QString &sender, const QString &text)> send;

    void onDoodleActionGenerated(const DoodleActionPtr &action) override;
    void onPauseDoodle() override;
    void onRestartDoodle() override;
    void onCloseDoodle() override;
    void onDoodleCleared(const QString &userId) override;

signals:
    // What the host would tell its user about the board.
    void status(const QString &text);
    // The board was closed: its place shows the button that opens it again.
    void closed();
    // A picture was written (or could not be: `path` is empty).
    void pictureSaved(const QString &path);

private:
    void configure();
    void writePicture(const QImage &picture);
    int nextPictureNumber() const;

    DoodleLayout m_board;
    QString m_outputFolder;
};

// The demo window: two boards of different sizes side by side, each under a
// status line. A closed board leaves its place empty, with a button that
// opens it again.
class DemoWindow : public QWidget
{
    Q_OBJECT
public:
    DemoWindow(DemoParticipant &alice, DemoParticipant &bob);

private:
    void addColumn(DemoParticipant &participant, DemoParticipant &peer);
};
