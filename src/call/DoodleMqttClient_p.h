#pragma once

// A thin Qt face over one libmosquitto client. Not installed: hosts see only
// DoodleCall. The network runs on libmosquitto's own thread, which emits this
// object's signals: connect them queued, and never touch widgets from them.
#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <condition_variable>
#include <mutex>

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
    // Starts the network thread and the first connection; from then on the
    // client reconnects by itself. False, with `error`, when it cannot start.
    bool start(const QString &host, quint16 port, QString *error);
    // Queues one QoS 1 message; while the connection is down libmosquitto
    // keeps it and sends it after the reconnection.
    bool publish(const QString &topic, const QByteArray &payload);
    // Waits until the broker has acknowledged every message published so far,
    // or `msecs` have passed.
    bool waitForDelivery(int msecs);
    bool hasUndelivered() const { return m_undelivered.load() > 0; }
    // Disconnects and stops the network thread.
    void stop();

signals:
    // Connected and subscribed: after the first connection and every reconnection.
    void ready();
    // The connection could not be made, was refused or dropped; the client retries.
    void lost(const QString &reason);
    void messageReceived(const QString &topic, const QByteArray &payload);

private:
    static void onConnect(mosquitto *client, void *self, int code);
    static void onSubscribe(mosquitto *client, void *self, int mid, int count, const int *granted);
    static void onDisconnect(mosquitto *client, void *self, int code);
    static void onPublish(mosquitto *client, void *self, int mid);
    static void onMessage(mosquitto *client, void *self, const mosquitto_message *message);

    mosquitto *m_client = nullptr;
    bool m_running = false;
    QList<QByteArray> m_filters; // read by the network thread; fixed before start()
    std::atomic<int> m_undelivered{0};
    std::mutex m_deliveryMutex;
    std::condition_variable m_delivered;
};
