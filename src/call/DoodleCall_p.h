#pragma once

// The broker client's private state and its internal steps. Not installed.
#include "DoodleCallBoard_p.h"
#include "DoodleMqttClient_p.h"

#include <doodle/call/DoodleCall.h>

#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QTimer>

#include <memory>

// What a participant last told about its board.
struct DoodleCallPeer
{
    quint64 fingerprint = 0;
    QElapsedTimer since;   // when it said so
    bool caughtUp = false; // this board already sent it its state for that fingerprint
    // Its state is being merged here: once that is done, a board still
    // different sends it its own.
    bool answerWhenMerged = false;
};

class DoodleCallPrivate
{
public:
    DoodleCallPrivate(DoodleCall *owner, std::unique_ptr<DoodleCallBoard> board,
                      const QString &callName);

    // Topics.
    QString actionTopic() const;
    QString syncTopic() const;
    // The sender a topic of this call names, or a null string; `sync` tells
    // whether it is a catch-up topic.
    QString senderOf(const QString &topic, bool *sync) const;
    // Connection.
    bool prepareClient();
    void onReady(const QString &broker);
    void onLost(const QString &reason, bool fatal);
    void onFirstConnectTimeout();
    void fail(const QString &reason);
    void onMessage(const QString &topic, const QByteArray &payload);
    // Publishes the wire text of one local action.
    void publishAction(const QString &text);
    // Catch-up exchange.
    void publishSync(QJsonObject header);
    void announce(const QString &kind);
    void pushState(const QStringList &to, bool reply);
    void onSync(const QString &sender, const QByteArray &payload);
    void onState(const QString &sender, const QJsonObject &header, const QString &state);
    void notePeer(const QString &sender, quint64 fingerprint);
    void answerMergedStates();
    bool answersJoinOf(const QString &joiner) const;
    void poll();
    // The call's board shape: what this board shows, and who proposed it when.
    void addAspect(QJsonObject &header) const;
    void considerAspect(const QString &sender, const QJsonObject &header);

    DoodleCall *q;
    std::unique_ptr<DoodleCallBoard> m_board; // never null; it tells when the board is gone
    QString m_call;
    QString m_user;
    DoodleMqttClient m_client;
    QString m_error;
    QString m_username;
    QString m_password;
    DoodleCallTls m_tls;
    QStringList m_brokers; // host:port of each broker given to join()
    QString m_address;     // host:port of the current or last connection
    QString m_lastReason;  // why the last connection attempt failed or dropped
    bool m_joining = false;
    bool m_connected = false;
    bool m_everConnected = false;
    QTimer m_firstConnectTimer;
    QTimer m_poll;
    QElapsedTimer m_lastMessage;
    QHash<QString, DoodleCallPeer> m_peers;
    quint64 m_seenFingerprint = 0;
    QElapsedTimer m_stableSince; // since the board's fingerprint last changed
    bool m_hasAnnounced = false;
    quint64 m_announced = 0;
    QSizeF m_aspect; // empty: the call leaves the board's shape alone
    qint64 m_aspectSince = 0;
    QString m_aspectFrom;
    bool m_aspectFixed = false;
};
