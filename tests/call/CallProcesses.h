#pragma once

// The real parts of a call for tests: a mosquitto broker on a free loopback
// port and `doodle join` processes. Each object stops its process when it is
// destroyed, or with the test when that is killed, so a failing test leaves
// nothing running.
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <vector>

// A process whose standard output is collected as it comes.
class ToolProcess
{
public:
    ToolProcess()
    {
        QObject::connect(&m_process, &QProcess::readyReadStandardOutput,
                         [this] { m_out += QString::fromUtf8(m_process.readAllStandardOutput()); });
        QObject::connect(&m_process, &QProcess::readyReadStandardError,
                         [this] { m_err += QString::fromUtf8(m_process.readAllStandardError()); });
    }
    ~ToolProcess() { stop(); }

    void start(const QString &program, const QStringList &arguments,
               const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
    {
        m_process.setProcessEnvironment(environment);
        // Ends with the test too when that is killed (a timeout, say), which
        // runs no destructor.
        m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
        m_process.start(program, arguments);
    }
    // Ends the process: asked first, killed if it does not go.
    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.terminate();
        if (!m_process.waitForFinished(3000)) {
            m_process.kill();
            m_process.waitForFinished(3000);
        }
    }
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    qint64 processId() const { return m_process.processId(); }
    bool finishedWith(int code) const
    {
        return !isRunning() && m_process.exitStatus() == QProcess::NormalExit &&
               m_process.exitCode() == code;
    }
    // Waits up to `timeoutMs` for the process to end, and tells whether it ended with 0.
    bool endsWell(int timeoutMs = 10000)
    {
        return QTest::qWaitFor([this] { return !isRunning(); }, timeoutMs) && finishedWith(0);
    }
    const QString &out() const { return m_out; }
    const QString &err() const { return m_err; }
    QString lastLine() const { return m_out.trimmed().section(QLatin1Char('\n'), -1); }

private:
    QProcess m_process;
    QString m_out;
    QString m_err;
};

// A loopback port that nothing listens on (free when this returns).
inline quint16 freeLoopbackPort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost, 0) ? server.serverPort() : 0;
}

// mosquitto on 127.0.0.1, anonymous, without persistence (a restart forgets
// everything), with the `extra` configuration lines. Or mosquitto with a
// configuration of its own.
class Broker
{
public:
    explicit Broker(const QString &program, const QString &extra = {})
        : m_program(program), m_extra(extra)
    {}

    static bool isInstalled(const QString &program) { return QFileInfo(program).isExecutable(); }
    // Run as root, mosquitto changes to its own user, which cancels the signal
    // that ends it with the test; this line keeps it as root.
    static QString keepUserLine()
    {
        return ::geteuid() == 0 ? QStringLiteral("user root\n") : QString();
    }

    // Runs `config` instead, which listens on 127.0.0.1:`port`.
    void useConfig(const QString &config, quint16 port)
    {
        m_config = config;
        m_port = port;
    }

    bool start()
    {
        if (m_config.isEmpty() && !writeConfig())
            return false;
        m_process = std::make_unique<ToolProcess>();
        m_process->start(m_program,
                         {QStringLiteral("-c"), m_config.isEmpty() ? defaultConfig() : m_config});
        // It logs to standard error; ready once it says it runs.
        const bool running = QTest::qWaitFor(
            [this] {
                return m_process->err().contains(QLatin1String(" running")) ||
                       !m_process->isRunning();
            },
            10000);
        return running && m_process->isRunning();
    }
    void stop() { m_process.reset(); }
    quint16 port() const { return m_port; }
    qint64 processId() const { return m_process ? m_process->processId() : 0; }
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(m_port); }

