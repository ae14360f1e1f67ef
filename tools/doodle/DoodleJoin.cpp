// doodle join: takes part in a call through an MQTT broker, in a window or
// headless (a recorded session played as this participant's own, and the
// board's picture written once every board agrees).
#include "DoodleCommands.h"

#include <QTextStream>

#ifndef DOODLE_HAVE_CALL

int doodleJoin(const QStringList &)
{
    QTextStream(stderr) << "doodle join: this doodle was built without broker support "
                           "(Doodle::call, which needs libmosquitto)\n";
    return 2;
}

#else

#include <doodle/Doodle.h>
#include <doodle/call/DoodleCall.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

namespace {

constexpr int kConnectTimeoutMs = 5000;
constexpr qint64 kLostBrokerMs = 10000; // headless: give up after this long without the broker

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
};

bool parseBroker(const QString &text, JoinOptions *options)
{
    options->brokers = DoodleCall::parseBrokers(text);
    return !options->brokers.isEmpty();
}

// The login and TLS: the password from a file or the environment, never from
// the command line, where every user of the machine can read it.
QString readSecurity(const QCommandLineParser &parser, JoinOptions *options)
{
    options->username = parser.isSet("username") ? parser.value("username") : options->user;
    options->password = qEnvironmentVariable("DOODLE_PASSWORD");
    if (parser.isSet("password-file")) {
        QFile file(parser.value("password-file"));
        if (!file.open(QIODevice::ReadOnly))
            return QStringLiteral("cannot read the password file %1").arg(file.fileName());
        // The first line, without its line break.
        options->password = QString::fromUtf8(file.readLine());
        while (options->password.endsWith(QLatin1Char('\n')) ||
               options->password.endsWith(QLatin1Char('\r')))
            options->password.chop(1);
    }
    // No password, no login name either: anonymous, which a broker that
    // knows no such user (RabbitMQ) would otherwise refuse.
    if (options->password.isEmpty() && !parser.isSet("username"))
        options->username.clear();
    options->tls.caFile = parser.value("cafile");
    options->tls.certFile = parser.value("cert");
    options->tls.keyFile = parser.value("key");
    if (options->tls.caFile.isEmpty() && (parser.isSet("cert") || parser.isSet("key")))
        return QStringLiteral("--cert and --key go with --cafile");
    return QString();
}

QString readNumbers(const QCommandLineParser &parser, JoinOptions *options)
{
    bool ok = true;
    if (parser.isSet("interval"))
        options->intervalMs = parser.value("interval").toInt(&ok);
    if (!ok || options->intervalMs < 0 || options->intervalMs > 60000)
        return QStringLiteral("--interval takes milliseconds from 0 to 60000");
    if (parser.isSet("quit-after-idle"))
        options->quitAfterIdle = parser.value("quit-after-idle").toDouble(&ok);
    if (!ok || !(options->quitAfterIdle >= 0 && options->quitAfterIdle <= 3600))
        return QStringLiteral("--quit-after-idle takes seconds from 0 to 3600");
    if (parser.isSet("quit-after-idle") && !parser.isSet("snapshot"))
        return QStringLiteral("--quit-after-idle goes with --snapshot");
    return QString();
}

// Fills `options` from the arguments; an error message when they do not fit.
QString parseOptions(const QStringList &arguments, JoinOptions *options)
{
    QCommandLineParser parser;
    parser.addOptions(
        {{"broker", "the MQTT broker, or brokers to fail over to", "HOST:PORT[,HOST:PORT...]"},
         {"call", "the call's name", "NAME"},
         {"user", "this participant's id", "ID"},
         {"username", "the broker login (default: the id)", "NAME"},
         {"password-file", "the login's password (or DOODLE_PASSWORD)", "FILE"},
         {"cafile", "TLS: the CA the broker's certificate must verify against", "FILE"},
         {"cert", "TLS: this participant's certificate", "FILE"},
         {"key", "TLS: the key of --cert", "FILE"},
         {"play", "a session to draw as this participant's own", "FILE"},
         {"interval", "milliseconds between played actions", "MS"},
         {"snapshot", "headless: write the agreed picture and exit", "OUT.png"},
         {"quit-after-idle", "seconds without messages before the picture", "SECONDS"}});
    addBoardOptions(parser);
    if (!parser.parse(QStringList(QStringLiteral("doodle join")) + arguments))
        return parser.errorText();
    if (!parser.isSet("broker") || !parser.isSet("call") || !parser.isSet("user") ||
        !parser.positionalArguments().isEmpty())
        return QStringLiteral("usage: doodle join --broker HOST:PORT --call NAME --user ID ...");
    if (!parseBroker(parser.value("broker"), options))
        return QStringLiteral("--broker takes HOST:PORT[,HOST:PORT...], such as 127.0.0.1:1883");
    options->call = parser.value("call");
    options->user = parser.value("user");
    if (!DoodleCall::isValidName(options->call) || !DoodleCall::isValidName(options->user))
        return QStringLiteral("--call and --user take names without '/', '+' or '#'");
    if (const QString problem = readSecurity(parser, options); !problem.isNull())
        return problem;
    options->play = parser.value("play");
    options->snapshot = parser.value("snapshot");
    options->scaleSet = parser.isSet("scale");
    const QString problem = readBoardOptions(parser, &options->board);
    return problem.isNull() ? readNumbers(parser, options) : problem;
}

