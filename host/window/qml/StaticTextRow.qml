// SPDX-License-Identifier: MIT
import QtQuick

ListRow {
    readonly property bool accessibleControl: true

    pressable: false

    Accessible.role: Accessible.StaticText
    Accessible.focusable: false
    Accessible.name: label
}
