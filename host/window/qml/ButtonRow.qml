// SPDX-License-Identifier: MIT
import QtQuick

ListRow {
    labelColor: Theme.accent

    onTapped: list.rows.activate(index)

    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.focusable: rowEnabled
    Accessible.onPressAction: tapped()
}
