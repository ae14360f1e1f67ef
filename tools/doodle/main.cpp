// The `doodle` tool: dispatches to the sub-command named by the first argument.
#include "DoodleCommands.h"

#include <QApplication>
#include <QTextStream>

#include <memory>

namespace {

struct Command
{
    const char *name;
    const char *usage;
    int (*run)(const QStringList &arguments);
    bool needsGui; // draws on a board: runs in a QApplication on the offscreen platform
};

const Command commands[] = {
    {"inspect", "inspect [-v] FILE|-   print one line per action text of FILE (- for stdin)",
     &doodleInspect, false},
    {"render",
     "render FILE -o OUT.png [--size WxH] [--scale S] [--background #AARRGGBB]\n"
     "                  replay a session (- for stdin) on a board and write its picture",
     &doodleRender, true},
};

const Command *findCommand(const char *name)
{
    for (const Command &command : commands) {
        if (qstrcmp(name, command.name) == 0)
            return &command;
    }
    return nullptr;
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
    if (command && command->needsGui) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QApplication>(argc, argv);
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
