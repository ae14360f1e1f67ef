import QtQuick
import Doodle

// A QML host: one board, what it sends kept in a list.
Item {
    id: host
    width: 200
    height: 150
    property var sent: []
    property string clearedBy: ""
    property alias board: board

    DoodleBoard {
        id: board
        anchors.fill: parent
        userId: "me"
        brushWidth: 4
        brushColor: "red"
        onActionGenerated: (text) => host.sent.push(text)
        onCleared: (userId) => host.clearedBy = userId
    }

    function usePen() { board.actionMode = 1 }
    function useText() { board.actionMode = 6 }
    function receive(sender, text) { board.receiveText(sender, text) }
    function undo() { board.undo() }
    function clear() { board.clear() }
    function fingerprint() { return board.fingerprint() }
}
