#pragma once

// A thin Qt face over one libmosquitto client. Not installed: hosts see only
// DoodleCall. The network runs on a thread of this client's own, which emits
// this object's signals: connect them queued, and never touch widgets from them.
#include <doodle/call/DoodleCall.h>

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

struct mosquitto;
struct mosquitto_message;

class DoodleMqttClient : public QObject
{
    Q_OBJECT
public:
    explicit DoodleMqttClient(QObject *parent = nullptr);
    ~DoodleMqttClient() override;

    // Before start(): what the broker publishes for us when the connection
    // drops without a goodbye, and the topic filters subscribed after every
    // connection (QoS 1).
    bool setWill(const QString &topic, const QByteArray &payload);
    void setSubscriptions(const QStringList &filters);
    // Before start(): who logs in (no username: anonymous) and how the broker
    // is checked (no CA file: no TLS). False, with `error`, when the TLS files
    // cannot be used.
    bool setLogin(const QString &username, const QString &password);
    bool setTls(const DoodleCallTls &tls, QString *error);
    // Starts the network thread and the first connection, to the first broker.
    // When a connection cannot be made or drops, the client tries the next
    // broker and the ones after it, round after round, until stop() or a
    // fatal failure. False, with `error`, when it cannot start.
    bool start(const QList<DoodleCallBroker> &brokers, QString *error);
    // Queues one QoS 1 message; while the connection is down libmosquitto
    // keeps it and sends it after the reconnection, to whichever broker.
    bool publish(const QString &topic, const QByteArray &payload);
    // Waits until the broker has acknowledged every message published so far,
    // or `msecs` have passed.
    bool waitForDelivery(int msecs);
    bool hasUndelivered() const { return m_undelivered.load() > 0; }
    // Disconnects and stops the network thread.
    void stop();

signals:
    // Connected to `broker` ("host:port") and subscribed: after the first
    // connection and every reconnection.
    void ready(const QString &broker);
    // The connection could not be made, was refused or dropped. `fatal`: trying
    // again cannot help (a refused login or subscription, a certificate that
    // does not verify, a failed TLS handshake, a peer that is no MQTT broker),
    // and the client has stopped trying; otherwise it tries the next broker.
    void lost(const QString &reason, bool fatal);
    void messageReceived(const QString &topic, const QByteArray &payload);

private:
    // What one connection attempt saw, kept by the network thread.
    struct Attempt
    {
        QString broker;
        bool accepted = false;
        int refusal = 0; // the broker's CONNACK code when it refused
        bool subscriptionRefused = false;
        QString tlsError; // the last TLS error libmosquitto logged
    };

    void run();
    int connectTo(const DoodleCallBroker &broker, int *error);
    int checkPending(std::chrono::steady_clock::time_point deadline);
    QString describe(int code, int error, bool *fatal) const;
    bool pause(std::chrono::milliseconds delay);
    bool stopDue() const;

    static void onConnect(mosquitto *client, void *self, int code);
    static void onSubscribe(mosquitto *client, void *self, int mid, int count, const int *granted);
    static void onPublish(mosquitto *client, void *self, int mid);
    static void onMessage(mosquitto *client, void *self, const mosquitto_message *message);
    static void onLog(mosquitto *client, void *self, int level, const char *text);

    mosquitto *m_client = nullptr;
    QList<QByteArray> m_filters; // read by the network thread; fixed before start()
    QList<DoodleCallBroker> m_brokers;
    QString m_username;
    QString m_caFile;
    Attempt m_attempt;
    std::thread m_thread;
    std::atomic<bool> m_stopping{false};
    std::chrono::steady_clock::time_point m_stopDeadline;
    std::mutex m_connectMutex; // a publish or stop waits while the broker changes
    std::mutex m_wakeMutex;
    std::condition_variable m_wake;
    std::atomic<int> m_undelivered{0};
    std::mutex m_deliveryMutex;
    std::condition_variable m_delivered;
};
