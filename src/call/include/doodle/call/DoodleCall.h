#pragma once

#include <doodle/call/DoodleCallExport.h>
#include <doodle/controller/DoodleLayoutDelegate.h>

#include <QList>
#include <QObject>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <memory>

class DoodleBoard;
class DoodleCallBoard;
class DoodleCallPrivate;
class DoodleLayout;

// One broker address of a call.
struct DoodleCallBroker
{
    QString host;
    quint16 port = 1883;
};

// TLS towards the broker: on when caFile is set. The broker's certificate must
// verify against caFile and, unless verifyServerName is off, name the host
// joined. certFile and keyFile (PEM, the key not encrypted) are the
// participant's own certificate, for brokers that ask for one.
struct DoodleCallTls
{
    QString caFile;
    QString certFile;
    QString keyFile;
    bool verifyServerName = true;
};

// Takes one board into a call through an MQTT broker. Each participant
// publishes its action texts, exactly as the text form writes them, on
// "doodle/CALL/USER" and hears the others on "doodle/CALL/+": the topic's last
// level names the sender. Boards catch up with each other on
// "doodle/CALL/USER/sync": a joiner asks for the board, participants announce
// their fingerprint when it changes and after a reconnection, and boards whose
// fingerprints differ exchange their states. Every message is QoS 1.
// Through one broker every board hears the messages in one order, its own
// among them: the call hands the board its own echoes, so that drawings of
// peers without stamps are placed by that order (DoodleLayout::setSharedOrder).
// Identity is the broker's: it authenticates the login and its ACL lets each
// user publish only under its own topic level.
//
// The network runs on its own thread; received texts reach the board on the
// thread the call lives on (the GUI thread) through queued signals.
//
// The call becomes the board's delegate and sends what the local user draws.
// A host that keeps its own delegate forwards each generated action to
// sendAction() instead; one that needs the other delegate calls derives from
// this class. A Qt Quick board (DoodleBoard) is driven alike: the call sends
// the text of each of its actionGenerated() signals, and the host answers
// its closeRequested() itself.
class DOODLE_CALL_EXPORT DoodleCall : public QObject, public DoodleLayoutDelegate
{
    Q_OBJECT
public:
    DoodleCall(DoodleLayout *board, const QString &callName, QObject *parent = nullptr);
#ifdef DOODLE_CALL_QUICK
    // Built with the Qt Quick board (Doodle::quick).
    DoodleCall(DoodleBoard *board, const QString &callName, QObject *parent = nullptr);
#endif
    // Leaves the call.
    ~DoodleCall() override;

    // A call name or user id fits in a topic level: not empty, and no '/',
    // '+', '#' or NUL.
    static bool isValidName(const QString &name);

    // "HOST:PORT[,HOST:PORT...]" (an IPv6 host in brackets; the port defaults
    // to 1883) as brokers; empty when the text is not such a list.
    static QList<DoodleCallBroker> parseBrokers(const QString &text);

    // Before join(): the login (an empty username: anonymous) and TLS. The
    // password is kept only to log in with; it is never logged.
    void setLogin(const QString &username, const QString &password);
    void setTls(const DoodleCallTls &tls);

    // Starts joining through the first of `brokers`. connected() follows, or
    // failed() when no connection could be made within `timeoutMs`. When a
    // connection cannot be made or drops, the call tries the next broker and
    // the ones after it, round after round, and catches up once connected. A
    // refused login or subscription, a certificate that does not verify and a
    // failed TLS handshake end the call at once with failed(). False at once,
    // with errorString(), when the names do not fit in topics, the TLS files
    // cannot be used or the client cannot start.
    bool join(const QList<DoodleCallBroker> &brokers, int timeoutMs = 5000);
    bool join(const QString &host, quint16 port, int timeoutMs = 5000);
    // Says goodbye, waits up to `timeoutMs` for what is still being sent, and
    // disconnects.
    void leave(int timeoutMs = 1000);
    bool isConnected() const;
    // "host:port" of the broker of the current (or last) connection.
    QString brokerAddress() const;
    QString errorString() const;
    QString callName() const;

    // Every participant that announced a fingerprint and did not leave.
    QStringList participants() const;
    // True when every participant in participants() last announced this
    // board's fingerprint, this board announced it too, and the broker holds
    // everything this participant sent.
    bool isSettled() const;
    // Milliseconds since a message from another participant last arrived (since
    // join() when none did).
    qint64 msecsSinceLastMessage() const;

    // One board shape for the whole call. Before join(), this participant
    // proposes `aspect` (its board's shape, or one its user asked for) and its
    // board takes it. Every catch-up message carries the shape the board shows
    // and since when it was proposed; a board whose shape is not `fixed`
    // takes the earliest proposal it hears (the smaller user id first on a
    // tie), so the call settles on the first participant's shape. Without a
    // proposal the call leaves the board's shape alone.
    void proposeBoardAspect(const QSizeF &aspect, bool fixed = false);
    QSizeF boardAspect() const;

    // Publishes one local action.
    void sendAction(const DoodleActionPtr &action);
    void onDoodleActionGenerated(const DoodleActionPtr &action) override;

signals:
    void connected();
    void reconnected();
    // The connection dropped; the call is reconnecting.
    void disconnected(const QString &reason);
    // The first connection could not be made, or the broker refused this
    // participant or failed the TLS checks; the call has left.
    void failed(const QString &reason);
    // An action text from `sender`, once handed to the board (which may
    // still have dropped it: a muted sender, a limit).
    void actionReceived(const QString &sender, const QString &text);

private:
    DoodleCall(std::unique_ptr<DoodleCallBoard> board, const QString &callName, QObject *parent);

    friend class DoodleCallPrivate;
    std::unique_ptr<DoodleCallPrivate> d;
};
