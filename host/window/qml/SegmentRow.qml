// SPDX-License-Identifier: MIT
import QtQuick

// The label, and under it the choices side by side.
ListRow {
    id: row

    required property var titles
    required property int chosen

    function move(event, side) {
        if (event.modifiers & Qt.AltModifier) {
            event.accepted = false;
            return;
        }
        const step = LayoutMirroring.enabled ? -side : side;
        // Where none is chosen, the first one is next either way.
        list.rows.choose(index, chosen < 0 ? 0 : chosen + step);
    }

    pressable: false
    leastLine: Theme.target
    belowHeight: control.implicitHeight + 12
    below: SegmentControl {
        id: control

        x: row.labelX
        y: row.lineHeight
        width: row.room
        height: implicitHeight
        opacity: row.rowEnabled ? 1 : 0.4
        titles: row.titles
        chosen: row.chosen
        enabled: row.rowEnabled
        onPicked: choice => {
            row.use();
            row.list.rows.choose(row.index, choice);
        }
    }

    Keys.onLeftPressed: event => move(event, -1)
    Keys.onRightPressed: event => move(event, 1)

    Accessible.role: Accessible.Grouping
    Accessible.name: label
    Accessible.focusable: rowEnabled
}
