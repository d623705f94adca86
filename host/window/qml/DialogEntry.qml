// SPDX-License-Identifier: MIT
import QtQuick

// The text field of a dialog, and under it the buttons that help to type.
Column {
    id: entry

    required property QtObject dialog
    property bool keyboardInUse: false
    // What the focus goes through, in order.
    function stops() {
        const all = [field];
        for (let each = 0; each < helpers.count; ++each)
            all.push(helpers.itemAt(each));
        return all;
    }
    function start() {
        field.forceActiveFocus();
        Qt.inputMethod.show();
    }

    spacing: 8
    topPadding: 8

    Rectangle {
        width: parent.width
        height: Math.max(Theme.target, field.implicitHeight + 18)
        radius: 9
        color: Theme.ground
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? Theme.accent : Theme.faint

        MouseArea {
            anchors.fill: parent
            onClicked: entry.start()
        }
        LineInput {
            id: field

            function show() {
                if (text !== entry.dialog.text)
                    text = entry.dialog.text;
            }

            anchors.fill: parent
            anchors.leftMargin: 14
            anchors.rightMargin: 14
            font.pixelSize: Theme.titleSize
            inputMethodHints: entry.dialog.numeric ? Qt.ImhFormattedNumbersOnly : Qt.ImhNone

            Component.onCompleted: show()
            onTextEdited: entry.dialog.typeText(text)
            Keys.onReturnPressed: entry.dialog.accept()
            Keys.onEnterPressed: entry.dialog.accept()

            Accessible.ignored: !visible
            Accessible.role: Accessible.EditableText
            Accessible.name: entry.dialog.title
            Accessible.description: entry.dialog.message
            Accessible.editable: true
            Accessible.focusable: true

            Connections {
                target: entry.dialog
                function onTextChanged() {
                    field.show();
                }
            }
        }
    }

    Row {
        id: bar

        visible: helpers.count > 0
        width: parent.width
        spacing: 8

        Repeater {
            id: helpers

            model: entry.dialog.accessory

            BarButton {
                required property int index
                required property string modelData

                width: (bar.width - bar.spacing * (helpers.count - 1)) / helpers.count
                longest: width
                title: modelData
                keyboardInUse: entry.keyboardInUse
                // The field keeps the focus, for what is typed next.
                onTapped: {
                    entry.dialog.pressAccessory(index);
                    field.forceActiveFocus();
                }

                Rectangle {
                    z: -1
                    anchors.fill: parent
                    radius: 9
                    color: Theme.ground
                }
            }
        }
    }
}
