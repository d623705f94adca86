// SPDX-License-Identifier: MIT
import QtQuick

// A line that is typed in. A right click, a long press or the menu key offers what can be done with its text.
TextInput {
    id: input

    // The menu over it is shown, and gives the focus back.
    property bool offering: false
    // A finger or a mouse button is down on it.
    readonly property alias pressed: tap.pressed

    // It was tapped, or its menu is about to be shown.
    signal used

    function offer(place, byTouch) {
        forceActiveFocus();
        used();
        offering = true;
        Window.window.offerEdits(input, mapToItem(null, place), byTouch);
    }
    // A line has no ends of lines in it, and nothing that cannot be seen.
    function plain(text) {
        return text.replace(/\r\n|[\n\v\f\r\u0085\u2028\u2029]/g, " ").replace(/[\u0000-\u001f\u007f-\u009f]/g, "");
    }

    verticalAlignment: TextInput.AlignVCenter
    horizontalAlignment: TextInput.AlignLeft
    clip: true
    color: Theme.title
    selectionColor: "#bfe0f1"
    selectedTextColor: Theme.title
    selectByMouse: true

    onTextEdited: {
        const typed = plain(text);
        if (typed === text)
            return;
        const behind = plain(text.slice(cursorPosition)).length;
        text = typed;
        cursorPosition = typed.length - behind;
    }

    Keys.onPressed: event => {
        if (event.key !== Qt.Key_Menu && !(event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier))
            return;
        event.accepted = true;
        const cursor = positionToRectangle(cursorPosition);
        offer(Qt.point(cursor.x, cursor.y + cursor.height), false);
    }

    TapHandler {
        id: tap

        onTapped: input.used()
        onLongPressed: {
            if (point.device.type !== PointerDevice.TouchScreen)
                return;
            input.forceActiveFocus();
            input.used();
            // The word under the finger is what is cut or copied.
            input.cursorPosition = input.positionAt(point.position.x, point.position.y);
            input.selectWord();
            input.offer(point.position, true);
        }
    }
    // A line that has a handler takes the presses of all buttons for those of the left one; this keeps the right one from
    // it.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.RightButton
        cursorShape: Qt.IBeamCursor
        onClicked: mouse => input.offer(Qt.point(mouse.x, mouse.y), false)
    }
}
