// Broker client: joining and leaving a call, the connection's life, and the
// action texts that travel on each participant's own topic.
#include "DoodleCall_p.h"

#include <doodle/controller/DoodleLayout.h>
#include <doodle/support/DoodleLog_p.h>

#include <QDateTime>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int kPollMs = 100;

} // namespace

DoodleCallPrivate::DoodleCallPrivate(DoodleCall *owner, std::unique_ptr<DoodleCallBoard> board,
                                     const QString &callName)
    : q(owner), m_board(std::move(board)), m_call(callName), m_user(m_board->userId())
{}

DoodleCall::DoodleCall(DoodleLayout *board, const QString &callName, QObject *parent)
    : DoodleCall(std::make_unique<DoodleCallLayoutBoard>(board), callName, parent)
{
    if (board)
        board->setDelegate(this);
}

DoodleCall::DoodleCall(std::unique_ptr<DoodleCallBoard> board, const QString &callName,
                       QObject *parent)
    : QObject(parent), d(std::make_unique<DoodleCallPrivate>(this, std::move(board), callName))
{
    // The client's signals come from the network thread: queued onto this one.
    connect(
        &d->m_client, &DoodleMqttClient::ready, this,
        [this](const QString &broker) { d->onReady(broker); }, Qt::QueuedConnection);
    connect(
        &d->m_client, &DoodleMqttClient::lost, this,
        [this](const QString &reason, bool fatal) { d->onLost(reason, fatal); },
        Qt::QueuedConnection);
    connect(
        &d->m_client, &DoodleMqttClient::messageReceived, this,
        [this](const QString &topic, const QByteArray &payload) { d->onMessage(topic, payload); },
        Qt::QueuedConnection);
    d->m_firstConnectTimer.setSingleShot(true);
    connect(&d->m_firstConnectTimer, &QTimer::timeout, this,
            [this] { d->onFirstConnectTimeout(); });
    d->m_poll.setInterval(kPollMs);
    connect(&d->m_poll, &QTimer::timeout, this, [this] { d->poll(); });
}

DoodleCall::~DoodleCall()
{
    leave();
}

bool DoodleCall::isValidName(const QString &name)
{
    static const QString forbidden = QStringLiteral("/+#");
    if (name.isEmpty() || name.contains(QChar(0)))
        return false;
    return std::none_of(name.begin(), name.end(), [](QChar c) { return forbidden.contains(c); });
}

QList<DoodleCallBroker> DoodleCall::parseBrokers(const QString &text)
{
    // HOST, HOST:PORT or [IPV6]:PORT, separated by commas.
    static const QRegularExpression address(
        QStringLiteral("^(?:\\[([0-9A-Fa-f:.]+)\\]|([^\\s,:\\[\\]]+))(?::(\\d{1,5}))?$"));
    QList<DoodleCallBroker> brokers;
    for (const QString &part : text.split(QLatin1Char(','))) {
        const QRegularExpressionMatch match = address.match(part.trimmed());
        const uint port =
            match.hasMatch() && match.hasCaptured(3) ? match.captured(3).toUInt() : 1883;
        if (!match.hasMatch() || port == 0 || port > 65535)
            return {};
        const QString host = match.hasCaptured(1) ? match.captured(1) : match.captured(2);
        brokers.append({host, quint16(port)});
    }
    return brokers;
}

void DoodleCall::setLogin(const QString &username, const QString &password)
{
    d->m_username = username;
    d->m_password = password;
}

void DoodleCall::setTls(const DoodleCallTls &tls)
{
    d->m_tls = tls;
}

bool DoodleCall::join(const QString &host, quint16 port, int timeoutMs)
{
    return join(QList<DoodleCallBroker>{{host, port}}, timeoutMs);
}

bool DoodleCall::join(const QList<DoodleCallBroker> &brokers, int timeoutMs)
{
    if (!d->m_board->isAlive() || !isValidName(d->m_call) || !isValidName(d->m_user)) {
        d->m_error = tr("the call name and the user id must be non-empty topic levels, without "
                        "'/', '+' or '#'");
        return false;
    }
    if (d->m_joining) {
        d->m_error = tr("already joined");
        return false;
    }
    if (!d->prepareClient())
        return false;
    // This id may have been in the call before, from this board or another
    // process: stamps start past the wall clock, above any it sent then.
    d->m_board->advanceClock(quint64(QDateTime::currentMSecsSinceEpoch()));
    // Every participant hears one broker's order (a cluster's node, its own).
    d->m_board->setSharedOrder(true);
    d->m_brokers.clear();
    for (const DoodleCallBroker &broker : brokers)
        d->m_brokers << QStringLiteral("%1:%2").arg(broker.host).arg(broker.port);
    QString problem;
    if (!d->m_client.start(brokers, &problem)) {
        d->m_error =
            tr("cannot connect to %1: %2").arg(d->m_brokers.join(QLatin1Char(',')), problem);
        return false;
    }
    d->m_joining = true;
    d->m_lastMessage.start();
    d->m_stableSince.start();
    d->m_firstConnectTimer.start(timeoutMs);
    return true;
}

