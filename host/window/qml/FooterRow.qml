// SPDX-License-Identifier: MIT
import QtQuick

// The footer of a group. Where the group has a title, the footer is read with it.
Item {
    id: footerRow

    required property int index
    readonly property bool accessibleControl: true
    required property string label
    required property string footer

    width: ListView.view ? ListView.view.width : 0
    height: Math.ceil(text.implicitHeight) + 10

    PlainText {
        id: text

        x: Theme.sideInset(footerRow.width) + Theme.inset
        y: 8
        width: footerRow.width - 2 * x
        text: footerRow.label
        color: Theme.quiet
        font.pixelSize: Theme.smallSize
        lineHeight: 1.35
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        Accessible.ignored: true
    }

    Accessible.ignored: footer !== "" || !visible
    Accessible.role: Accessible.StaticText
    Accessible.focusable: false
    Accessible.name: label
}
