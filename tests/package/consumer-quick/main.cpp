// A QML host's C++ side: the Quick board from the package draws a received
// action and reads the size tables from the core's resources.
#include <DoodleBoard.h>
#include <doodle/model/DoodleTranslate.h>

#include <QGuiApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    DoodleBoard board;
    board.setUserId(QStringLiteral("host"));
    board.setSize(QSizeF(120, 80));
    auto dot = std::make_shared<DoodleAction>();
    dot->setActionType(DoodleActionTypeStroke);
    dot->setUserId(QStringLiteral("u1"));
    dot->setBrushColor(Qt::red);
    dot->setBrushWidth(0.05f);
    dot->addPointWithPositionX(0, 0, 2);
    const QString empty = board.fingerprint();
    board.receiveText(QStringLiteral("u1"), DoodleTranslate::stringFromDoodleAction(dot));
    QTextStream out(stdout);
    if (board.brushWidth() <= 0 || board.fingerprint() == empty) {
        out << "consumer quick: failed (tables or drawing)" << Qt::endl;
        return 1;
    }
    out << "consumer quick: ok" << Qt::endl;
    return 0;
}
