// Quick demo host: two participants drawing together in Qt Quick. With a
// display it opens a window; without one it plays the sample session through
// both boards and writes a picture of the window into doodle-demo in the
// user's pictures folder (or DOODLE_DEMO_PICTURES).
#include <doodle/model/DoodleTranslate.h>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QStandardPaths>
#include <QTextStream>

namespace {

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

QString demoFolder()
{
    const QString chosen = qEnvironmentVariable("DOODLE_DEMO_PICTURES");
    if (!chosen.isEmpty())
        return QDir(chosen).absolutePath();
    return QDir(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation))
        .absoluteFilePath(QStringLiteral("doodle-demo"));
}

// Every line reaches both boards as received from the action's own author.
bool playSession(QQuickWindow &window, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream(stderr) << "doodle_quick_demo: cannot read " << path << '\n';
        return false;
    }
    const QList<QQuickItem *> boards{window.findChild<QQuickItem *>(QStringLiteral("alice")),
                                     window.findChild<QQuickItem *>(QStringLiteral("bob"))};
    while (!file.atEnd()) {
        const QString text = QString::fromUtf8(file.readLine()).trimmed();
        const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
        if (!action)
            continue;
        const QString author = action->userId();
        for (QQuickItem *board : boards) {
            if (board)
                QMetaObject::invokeMethod(board, "receiveText", Q_ARG(QString, author),
                                          Q_ARG(QString, text));
        }
    }
    return true;
}

int savePicture(QQuickWindow &window)
{
    const QString folder = demoFolder();
    const QString png = QDir(folder).absoluteFilePath(QStringLiteral("doodle-quick-demo.png"));
    if (!QDir().mkpath(folder) || !window.grabWindow().save(png)) {
        QTextStream(stderr) << "doodle_quick_demo: cannot write " << png << '\n';
        return 1;
    }
    QTextStream(stdout) << png << '\n';
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const bool offscreen = !hasDisplay();
    if (offscreen) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral(DOODLE_QML_DIR));
    engine.load(QUrl::fromLocalFile(QStringLiteral(DOODLE_DEMO_QML)));
    auto *window = engine.rootObjects().isEmpty()
                       ? nullptr
                       : qobject_cast<QQuickWindow *>(engine.rootObjects().first());
    if (!window)
        return 1;
    if (offscreen || app.platformName() == QLatin1String("offscreen")) {
        const QString session = app.arguments().value(1, QStringLiteral(DOODLE_SAMPLE_SESSION));
        return playSession(*window, session) ? savePicture(*window) : 1;
    }
    return app.exec();
}
