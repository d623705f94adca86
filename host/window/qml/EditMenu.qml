// SPDX-License-Identifier: MIT
import QtQuick

// The menu of a line that is typed in: what can be done with its text now. It takes the focus while it is shown.
FocusScope {
    id: menu

    required property QtObject status
    required property var texts
    // The line that it is shown for; null while it is not shown.
    property LineInput field: null
    property point place
    property bool byTouch: false
    property var entries: []

    function open(line, at, touched) {
        place = at;
        byTouch = touched;
        field = line;
        const selected = line.selectedText !== "";
        const all = line.selectedText.length === line.length;
        entries = [
            {
                title: texts.cut,
                usable: selected,
                run: () => line.cut()
            },
            {
                title: texts.copy,
                usable: selected,
                run: () => line.copy()
            },
            {
                title: texts.paste,
                usable: line.canPaste,
                run: () => line.paste()
            },
            {
                title: texts.selectAll,
                usable: !all,
                // A finger would give the selection up to reach the menu again.
                run: () => {
                    line.selectAll();
                    if (menu.byTouch)
                        line.offer(line.mapFromItem(null, menu.place), true);
                }
            }
        ].filter(entry => entry.usable);
        if (entries.length === 0)
            close();
        else
            moveTo(0);
    }
    function close() {
        const line = field;
        field = null;
        entries = [];
        if (!line)
            return;
        if (line.visible)
            line.forceActiveFocus(Qt.PopupFocusReason);
        line.offering = false;
    }
    function moveTo(index) {
        buttons.itemAt(index).forceActiveFocus(Qt.PopupFocusReason);
    }
    function use(index) {
        const entry = entries[index];
        close();
        entry.run();
    }

    visible: field !== null

    // Its line may go with its page or its dialog.
    Connections {
        target: menu.field
        function onVisibleChanged() {
            menu.close();
        }
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        onPressed: menu.close()
        onWheel: wheel => wheel.accepted = true
    }

    Rectangle {
        anchors.fill: panel
        anchors.margins: -3
        anchors.topMargin: -1
        anchors.bottomMargin: -5
        radius: panel.radius + 3
        color: "#1f162433"
    }
    Rectangle {
        id: panel

        // Under the place, or above it where there is no room.
        readonly property real below: menu.place.y + 6
        readonly property real above: menu.place.y - 6 - height

        x: Math.max(8, Math.min(menu.width - width - 8, menu.place.x - 16))
        y: Math.round(Math.max(0, below + height <= menu.height ? below : Math.min(above, menu.height - height)))
        width: column.width
        height: column.height
        radius: Theme.corner
        color: Theme.card
        border.width: 1
        border.color: Theme.hairline

        Accessible.ignored: !visible
        Accessible.onIgnoredChanged: menu.status.tellShown(panel, !Accessible.ignored)
        Accessible.role: Accessible.PopupMenu
        Accessible.name: menu.field ? menu.field.Accessible.name : ""

        MouseArea {
            anchors.fill: parent
        }
        Column {
            id: column

            Repeater {
                id: buttons

                model: menu.entries

                Item {
                    id: entry

                    required property int index
                    required property var modelData

                    width: Math.min(menu.width - 16, Math.max(160, Math.ceil(longest.width) + 2 * Theme.inset))
                    height: Math.max(Theme.target, Math.ceil(label.implicitHeight) + 22)

                    Keys.onPressed: event => {
                        event.accepted = true;
                        const step = event.key === Qt.Key_Down || event.key === Qt.Key_Tab ? 1 : event.key === Qt.Key_Up || event.key === Qt.Key_Backtab ? -1 : 0;
                        if (step !== 0)
                            menu.moveTo((entry.index + step + buttons.count) % buttons.count);
                        else if (event.key === Qt.Key_Escape || event.key === Qt.Key_Back || event.key === Qt.Key_Menu)
                            menu.close();
                        else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter || event.key === Qt.Key_Space)
                            menu.use(entry.index);
                    }

                    Accessible.ignored: !visible
                    Accessible.role: Accessible.MenuItem
                    Accessible.name: entry.modelData.title
                    Accessible.focusable: true
                    Accessible.onPressAction: menu.use(entry.index)

                    Rectangle {
                        anchors.fill: parent
                        anchors.margins: 1
                        radius: Theme.corner - 1
                        color: Theme.pressed
                        visible: area.pressed || (entry.activeFocus && menu.status.keyboardInUse)
                    }
                    PlainText {
                        id: label

                        anchors.verticalCenter: parent.verticalCenter
                        x: Theme.inset
                        width: parent.width - 2 * Theme.inset
                        text: entry.modelData.title
                        color: Theme.title
                        font.pixelSize: Theme.labelSize
                        elide: Text.ElideRight
                        horizontalAlignment: Text.AlignLeft
                        Accessible.ignored: true
                    }
                    MouseArea {
                        id: area

                        anchors.fill: parent
                        onClicked: menu.use(entry.index)
                    }
                }
            }
        }
        TextMetrics {
            id: longest

            font.pixelSize: Theme.labelSize
            text: menu.entries.reduce((most, entry) => entry.title.length > most.length ? entry.title : most, "")
        }
    }
}
