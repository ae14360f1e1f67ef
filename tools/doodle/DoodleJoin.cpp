// doodle join: takes part in a call through an MQTT broker, in a window or
// headless (a recorded session played as this participant's own, and the
// board's picture written once every board agrees).
#include "DoodleCommands.h"
#include "DoodleLines.h"

#include <QTextStream>

#ifndef DOODLE_HAVE_CALL

int doodleJoin(const QStringList &)
{
    QTextStream(stderr) << "doodle join: this doodle was built without broker support "
                           "(Doodle::call, which needs libmosquitto)\n";
    return 2;
}

#else

#include "DoodleJoin.h"

#include <doodle/Doodle.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int kConnectTimeoutMs = 5000;
// How long the broker may take to answer a connection before the call starts:
// together with the call's own timeout, an answer within 10 s in every case.
constexpr int kProbeTimeoutMs = 4000;
constexpr qint64 kLostBrokerMs = 10000; // headless: give up after this long without the broker

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

// W:H, two positive numbers, such as 16:9 or 390:844.
QString readAspect(const QString &text, JoinOptions *options)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    bool okW = false, okH = false;
    const double w = parts.value(0).toDouble(&okW);
    const double h = parts.value(1).toDouble(&okH);
    const bool fits =
        parts.size() == 2 && okW && okH && w > 0 && h > 0 && w / h < 1000 && h / w < 1000;
    if (!fits)
        return DoodleTool::tr("--aspect takes W:H, two positive numbers such as 16:9, not '%1'")
            .arg(text);
    options->aspect = QSizeF(w, h);
    return QString();
}

QString readNumbers(const QCommandLineParser &parser, JoinOptions *options)
{
    bool ok = true;
    if (parser.isSet("interval"))
        options->intervalMs = parser.value("interval").toInt(&ok);
    if (!ok || options->intervalMs < 0 || options->intervalMs > 60000)
        return DoodleTool::tr("--interval takes milliseconds from 0 to 60000, not '%1'")
            .arg(parser.value("interval"));
    if (parser.isSet("quit-after-idle"))
        options->quitAfterIdle = parser.value("quit-after-idle").toDouble(&ok);
    if (!ok || !(options->quitAfterIdle >= 0 && options->quitAfterIdle <= 3600))
        return DoodleTool::tr("--quit-after-idle takes seconds from 0 to 3600, not '%1'")
            .arg(parser.value("quit-after-idle"));
    if (parser.isSet("quit-after-idle") && !parser.isSet("snapshot"))
        return DoodleTool::tr("--quit-after-idle goes with --snapshot OUT.png");
    if (parser.isSet("message-budget"))
        options->messageBudget = parser.value("message-budget").toLongLong(&ok);
    if (!ok || options->messageBudget < 0)
        return DoodleTool::tr("--message-budget takes a number of bytes, not '%1'")
            .arg(parser.value("message-budget"));
    return parser.isSet("aspect") ? readAspect(parser.value("aspect"), options) : QString();
}

// The first of --broker, --call and --user that is missing or, for a name,
// does not fit in a topic; and any argument that is not an option.
QString missingOrBadName(const QCommandLineParser &parser)
{
    if (!parser.positionalArguments().isEmpty())
        return DoodleTool::tr("unexpected argument '%1' (every value follows its option)")
            .arg(parser.positionalArguments().first());
    const struct
    {
        const char *name;
        const char *value;
        const char *meaning;
    } required[] = {{"broker", "HOST:PORT", QT_TRANSLATE_NOOP("doodle", "the MQTT broker")},
                    {"call", "NAME", QT_TRANSLATE_NOOP("doodle", "the call's name")},
                    {"user", "ID", QT_TRANSLATE_NOOP("doodle", "this participant's id")}};
    for (const auto &option : required) {
        const QString name = QLatin1String(option.name);
        if (!parser.isSet(name))
            return DoodleTool::tr("missing --%1 %2 (%3)")
                .arg(name, QLatin1String(option.value), DoodleTool::tr(option.meaning));
        if (name != QLatin1String("broker") && !DoodleCall::isValidName(parser.value(name)))
            return DoodleTool::tr("--%1 takes a name without '/', '+' or '#', not '%2'")
                .arg(name, parser.value(name));
    }
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
         {"quit-after-idle", "seconds without messages before the picture", "SECONDS"},
         {"aspect",
          "the board's shape for this participant (default: the call's, which is "
          "the first participant's board shape)",
          "W:H"},
         {"quick", "show the board in a Qt Quick window"},
         {"message-budget", "the largest message this participant sends (default: no limit)",
          "BYTES"}});
    addBoardOptions(parser);
    if (!parser.parse(QStringList(QStringLiteral("doodle join")) + arguments))
        return parser.errorText();
    const QString missing = missingOrBadName(parser);
    if (!missing.isNull())
        return missing;
    if (!parseBroker(parser.value("broker"), options))
        return DoodleTool::tr("--broker takes HOST:PORT[,HOST:PORT...], such as 127.0.0.1:1883, "
                              "not '%1'")
            .arg(parser.value("broker"));
    options->call = parser.value("call");
    options->user = parser.value("user");
    if (!DoodleCall::isValidName(options->call) || !DoodleCall::isValidName(options->user))
        return DoodleTool::tr("--call and --user take names without '/', '+' or '#'");
    if (const QString problem = readSecurity(parser, options); !problem.isNull())
        return problem;
    options->play = parser.value("play");
    options->snapshot = parser.value("snapshot");
    options->scaleSet = parser.isSet("scale");
    options->quick = parser.isSet("quick");
    if (options->quick && !options->snapshot.isEmpty())
        return DoodleTool::tr("--quick opens a window; it does not go with --snapshot");
    const QString problem = readBoardOptions(parser, &options->board);
    return problem.isNull() ? readNumbers(parser, options) : problem;
}

