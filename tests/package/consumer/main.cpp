// A minimal host: encodes an action, decodes it again, and draws it on a board.
#include <doodle/Doodle.h>

#include <QApplication>
#include <QTextStream>

namespace {

bool roundTrips(const DoodleActionPtr &action)
{
    const QString text = DoodleTranslate::stringFromDoodleAction(action);
    const DoodleActionPtr back = DoodleTranslate::doodleActionFromString(text);
    return back && back->actionType() == action->actionType() && back->userId() == action->userId();
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    DoodleLayout board(QStringLiteral("host"));
    board.resetDoodleViewFrame(QRect(0, 0, 120, 80));

    auto rectangle = std::make_shared<DoodleAction>();
    rectangle->setActionType(DoodleActionTypeRectangle);
    rectangle->setUserId(QStringLiteral("u1"));
    rectangle->setBrushColor(Qt::red);
    rectangle->setBrushWidth(0.05f);
    rectangle->setX(-0.5f);
    rectangle->setY(-0.5f);
    rectangle->setWidth(1);
    rectangle->setHeight(1);
    board.onDoodleActionReceived(QStringLiteral("u1"), rectangle);

    QTextStream out(stdout);
    const bool drawn = !board.doodleView()->cacheCanvas()->cacheImage().isNull();
    const bool tables = !board.brushWidthArray().isEmpty();
    if (!roundTrips(rectangle) || !drawn || !tables) {
        out << "consumer: failed (round trip, drawing or resource tables)" << Qt::endl;
        return 1;
    }
    out << "consumer: ok" << Qt::endl;
    return 0;
}