// The session's actions, decoded up front so that a bad file stops nothing half way.
bool readSession(const QString &path, DoodleLayout &board, QList<DoodleActionPtr> *actions)
{
    QTextStream err(stderr);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        err << "doodle join: cannot read " << path << '\n';
        return false;
    }
    for (int line = 1; !file.atEnd(); ++line) {
        const QString text = QString::fromUtf8(file.readLine()).trimmed();
        if (text.isEmpty())
            continue;
        const DoodleActionPtr action = board.stringToDoodleAction(text);
        if (!action) {
            err << "doodle join: " << path << ':' << line << ": cannot decode\n";
            return false;
        }
        actions->append(action);
    }
    return true;
}

void say(const QString &line)
{
    QTextStream out(stdout);
    out << line << Qt::endl;
}

// One participant: its board, its place in the call, the session it plays
// and, headless, the moment it writes its picture.
class Participant : public QObject
{
public:
    Participant(const JoinOptions &options, const QList<DoodleActionPtr> &session,
                DoodleLayout &board)
        : m_options(options), m_session(session), m_board(board), m_call(&board, options.call)
    {
        connect(&m_call, &DoodleCall::connected, this, &Participant::onConnected);
        connect(&m_call, &DoodleCall::reconnected, this, [this] {
            m_lost.invalidate();
            say(QStringLiteral("reconnected"));
        });
        connect(&m_call, &DoodleCall::disconnected, this, [this](const QString &reason) {
            m_lost.start();
            say(QStringLiteral("disconnected: %1").arg(reason));
        });
        connect(&m_call, &DoodleCall::failed, this, [](const QString &reason) {
            QTextStream(stderr) << "doodle join: " << reason << '\n';
            QCoreApplication::exit(1);
        });
        connect(&m_player, &QTimer::timeout, this, &Participant::playNext);
        connect(&m_check, &QTimer::timeout, this, &Participant::check);
        m_player.setInterval(options.intervalMs);
        m_check.setInterval(100);
    }

    bool start()
    {
        m_call.setLogin(m_options.username, m_options.password);
        m_call.setTls(m_options.tls);
        if (m_call.join(m_options.brokers, kConnectTimeoutMs))
            return true;
        QTextStream(stderr) << "doodle join: " << m_call.errorString() << '\n';
        return false;
    }

private:
    void onConnected()
    {
        say(QStringLiteral("connected to %1, call %2 as %3")
                .arg(m_call.brokerAddress(), m_options.call, m_options.user));
        m_player.start();
        if (!m_options.snapshot.isEmpty())
            m_check.start();
    }

    void playNext()
    {
        if (m_played == m_session.size()) {
            m_player.stop();
            return;
        }
        m_board.commitLocalAction(m_session.at(m_played++));
        say(QStringLiteral("played %1/%2").arg(m_played).arg(m_session.size()));
    }

    // Headless: the picture once playing is done, every board heard from
    // agrees and the call has been quiet for long enough.
    void check()
    {
        if (m_lost.isValid() && m_lost.elapsed() > kLostBrokerMs) {
            QTextStream(stderr) << "doodle join: lost the broker at " << m_call.brokerAddress()
                                << " for " << kLostBrokerMs / 1000 << " s\n";
            QCoreApplication::exit(1);
            return;
        }
        if (m_played < m_session.size() || !m_call.isSettled() ||
            m_call.msecsSinceLastMessage() < qint64(m_options.quitAfterIdle * 1000))
            return;
        m_check.stop();
        if (!m_board.doodleView()->convertViewToImage().save(m_options.snapshot, "PNG")) {
            QTextStream(stderr) << "doodle join: cannot write " << m_options.snapshot << '\n';
            QCoreApplication::exit(2);
            return;
        }
        const quint64 fingerprint = m_board.fingerprint();
        m_call.leave();
        say(QStringLiteral("fingerprint %1").arg(fingerprint, 16, 16, QLatin1Char('0')));
        QCoreApplication::exit(0);
    }

    const JoinOptions &m_options;
    const QList<DoodleActionPtr> &m_session;
    DoodleLayout &m_board;
    DoodleCall m_call;
    QTimer m_player;
    QTimer m_check;
    qsizetype m_played = 0;
    QElapsedTimer m_lost; // valid while the broker is away
};

} // namespace

int doodleJoin(const QStringList &arguments)
{
    JoinOptions options;
    const QString problem = parseOptions(arguments, &options);
    if (!problem.isNull()) {
        QTextStream(stderr) << "doodle join: " << problem << '\n';
        return 2;
    }
    const bool headless = !options.snapshot.isEmpty();
    // Headless, the board is drawn at the scale `doodle render` draws at, so
    // the two pictures compare pixel for pixel.
    if (headless || options.scaleSet)
        DoodleScreen::setScaleOverride(options.board.scale);
    DoodleLayout board(options.user);
    QList<DoodleActionPtr> session;
    if (!options.play.isEmpty() && !readSession(options.play, board, &session))
        return 2;
    board.resetDoodleViewFrame(QRect(QPoint(0, 0), options.board.size));
    Participant participant(options, session, board);
    if (!participant.start())
        return 1;
    if (!headless) {
        board.view()->setWindowTitle(
            QStringLiteral("doodle: %1 (%2)").arg(options.call, options.user));
        board.view()->show();
        board.showToolBar();
    }
    return QCoreApplication::exec();
}

#endif