// The session's actions, decoded up front so that a bad file stops nothing half way.
bool readSession(const QString &path, QList<DoodleActionPtr> *actions)
{
    QTextStream err(stderr);
    DoodleSessionReader session(path);
    if (!session.open()) {
        err << "doodle join: "
            << DoodleTool::tr("cannot read %1 (%2)").arg(path, session.errorString()) << '\n';
        return false;
    }
    DoodleSessionReader::Line line;
    while (session.next(line)) {
        if (!line.problem.isNull()) {
            err << "doodle join: " << session.report(line) << '\n';
            return false;
        }
        actions->append(line.action);
    }
    return true;
}

// A broker that refuses the connection, or whose name does not resolve, is
// certainly out of reach: said at once rather than after the call's timeout.
// A null string when it answers.
QString probeBroker(const QString &host, quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(host, port);
    if (socket.waitForConnected(kProbeTimeoutMs)) {
        socket.abort();
        return QString();
    }
    const QString reason = socket.error() == QAbstractSocket::SocketTimeoutError
                               ? DoodleTool::tr("no answer within %1 s").arg(kProbeTimeoutMs / 1000)
                               : socket.errorString();
    return DoodleTool::tr("cannot reach the broker at %1:%2 (%3)").arg(host).arg(port).arg(reason);
}

// A null string when one of the brokers answers; else what each one said.
QString probeBrokers(const QList<DoodleCallBroker> &brokers)
{
    QStringList problems;
    for (const DoodleCallBroker &broker : brokers) {
        const QString problem = probeBroker(broker.host, broker.port);
        if (problem.isNull())
            return QString();
        problems << problem;
    }
    return problems.join(QStringLiteral("; "));
}

// The tool's own choice for the tool bar's close button: leave the call and
// quit (a host that embeds the board keeps it open and shows it again).
class JoinCall : public DoodleCall
{
public:
    using DoodleCall::DoodleCall;
    void onCloseDoodle() override
    {
        leave();
        QCoreApplication::exit(0);
    }
};

