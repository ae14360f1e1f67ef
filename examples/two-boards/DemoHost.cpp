#include "DemoHost.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextStream>
#include <QVBoxLayout>

#include <algorithm>

DemoParticipant::DemoParticipant(const QString &userId, const QSize &boardSize,
                                 const QString &outputFolder)
    : m_board(userId), m_outputFolder(outputFolder)
{
    m_board.setDelegate(this);
    m_board.resetDoodleViewFrame(QRect(QPoint(0, 0), boardSize));
    m_board.view()->setFixedSize(boardSize);
    // The board opens folded: its floating button unfolds the tool bar.
    m_board.setPictureSink([this](const QImage &picture) { writePicture(picture); });
    configure();
}

// Closing resets a board's settings; the host gives them again.
void DemoParticipant::configure()
{
    m_board.setBackgroundColor(Qt::white);
    m_board.setWaterString(QStringLiteral("doodle demo · %1").arg(m_board.userId()));
}

void DemoParticipant::onDoodleActionGenerated(const DoodleActionPtr &action)
{
    if (send)
        send(m_board.userId(), m_board.doodleActionToString(action));
}

void DemoParticipant::onPauseDoodle()
{
    emit status(tr("%1: the round button unfolds the tools").arg(m_board.userId()));
}

void DemoParticipant::onRestartDoodle()
{
    emit status(tr("%1 is drawing").arg(m_board.userId()));
}

void DemoParticipant::onCloseDoodle()
{
    emit status(tr("%1 closed the board").arg(m_board.userId()));
    emit closed();
}

void DemoParticipant::onDoodleCleared(const QString &userId)
{
    emit status(userId == m_board.userId()
                    ? tr("%1 cleared the board").arg(userId)
                    : tr("%1 cleared the board for %2").arg(userId, m_board.userId()));
}

void DemoParticipant::receive(const QString &sender, const QString &text)
{
    if (const DoodleActionPtr action = m_board.stringToDoodleAction(text))
        m_board.onDoodleActionReceived(sender, action);
}

void DemoParticipant::reopen(DoodleLayout &peer)
{
    configure();
    // A closed board forgot everything; it catches up as a late joiner would.
    m_board.mergeState(peer.exportState());
    onPauseDoodle();
}

// The number after the highest that a picture of this participant in the
// folder carries, so that no earlier picture is replaced, in this run or another.
int DemoParticipant::nextPictureNumber() const
{
    const QString prefix = QStringLiteral("doodle-demo-%1-").arg(m_board.userId());
    int highest = 0;
    const QStringList names = QDir(m_outputFolder).entryList({prefix + "*.png"}, QDir::Files);
    for (const QString &name : names)
        highest = std::max(highest, name.mid(prefix.size()).chopped(4).toInt());
    return highest + 1;
}

void DemoParticipant::writePicture(const QImage &picture)
{
    QDir().mkpath(m_outputFolder);
    QFile file;
    for (int number = nextPictureNumber(); !file.isOpen() && number < 1000000; ++number) {
        file.setFileName(
            QDir(m_outputFolder)
                .absoluteFilePath(
                    QStringLiteral("doodle-demo-%1-%2.png").arg(m_board.userId()).arg(number)));
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && !file.exists())
            break;
    }
    const QString path = file.fileName();
    const QString name = QFileInfo(path).fileName();
    const bool written = file.isOpen() && picture.save(&file, "PNG");
    QTextStream(written ? stdout : stderr) << (written ? "" : "could not write ") << path << '\n';
    emit status(written ? tr("%1: saved %2").arg(m_board.userId(), QDir::toNativeSeparators(path))
                        : tr("%1: could not save %2").arg(m_board.userId(), path));
    emit pictureSaved(written ? path : QString());
    // A note over the board that closes itself.
    RoShow::showAlertWith(m_board.view(), written ? tr("Saved %1").arg(name) : tr("Not saved"), 1.5,
                          RoShow::Callback());
}

DemoWindow::DemoWindow(DemoParticipant &alice, DemoParticipant &bob)
{
    setWindowTitle(QStringLiteral("Doodle: alice and bob"));
    new QHBoxLayout(this);
    addColumn(alice, bob);
    addColumn(bob, alice);
}

void DemoWindow::addColumn(DemoParticipant &participant, DemoParticipant &peer)
{
    DoodleLayout &board = participant.board();
    auto *column = new QVBoxLayout;
    auto *status = new QLabel(this);
    connect(&participant, &DemoParticipant::status, status, &QLabel::setText);
    participant.onPauseDoodle(); // the board opens folded
    // The board's place: the board lies on it; once closed, the button shows.
    auto *place = new QWidget(this);
    place->setFixedSize(board.view()->size());
    auto *reopen = new QPushButton(tr("Open %1's board again").arg(board.userId()), place);
    (new QVBoxLayout(place))->addWidget(reopen, 0, Qt::AlignCenter);
    // Hidden under an open board, so that the keyboard never lands on it there.
    reopen->hide();
    connect(&participant, &DemoParticipant::closed, reopen, &QWidget::show);
    board.view()->setParent(place);
    board.view()->raise();
    column->addWidget(status);
    column->addWidget(place, 0, Qt::AlignLeft | Qt::AlignTop);
    column->addStretch();
    static_cast<QHBoxLayout *>(layout())->addLayout(column);
    connect(reopen, &QPushButton::clicked, this, [&participant, &peer, &board, place, reopen] {
        reopen->hide();
        participant.reopen(peer.board());
        board.view()->setParent(place);
        board.view()->move(0, 0);
        board.view()->show();
    });
}
