// SPDX-License-Identifier: MIT
import QtQuick

// The shades of a hue: saturation grows to the right, brightness upwards, in every language, as on a map. To a screen
// reader it is two sliders.
FocusScope {
    id: field

    required property QtObject model
    property bool keyboardInUse: false

    Keys.onPressed: event => {
        const step = event.modifiers & Qt.ShiftModifier ? 0.1 : 0.01;
        if (event.key === Qt.Key_Right)
            model.saturation += step;
        else if (event.key === Qt.Key_Left)
            model.saturation -= step;
        else if (event.key === Qt.Key_Up)
            model.brightness += step;
        else if (event.key === Qt.Key_Down)
            model.brightness -= step;
        else if (event.key === Qt.Key_PageUp)
            model.brightness += 0.1;
        else if (event.key === Qt.Key_PageDown)
            model.brightness -= 0.1;
        else if (event.key === Qt.Key_Home)
            model.saturation = 0;
        else if (event.key === Qt.Key_End)
            model.saturation = 1;
        else
            return;
        event.accepted = true;
    }

    Accessible.ignored: !visible
    Accessible.role: Accessible.Grouping
    Accessible.name: model.texts.saturation + ", " + model.texts.brightness
    Accessible.description: model.colorCode
    Accessible.focusable: true

    Rectangle {
        anchors.fill: parent
        radius: 8
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop {
                position: 0
                color: "#ffffff"
            }
            GradientStop {
                position: 1
                color: field.model.hueColor
            }
        }
    }
    Rectangle {
        anchors.fill: parent
        radius: 8
        gradient: Gradient {
            GradientStop {
                position: 0
                color: "#00000000"
            }
            GradientStop {
                position: 1
                color: "#ff000000"
            }
        }
    }

    ColorHandle {
        x: field.model.saturation * field.width - width / 2
        y: (1 - field.model.brightness) * field.height - height / 2
        color: Qt.alpha(field.model.color, 1)
        focusVisible: field.activeFocus && field.keyboardInUse
    }

    MouseArea {
        anchors.fill: parent
        preventStealing: true
        onPressed: mouse => {
            field.forceActiveFocus(Qt.MouseFocusReason);
            follow(mouse);
        }
        onPositionChanged: mouse => follow(mouse)

        function follow(mouse) {
            field.model.setShade(mouse.x / width, 1 - mouse.y / height);
        }
    }

    component Axis: Item {
        readonly property bool accessibleControl: true
        property real value: 0
        readonly property real minimumValue: 0
        readonly property real maximumValue: 1
        readonly property real stepSize: 0.01

        anchors.fill: parent
        Accessible.ignored: !visible
        Accessible.role: Accessible.Slider
        Accessible.focusable: true
    }
    Axis {
        id: saturation

        value: field.model.saturation
        onValueChanged: if (value !== field.model.saturation)
            field.model.saturation = value
        Accessible.name: field.model.texts.saturation
        Accessible.onIncreaseAction: field.model.saturation += stepSize
        Accessible.onDecreaseAction: field.model.saturation -= stepSize
    }
    Axis {
        id: brightness

        value: field.model.brightness
        onValueChanged: if (value !== field.model.brightness)
            field.model.brightness = value
        Accessible.name: field.model.texts.brightness
        Accessible.onIncreaseAction: field.model.brightness += stepSize
        Accessible.onDecreaseAction: field.model.brightness -= stepSize
    }
    Connections {
        target: field.model
        function onChanged() {
            saturation.value = field.model.saturation;
            brightness.value = field.model.brightness;
        }
    }
}
