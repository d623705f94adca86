// SPDX-License-Identifier: MIT
import QtQuick

// One half of a stepper. A tap steps once; held down it goes on stepping. A finger that begins a scroll steps nothing.
Item {
    id: button

    required property bool plus
    property bool usable: true
    property bool repeats: true

    signal stepped

    implicitWidth: 47
    implicitHeight: 32
    opacity: usable ? 1 : 0.35

    Rectangle {
        anchors.fill: parent
        anchors.margins: 2
        radius: 7
        color: Theme.hairline
        visible: area.pressed && button.usable
    }
    Rectangle {
        anchors.centerIn: parent
        width: 15
        height: 2
        radius: 1
        color: Theme.accent
    }
    Rectangle {
        anchors.centerIn: parent
        width: 2
        height: 15
        radius: 1
        color: Theme.accent
        visible: button.plus
    }

    MouseArea {
        id: area

        property bool held: false

        anchors.fill: parent
        anchors.topMargin: -(Theme.target - parent.height) / 2
        anchors.bottomMargin: anchors.topMargin
        enabled: button.enabled
        preventStealing: held
        onPressed: held = false
        onClicked: if (!held && button.usable)
            button.stepped()

        Timer {
            interval: area.held ? 110 : 450
            repeat: true
            running: area.pressed && area.containsMouse && button.repeats && button.usable
            onTriggered: {
                area.held = true;
                button.stepped();
            }
        }
    }
}
