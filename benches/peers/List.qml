// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls.Basic

ApplicationWindow {
    width: 390
    height: 800
    visible: true

    ListView {
        anchors.fill: parent
        model: 40

        delegate: SwitchDelegate {
            required property int index

            width: ListView.view.width
            text: "Setting " + index
        }
    }
}
