// SPDX-License-Identifier: MIT
import QtQuick

// A label and its text, side by side. The text is open while it is edited: from when it gets the focus until it is
// committed. It keeps the focus then, and a tap or a key opens it again.
ListRow {
    id: row

    required property string text
    required property string placeholder
    required property bool editing

    about: placeholder
    pressable: false
    trailingHeight: input.implicitHeight
    trailingWidth: room - 12 - Math.min(Math.ceil(labelLength.advanceWidth), room * 0.45)
    trailing: [
        LineInput {
            id: input

            // The text is open; otherwise its beginning is shown in place of it.
            property bool open: false
            // It was committed and keeps the focus.
            property bool resting: false

            // While a text that is being typed goes to the model and comes back, the cursor stays where it is.
            function show() {
                if (text !== row.text)
                    text = row.text;
            }
            function begin(atCursor) {
                if (open)
                    return;
                const cursor = cursorPosition;
                resting = false;
                open = true;
                row.list.rows.beginEditing(row.index);
                show();
                cursorPosition = atCursor ? Math.min(cursor, length) : length;
            }
            function commit() {
                row.list.rows.endEditing(row.index);
                close();
            }
            function close() {
                if (!open)
                    return;
                open = false;
                resting = activeFocus;
                // So that a click on the beginning, which is shown, is one there.
                cursorPosition = 0;
            }
            function turn(event) {
                if (open)
                    commit();
                else if (!event.isAutoRepeat)
                    row.tapped();
            }

            anchors.fill: parent
            focus: true
            enabled: row.rowEnabled
            readOnly: !open
            color: open ? Theme.title : "transparent"
            font.pixelSize: Theme.labelSize

            Component.onCompleted: show()
            onTextChanged: if (open && text !== row.text)
                row.list.rows.setEditingText(row.index, text)
            onUsed: begin(true)
            onActiveFocusChanged: {
                if (activeFocus) {
                    if (!resting)
                        begin(pressed);
                } else if (Window.activeFocusItem && !offering) {
                    // A window that goes to the background, where nothing has the focus, keeps its edited text open.
                    resting = false;
                    if (open)
                        commit();
                }
            }
            // Kept from the row, which would open the text again.
            Keys.onReturnPressed: event => turn(event)
            Keys.onEnterPressed: event => turn(event)
            // The keys of a text that is not open are those of the page.
            Keys.forwardTo: open ? [] : [row.list.parent]

            Accessible.ignored: !visible
            Accessible.role: Accessible.EditableText
            Accessible.name: row.label
            Accessible.description: row.description
            Accessible.editable: true
            Accessible.focusable: row.rowEnabled

            PlainText {
                readonly property bool stands: !input.open && row.text !== ""

                anchors.fill: parent
                visible: stands || (input.text === "" && input.preeditText === "")
                verticalAlignment: Text.AlignVCenter
                horizontalAlignment: Text.AlignLeft
                text: stands ? row.text : row.placeholder
                color: stands ? Theme.title : Theme.quiet
                opacity: stands ? 1 : 0.8
                font: input.font
                maximumLineCount: 1
                elide: Text.ElideRight
                Accessible.ignored: true
            }
        },
        TextMetrics {
            id: labelLength

            font.pixelSize: Theme.labelSize
            text: row.label
        }
    ]

    // The entry itself is what a screen reader finds.
    Accessible.ignored: true

    onTextChanged: input.show()
    onEditingChanged: if (!editing)
        input.close()
    onTapped: {
        input.forceActiveFocus();
        input.begin(false);
        Qt.inputMethod.show();
    }
}
