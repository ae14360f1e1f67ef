// The `doodle` tool: dispatches to the sub-command named by the first argument.
#include "DoodleCommands.h"

#include <QCoreApplication>
#include <QTextStream>

namespace {

struct Command
{
    const char *name;
    const char *usage;
    int (*run)(const QStringList &arguments);
};

const Command commands[] = {
    {"inspect", "inspect [-v] FILE|-   print one line per action text of FILE (- for stdin)",
     &doodleInspect},
};

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
    QCoreApplication app(argc, argv);
    QStringList arguments = app.arguments().mid(1);
    QTextStream out(stdout);
    QTextStream err(stderr);
    if (arguments.isEmpty()) {
        printUsage(err);
        return 2;
    }
    const QString name = arguments.takeFirst();
    if (name == QLatin1String("-h") || name == QLatin1String("--help") ||
        name == QLatin1String("help")) {
        printUsage(out);
        return 0;
    }
    for (const Command &command : commands) {
        if (name == QLatin1String(command.name))
            return command.run(arguments);
    }
    err << "doodle: unknown command '" << name << "'\n";
    printUsage(err);
    return 2;
}
