import QtQuick
import QtQuick.Window
import Doodle

// Alice and Bob, each with a board; what one draws reaches the other as text.
Window {
    width: 880
    height: 640
    visible: true
    title: qsTr("Doodle: two boards in Qt Quick")
    color: "#303030"

    Row {
        anchors.fill: parent
        anchors.margins: 10
        spacing: 10

        DoodleBoard {
            id: alice
            objectName: "alice"
            width: 460
            height: 620
            userId: "alice"
            boardAspect: Qt.size(460, 620)
            onActionGenerated: (text) => bob.receiveText(userId, text)
        }
        DoodleBoard {
            id: bob
            objectName: "bob"
            width: 390
            height: 500
            userId: "bob"
            brushColor: "blue"
            // One board shape for the call, the first participant's.
            boardAspect: Qt.size(460, 620)
            onActionGenerated: (text) => alice.receiveText(userId, text)
        }
    }
}
