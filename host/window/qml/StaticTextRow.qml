// SPDX-License-Identifier: MIT
import QtQuick

ListRow {
    pressable: false

    Accessible.role: Accessible.StaticText
    Accessible.name: label
}
