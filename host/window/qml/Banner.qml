// SPDX-License-Identifier: MIT
import QtQuick

// A quiet line at the top of the page that says what the user should know, and maybe offers what to do about it. A tap
// on a line without an offer puts it away.
FocusScope {
    id: banner

    required property string text
    property string action: ""
    property color ground: Theme.trouble
    property color textColor: Theme.troubleText
    property bool keyboardInUse: false
    property alias actionItem: button

    signal dismissed
    signal acted

    visible: text !== ""
    implicitHeight: visible ? card.height + 8 : 0

    Rectangle {
        id: card

        x: Theme.sideInset(banner.width)
        width: banner.width - 2 * x
        height: Math.max(Theme.target, label.implicitHeight + 20, button.visible ? button.implicitHeight : 0)
        radius: Theme.corner
        color: banner.ground

        Text {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            anchors.left: parent.left
            anchors.leftMargin: Theme.inset
            anchors.right: button.visible ? button.left : parent.right
            anchors.rightMargin: button.visible ? 8 : Theme.inset
            text: banner.text
            textFormat: Text.PlainText
            color: banner.textColor
            font.pixelSize: Theme.smallSize
            lineHeight: 1.25
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
            Accessible.ignored: true
        }
        MouseArea {
            anchors.fill: parent
            enabled: banner.action === ""
            onClicked: banner.dismissed()
        }
        BarButton {
            id: button

            visible: banner.visible && banner.action !== ""
            focus: true
            anchors.verticalCenter: parent.verticalCenter
            anchors.right: parent.right
            anchors.rightMargin: 8
            title: banner.action
            done: true
            longest: card.width * 0.4
            keyboardInUse: banner.keyboardInUse
            onTapped: banner.acted()
        }
    }

    Accessible.ignored: !visible
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
    Accessible.onPressAction: banner.action === "" ? banner.dismissed() : banner.acted()
}
