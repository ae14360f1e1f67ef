// Broker client: libmosquitto driven by a network thread of our own, which
// moves on to the next broker when a connection fails or drops, and tells a
// failure that retrying cures from one that it cannot.
#include "DoodleMqttClient_p.h"

#include <QFile>
#include <QFileInfo>

#include <mosquitto.h>

#include <algorithm>
#include <cerrno>

#include <poll.h>
#include <sys/socket.h>

namespace {

constexpr int kKeepAliveSeconds = 10;
constexpr int kQos = 1;
constexpr int kLoopMs = 500;
constexpr int kSubscriptionRefused = 0x80;
constexpr int kServerUnavailable = 3; // a CONNACK refusal that passes
// A stop gives the goodbye this long to go out.
constexpr std::chrono::milliseconds kStopGrace(500);
// After each round of brokers that all failed, one second more, up to five.
constexpr qsizetype kMaxPauseSeconds = 5;
// A broker that does not accept a connection within this time is given up on.
constexpr std::chrono::seconds kAnswerTime(4);
// A connection that drops sooner than this counts as a failed attempt.
constexpr std::chrono::seconds kStableConnection(1);

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

// A key's passphrase is never asked for on the terminal: an encrypted key
// fails to load instead.
int noPassphrase(char *, int, int, void *)
{
    return 0;
}

QString addressOf(const DoodleCallBroker &broker)
{
    const QString format = broker.host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]:%2")
                                                                  : QStringLiteral("%1:%2");
    return format.arg(broker.host).arg(broker.port);
}

const char *orNull(const QByteArray &text)
{
    return text.isEmpty() ? nullptr : text.constData();
}

} // namespace

