// A minimal host: encodes an action, decodes it again and checks the round trip.
#include <doodle/Doodle.h>

#include <QApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    auto undo = std::make_shared<DoodleAction>();
    undo->setActionType(DoodleActionTypeUndo);
    undo->setUserId(QStringLiteral("u1"));

    const QString text = DoodleTranslate::stringFromDoodleAction(undo);
    const DoodleActionPtr back = DoodleTranslate::doodleActionFromString(text);
    QTextStream out(stdout);
    out << text << Qt::endl;
    if (!back || back->actionType() != DoodleActionTypeUndo || back->userId() != undo->userId())
        return 1;
    out << "consumer: ok" << Qt::endl;
    return 0;
}
