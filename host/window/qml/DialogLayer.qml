// SPDX-License-Identifier: MIT
import QtQuick

// The dialog that lies over the pages: a sheet that rises from the bottom, a popover that points at its bar button, or
// a panel in the middle.
FocusScope {
    id: overlay

    required property QtObject dialog
    required property QtObject status
    // What the dialogs lie over, and gets the focus back.
    required property Item stack

    readonly property bool keyboardInUse: status.keyboardInUse
    readonly property Item anchorItem: stack.anchorItem
    // The first dialog is shown before this layer is there, and comes as all others do.
    property bool completed: false
    readonly property bool shown: completed && dialog.shown
    readonly property bool popover: dialog.anchored && anchorItem !== null
    readonly property bool sheet: dialog.kind === "sheet" && !popover
    // 0 away, 1 fully there.
    property real presence: shown ? 1 : 0
    // The middle of the button's lower edge. It is added up from what places the button, so that it is found anew when
    // one of these changes; mapToItem() would be asked once.
    readonly property point anchorPoint: {
        if (!popover)
            return Qt.point(0, 0);
        let x = anchorItem.width / 2;
        let y = anchorItem.height;
        for (let item = anchorItem; item && item !== stack; item = item.parent) {
            x += item.x;
            y += item.y;
        }
        return Qt.point(x, y);
    }

    function moveFocus(step) {
        const stops = entry.visible ? entry.stops() : [];
        for (let each = 0; each < buttons.count; ++each)
            stops.push(buttons.itemAt(each));
        if (stops.length === 0)
            return;
        const at = stops.findIndex(stop => stop.activeFocus);
        const next = at < 0 ? (step > 0 ? 0 : stops.length - 1) : (at + step + stops.length) % stops.length;
        stops[next].forceActiveFocus(Qt.TabFocusReason);
        reveal(stops[next]);
    }
    // Scrolls to what has the focus, where the window is too low for all of the dialog.
    function reveal(item) {
        // The buttons do not scroll.
        if (!entry.stops().includes(item))
            return;
        const top = item.mapToItem(scroller.contentItem, 0, 0).y;
        const lowest = Math.max(0, scroller.contentHeight - scroller.height);
        scroller.contentY = Math.max(0, Math.min(lowest, top - 12, Math.max(scroller.contentY, top + item.height + 20 - scroller.height)));
    }
    function start() {
        scroller.contentY = 0;
        if (dialog.hasField) {
            entry.start();
            reveal(entry.stops()[0]);
        } else if (buttons.count > 0) {
            buttons.itemAt(buttons.count - 1).forceActiveFocus();
        } else {
            panel.forceActiveFocus();
        }
    }

    // Where another dialog takes its place, the focus does not go to the page for a moment, which would be read out.
    function leave() {
        if (!shown)
            stack.forceActiveFocus();
    }

    visible: presence > 0
    enabled: shown
    onShownChanged: {
        if (shown)
            colorPanel.item ? colorPanel.item.begin() : start();
        else
            Qt.callLater(overlay.leave);
    }
    Component.onCompleted: completed = true

    Behavior on presence {
        NumberAnimation {
            duration: Theme.reducedMotion ? 0 : 240
            easing.type: Easing.OutCubic
        }
    }

    Keys.onPressed: event => {
        if (event.key === Qt.Key_Escape || event.key === Qt.Key_Back)
            overlay.dialog.cancel();
        else if (event.key === Qt.Key_Tab || event.key === Qt.Key_Down || event.key === Qt.Key_Right)
            overlay.moveFocus(1);
        else if (event.key === Qt.Key_Backtab || event.key === Qt.Key_Up || event.key === Qt.Key_Left)
            overlay.moveFocus(-1);
        event.accepted = true;
    }

    Rectangle {
        anchors.fill: parent
        color: "#0d1a26"
        opacity: (overlay.popover ? 0.16 : 0.36) * overlay.presence

        MouseArea {
            anchors.fill: parent
            onClicked: overlay.dialog.cancel()
            // What scrolls beneath stays where it is.
            onWheel: wheel => wheel.accepted = true
        }
    }

    // The tip of a popover.
    Rectangle {
        visible: overlay.popover
        opacity: overlay.presence
        width: 18
        height: 18
        rotation: 45
        color: Theme.card
        x: overlay.anchorPoint.x - width / 2
        y: panel.y - height / 2 + 3
        antialiasing: true
    }

    // The colour chooser rises from the bottom of a phone, within reach of a thumb, and stands in the middle elsewhere.
    Loader {
        id: colorPanel

        readonly property bool low: overlay.width < 600

        active: overlay.dialog.kind === "color"
        x: (overlay.width - width) / 2
        y: low ? overlay.height - (height + 10) * overlay.presence : (overlay.height - height) / 2
        opacity: low ? 1 : overlay.presence
        sourceComponent: ColorDialog {
            dialog: overlay.dialog
            status: overlay.status
            room: Qt.size(overlay.width, overlay.height)
        }
    }

    FocusScope {
        id: panel

        visible: !colorPanel.active

        readonly property real breadth: Math.min(overlay.width - 20, overlay.popover ? 320 : 420)
        readonly property real highest: overlay.height - Qt.inputMethod.keyboardRectangle.height - 20 - (overlay.popover ? overlay.anchorPoint.y : 0)

        width: breadth
        height: column.height
        // On whole points, as are the heights of its parts: between two of them the ground beneath would show.
        x: Math.round(overlay.popover ? Math.max(10, Math.min(overlay.width - width - 10, overlay.anchorPoint.x - width + 60)) : (overlay.width - width) / 2)
        y: {
            if (overlay.popover)
                return Math.round(overlay.anchorPoint.y + 8);
            if (overlay.sheet)
                return Math.round(overlay.height - (height + 12) * overlay.presence);
            return Math.round(Math.max(8, (overlay.height - Qt.inputMethod.keyboardRectangle.height - height) / 2));
        }
        opacity: overlay.sheet ? 1 : overlay.presence

        // One that takes the place of another comes anew.
        Accessible.ignored: !visible || !overlay.shown
        Accessible.onIgnoredChanged: overlay.status.tellShown(panel, !Accessible.ignored)
        Accessible.role: Accessible.Dialog
        Accessible.name: overlay.dialog.title
        Accessible.description: overlay.dialog.message

        MouseArea {
            anchors.fill: parent
        }

        // Points may be parts of pixels: no gap between the cards lets through what is beneath.
        Rectangle {
            x: 1
            y: 1
            width: parent.width - 2
            height: choices.y + choices.joined - 2
            radius: Theme.corner - 1
            color: Theme.card
        }
        Column {
            id: column

            width: parent.width

            // What is said scrolls where the window is too low for all of it; the buttons stay.
            Item {
                width: parent.width
                height: Math.floor(Math.min(scroller.contentHeight, Math.max(Theme.target, panel.highest - choices.height)))

                Card {
                    anchors.fill: parent
                    last: false
                }
                Flickable {
                    id: scroller

                    anchors.fill: parent
                    contentHeight: Math.ceil(texts.height) + 40
                    clip: interactive
                    interactive: contentHeight > height
                    boundsBehavior: Flickable.StopAtBounds

                    Column {
                        id: texts

                        x: 20
                        y: 20
                        width: parent.width - 40
                        spacing: 6

                        PlainText {
                            width: parent.width
                            text: overlay.dialog.title
                            color: Theme.title
                            font.pixelSize: Theme.titleSize
                            font.weight: Font.DemiBold
                            wrapMode: Text.Wrap
                            horizontalAlignment: Text.AlignHCenter
                            Accessible.ignored: true
                        }
                        PlainText {
                            width: parent.width
                            visible: text !== ""
                            text: overlay.dialog.message
                            color: Theme.quiet
                            font.pixelSize: Theme.text(14)
                            lineHeight: 1.3
                            wrapMode: Text.Wrap
                            horizontalAlignment: Text.AlignHCenter
                            Accessible.ignored: true
                        }
                        DialogEntry {
                            id: entry

                            width: parent.width
                            visible: overlay.dialog.hasField
                            dialog: overlay.dialog
                            keyboardInUse: overlay.keyboardInUse
                        }
                    }
                }
            }

            // The cancel button of a sheet stands last and apart, wherever the dialog lists it.
            Column {
                id: choices

                // The height of those that are joined to what is said.
                readonly property real joined: {
                    const last = buttons.count > 0 ? buttons.itemAt(buttons.count - 1) : null;
                    return height - (last && last.apart ? last.height : 0);
                }

                width: parent.width

                Repeater {
                    id: buttons

                    model: overlay.ordered

                    DialogButton {
                        required property var modelData
                        required property int index

                        width: column.width
                        title: modelData.title
                        style: modelData.style
                        apart: overlay.sheet && modelData.style === "cancel"
                        first: apart
                        last: apart || index === buttons.count - 1 || (overlay.sheet && overlay.ordered[index + 1].style === "cancel")
                        keyboardInUse: overlay.keyboardInUse
                        focus: index === buttons.count - 1
                        onTapped: overlay.dialog.press(modelData.place)
                    }
                }
            }
        }
    }

    readonly property var ordered: {
        const all = dialog.buttons.map((button, place) => ({
                    title: button.title,
                    style: button.style,
                    place: place
                }));
        const cancels = all.filter(button => button.style === "cancel");
        return all.filter(button => button.style !== "cancel").concat(cancels);
    }
}
