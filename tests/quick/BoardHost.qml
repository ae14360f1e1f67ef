import QtQuick
import Doodle

// A QML host: one board, what it sends kept in a list.
Item {
    id: host
    width: 320
    height: 240
    property var sent: []
    property string clearedBy: ""
    property int foldings: 0
    property int unfoldings: 0
    property int closings: 0
    property alias board: board

    DoodleBoard {
        id: board
        anchors.fill: parent
        userId: "me"
        brushWidth: 4
        brushColor: "red"
        onActionGenerated: (text) => host.sent.push(text)
        onCleared: (userId) => host.clearedBy = userId
        onFolded: host.foldings++
        onUnfolded: host.unfoldings++
        onCloseRequested: host.closings++
    }

    function usePen() { board.actionMode = 1 }
    function useRectangle() { board.actionMode = 3 }
    function useText() { board.actionMode = 6 }
    function receive(sender, text) { board.receiveText(sender, text) }
    function undo() { board.undo() }
    function clear() { board.clear() }
    function fingerprint() { return board.fingerprint() }
}
