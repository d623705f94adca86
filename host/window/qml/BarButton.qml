// SPDX-License-Identifier: MIT
import QtQuick

FocusScope {
    id: button

    readonly property bool accessibleControl: true
    property string title
    property bool done: false
    property bool back: false
    // Only the sign, where there is no room for the title.
    property bool compact: false
    property bool keyboardInUse: false
    readonly property real wholeWidth: Math.max(Theme.target, sign.width + Math.min(label.implicitWidth, longest) + 16)
    property real longest: 200

    signal tapped

    implicitWidth: Math.max(Theme.target, content.width + 16)
    implicitHeight: Math.max(Theme.target, label.implicitHeight + 16)
    opacity: area.pressed ? 0.45 : 1

    Keys.onSpacePressed: tapped()
    Keys.onReturnPressed: tapped()
    Keys.onEnterPressed: tapped()

    Accessible.ignored: !visible
    Accessible.role: Accessible.Button
    Accessible.name: title
    Accessible.focusable: true
    Accessible.onPressAction: tapped()

    Item {
        id: content

        width: button.compact ? sign.width : label.x + label.width
        height: parent.height
        anchors.centerIn: parent

        Glyph {
            id: sign

            visible: button.back
            name: "back"
            color: Theme.accent
            extent: 20
            anchors.verticalCenter: parent.verticalCenter
        }
        PlainText {
            id: label

            x: button.back ? sign.width : 0
            width: Math.min(implicitWidth, button.longest - x - 16)
            anchors.verticalCenter: parent.verticalCenter
            visible: !button.compact
            text: button.title
            color: Theme.accent
            font.pixelSize: Theme.barSize
            font.weight: button.done ? Font.DemiBold : Font.Normal
            elide: Text.ElideRight
            Accessible.ignored: true
        }
    }

    MouseArea {
        id: area

        anchors.fill: parent
        onClicked: button.tapped()
    }

    FocusRing {
        visible: button.activeFocus && button.keyboardInUse
        gap: 3
    }
}
