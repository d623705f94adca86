// SPDX-License-Identifier: MIT
import QtQuick

// A label and its text, side by side. The text has the focus while it is edited, and it is edited while it has the
// focus.
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
        TextInput {
            id: input

            // While a text that is being typed goes to the model and comes back, the cursor stays where it is.
            function show() {
                if (text !== row.text)
                    text = row.text;
            }

            anchors.fill: parent
            focus: true
            enabled: row.rowEnabled
            verticalAlignment: TextInput.AlignVCenter
            horizontalAlignment: TextInput.AlignLeft
            clip: true
            color: Theme.title
            selectionColor: "#bfe0f1"
            selectedTextColor: Theme.title
            selectByMouse: true
            font.pixelSize: Theme.labelSize

            Component.onCompleted: show()
            onTextChanged: if (activeFocus && text !== row.text)
                row.list.rows.setEditingText(row.index, text)
            onActiveFocusChanged: {
                if (activeFocus) {
                    row.list.rows.beginEditing(row.index);
                    show();
                } else if (Window.activeFocusItem) {
                    // A window that goes to the background, where nothing has the focus, keeps its edited text open.
                    row.list.rows.endEditing(row.index);
                }
            }
            // Kept from the row, which would open the text again.
            Keys.onReturnPressed: row.list.rows.endEditing(row.index)
            Keys.onEnterPressed: row.list.rows.endEditing(row.index)

            Accessible.ignored: !visible
            Accessible.role: Accessible.EditableText
            Accessible.name: row.label
            Accessible.description: row.description
            Accessible.editable: true
            Accessible.focusable: row.rowEnabled

            PlainText {
                anchors.fill: parent
                visible: input.text === "" && input.preeditText === ""
                verticalAlignment: Text.AlignVCenter
                horizontalAlignment: Text.AlignLeft
                text: row.placeholder
                color: Theme.quiet
                opacity: 0.8
                font: input.font
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
    onEditingChanged: if (!editing && input.activeFocus)
        list.rest()
    onTapped: {
        input.forceActiveFocus();
        Qt.inputMethod.show();
    }
}
