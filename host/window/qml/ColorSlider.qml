// SPDX-License-Identifier: MIT
import QtQuick

// A slider of the colour dialog: a handle on a strip that shows what each place would give. Where the text runs from
// right to left it is turned around. A wheel goes to what scrolls.
FocusScope {
    id: slider

    required property string name
    property real value: 0
    property real maximumValue: 1
    readonly property real minimumValue: 0
    property real stepSize: maximumValue / 100
    property color handleColor: "transparent"
    property alias strip: strip.data
    property bool keyboardInUse: false

    readonly property bool mirrored: LayoutMirroring.enabled
    readonly property real travel: width - handle.width
    readonly property real place: mirrored ? 1 - value / maximumValue : value / maximumValue

    readonly property bool accessibleControl: true

    // The user asks for another value.
    signal moved(real target)

    function moveBy(steps) {
        moved(Math.max(0, Math.min(maximumValue, value + steps * stepSize)));
    }

    height: Theme.target
    implicitHeight: height

    Keys.onPressed: event => {
        const steps = event.modifiers & Qt.ShiftModifier ? 10 : 1;
        const forward = slider.mirrored ? Qt.Key_Left : Qt.Key_Right;
        const backward = slider.mirrored ? Qt.Key_Right : Qt.Key_Left;
        if (event.key === forward || event.key === Qt.Key_Up)
            slider.moveBy(steps);
        else if (event.key === backward || event.key === Qt.Key_Down)
            slider.moveBy(-steps);
        else if (event.key === Qt.Key_PageUp)
            slider.moveBy(10);
        else if (event.key === Qt.Key_PageDown)
            slider.moveBy(-10);
        else if (event.key === Qt.Key_Home)
            slider.moved(0);
        else if (event.key === Qt.Key_End)
            slider.moved(slider.maximumValue);
        else
            return;
        event.accepted = true;
    }

    Accessible.ignored: !visible
    Accessible.role: Accessible.Slider
    Accessible.name: name
    Accessible.focusable: true
    Accessible.onIncreaseAction: moveBy(1)
    Accessible.onDecreaseAction: moveBy(-1)

    Item {
        id: strip

        anchors.verticalCenter: parent.verticalCenter
        // The ends of the strip are where the middle of the handle can go.
        x: handle.width / 2 - height / 2
        width: slider.travel + height
        height: 14
        rotation: slider.mirrored ? 180 : 0
    }
    // Rounds the strip off.
    Rectangle {
        anchors.fill: strip
        anchors.margins: -4
        radius: height / 2
        color: "transparent"
        border.width: 4
        border.color: Theme.card
    }

    ColorHandle {
        id: handle

        anchors.verticalCenter: parent.verticalCenter
        x: slider.place * slider.travel
        color: slider.handleColor
        focusVisible: slider.activeFocus && slider.keyboardInUse
    }

    MouseArea {
        anchors.fill: parent
        preventStealing: true
        onPressed: mouse => {
            slider.forceActiveFocus(Qt.MouseFocusReason);
            follow(mouse.x);
        }
        onPositionChanged: mouse => follow(mouse.x)

        function follow(x) {
            const along = Math.max(0, Math.min(1, (x - handle.width / 2) / slider.travel));
            slider.moved((slider.mirrored ? 1 - along : along) * slider.maximumValue);
        }
    }
}
