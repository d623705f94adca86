// SPDX-License-Identifier: MIT
import QtQuick

// Title and value on one line, the slider under them, a footnote last. With typed entry a tap on the value opens the
// dialog in which an exact one is typed.
ListRow {
    id: row

    required property string text
    required property string footnote
    required property color footnoteColor
    required property color tint
    required property color restTint
    required property real level
    required property real minimum
    required property real maximum
    required property real step
    property bool typed: false
    readonly property bool accessibleControl: true

    // What assistive technology reads and sets.
    property real value: track.shown
    readonly property real minimumValue: minimum
    readonly property real maximumValue: maximum
    readonly property real stepSize: step

    function nudge(event, side) {
        if (event.modifiers & Qt.AltModifier) {
            event.accepted = false;
            return;
        }
        const steps = event.modifiers & Qt.ShiftModifier ? 10 : 1;
        stepBy(steps * (track.mirrored ? -side : side));
    }
    function stepBy(steps) {
        if (!track.dragged)
            list.rows.step(index, steps);
    }
    function enter(text) {
        if (typed && !track.dragged)
            list.rows.enterValue(index, text);
    }

    onValueChanged: {
        if (value === track.shown)
            return;
        const wanted = value;
        value = Qt.binding(() => track.shown);
        list.rows.moveTo(index, wanted);
    }

    about: footnote
    pressable: false
    leastLine: Theme.target
    trailingWidth: valueText.text === "" ? 0 : Math.ceil(Math.max(least.advanceWidth, most.advanceWidth, valueText.implicitWidth)) + (typed ? 24 : 2)
    trailingHeight: valueText.implicitHeight
    trailing: [
        Rectangle {
            id: plate

            readonly property bool accessibleControl: true

            anchors.verticalCenter: parent.verticalCenter
            width: parent.width
            height: valueText.implicitHeight + 10
            radius: Math.min(height / 2, Theme.corner)
            visible: valueText.text !== ""
            color: !row.typed ? "transparent" : valueArea.pressed ? Theme.hairline : Theme.ground

            Accessible.ignored: !row.typed || !visible
            Accessible.role: Accessible.Button
            Accessible.name: valueText.text
            Accessible.description: row.label
            Accessible.onPressAction: row.enter("")

            PlainText {
                id: valueText

                anchors.verticalCenter: parent.verticalCenter
                width: parent.width
                horizontalAlignment: row.typed ? Text.AlignHCenter : Text.AlignRight
                text: track.dragged ? row.list.rows.valueText(row.index, track.draggedTo) : row.text
                color: row.typed ? Theme.accent : Theme.quiet
                font.pixelSize: Theme.labelSize
                Accessible.ignored: true
            }
        },
        MouseArea {
            id: valueArea

            anchors.fill: parent
            anchors.leftMargin: -12
            anchors.rightMargin: -Theme.inset
            enabled: row.typed && row.rowEnabled
            onClicked: {
                row.use();
                row.enter("");
            }
        },
        // The value keeps its room while it changes.
        TextMetrics {
            id: least

            font: valueText.font
            text: row.list ? row.list.rows.valueText(row.index, row.minimum) : ""
        },
        TextMetrics {
            id: most

            font: valueText.font
            text: row.list ? row.list.rows.valueText(row.index, row.maximum) : ""
        }
    ]

    belowHeight: 40 + (footnote === "" ? 0 : footnoteText.implicitHeight + 4)
    below: [
        SliderTrack {
            id: track

            x: row.labelX
            y: row.lineHeight + 2
            width: row.room
            opacity: row.rowEnabled ? 1 : 0.4
            level: row.level
            minimum: row.minimum
            maximum: row.maximum
            tint: row.typed ? row.tint : Theme.accent
            restTint: row.typed ? row.restTint : Theme.switchOff
            usable: row.rowEnabled
            nearest: value => row.list.rows.shownValueNear(row.index, value)
            onGrabbed: row.use()
            onLetGo: value => {
                row.use();
                row.list.rows.moveTo(row.index, value);
            }
        },
        PlainText {
            id: footnoteText

            x: row.labelX
            y: row.lineHeight + 34
            width: row.room
            opacity: row.rowEnabled ? 1 : 0.4
            text: row.footnote
            color: row.footnoteColor
            font.pixelSize: Theme.smallSize
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
            Accessible.ignored: true
        }
    ]

    Keys.onLeftPressed: event => nudge(event, -1)
    Keys.onRightPressed: event => nudge(event, 1)
    Keys.onReturnPressed: enter("")
    Keys.onEnterPressed: enter("")
    // A number that is typed opens its entry.
    Keys.onPressed: event => {
        const plain = !(event.modifiers & ~(Qt.ShiftModifier | Qt.KeypadModifier));
        const starts = /^[0-9]$/.test(event.text) || (event.text === "-" && minimum < 0) || (event.text === "." && step < 1);
        if (!typed || !plain || !starts)
            return;
        event.accepted = true;
        enter(event.text);
    }

    Accessible.role: Accessible.Slider
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.onIncreaseAction: stepBy(1)
    Accessible.onDecreaseAction: stepBy(-1)
}
