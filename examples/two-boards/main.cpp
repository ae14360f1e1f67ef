// Demo host: two participants drawing together. With a display it opens a
// window; without one it plays the sample session through both boards and
// writes a picture of each.
#include "DemoHost.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>

namespace {

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

bool savePicture(const QImage &image, const QString &name)
{
    const QString png = QDir::current().absoluteFilePath(name);
    if (!image.save(png))
        return false;
    QTextStream(stdout) << png << '\n';
    return true;
}

// Every line reaches both boards as received from the action's own author;
// then each board and the whole window are written as pictures.
int playSession(DemoParticipant &alice, DemoParticipant &bob, const QString &path, QWidget &window)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream(stderr) << "doodle_demo: cannot read " << path << '\n';
        return 1;
    }
    while (!file.atEnd()) {
        const QString text = QString::fromUtf8(file.readLine()).trimmed();
        const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
        if (!action)
            continue;
        alice.receive(action->userId(), text);
        bob.receive(action->userId(), text);
    }
    for (DemoParticipant *p : {&alice, &bob}) {
        const QString name = QStringLiteral("doodle-demo-%1.png").arg(p->board().userId());
        if (!savePicture(p->board().doodleView()->convertViewToImage(), name))
            return 1;
    }
    return savePicture(window.grab().toImage(), QStringLiteral("doodle-demo-window.png")) ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    const bool offscreen = !hasDisplay();
    if (offscreen)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    DemoParticipant alice(QStringLiteral("alice"), QSize(390, 560));
    DemoParticipant bob(QStringLiteral("bob"), QSize(300, 420));
    alice.send = [&bob](const QString &sender, const QString &text) { bob.receive(sender, text); };
    bob.send = [&alice](const QString &sender, const QString &text) {
        alice.receive(sender, text);
    };

    const QString session = app.arguments().value(1, QStringLiteral(DOODLE_SAMPLE_SESSION));
    DemoWindow window(alice, bob);
    window.show();
    if (offscreen || app.platformName() == QLatin1String("offscreen"))
        return playSession(alice, bob, session, window);
    return app.exec();
}
