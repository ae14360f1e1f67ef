// Broker client: libmosquitto's threaded interface behind Qt signals.
#include "DoodleMqttClient_p.h"

#include <mosquitto.h>

#include <chrono>

namespace {

constexpr int kKeepAliveSeconds = 10;
constexpr int kQos = 1;

// libmosquitto is initialised once per process and cleaned up at its exit.
void initialiseLibrary()
{
    struct Library
    {
        Library() { mosquitto_lib_init(); }
        ~Library() { mosquitto_lib_cleanup(); }
    };
    static const Library library;
}

DoodleMqttClient *clientOf(void *self)
{
    return static_cast<DoodleMqttClient *>(self);
}

} // namespace

DoodleMqttClient::DoodleMqttClient(QObject *parent) : QObject(parent)
{
    initialiseLibrary();
    // A clean session: what was missed while away comes through the catch-up
    // exchange, not from the broker's memory (which a restart empties anyway).
    m_client = mosquitto_new(nullptr, true, this);
    if (!m_client)
        return;
    mosquitto_connect_callback_set(m_client, &DoodleMqttClient::onConnect);
    mosquitto_subscribe_callback_set(m_client, &DoodleMqttClient::onSubscribe);
    mosquitto_disconnect_callback_set(m_client, &DoodleMqttClient::onDisconnect);
    mosquitto_publish_callback_set(m_client, &DoodleMqttClient::onPublish);
    mosquitto_message_callback_set(m_client, &DoodleMqttClient::onMessage);
    // A finished gesture goes out at once, not held back to fill a packet.
    mosquitto_int_option(m_client, MOSQ_OPT_TCP_NODELAY, 1);
    // Retried every second, then up to every five while the broker stays away.
    mosquitto_reconnect_delay_set(m_client, 1, 5, false);
}

DoodleMqttClient::~DoodleMqttClient()
{
    stop();
    if (m_client)
        mosquitto_destroy(m_client);
}

bool DoodleMqttClient::setWill(const QString &topic, const QByteArray &payload)
{
    return m_client && mosquitto_will_set(m_client, topic.toUtf8().constData(), int(payload.size()),
                                          payload.constData(), kQos, false) == MOSQ_ERR_SUCCESS;
}

void DoodleMqttClient::setSubscriptions(const QStringList &filters)
{
    m_filters.clear();
    for (const QString &filter : filters)
        m_filters << filter.toUtf8();
}

bool DoodleMqttClient::start(const QString &host, quint16 port, QString *error)
{
    if (!m_client) {
        *error = QStringLiteral("the MQTT client could not be created");
        return false;
    }
    // The thread first: a connection refused at once is then retried like a
    // dropped one, instead of leaving the client idle.
    int code = mosquitto_loop_start(m_client);
    if (code == MOSQ_ERR_SUCCESS) {
        m_running = true;
        code =
            mosquitto_connect_async(m_client, host.toUtf8().constData(), port, kKeepAliveSeconds);
    }
    if (code != MOSQ_ERR_SUCCESS && code != MOSQ_ERR_ERRNO) {
        *error = QString::fromUtf8(mosquitto_strerror(code));
        stop();
        return false;
    }
    return true;
}

bool DoodleMqttClient::publish(const QString &topic, const QByteArray &payload)
{
    if (!m_running)
        return false;
    ++m_undelivered;
    const int code = mosquitto_publish(m_client, nullptr, topic.toUtf8().constData(),
                                       int(payload.size()), payload.constData(), kQos, false);
    if (code == MOSQ_ERR_SUCCESS)
        return true;
    --m_undelivered;
    return false;
}

bool DoodleMqttClient::waitForDelivery(int msecs)
{
    std::unique_lock<std::mutex> lock(m_deliveryMutex);
    return m_delivered.wait_for(lock, std::chrono::milliseconds(msecs),
                                [this] { return m_undelivered.load() <= 0; });
}

void DoodleMqttClient::stop()
{
    if (!m_running)
        return;
    m_running = false;
    mosquitto_disconnect(m_client);
    mosquitto_loop_stop(m_client, false);
}

void DoodleMqttClient::onConnect(mosquitto *client, void *self, int code)
{
    DoodleMqttClient *that = clientOf(self);
    if (code != 0) {
        emit that->lost(QString::fromUtf8(mosquitto_connack_string(code)));
        return;
    }
    QList<char *> filters;
    for (QByteArray &filter : that->m_filters)
        filters << filter.data();
    mosquitto_subscribe_multiple(client, nullptr, int(filters.size()), filters.data(), kQos, 0,
                                 nullptr);
}

void DoodleMqttClient::onSubscribe(mosquitto *, void *self, int, int, const int *)
{
    emit clientOf(self)->ready();
}

void DoodleMqttClient::onDisconnect(mosquitto *, void *self, int code)
{
    // Zero: our own disconnect.
    if (code != 0)
        emit clientOf(self)->lost(QString::fromUtf8(mosquitto_strerror(code)));
}

void DoodleMqttClient::onPublish(mosquitto *, void *self, int)
{
    DoodleMqttClient *that = clientOf(self);
    {
        std::lock_guard<std::mutex> lock(that->m_deliveryMutex);
        --that->m_undelivered;
    }
    that->m_delivered.notify_all();
}

void DoodleMqttClient::onMessage(mosquitto *, void *self, const mosquitto_message *message)
{
    emit clientOf(self)->messageReceived(
        QString::fromUtf8(message->topic),
        QByteArray(static_cast<const char *>(message->payload), message->payloadlen));
}
