// SPDX-License-Identifier: MIT
import QtQuick

// A quiet line at the top of the page that says what the user should know, and maybe offers what to do about it. A tap
// on a line without an offer puts it away.
FocusScope {
    id: banner

    required property string text
    // More about it, in smaller type.
    property string detail: ""
    property string action: ""
    // What puts it away, "" where a tap does.
    property string closing: ""
    // It is there to be read alone, and what lies beneath can be used.
    property bool passive: false
    property color ground: Theme.trouble
    property color textColor: Theme.troubleText
    property bool keyboardInUse: false
    property alias actionItem: button
    property alias closeItem: closer

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
        height: Math.max(Theme.target, 20 + lines.height + (buttons.visible ? buttons.height - 6 : 0))
        radius: Theme.corner
        color: banner.ground

        Column {
            id: lines

            y: buttons.visible ? 10 : (card.height - height) / 2
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.leftMargin: Theme.inset
            anchors.rightMargin: Theme.inset
            spacing: 4

            PlainText {
                width: parent.width
                text: banner.text
                color: banner.textColor
                font.pixelSize: banner.detail === "" ? Theme.smallSize : Theme.labelSize
                lineHeight: banner.detail === "" ? 1.25 : 1
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignLeft
                Accessible.ignored: true
            }
            PlainText {
                visible: text !== ""
                width: parent.width
                text: banner.detail
                color: banner.textColor
                font.pixelSize: Theme.smallSize
                wrapMode: Text.WrapAtWordBoundaryOrAnywhere
                horizontalAlignment: Text.AlignLeft
                Accessible.ignored: true
            }
        }
        MouseArea {
            anchors.fill: parent
            enabled: !banner.passive
            onClicked: if (banner.closing === "")
                banner.dismissed()
        }
        Flow {
            id: buttons

            visible: banner.visible && banner.closing !== ""
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.leftMargin: 8
            anchors.rightMargin: 8
            layoutDirection: Qt.RightToLeft

            BarButton {
                id: button

                visible: buttons.visible && banner.action !== ""
                focus: true
                title: banner.action
                done: true
                longest: card.width - 16
                keyboardInUse: banner.keyboardInUse
                onTapped: banner.acted()
            }
            BarButton {
                id: closer

                visible: buttons.visible
                title: banner.closing
                longest: card.width - 16
                keyboardInUse: banner.keyboardInUse
                onTapped: banner.dismissed()
            }
        }
    }

    Accessible.ignored: !visible
    Accessible.onIgnoredChanged: if (!Accessible.ignored)
        appeared()
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
    Accessible.description: detail
    Accessible.onPressAction: if (closing === "" && !passive)
        dismissed()
}
