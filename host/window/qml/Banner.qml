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
    // It has come into sight, where a screen reader finds it.
    signal appeared

    visible: text !== ""
    implicitHeight: visible ? card.height + 8 : 0

    Rectangle {
        id: card

        x: Theme.sideInset(banner.width)
        width: banner.width - 2 * x
        height: stacked ? label.implicitHeight + 10 + button.implicitHeight : Math.max(Theme.target, label.implicitHeight + 20, button.visible ? button.implicitHeight : 0)
        radius: Theme.corner
        color: banner.ground

        // The offer stands under the line where it would leave too little room for it.
        readonly property bool stacked: button.visible && button.wholeWidth > width * 0.45

        PlainText {
            id: label

            y: card.stacked ? 10 : (parent.height - height) / 2
            anchors.left: parent.left
            anchors.leftMargin: Theme.inset
            anchors.right: button.visible && !card.stacked ? button.left : parent.right
            anchors.rightMargin: button.visible && !card.stacked ? 8 : Theme.inset
            text: banner.text
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
            y: card.stacked ? parent.height - height : (parent.height - height) / 2
            anchors.right: parent.right
            anchors.rightMargin: 8
            title: banner.action
            done: true
            longest: card.width - 16
            keyboardInUse: banner.keyboardInUse
            onTapped: banner.acted()
        }
    }

    Accessible.ignored: !visible
    Accessible.onIgnoredChanged: if (!Accessible.ignored)
        appeared()
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
    Accessible.onPressAction: banner.action === "" ? banner.dismissed() : banner.acted()
}
