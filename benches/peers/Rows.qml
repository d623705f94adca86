// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls.Basic

ApplicationWindow {
    width: 390
    height: 800
    visible: true

    ScrollView {
        anchors.fill: parent

        Column {
            width: parent.width

            Repeater {
                model: 40

                SwitchDelegate {
                    required property int index

                    width: parent.width
                    text: "Setting " + index
                }
            }
        }
    }
}
