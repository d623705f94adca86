// SPDX-License-Identifier: MIT
import QtQuick

FocusScope {
    id: button

    readonly property bool accessibleControl: true
    required property string title
    required property string style
    property bool apart: false
    property bool first: false
    property bool last: false
    property bool keyboardInUse: false

    signal tapped

    height: (apart ? 8 : 0) + Math.max(54, Math.ceil(label.implicitHeight) + 28)

    Keys.onSpacePressed: tapped()
    Keys.onReturnPressed: tapped()
    Keys.onEnterPressed: tapped()

    Accessible.ignored: !visible
    Accessible.role: Accessible.Button
    Accessible.name: title
    Accessible.focusable: true
    Accessible.onPressAction: tapped()

    Card {
        anchors.fill: parent
        anchors.topMargin: button.apart ? 8 : 0
        first: button.first
        last: button.last
        color: area.pressed ? Theme.pressed : Theme.card

        Hairline {
            visible: !button.first
            width: parent.width
        }
        PlainText {
            id: label

            anchors.centerIn: parent
            width: parent.width - 32
            text: button.title
            color: button.style === "destructive" ? Theme.danger : Theme.accent
            font.pixelSize: Theme.titleSize
            font.weight: button.style === "cancel" ? Font.DemiBold : Font.Normal
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.ignored: true
        }
        MouseArea {
            id: area

            anchors.fill: parent
            onClicked: button.tapped()
        }
        FocusRing {
            visible: button.activeFocus && button.keyboardInUse
        }
    }
}
