// SPDX-License-Identifier: MIT
import QtQuick

// The look of a switch; the row around it does the work.
Rectangle {
    id: track

    property bool checked: false
    property color tint: Theme.accent
    // The first look of a switch is not a change.
    property bool ready: false

    width: 50
    height: 30
    radius: height / 2
    color: checked ? tint : Theme.switchOff
    Component.onCompleted: ready = true

    Behavior on color {
        enabled: track.ready
        ColorAnimation {
            duration: Theme.quick
        }
    }

    Rectangle {
        readonly property bool atEnd: track.checked !== track.LayoutMirroring.enabled

        width: 26
        height: 26
        radius: 13
        y: 2
        x: atEnd ? track.width - width - 2 : 2
        color: "#ffffff"

        Behavior on x {
            enabled: track.ready
            NumberAnimation {
                duration: Theme.quick
                easing.type: Easing.OutCubic
            }
        }
    }
}
