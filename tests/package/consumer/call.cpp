// A host that takes its board into a call through the package's broker client.
#include <doodle/Doodle.h>
#include <doodle/call/DoodleCall.h>

#include <QApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    DoodleLayout board(QStringLiteral("host"));
    DoodleCall call(&board, QStringLiteral("a/b"));
    QTextStream out(stdout);
    // The call sends what the board draws; a name that is no topic level is refused.
    if (board.delegate() != &call || call.join(QStringLiteral("127.0.0.1"), 1) ||
        call.errorString().isEmpty()) {
        out << "consumer call: failed" << Qt::endl;
        return 1;
    }
    out << "consumer call: ok" << Qt::endl;
    return 0;
}