// The window of a participant: the call's state in one line above the board
// (which takes input once the call is joined) and where the last picture went.
class JoinWindow : public QWidget
{
public:
    JoinWindow(const JoinOptions &options, DoodleLayout &board, DoodleCall &call)
        : m_options(options), m_board(board),
          m_status(
              options, call, [this](const QString &text) { m_state->setText(text); },
              [this] { m_board.view()->setEnabled(true); })
    {
        setWindowTitle(QStringLiteral("doodle: %1 (%2)").arg(options.call, options.user));
        auto *bar = new QVBoxLayout;
        bar->setContentsMargins(8, 4, 8, 4);
        // Long texts wrap or are cut; they never widen the window.
        for (QLabel *label : {m_state, m_note}) {
            label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
            label->setWordWrap(true);
            label->setTextInteractionFlags(Qt::TextSelectableByMouse);
            bar->addWidget(label);
        }
        m_note->hide();
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addLayout(bar);
        layout->addWidget(board.view(), 1);
        resize(options.board.size + QSize(0, bar->sizeHint().height()));
        board.view()->setEnabled(false);
        board.setPictureSink([this](const QImage &picture) { savePicture(picture); });
    }
    // The board's view belongs to the board.
    ~JoinWindow() override
    {
        if (m_board.isViewLoaded())
            m_board.view()->setParent(nullptr);
    }

private:
    // A new file in the pictures folder, on the board's colour over white: a
    // viewer with a dark background shows black ink too.
    void savePicture(const QImage &picture)
    {
        QImage opaque(picture.size(), QImage::Format_RGB32);
        opaque.setDevicePixelRatio(picture.devicePixelRatio());
        opaque.fill(Qt::white);
        QPainter(&opaque).drawImage(0, 0, picture);
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
        const QString stem = QStringLiteral("doodle-%1-%2-%3")
                                 .arg(m_options.call, m_options.user,
                                      QDateTime::currentDateTime().toString("yyyyMMdd-HHmmss"));
        QFile file;
        for (int attempt = 0; attempt < 100 && !file.isOpen(); ++attempt) {
            const QString suffix = attempt == 0 ? QString() : QStringLiteral("-%1").arg(attempt);
            file.setFileName(QDir(folder).filePath(stem + suffix + QStringLiteral(".png")));
            // NewOnly: an earlier picture is never overwritten.
            if (QDir().mkpath(folder))
                file.open(QIODevice::WriteOnly | QIODevice::NewOnly);
        }
        const QFileInfo saved(file.fileName());
        if (file.isOpen() && opaque.save(&file, "PNG")) {
            m_note->setText(DoodleTool::tr("Saved %1 in %2")
                                .arg(saved.fileName(), QDir::toNativeSeparators(folder)));
            say(QStringLiteral("saved %1").arg(saved.filePath()));
        } else {
            m_note->setText(DoodleTool::tr("Could not save the picture in %1")
                                .arg(QDir::toNativeSeparators(folder)));
            file.remove();
        }
        m_note->show();
    }

    const JoinOptions &m_options;
    DoodleLayout &m_board;
    QLabel *m_state = new QLabel;
    QLabel *m_note = new QLabel;
    JoinStatus m_status;
};

} // namespace

#ifndef DOODLE_HAVE_QUICK
int joinQuick(const JoinOptions &, const QList<DoodleActionPtr> &)
{
    QTextStream(stderr) << "doodle join: this doodle was built without the Qt Quick board "
                           "(Doodle::quick)\n";
    return 2;
}
#endif

void say(const QString &line)
{
    QTextStream out(stdout);
    out << line << Qt::endl;
}

Participant::Participant(const JoinOptions &options, const QList<DoodleActionPtr> &session,
                         JoinBoard board, std::unique_ptr<DoodleCall> call)
    : m_options(options), m_session(session), m_board(std::move(board)), m_call(std::move(call))
{
    connect(m_call.get(), &DoodleCall::connected, this, &Participant::onConnected);
    connect(m_call.get(), &DoodleCall::reconnected, this, [this] {
        m_lost.invalidate();
        say(QStringLiteral("reconnected"));
    });
    connect(m_call.get(), &DoodleCall::disconnected, this, [this](const QString &reason) {
        m_lost.start();
        say(QStringLiteral("disconnected: %1").arg(reason));
    });
    connect(m_call.get(), &DoodleCall::failed, this, [](const QString &reason) {
        QTextStream(stderr) << "doodle join: " << reason << '\n';
        QCoreApplication::exit(1);
    });
    connect(&m_player, &QTimer::timeout, this, &Participant::playNext);
    connect(&m_check, &QTimer::timeout, this, &Participant::check);
    m_player.setInterval(options.intervalMs);
    m_check.setInterval(100);
}

bool Participant::start()
{
    m_call->setLogin(m_options.username, m_options.password);
    m_call->setTls(m_options.tls);
    // The call shows one board shape: the first participant's, unless this
    // participant asked for its own.
    const bool own = !m_options.aspect.isEmpty();
    m_call->proposeBoardAspect(own ? m_options.aspect : QSizeF(m_options.board.size), own);
    if (m_call->join(m_options.brokers, kConnectTimeoutMs))
        return true;
    QTextStream(stderr) << "doodle join: " << m_call->errorString() << '\n';
    return false;
}

void Participant::onConnected()
{
    say(QStringLiteral("connected to %1, call %2 as %3")
            .arg(m_call->brokerAddress(), m_options.call, m_options.user));
    m_player.start();
    if (!m_options.snapshot.isEmpty())
        m_check.start();
}

void Participant::playNext()
{
    if (m_played == m_session.size()) {
        m_player.stop();
        return;
    }
    m_board.play(m_session.at(m_played++));
    say(QStringLiteral("played %1/%2").arg(m_played).arg(m_session.size()));
}

