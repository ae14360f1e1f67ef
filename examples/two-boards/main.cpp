// Demo host: two participants drawing together, each with the library's own
// tool bar. With a display it opens a window; without one it plays the sample
// session through both boards, unfolds their tool bars, saves a picture of
// each board through the host's picture sink and writes one of the window.
// Pictures go into demoFolder(), whatever the current folder.
#include "DemoHost.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTextStream>

namespace {

// The subfolder doodle-demo of the user's pictures folder, or DOODLE_DEMO_PICTURES.
QString demoFolder()
{
    const QString chosen = qEnvironmentVariable("DOODLE_DEMO_PICTURES");
    if (!chosen.isEmpty())
        return QDir(chosen).absolutePath();
    return QDir(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation))
        .absoluteFilePath(QStringLiteral("doodle-demo"));
}

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

// Every line reaches both boards as received from the action's own author.
bool playSession(DemoParticipant &alice, DemoParticipant &bob, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream(stderr) << "doodle_demo: cannot read " << path << '\n';
        return false;
    }
    while (!file.atEnd()) {
        const QString text = QString::fromUtf8(file.readLine()).trimmed();
        const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text);
        if (!action)
            continue;
        alice.receive(action->userId(), text);
        bob.receive(action->userId(), text);
    }
    return true;
}

// What a user would do: unfold each board's tools and save it; then the window.
int savePictures(DemoParticipant &alice, DemoParticipant &bob, QWidget &window)
{
    bool saved = true;
    for (DemoParticipant *p : {&alice, &bob}) {
        QObject::connect(p, &DemoParticipant::pictureSaved,
                         [&saved](const QString &path) { saved = saved && !path.isEmpty(); });
        p->board().doodletoolButton()->click();
        p->board().saveImage();
    }
    const QString png =
        QDir(demoFolder()).absoluteFilePath(QStringLiteral("doodle-demo-window.png"));
    if (!saved || !window.grab().toImage().save(png))
        return 1;
    QTextStream(stdout) << png << '\n';
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const bool offscreen = !hasDisplay();
    if (offscreen)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QString output = demoFolder();
    DemoParticipant alice(QStringLiteral("alice"), QSize(460, 620), output);
    DemoParticipant bob(QStringLiteral("bob"), QSize(400, 500), output);
    alice.send = [&bob](const QString &sender, const QString &text) { bob.receive(sender, text); };
    bob.send = [&alice](const QString &sender, const QString &text) {
        alice.receive(sender, text);
    };
    // One board shape for the call, the first participant's: a circle is
    // round on both boards, whatever their windows' shapes.
    for (DemoParticipant *p : {&alice, &bob})
        p->board().setBoardAspect(QSizeF(460, 620));

    const QString session = app.arguments().value(1, QStringLiteral(DOODLE_SAMPLE_SESSION));
    DemoWindow window(alice, bob);
    window.show();
    if (offscreen || app.platformName() == QLatin1String("offscreen")) {
        if (!playSession(alice, bob, session))
            return 1;
        return savePictures(alice, bob, window);
    }
    return app.exec();
}
