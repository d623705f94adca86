// SPDX-License-Identifier: MIT
import QtQuick

// A quiet line at the top of the page that says what the store could not do. A tap puts it away.
Item {
    id: banner

    required property string text

    signal dismissed

    visible: text !== ""
    implicitHeight: visible ? ground.height + 8 : 0

    Rectangle {
        id: ground

        x: Theme.sideInset(banner.width)
        width: banner.width - 2 * x
        height: Math.max(Theme.target, label.implicitHeight + 20)
        radius: Theme.corner
        color: Theme.trouble

        Text {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            x: Theme.inset
            width: parent.width - 2 * Theme.inset
            text: banner.text
            textFormat: Text.PlainText
            color: Theme.troubleText
            font.pixelSize: Theme.smallSize
            lineHeight: 1.25
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
            Accessible.ignored: true
        }
        MouseArea {
            anchors.fill: parent
            onClicked: banner.dismissed()
        }
    }

    Accessible.ignored: !visible
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
    Accessible.onPressAction: banner.dismissed()
}
