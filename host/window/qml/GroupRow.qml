// SPDX-License-Identifier: MIT
import QtQuick

// The title of a group, small and quiet above its card; without one, the space between two groups.
Item {
    id: group

    required property int index
    required property string label
    required property string footer

    readonly property bool titled: label !== ""

    width: ListView.view ? ListView.view.width : 0
    height: titled ? (index === 0 ? 8 : 26) + Math.ceil(title.implicitHeight) + 8 : (index === 0 ? 0 : 24)

    PlainText {
        id: title

        visible: group.titled
        x: Theme.sideInset(group.width) + Theme.inset
        width: group.width - 2 * x
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 8
        text: group.label
        color: Theme.quiet
        font.pixelSize: Theme.smallSize
        font.weight: Font.DemiBold
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        Accessible.ignored: true
    }

    Accessible.ignored: !titled || !visible
    Accessible.role: Accessible.Heading
    Accessible.name: label
    Accessible.description: footer
}
