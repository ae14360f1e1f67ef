#pragma once

// doodle join's parts that its Widgets window and its Qt Quick window share:
// the options, the participant that plays a session and writes the agreed
// picture, and the line that shows the call's state.
#include "DoodleCommands.h"

#include <doodle/call/DoodleCall.h>
#include <doodle/model/DoodleAction.h>

#include <QElapsedTimer>
#include <QImage>
#include <QList>
#include <QSizeF>
#include <QTimer>

#include <functional>
#include <memory>

struct JoinOptions
{
    QList<DoodleCallBroker> brokers;
    QString call;
    QString user;
    QString username;
    QString password;
    DoodleCallTls tls;
    DoodleBoardOptions board{QSize(390, 560)};
    bool scaleSet = false;
    QString play;
    int intervalMs = 50;
    QString snapshot;
    double quitAfterIdle = 2;
    QSizeF aspect;            // empty: the call's
    qint64 messageBudget = 0; // bytes; 0: no limit
    bool quick = false;
};

// One line on standard output.
void say(const QString &line);

// What a participant does with its board, whichever front-end shows it.
struct JoinBoard
{
    std::function<void(const DoodleActionPtr &)> play; // draws as this participant's own
    std::function<QImage()> picture;                   // headless: the board's picture
    std::function<quint64()> fingerprint;
};

// One participant: its board, its place in the call, the session it plays
// and, headless, the moment it writes its picture.
class Participant : public QObject
{
public:
    Participant(const JoinOptions &options, const QList<DoodleActionPtr> &session, JoinBoard board,
                std::unique_ptr<DoodleCall> call);

    DoodleCall &call() { return *m_call; }
    bool start();

private:
    void onConnected();
    void playNext();
    void check();

    const JoinOptions &m_options;
    const QList<DoodleActionPtr> &m_session;
    JoinBoard m_board;
    std::unique_ptr<DoodleCall> m_call;
    QTimer m_player;
    QTimer m_check;
    qsizetype m_played = 0;
    QElapsedTimer m_lost; // valid while the broker is away
};

// The call's state in one line for people: joining, connected, or
// reconnecting for so many seconds. `show` receives each new text,
// `connected` is told of each (re)connection.
class JoinStatus : public QObject
{
public:
    JoinStatus(const JoinOptions &options, DoodleCall &call,
               std::function<void(const QString &)> show, std::function<void()> connected);

private:
    void showConnected();
    void tick();

    const JoinOptions &m_options;
    DoodleCall &m_call;
    std::function<void(const QString &)> m_show;
    std::function<void()> m_connected;
    QTimer m_ticker;
    QElapsedTimer m_since;
    QString m_reason;
};

// doodle join --quick: the board as a Qt Quick item in a window of its own.
int joinQuick(const JoinOptions &options, const QList<DoodleActionPtr> &session);