// Headless: the picture once playing is done, every board heard from agrees
// and the call has been quiet for long enough.
void Participant::check()
{
    if (m_lost.isValid() && m_lost.elapsed() > kLostBrokerMs) {
        QTextStream(stderr) << "doodle join: lost the broker at " << m_call->brokerAddress()
                            << " for " << kLostBrokerMs / 1000 << " s\n";
        QCoreApplication::exit(1);
        return;
    }
    if (m_played < m_session.size() || !m_call->isSettled() ||
        m_call->msecsSinceLastMessage() < qint64(m_options.quitAfterIdle * 1000))
        return;
    m_check.stop();
    if (!m_board.picture().save(m_options.snapshot, "PNG")) {
        QTextStream(stderr) << "doodle join: cannot write " << m_options.snapshot << '\n';
        QCoreApplication::exit(2);
        return;
    }
    const quint64 fingerprint = m_board.fingerprint();
    m_call->leave();
    say(QStringLiteral("fingerprint %1").arg(fingerprint, 16, 16, QLatin1Char('0')));
    QCoreApplication::exit(0);
}

JoinStatus::JoinStatus(const JoinOptions &options, DoodleCall &call,
                       std::function<void(const QString &)> show, std::function<void()> connected)
    : m_options(options), m_call(call), m_show(std::move(show)), m_connected(std::move(connected))
{
    QStringList brokers;
    for (const DoodleCallBroker &broker : options.brokers)
        brokers << QStringLiteral("%1:%2").arg(broker.host).arg(broker.port);
    m_show(DoodleTool::tr("Joining call %1 as %2 at %3…")
               .arg(options.call, options.user, brokers.join(QStringLiteral(", "))));
    connect(&call, &DoodleCall::connected, this, &JoinStatus::showConnected);
    connect(&call, &DoodleCall::reconnected, this, &JoinStatus::showConnected);
    connect(&call, &DoodleCall::disconnected, this, [this](const QString &reason) {
        m_reason = reason;
        m_since.start();
        m_ticker.start();
        tick();
    });
    connect(&m_ticker, &QTimer::timeout, this, &JoinStatus::tick);
    m_ticker.setInterval(1000);
}

void JoinStatus::showConnected()
{
    m_ticker.stop();
    m_connected();
    m_show(DoodleTool::tr("In call %1 as %2, connected to %3")
               .arg(m_options.call, m_options.user, m_call.brokerAddress()));
}

// Drawing goes on while the broker is away; it reaches the others later.
void JoinStatus::tick()
{
    m_show(DoodleTool::tr("Reconnecting to %1 for %2 s (%3)")
               .arg(m_call.brokerAddress())
               .arg(m_since.elapsed() / 1000)
               .arg(m_reason));
}

int doodleJoin(const QStringList &arguments)
{
    JoinOptions options;
    const QString problem = parseOptions(arguments, &options);
    if (!problem.isNull()) {
        QTextStream(stderr) << "doodle join: " << problem << '\n';
        return 2;
    }
    const bool headless = !options.snapshot.isEmpty();
    if (!headless && qApp->property(kNoDisplayProperty).toBool()) {
        QTextStream(stderr) << "doodle join: "
                            << DoodleTool::tr("no display for a window (headless: --snapshot "
                                              "OUT.png)")
                            << '\n';
        return 2;
    }
    // Headless, the board is drawn at the scale `doodle render` draws at, so
    // the two pictures compare pixel for pixel.
    if (headless || options.scaleSet)
        DoodleScreen::setScaleOverride(options.board.scale);
    QList<DoodleActionPtr> session;
    if (!options.play.isEmpty() && !readSession(options.play, &session))
        return 2;
    const QString unreachable = probeBrokers(options.brokers);
    if (!unreachable.isNull()) {
        QTextStream(stderr) << "doodle join: " << unreachable << '\n';
        return 1;
    }
    if (options.quick)
        return joinQuick(options, session);
    DoodleLayout board(options.user);
    board.resetDoodleViewFrame(QRect(QPoint(0, 0), options.board.size));
    board.setMessageBudget(options.messageBudget);
    JoinBoard drawn{[&board](const DoodleActionPtr &action) { board.commitLocalAction(action); },
                    [&board] { return board.doodleView()->convertViewToImage(); },
                    [&board] { return board.fingerprint(); }};
    Participant participant(options, session, std::move(drawn),
                            std::make_unique<JoinCall>(&board, options.call));
    std::unique_ptr<JoinWindow> window;
    if (!headless) {
        window = std::make_unique<JoinWindow>(options, board, participant.call());
        window->show();
        board.showToolBar();
    }
    if (!participant.start())
        return 1;
    return QCoreApplication::exec();
}

#endif
