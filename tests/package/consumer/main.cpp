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
    // Input the library logs about at info level: nothing reaches this host.
    const bool rejected = !board.stringToDoodleAction(QStringLiteral("{\"bad\""));
    // The cache a host holds stays valid across a dismissal.
    DoodlePathCache *cache = board.doodlePathCache();
    board.dismissDoodle();
    const bool cacheKept = cache->getAllPath().isEmpty() && cache == board.doodlePathCache();
    if (!roundTrips(rectangle) || !drawn || !tables || !rejected || !cacheKept) {
        out << "consumer: failed (round trip, drawing, tables, bad text or cache)" << Qt::endl;
        return 1;
    }
    out << "consumer: ok" << Qt::endl;
    return 0;
}
