// SPDX-License-Identifier: MIT
import QtQuick

// A number and its stepper, at the right of the label.
ListRow {
    id: row

    required property string text
    required property color textColor
    required property real level
    required property real minimum
    required property real maximum
    required property real step
    required property bool canDecrease
    required property bool canIncrease
    required property bool autorepeat
    readonly property bool accessibleControl: true

    // What assistive technology reads and sets.
    property real value: level
    readonly property real minimumValue: minimum
    readonly property real maximumValue: maximum
    readonly property real stepSize: step
    readonly property bool mirrored: LayoutMirroring.enabled

    function stepBy(direction) {
        list.rows.step(index, direction);
    }
    function press(event, direction) {
        if (event.modifiers & Qt.AltModifier)
            event.accepted = false;
        else
            stepBy(mirrored ? -direction : direction);
    }

    onValueChanged: {
        if (value === level)
            return;
        const wanted = value;
        value = Qt.binding(() => row.level);
        list.rows.moveTo(index, wanted);
    }

    pressable: false
    stacked: room - 12 - trailingWidth < room * 0.3
    trailingWidth: ground.width + (text === "" ? 0 : number.implicitWidth + 14)
    trailingHeight: ground.height
    trailing: [
        PlainText {
            id: number

            anchors.verticalCenter: parent.verticalCenter
            anchors.right: ground.left
            anchors.rightMargin: 14
            text: row.text
            color: row.textColor
            font.pixelSize: Theme.labelSize
            Accessible.ignored: true
        },
        Rectangle {
            id: ground

            anchors.verticalCenter: parent.verticalCenter
            anchors.right: parent.right
            width: buttons.width
            height: buttons.height
            radius: 9
            color: Theme.ground

            Row {
                id: buttons

                StepperButton {
                    plus: false
                    usable: row.canDecrease
                    repeats: row.autorepeat
                    enabled: row.rowEnabled
                    onStepped: {
                        row.use();
                        row.stepBy(-1);
                    }
                }
                StepperButton {
                    plus: true
                    usable: row.canIncrease
                    repeats: row.autorepeat
                    enabled: row.rowEnabled
                    onStepped: {
                        row.use();
                        row.stepBy(1);
                    }
                }
            }
            Rectangle {
                anchors.centerIn: parent
                width: 1
                height: 16
                color: Theme.faint
                opacity: 0.6
            }
        }
    ]

    Keys.onLeftPressed: event => press(event, -1)
    Keys.onRightPressed: event => press(event, 1)
    Keys.onPressed: event => {
        const direction = event.text === "+" ? 1 : event.text === "-" ? -1 : 0;
        if (direction === 0)
            return;
        event.accepted = true;
        stepBy(direction);
    }

    Accessible.role: Accessible.SpinBox
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.onIncreaseAction: stepBy(1)
    Accessible.onDecreaseAction: stepBy(-1)
}