bool DoodleCallPrivate::prepareClient()
{
    m_client.setSubscriptions({QStringLiteral("doodle/%1/+").arg(m_call),
                               QStringLiteral("doodle/%1/+/sync").arg(m_call)});
    // Gone without a goodbye: the broker says it for us.
    m_client.setWill(syncTopic(), QJsonDocument(QJsonObject{{"doodle_sync", 1}, {"kind", "leave"}})
                                      .toJson(QJsonDocument::Compact));
    m_client.setLogin(m_username, m_password);
    return m_client.setTls(m_tls, &m_error);
}

void DoodleCall::leave(int timeoutMs)
{
    if (!d->m_joining)
        return;
    d->m_joining = false;
    d->m_poll.stop();
    d->m_firstConnectTimer.stop();
    if (d->m_connected)
        d->announce(QStringLiteral("leave"));
    d->m_client.waitForDelivery(timeoutMs);
    d->m_client.stop();
    d->m_connected = false;
}

bool DoodleCall::isConnected() const
{
    return d->m_connected;
}

QString DoodleCall::brokerAddress() const
{
    return d->m_address;
}

QString DoodleCall::errorString() const
{
    return d->m_error;
}

QString DoodleCall::callName() const
{
    return d->m_call;
}

qint64 DoodleCall::msecsSinceLastMessage() const
{
    return d->m_lastMessage.isValid() ? d->m_lastMessage.elapsed() : 0;
}

void DoodleCall::onDoodleActionGenerated(const DoodleActionPtr &action)
{
    sendAction(action);
}

void DoodleCall::sendAction(const DoodleActionPtr &action)
{
    if (d->m_joining && action && d->m_board->isAlive())
        d->publishAction(d->m_board->textOf(action));
}

void DoodleCallPrivate::publishAction(const QString &text)
{
    if (!m_joining)
        return;
    // Refused only before the first connection or after leaving; the
    // catch-up exchange brings the drawing to the others later.
    if (text.isEmpty() || !m_client.publish(actionTopic(), text.toUtf8()))
        qCWarning(lcDoodle, "an action could not be sent to the call; it follows with the board");
}

QString DoodleCallPrivate::actionTopic() const
{
    return QStringLiteral("doodle/%1/%2").arg(m_call, m_user);
}

QString DoodleCallPrivate::syncTopic() const
{
    return actionTopic() + QStringLiteral("/sync");
}

QString DoodleCallPrivate::senderOf(const QString &topic, bool *sync) const
{
    const QStringList levels = topic.split(QLatin1Char('/'));
    *sync = levels.size() == 4 && levels.at(3) == QLatin1String("sync");
    if ((levels.size() != 3 && !*sync) || levels.at(0) != QLatin1String("doodle") ||
        levels.at(1) != m_call)
        return QString();
    return levels.at(2);
}

void DoodleCallPrivate::onReady(const QString &broker)
{
    if (!m_joining)
        return;
    m_connected = true;
    m_address = broker;
    m_firstConnectTimer.stop();
    m_poll.start();
    if (!m_everConnected) {
        m_everConnected = true;
        // A joiner asks for the board.
        announce(QStringLiteral("join"));
        emit q->connected();
    } else {
        // Whatever was missed meanwhile shows as a different fingerprint.
        announce(QStringLiteral("fingerprint"));
        emit q->reconnected();
    }
}

void DoodleCallPrivate::onLost(const QString &reason, bool fatal)
{
    m_lastReason = reason;
    if (!m_joining)
        return;
    if (fatal) {
        fail(reason);
        return;
    }
    if (!m_connected)
        return;
    m_connected = false;
    qCWarning(lcDoodle, "the call lost its broker (%s); reconnecting", qPrintable(reason));
    emit q->disconnected(reason);
}

void DoodleCallPrivate::onFirstConnectTimeout()
{
    if (m_everConnected)
        return;
    QString reason = DoodleCall::tr("cannot reach the broker at %1").arg(m_brokers.join(", "));
    if (!m_lastReason.isEmpty())
        reason += QStringLiteral(" (%1)").arg(m_lastReason);
    fail(reason);
}

void DoodleCallPrivate::fail(const QString &reason)
{
    m_error = reason;
    m_connected = false;
    q->leave(0);
    emit q->failed(m_error);
}

void DoodleCallPrivate::onMessage(const QString &topic, const QByteArray &payload)
{
    bool sync = false;
    const QString sender = senderOf(topic, &sync);
    if (!m_joining || sender.isNull() || !m_board->isAlive())
        return;
    if (sender == m_user) {
        // The broker's order, this board's own actions in it: drawings of
        // peers without stamps are placed by it.
        if (!sync)
            m_board->echoText(QString::fromUtf8(payload));
        return;
    }
    m_lastMessage.restart();
    if (sync) {
        onSync(sender, payload);
        return;
    }
    const QString text = QString::fromUtf8(payload);
    m_board->receiveText(sender, text);
    emit q->actionReceived(sender, text);
}
