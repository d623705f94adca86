// SPDX-License-Identifier: MIT
import QtQuick

// What all rows of a group have in common: card, icon, label, hairline, and how they are pressed and focused. A row
// kind adds what stands at the right of the label, as `trailing`.
FocusScope {
    id: row

    required property int index
    required property string label
    required property string group
    required property string icon
    required property bool iconColumn
    required property bool rowEnabled
    required property bool first
    required property bool last
    required property color titleColor

    readonly property ListView list: ListView.view
    property bool pressable: true
    // The row stands for the page that is shown beside it.
    property bool selected: false
    readonly property alias card: card
    property alias trailing: trailingSlot.data
    property real trailingWidth: 0
    property real trailingHeight: 0
    // What stands under the label, and the room that it takes.
    property alias below: card.data
    property real belowHeight: 0
    // What a screen reader says of the row beside its name and its group.
    property string about: ""
    readonly property string description: [group, about].filter(part => part !== "").join(", ")
    property real leastLine: Theme.rowHeight
    // What stands at the right of the label goes under it, where a row kind finds that it leaves too little room.
    property bool stacked: false
    readonly property real labelHeight: Math.max(leastLine, labelText.implicitHeight + 2 * 13)
    readonly property real lineHeight: stacked ? labelHeight + trailingHeight + 8 : Math.max(labelHeight, trailingHeight + 2 * 8)
    readonly property real labelStart: iconColumn ? Theme.inset + Theme.iconSize + Theme.iconGap : Theme.inset
    // Where what they share begins at the left, in either direction of the text.
    readonly property real labelX: LayoutMirroring.enabled ? Theme.inset : labelStart
    // What label and control share.
    readonly property real room: card.width - labelStart - Theme.inset

    signal tapped

    function use() {
        if (row.rowEnabled && row.list)
            row.list.take(row.index);
    }

    width: ListView.view ? ListView.view.width : 0
    // Between two points an edge is drawn anew over what was there.
    implicitHeight: Math.ceil(lineHeight + belowHeight)
    height: implicitHeight

    // A page that lies beneath another one is not there for a screen reader.
    Accessible.ignored: !visible
    Accessible.description: description

    onActiveFocusChanged: if (activeFocus && list)
        list.follow(index)

    // By whatever means it is tapped, and before the row kind acts on it: what opens may lead back to this row.
    onTapped: use()

    Keys.onPressed: event => {
        if (event.key !== Qt.Key_Space && event.key !== Qt.Key_Return && event.key !== Qt.Key_Enter)
            return;
        event.accepted = true;
        // A key that is held down acts once.
        if (!event.isAutoRepeat)
            row.tapped();
    }

    Card {
        id: card

        x: Theme.sideInset(row.width)
        width: row.width - 2 * x
        height: row.height
        first: row.first
        last: row.last
        color: area.pressed && row.pressable ? Theme.pressed : row.selected ? Theme.selected : Theme.card

        Behavior on color {
            // Slow to begin, so that a touch that begins a scroll does not light the row up.
            ColorAnimation {
                duration: area.pressed ? 60 : Theme.quick
                easing.type: area.pressed ? Easing.InCubic : Easing.Linear
            }
        }

        MouseArea {
            id: area

            anchors.fill: parent
            enabled: row.rowEnabled
            onClicked: row.tapped()
        }

        Image {
            visible: row.icon !== ""
            y: (row.lineHeight - height) / 2
            anchors.left: parent.left
            anchors.leftMargin: Theme.inset
            width: Theme.iconSize
            height: Theme.iconSize
            fillMode: Image.PreserveAspectFit
            sourceSize: Qt.size(Math.round(Theme.iconSize * Screen.devicePixelRatio), Math.round(Theme.iconSize * Screen.devicePixelRatio))
            source: row.icon
            opacity: row.rowEnabled ? 1 : 0.4
            Accessible.ignored: true
        }

        PlainText {
            id: labelText

            y: ((row.stacked ? row.labelHeight : row.lineHeight) - height) / 2
            anchors.left: parent.left
            anchors.leftMargin: row.labelStart
            anchors.right: row.stacked ? trailingSlot.right : trailingSlot.left
            anchors.rightMargin: row.trailingWidth > 0 && !row.stacked ? 12 : 0
            text: row.label
            color: row.titleColor
            opacity: row.rowEnabled ? 1 : 0.4
            font.pixelSize: Theme.labelSize
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
            Accessible.ignored: true
        }

        Item {
            id: trailingSlot

            anchors.right: parent.right
            anchors.rightMargin: Theme.inset
            y: row.stacked ? row.labelHeight - 8 : 0
            width: row.trailingWidth
            height: row.lineHeight - y
            opacity: row.rowEnabled ? 1 : 0.4
        }

        Hairline {
            visible: !row.last
            anchors.bottom: parent.bottom
            anchors.right: parent.right
            anchors.left: parent.left
            anchors.leftMargin: row.labelStart
        }
    }
}
