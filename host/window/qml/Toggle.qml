// SPDX-License-Identifier: MIT
import QtQuick

// The look of a switch; the row around it does the work.
Rectangle {
    id: track

    property bool checked: false
    property color tint: Theme.accent
    // The first look of a switch is not a change.
    property bool ready: false

    // How far it is over, 0 off and 1 on.
    property real over: checked ? 1 : 0

    width: 50
    height: 30
    radius: height / 2
    color: over === 1 ? tint : over === 0 ? Theme.switchOff : mixed(Theme.switchOff, tint, over)
    Component.onCompleted: ready = true

    function mixed(from, to, share) {
        const between = (one, other) => one + (other - one) * share;
        return Qt.rgba(between(from.r, to.r), between(from.g, to.g), between(from.b, to.b), 1);
    }

    Behavior on over {
        enabled: track.ready && Theme.quick > 0
        NumberAnimation {
            duration: Theme.quick
            easing.type: Easing.OutCubic
        }
    }

    Rectangle {
        width: 26
        height: 26
        radius: 13
        y: 2
        x: 2 + 20 * (track.LayoutMirroring.enabled ? 1 - track.over : track.over)
        color: "#ffffff"
    }
}