private:
    QString defaultConfig() const { return m_dir.filePath(QStringLiteral("mosquitto.conf")); }
    bool writeConfig()
    {
        if (!m_port)
            m_port = freeLoopbackPort();
        QFile file(defaultConfig());
        if (!m_port || !file.open(QIODevice::WriteOnly))
            return false;
        return file.write(QStringLiteral("listener %1 127.0.0.1\nallow_anonymous true\n"
                                         "persistence false\n%2%3\n")
                              .arg(m_port)
                              .arg(keepUserLine(), m_extra)
                              .toUtf8()) > 0;
    }

    QString m_program;
    QString m_config;
    QString m_extra;
    QTemporaryDir m_dir;
    quint16 m_port = 0;
    std::unique_ptr<ToolProcess> m_process;
};

// A three-node RabbitMQ cluster with its MQTT plugin, started and stopped by
// the shipped script on free loopback ports.
class RabbitCluster
{
public:
    explicit RabbitCluster(const QString &script) : m_script(script) {}
    ~RabbitCluster() { stop(); }

    static bool isInstalled()
    {
        return QFileInfo(QStringLiteral("/usr/lib/rabbitmq/bin/rabbitmq-server")).isExecutable();
    }

    // The nodes' MQTT addresses once all three run as one cluster, or empty.
    QStringList start()
    {
        // Nine different ports: each stays bound until all are chosen.
        QStringList ports[3];
        std::vector<std::unique_ptr<QTcpServer>> held;
        for (QStringList &list : ports) {
            for (int i = 0; i < 3; ++i) {
                held.push_back(std::make_unique<QTcpServer>());
                held.back()->listen(QHostAddress::LocalHost, 0);
                list << QString::number(held.back()->serverPort());
            }
        }
        held.clear();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DOODLE_MQTT_PORTS", ports[0].join(' '));
        environment.insert("DOODLE_AMQP_PORTS", ports[1].join(' '));
        environment.insert("DOODLE_DIST_PORTS", ports[2].join(' '));
        // Node names of this run's own: another run's cluster may share the machine.
        environment.insert("DOODLE_CLUSTER_NAME",
                           QStringLiteral("doodle%1n").arg(QCoreApplication::applicationPid()));
        m_environment = environment;
        m_started = true;
        if (!run({"start", m_dir.path()}, 180000)) {
            for (int node = 1; node <= 3; ++node) {
                QFile out(m_dir.filePath(QStringLiteral("node%1/out.log").arg(node)));
                if (out.open(QIODevice::ReadOnly))
                    m_log += QStringLiteral("\nnode %1:\n").arg(node) +
                             QString::fromUtf8(out.readAll().right(2000));
            }
            return {};
        }
        QStringList addresses;
        for (const QString &port : ports[0]) {
            addresses << QStringLiteral("127.0.0.1:") + port;
            m_mqttPorts << quint16(port.toUInt());
        }
        return addresses;
    }
    // Stops node `node` (1 to 3), or every node.
    bool stop(int node = 0)
    {
        if (!m_started)
            return true;
        m_started = node != 0;
        const QStringList which = node ? QStringList{QString::number(node)} : QStringList();
        return run(QStringList{"stop", m_dir.path()} + which, 60000);
    }
    QString log() const { return m_log; }
    quint16 mqttPort(int node) const { return m_mqttPorts.value(node - 1); }
    // The process of node `node` (1 to 3), 0 when it does not run.
    qint64 processId(int node) const
    {
        QFile file(m_dir.filePath(QStringLiteral("node%1/pid").arg(node)));
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toLongLong() : 0;
    }

private:
    bool run(const QStringList &arguments, int timeoutMs)
    {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral("bash"), QStringList{m_script} + arguments);
        const bool done = process.waitForFinished(timeoutMs);
        m_log += QString::fromUtf8(process.readAll());
        if (!done)
            process.kill();
        return done && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }

    QString m_script;
    QTemporaryDir m_dir;
    QProcessEnvironment m_environment;
    QList<quint16> m_mqttPorts;
    bool m_started = false;
    QString m_log;
};
