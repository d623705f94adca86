// SPDX-License-Identifier: MIT
import QtQuick

// The previews of a backdrop picker, two in a line.
FocusScope {
    id: grid

    required property QtObject previews
    required property QtObject status
    // The preview that the keys are at.
    property int current: 0

    readonly property alias flickable: scroller
    readonly property int columns: 2
    readonly property real itemWidth: previews.itemWidth(width)
    readonly property int direction: LayoutMirroring.enabled ? -1 : 1
    // The width that the previews are drawn for. While the window is being resized they are stretched, and drawn anew
    // when it has come to rest.
    property real drawnWidth: 0

    function moveTo(index) {
        const item = items.itemAt(Math.max(0, Math.min(items.count - 1, index)));
        current = item.index;
        item.forceActiveFocus(Qt.TabFocusReason);
        reveal(item);
    }
    function reveal(item) {
        const gap = previews.spacing;
        const lowest = Math.max(0, scroller.contentHeight - scroller.height);
        const top = Math.max(item.y + item.height + gap - scroller.height, Math.min(scroller.contentY, item.y - gap));
        scroller.contentY = Math.max(0, Math.min(lowest, top));
    }

    // Until the page has found its place, nothing is drawn for the widths on the way.
    property bool placed: false

    onItemWidthChanged: if (placed)
        rest.restart()
    Component.onCompleted: Qt.callLater(() => {
        placed = true;
        drawnWidth = itemWidth;
    })

    Timer {
        id: rest

        interval: 150
        onTriggered: grid.drawnWidth = grid.itemWidth
    }

    Keys.onPressed: event => {
        if (event.modifiers & Qt.AltModifier)
            return;
        const page = grid.columns * Math.max(1, Math.floor(scroller.height / (grid.previews.itemHeight + grid.previews.spacing)));
        const last = items.count - 1;
        let target = grid.current;
        if (event.key === Qt.Key_Right)
            target += grid.direction;
        else if (event.key === Qt.Key_Left)
            target -= grid.direction;
        else if (event.key === Qt.Key_Down)
            target += grid.columns;
        else if (event.key === Qt.Key_Up)
            target -= grid.columns;
        else if (event.key === Qt.Key_PageDown)
            target = Math.min(last, target + page);
        else if (event.key === Qt.Key_PageUp)
            target = Math.max(0, target - page);
        else if (event.key === Qt.Key_Home)
            target = 0;
        else if (event.key === Qt.Key_End)
            target = last;
        else
            return;
        event.accepted = true;
        // At an edge the keys stay where they are.
        grid.moveTo(target < 0 || target > last ? grid.current : target);
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.card
    }

    Flickable {
        id: scroller

        anchors.fill: parent
        contentHeight: holder.height
        boundsBehavior: Flickable.DragAndOvershootBounds
        maximumFlickVelocity: 6000

        Item {
            id: holder

            readonly property real step: grid.previews.itemHeight + grid.previews.spacing

            width: grid.width
            height: Math.ceil(items.count / grid.columns) * step + grid.previews.spacing

            Repeater {
                id: items

                model: grid.previews

                FocusScope {
                    id: item

                    required property int index
                    required property string label
                    required property string preview

                    readonly property bool atEnd: index % grid.columns === 1

                    function pick() {
                        grid.previews.pick(index);
                    }

                    // A line fills the width.
                    x: atEnd === (grid.direction > 0) ? grid.width - width - grid.previews.spacing : grid.previews.spacing
                    y: grid.previews.spacing + Math.floor(index / grid.columns) * holder.step
                    width: grid.itemWidth
                    height: grid.previews.itemHeight
                    focus: index === grid.current

                    readonly property bool accessibleControl: true

                    onActiveFocusChanged: if (activeFocus) {
                        grid.current = index;
                        grid.reveal(item);
                    }
                    Keys.onPressed: event => {
                        if (event.key !== Qt.Key_Space && event.key !== Qt.Key_Return && event.key !== Qt.Key_Enter)
                            return;
                        event.accepted = true;
                        if (!event.isAutoRepeat)
                            item.pick();
                    }

                    Accessible.ignored: !visible
                    Accessible.role: Accessible.RadioButton
                    Accessible.name: label
                    Accessible.focusable: true
                    Accessible.onPressAction: pick()

                    Rectangle {
                        anchors.fill: parent
                        radius: grid.previews.corner
                        color: "#808080"
                    }
                    // What was drawn last, for as long as it is drawn anew.
                    Image {
                        id: kept

                        anchors.fill: parent
                        Accessible.ignored: true
                    }
                    Image {
                        onStatusChanged: if (status === Image.Ready) {
                            kept.sourceSize = sourceSize;
                            kept.source = source;
                        }

                        anchors.fill: parent
                        sourceSize: Qt.size(Math.round(grid.drawnWidth * Screen.devicePixelRatio), Math.round(grid.previews.itemHeight * Screen.devicePixelRatio))
                        source: grid.drawnWidth > 0 ? item.preview : ""
                        Accessible.ignored: true
                    }
                    // Rounds the picture off.
                    Rectangle {
                        anchors.fill: parent
                        anchors.margins: -4
                        radius: grid.previews.corner + 4
                        color: "transparent"
                        border.width: 4
                        border.color: Theme.card
                    }
                    Rectangle {
                        anchors.fill: parent
                        radius: grid.previews.corner
                        color: area.pressed ? "#33000000" : "transparent"
                        border.width: item.activeFocus && grid.status.keyboardInUse ? 3 : 1
                        border.color: item.activeFocus && grid.status.keyboardInUse ? Theme.accent : "#14000000"
                    }
                    // White has to be read on white glass too.
                    Rectangle {
                        anchors.fill: number
                        anchors.margins: -3
                        anchors.leftMargin: -10
                        anchors.rightMargin: -10
                        radius: Math.min(height / 2, grid.previews.corner)
                        color: "#66000000"
                    }
                    PlainText {
                        id: number

                        anchors.centerIn: parent
                        width: Math.min(implicitWidth, parent.width - 24)
                        text: item.label
                        color: "#ffffff"
                        font.pixelSize: Theme.text(20)
                        font.weight: Font.DemiBold
                        wrapMode: Text.Wrap
                        horizontalAlignment: Text.AlignHCenter
                        Accessible.ignored: true
                    }
                    MouseArea {
                        id: area

                        anchors.fill: parent
                        onClicked: item.pick()
                    }
                }
            }
        }
    }

    ScrollMark {
        list: scroller
    }
}
