// doodle join --quick: the participant's board as the Qt Quick item, in a
// window with the call's state in one line above it, as the Widgets window.
// Built when the Quick board is.
#include "DoodleJoin.h"

#include <DoodleBoard.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTextStream>
#include <QtMath>

namespace {

// The call's state and the last saved picture above the board's place;
// the standard save keys save the board's picture.
const char kFrameQml[] = R"(
import QtQuick
Rectangle {
    id: frame
    property string status
    property string note
    color: "white"
    Shortcut { sequence: StandardKey.Save; onActivated: join.save() }
    Column {
        id: bar
        objectName: "bar"
        x: 8
        width: frame.width - 16
        topPadding: 4
        bottomPadding: 4
        Text { width: parent.width; wrapMode: Text.Wrap; text: frame.status }
        Text { width: parent.width; wrapMode: Text.Wrap; text: frame.note; visible: text !== "" }
    }
    Item {
        objectName: "boardArea"
        anchors { top: bar.bottom; left: parent.left; right: parent.right; bottom: parent.bottom }
    }
}
)";

// The window: the frame above, the board in its place, both following the
// window's size. Closing it ends the command.
class QuickJoinWindow : public QObject
{
    Q_OBJECT
public:
    QuickJoinWindow(const JoinOptions &options, DoodleBoard &board)
        : m_options(options), m_board(board)
    {
        m_engine.rootContext()->setContextProperty(QStringLiteral("join"), this);
        QQmlComponent component(&m_engine);
        component.setData(kFrameQml, QUrl());
        m_frame.reset(qobject_cast<QQuickItem *>(component.create()));
        if (!m_frame) {
            m_error = component.errorString();
            return;
        }
        m_window.setTitle(QStringLiteral("doodle: %1 (%2)").arg(options.call, options.user));
        m_frame->setParentItem(m_window.contentItem());
        auto *area = m_frame->findChild<QQuickItem *>(QStringLiteral("boardArea"));
        board.setParentItem(area);
        connect(area, &QQuickItem::widthChanged, &board,
                [&board, area] { board.setSize(area->size()); });
        connect(area, &QQuickItem::heightChanged, &board,
                [&board, area] { board.setSize(area->size()); });
        connect(&m_window, &QWindow::widthChanged, m_frame.get(), &QQuickItem::setWidth);
        connect(&m_window, &QWindow::heightChanged, m_frame.get(), &QQuickItem::setHeight);
    }
    // The board is the host's; the frame goes first.
    ~QuickJoinWindow() override { m_board.setParentItem(nullptr); }

    QString errorString() const { return m_error; }
    void setStatus(const QString &text) { m_frame->setProperty("status", text); }

    void show()
    {
        const auto *bar = m_frame->findChild<QQuickItem *>(QStringLiteral("bar"));
        const int barHeight = qCeil(bar->height());
        m_window.resize(m_options.board.size + QSize(0, barHeight));
        m_frame->setSize(m_window.size());
        m_window.show();
    }

    // The board's picture, as its own save writes it; where it went shows
    // in the frame.
    Q_INVOKABLE void save()
    {
        const QString path = m_board.saveImage();
        const QString folder = QFileInfo(path).absolutePath();
        if (path.isEmpty()) {
            m_frame->setProperty("note", DoodleTool::tr("Could not save the picture"));
            return;
        }
        m_frame->setProperty(
            "note", DoodleTool::tr("Saved %1 in %2")
                        .arg(QFileInfo(path).fileName(), QDir::toNativeSeparators(folder)));
        say(QStringLiteral("saved %1").arg(path));
    }

private:
    const JoinOptions &m_options;
    DoodleBoard &m_board;
    QQuickWindow m_window;
    QQmlEngine m_engine;
    std::unique_ptr<QQuickItem> m_frame;
    QString m_error;
};

} // namespace

int joinQuick(const JoinOptions &options, const QList<DoodleActionPtr> &session)
{
    DoodleBoard board;
    board.setUserId(options.user);
    board.setMessageBudget(options.messageBudget);
    // Drawing starts once the call is joined.
    board.setEditable(false);
    QuickJoinWindow window(options, board);
    if (!window.errorString().isEmpty()) {
        QTextStream(stderr) << "doodle join: " << window.errorString() << '\n';
        return 1;
    }
    auto call = std::make_unique<DoodleCall>(&board, options.call);
    // The tool bar's close button leaves the call and ends the command.
    QObject::connect(&board, &DoodleBoard::closeRequested, call.get(), [leaving = call.get()] {
        leaving->leave();
        QCoreApplication::exit(0);
    });
    JoinBoard drawn{[&board](const DoodleActionPtr &action) { board.commitLocalAction(action); },
                    {},
                    [&board] { return board.fingerprint().toULongLong(nullptr, 16); }};
    Participant participant(options, session, std::move(drawn), std::move(call));
    JoinStatus status(
        options, participant.call(), [&window](const QString &text) { window.setStatus(text); },
        [&board] { board.setEditable(true); });
    window.show();
    if (!participant.start())
        return 1;
    return QCoreApplication::exec();
}

#include "DoodleJoinQuick.moc"