DoodleMqttClient::DoodleMqttClient(QObject *parent) : QObject(parent)
{
    initialiseLibrary();
    // A clean session: what was missed while away comes through the catch-up
    // exchange, not from the broker's memory (which a restart empties anyway,
    // and another broker never had).
    m_client = mosquitto_new(nullptr, true, this);
    if (!m_client)
        return;
    // Our own thread runs the loop; a publish from another thread only queues.
    mosquitto_threaded_set(m_client, true);
    mosquitto_connect_callback_set(m_client, &DoodleMqttClient::onConnect);
    mosquitto_subscribe_callback_set(m_client, &DoodleMqttClient::onSubscribe);
    mosquitto_publish_callback_set(m_client, &DoodleMqttClient::onPublish);
    mosquitto_message_callback_set(m_client, &DoodleMqttClient::onMessage);
    mosquitto_log_callback_set(m_client, &DoodleMqttClient::onLog);
    // A finished gesture goes out at once, not held back to fill a packet.
    mosquitto_int_option(m_client, MOSQ_OPT_TCP_NODELAY, 1);
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

bool DoodleMqttClient::setLogin(const QString &username, const QString &password)
{
    m_username = username;
    const QByteArray user = username.toUtf8();
    const QByteArray secret = password.toUtf8();
    return m_client &&
           mosquitto_username_pw_set(m_client, orNull(user), orNull(secret)) == MOSQ_ERR_SUCCESS;
}

bool DoodleMqttClient::setTls(const DoodleCallTls &tls, QString *error)
{
    if (tls.certFile.isEmpty() != tls.keyFile.isEmpty()) {
        *error = tr("a client certificate and its key go together");
        return false;
    }
    if (tls.caFile.isEmpty()) {
        if (!tls.certFile.isEmpty())
            *error = tr("a client certificate needs TLS, which needs a CA file");
        return tls.certFile.isEmpty();
    }
    for (const QString &file : {tls.caFile, tls.certFile, tls.keyFile}) {
        if (!file.isEmpty() && !QFileInfo(file).isReadable()) {
            *error = tr("cannot read %1").arg(file);
            return false;
        }
    }
    const QByteArray ca = QFile::encodeName(tls.caFile);
    const QByteArray cert = QFile::encodeName(tls.certFile);
    const QByteArray key = QFile::encodeName(tls.keyFile);
    int code = m_client ? mosquitto_tls_set(m_client, ca.constData(), nullptr, orNull(cert),
                                            orNull(key), &noPassphrase)
                        : MOSQ_ERR_INVAL;
    if (code == MOSQ_ERR_SUCCESS)
        code = mosquitto_tls_insecure_set(m_client, !tls.verifyServerName);
    if (code != MOSQ_ERR_SUCCESS) {
        *error = tr("TLS cannot be set up: %1").arg(QString::fromUtf8(mosquitto_strerror(code)));
        return false;
    }
    m_caFile = tls.caFile;
    return true;
}

bool DoodleMqttClient::start(const QList<DoodleCallBroker> &brokers, QString *error)
{
    if (!m_client || brokers.isEmpty() || m_thread.joinable()) {
        *error = !m_client ? tr("the MQTT client could not be created")
                           : (brokers.isEmpty() ? tr("no broker given") : tr("already started"));
        return false;
    }
    m_brokers = brokers;
    m_stopping = false;
    m_thread = std::thread([this] { run(); });
    return true;
}

bool DoodleMqttClient::publish(const QString &topic, const QByteArray &payload)
{
    if (!m_thread.joinable())
        return false;
    ++m_undelivered;
    int code = MOSQ_ERR_INVAL;
    {
        // Not while the network thread switches brokers.
        std::lock_guard<std::mutex> lock(m_connectMutex);
        code = mosquitto_publish(m_client, nullptr, topic.toUtf8().constData(), int(payload.size()),
                                 payload.constData(), kQos, false);
    }
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
    if (!m_thread.joinable())
        return;
    m_stopDeadline = std::chrono::steady_clock::now() + kStopGrace;
    {
        std::lock_guard<std::mutex> lock(m_wakeMutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    {
        std::lock_guard<std::mutex> lock(m_connectMutex);
        mosquitto_disconnect(m_client);
    }
    m_thread.join();
}

// The network thread: one broker after the other until stopped or a fatal failure.
void DoodleMqttClient::run()
{
    qsizetype next = 0;
    qsizetype failures = 0; // attempts in a row that gave no lasting connection
    while (!m_stopping) {
        int error = 0;
        const auto began = std::chrono::steady_clock::now();
        const int code = connectTo(m_brokers.at(next), &error);
        if (m_stopping)
            return;
        bool fatal = false;
        const QString reason = describe(code, error, &fatal);
        emit lost(reason, fatal);
        if (fatal)
            return;
        const bool lasted =
            m_attempt.accepted && std::chrono::steady_clock::now() - began >= kStableConnection;
        failures = lasted ? 0 : failures + 1;
        next = (next + 1) % m_brokers.size();
        const qsizetype rounds = failures / m_brokers.size();
        if (rounds > 0 && !pause(std::chrono::seconds(std::min(rounds, kMaxPauseSeconds))))
            return;
    }
}

// One connection, from the attempt until it fails, drops or is stopped.
int DoodleMqttClient::connectTo(const DoodleCallBroker &broker, int *error)
{
    m_attempt = Attempt();
    m_attempt.broker = addressOf(broker);
    int code = MOSQ_ERR_INVAL;
    {
        std::lock_guard<std::mutex> lock(m_connectMutex);
        code = mosquitto_connect_async(m_client, broker.host.toUtf8().constData(), broker.port,
                                       kKeepAliveSeconds);
    }
    const auto deadline = std::chrono::steady_clock::now() + kAnswerTime;
    while (code == MOSQ_ERR_SUCCESS && !stopDue()) {
        code = mosquitto_loop(m_client, kLoopMs, 1);
        if (code == MOSQ_ERR_SUCCESS && !m_attempt.accepted)
            code = checkPending(deadline);
    }
    *error = errno;
    return code;
}

// libmosquitto does not notice by itself when a TLS connection in the making
// is refused (its handshake takes the refusal for a wait): a socket that has
// hung up before the broker accepted is a failed attempt. And a broker that
// accepts the connection but never answers it is given up on.
int DoodleMqttClient::checkPending(std::chrono::steady_clock::time_point deadline)
{
    pollfd socket{mosquitto_socket(m_client), POLLOUT, 0};
    if (socket.fd >= 0 && ::poll(&socket, 1, 0) == 1 && (socket.revents & (POLLHUP | POLLERR))) {
        int pending = 0;
        socklen_t size = sizeof(pending);
        getsockopt(socket.fd, SOL_SOCKET, SO_ERROR, &pending, &size);
        errno = pending != 0 ? pending : ECONNREFUSED;
        return MOSQ_ERR_ERRNO;
    }
    if (std::chrono::steady_clock::now() < deadline)
        return MOSQ_ERR_SUCCESS;
    errno = ETIMEDOUT;
    return MOSQ_ERR_ERRNO;
}

QString DoodleMqttClient::describe(int code, int error, bool *fatal) const
{
    const Attempt &attempt = m_attempt;
    *fatal = true;
    if (attempt.refusal != 0) {
        *fatal = attempt.refusal != kServerUnavailable;
        return tr("the broker at %1 refused the login as %2: %3")
            .arg(attempt.broker, m_username.isEmpty() ? tr("anonymous") : m_username,
                 QString::fromUtf8(mosquitto_connack_string(attempt.refusal)));
    }
    if (attempt.subscriptionRefused)
        return tr("the broker at %1 does not let %2 hear this call")
            .arg(attempt.broker, m_username);
    if (!attempt.tlsError.isEmpty() && !attempt.accepted) {
        if (attempt.tlsError.contains(QLatin1String("certificate verify failed")))
            return tr("the certificate of the broker at %1 does not verify against %2 (%3)")
                .arg(attempt.broker, m_caFile, attempt.tlsError);
        return tr("the TLS handshake with the broker at %1 failed (%2)")
            .arg(attempt.broker, attempt.tlsError);
    }
    if (code == MOSQ_ERR_PROTOCOL)
        return tr("the broker at %1 does not answer in MQTT").arg(attempt.broker);
    *fatal = false;
    if (!attempt.accepted && code == MOSQ_ERR_CONN_LOST)
        return tr("the broker at %1 closed the connection before accepting it (does it expect "
                  "TLS?)")
            .arg(attempt.broker);
    const QString cause = code == MOSQ_ERR_ERRNO ? qt_error_string(error)
                                                 : QString::fromUtf8(mosquitto_strerror(code));
    return tr("the broker at %1: %2").arg(attempt.broker, cause);
}

bool DoodleMqttClient::pause(std::chrono::milliseconds delay)
{
    std::unique_lock<std::mutex> lock(m_wakeMutex);
    return !m_wake.wait_for(lock, delay, [this] { return m_stopping.load(); });
}

bool DoodleMqttClient::stopDue() const
{
    return m_stopping && std::chrono::steady_clock::now() >= m_stopDeadline;
}

void DoodleMqttClient::onConnect(mosquitto *client, void *self, int code)
{
    DoodleMqttClient *that = clientOf(self);
    if (code != 0) {
        that->m_attempt.refusal = code;
        return;
    }
    that->m_attempt.accepted = true;
    QList<char *> filters;
    for (QByteArray &filter : that->m_filters)
        filters << filter.data();
    mosquitto_subscribe_multiple(client, nullptr, int(filters.size()), filters.data(), kQos, 0,
                                 nullptr);
}

void DoodleMqttClient::onSubscribe(mosquitto *client, void *self, int, int count,
                                   const int *granted)
{
    DoodleMqttClient *that = clientOf(self);
    if (std::any_of(granted, granted + count,
                    [](int qos) { return qos == kSubscriptionRefused; })) {
        that->m_attempt.subscriptionRefused = true;
        mosquitto_disconnect(client);
        return;
    }
    emit that->ready(that->m_attempt.broker);
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

// libmosquitto says what went wrong with TLS only in its log: the first error
// of an attempt is kept to name the cause. Nothing else of the log is used.
void DoodleMqttClient::onLog(mosquitto *, void *self, int level, const char *text)
{
    DoodleMqttClient *that = clientOf(self);
    if ((level & MOSQ_LOG_ERR) && that->m_attempt.tlsError.isEmpty())
        that->m_attempt.tlsError = QString::fromUtf8(text);
}
