// The `doodle` tool: dispatches to the sub-command named by the first argument.
#include "DoodleCommands.h"

#include <QApplication>
#include <QTextStream>

#include <memory>

namespace {

// Where a command's widgets live.
enum class Gui
{
    None,      // no widgets: a QCoreApplication
    Offscreen, // draws on a board without a screen
    Screen,    // opens a window; offscreen when asked for a --snapshot instead
};

struct Command
{
    const char *name;
    const char *usage;
    int (*run)(const QStringList &arguments);
    Gui gui;
};

const Command commands[] = {
    {"inspect", "inspect [-v] FILE|-   print one line per action text of FILE (- for stdin)",
     &doodleInspect, Gui::None},
    {"render",
     "render FILE -o OUT.png|.jpg|.svg|.pdf [--size WxH] [--scale S] [--background COLOUR]\n"
     "                  replay a session (- for stdin) on a board and write its picture,\n"
     "                  at most 16384 pixels a side (doodle render --help)",
     &doodleRender, Gui::Offscreen},
    {"join",
     "join --broker HOST:PORT[,HOST:PORT...] --call NAME --user ID [--size WxH] [--scale S]\n"
     "                  [--username NAME] [--password-file FILE] [--cafile F [--cert F --key F]]\n"
     "                  [--play FILE [--interval MS]] [--snapshot OUT.png [--quit-after-idle S]]\n"
     "                  [--quick]\n"
     "                  take part in a call through an MQTT broker, in a window (a Qt Quick\n"
     "                  one with --quick) or headless",
     &doodleJoin, Gui::Screen},
};

const Command *findCommand(const char *name)
{
    for (const Command &command : commands) {
        if (qstrcmp(name, command.name) == 0)
            return &command;
    }
    return nullptr;
}

bool asksForSnapshot(int argc, char **argv)
{
    for (int i = 2; i < argc; ++i) {
        if (qstrcmp(argv[i], "--snapshot") == 0 || qstrncmp(argv[i], "--snapshot=", 11) == 0)
            return true;
    }
    return false;
}

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

void printUsage(QTextStream &stream)
{
    stream << "Usage: doodle COMMAND [ARGUMENTS]\n\nCommands:\n";
    for (const Command &command : commands)
        stream << "  " << command.usage << '\n';
    stream << "\nOptions:\n  -h, --help   show this help\n";
}

} // namespace

int main(int argc, char **argv)
{
    const Command *command = argc > 1 ? findCommand(argv[1]) : nullptr;
    std::unique_ptr<QCoreApplication> app;
    if (command && command->gui != Gui::None) {
        // Without a display a command still reads its arguments, offscreen,
        // so that a mistake is named before the missing display is.
        const bool noDisplay = command->gui == Gui::Screen && !hasDisplay();
        if (command->gui == Gui::Offscreen || asksForSnapshot(argc, argv) || noDisplay)
            qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QApplication>(argc, argv);
        app->setProperty(kNoDisplayProperty, noDisplay && !asksForSnapshot(argc, argv));
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    QStringList arguments = app->arguments().mid(1);
    QTextStream out(stdout);
    QTextStream err(stderr);
    if (arguments.isEmpty()) {
        printUsage(err);
        return 2;
    }
    const QString name = arguments.takeFirst();
    if (command)
        return command->run(arguments);
    if (name == QLatin1String("-h") || name == QLatin1String("--help") ||
        name == QLatin1String("help")) {
        printUsage(out);
        return 0;
    }
    err << "doodle: unknown command '" << name << "'\n";
    printUsage(err);
    return 2;
}
