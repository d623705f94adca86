// SPDX-License-Identifier: MIT
import QtQuick

// Picks a colour: a field of saturation and brightness, sliders for hue and opacity, the code as text, and the colour
// before beside the one now. It scrolls where the window is too low for it; its buttons stay.
FocusScope {
    id: panel

    required property QtObject dialog
    required property QtObject status
    // The room that it lies in.
    required property size room

    readonly property bool keyboardInUse: status.keyboardInUse
    readonly property QtObject model: dialog.color
    readonly property var texts: model.texts
    readonly property real pad: 16
    readonly property real highest: room.height - 20
    readonly property var stops: [field, hue, alpha, before, code, cancel, choose].filter(item => item.visible)

    function moveFocus(step) {
        const at = stops.findIndex(item => item.activeFocus);
        const next = at < 0 ? (step > 0 ? 0 : stops.length - 1) : (at + step + stops.length) % stops.length;
        stops[next].forceActiveFocus(step > 0 ? Qt.TabFocusReason : Qt.BacktabFocusReason);
        reveal(stops[next]);
    }
    function reveal(item) {
        // The buttons do not scroll.
        if (item === cancel || item === choose)
            return;
        const top = item.mapToItem(scroller.contentItem, 0, 0).y;
        const lowest = Math.max(0, scroller.contentHeight - scroller.height);
        scroller.contentY = Math.max(0, Math.min(lowest, Math.max(top + item.height + 12 - scroller.height, Math.min(scroller.contentY, top - 12))));
    }
    function begin() {
        scroller.contentY = 0;
        field.forceActiveFocus();
    }

    width: Math.min(room.width - 20, 420)
    height: Math.min(highest, scroller.contentHeight + buttons.height)

    Keys.onPressed: event => {
        if (event.key === Qt.Key_Escape || event.key === Qt.Key_Back)
            panel.dialog.cancel();
        else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
            panel.dialog.choose();
        else if (event.key === Qt.Key_Tab)
            panel.moveFocus(1);
        else if (event.key === Qt.Key_Backtab)
            panel.moveFocus(-1);
        event.accepted = true;
    }

    Accessible.ignored: !visible
    Accessible.onIgnoredChanged: if (!Accessible.ignored)
        panel.status.tellShown(panel, true)
    Accessible.role: Accessible.Dialog
    Accessible.name: panel.dialog.title === "" ? panel.texts.title : panel.dialog.title

    Rectangle {
        anchors.fill: parent
        radius: Theme.corner
        color: Theme.card
    }
    MouseArea {
        anchors.fill: parent
    }

    Flickable {
        id: scroller

        width: parent.width
        height: parent.height - buttons.height
        contentHeight: parts.height + 2 * panel.pad
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        interactive: contentHeight > height
        onContentHeightChanged: if (refusal.visible)
            Qt.callLater(panel.reveal, refusal)

        Column {
            id: parts

            x: panel.pad
            y: panel.pad
            width: parent.width - 2 * panel.pad
            spacing: 10

            ColorField {
                id: field

                width: parent.width
                // What is left of the room, within reason.
                height: Math.max(120, Math.min(230, panel.highest - buttons.height - rest.height - 2 * panel.pad - parts.spacing))
                focus: true
                model: panel.model
                keyboardInUse: panel.keyboardInUse
            }

            Column {
                id: rest

                width: parent.width
                spacing: 0

                ColorSlider {
                    id: hue

                    width: parent.width
                    name: panel.texts.hue
                    value: panel.model.hue
                    maximumValue: 360
                    stepSize: 1
                    handleColor: panel.model.hueColor
                    keyboardInUse: panel.keyboardInUse
                    onMoved: target => panel.model.hue = target
                    onValueChanged: if (value !== panel.model.hue)
                        panel.model.hue = value

                    strip: Rectangle {
                        anchors.fill: parent
                        gradient: Gradient {
                            orientation: Gradient.Horizontal
                            GradientStop {
                                position: 0
                                color: "#ff0000"
                            }
                            GradientStop {
                                position: 1 / 6
                                color: "#ffff00"
                            }
                            GradientStop {
                                position: 2 / 6
                                color: "#00ff00"
                            }
                            GradientStop {
                                position: 3 / 6
                                color: "#00ffff"
                            }
                            GradientStop {
                                position: 4 / 6
                                color: "#0000ff"
                            }
                            GradientStop {
                                position: 5 / 6
                                color: "#ff00ff"
                            }
                            GradientStop {
                                position: 1
                                color: "#ff0000"
                            }
                        }
                    }
                }

                ColorSlider {
                    id: alpha

                    visible: panel.model.showAlpha
                    width: parent.width
                    name: panel.texts.opacity
                    value: panel.model.alpha
                    stepSize: 0.01
                    handleColor: panel.opaque
                    keyboardInUse: panel.keyboardInUse
                    onMoved: target => panel.model.alpha = target
                    onValueChanged: if (value !== panel.model.alpha)
                        panel.model.alpha = value

                    strip: [
                        Checks {
                            anchors.fill: parent
                        },
                        Rectangle {
                            anchors.fill: parent
                            gradient: Gradient {
                                orientation: Gradient.Horizontal
                                GradientStop {
                                    position: 0
                                    color: Qt.alpha(panel.opaque, 0)
                                }
                                GradientStop {
                                    position: 1
                                    color: panel.opaque
                                }
                            }
                        }
                    ]
                }

                Item {
                    width: 1
                    height: 6
                }

                Item {
                    id: compared

                    readonly property bool stacked: comparison.width + 16 + Math.max(codeText.implicitWidth, Theme.text(120)) > width

                    width: parent.width
                    height: stacked ? comparison.height + 12 + entry.height : Math.max(comparison.height, entry.height)

                    Item {
                        id: comparison

                        anchors.left: parent.left
                        width: Math.min(parent.width, Math.max(96, Math.ceil(Math.max(beforeText.implicitWidth, nowText.implicitWidth)) * 2 + 12))
                        height: captions.height + 4 + Theme.target

                        Row {
                            id: captions

                            width: parent.width

                            Caption {
                                id: beforeText

                                width: parent.width / 2
                                text: panel.texts.before
                            }
                            Caption {
                                id: nowText

                                width: parent.width / 2
                                text: panel.texts.now
                            }
                        }
                        Item {
                            anchors.bottom: parent.bottom
                            width: parent.width
                            height: Theme.target

                            Checks {
                                anchors.fill: parent
                            }
                            Row {
                                anchors.fill: parent

                                FocusScope {
                                    id: before

                                    readonly property bool accessibleControl: true

                                    width: parent.width / 2
                                    height: parent.height

                                    Keys.onSpacePressed: panel.model.startOver()

                                    Accessible.ignored: !visible
                                    Accessible.role: Accessible.Button
                                    Accessible.name: panel.texts.before
                                    Accessible.description: panel.model.startCode
                                    Accessible.focusable: true
                                    Accessible.onPressAction: panel.model.startOver()

                                    Rectangle {
                                        anchors.fill: parent
                                        color: panel.model.start
                                    }
                                    MouseArea {
                                        anchors.fill: parent
                                        onClicked: {
                                            before.forceActiveFocus(Qt.MouseFocusReason);
                                            panel.model.startOver();
                                        }
                                    }
                                }
                                Rectangle {
                                    width: parent.width / 2
                                    height: parent.height
                                    color: panel.model.color

                                    Accessible.ignored: !visible
                                    Accessible.role: Accessible.StaticText
                                    Accessible.focusable: false
                                    Accessible.name: panel.texts.now
                                    Accessible.description: panel.model.colorCode
                                }
                            }
                            // Rounds both off, with an edge for what is near the ground's colour.
                            Rectangle {
                                anchors.fill: parent
                                anchors.margins: -4
                                radius: 12
                                color: "transparent"
                                border.width: 4
                                border.color: Theme.card
                            }
                            Rectangle {
                                anchors.fill: parent
                                radius: 8
                                color: "transparent"
                                border.width: 1
                                border.color: "#33162433"
                            }
                            Rectangle {
                                visible: before.activeFocus && panel.keyboardInUse
                                anchors.left: parent.left
                                width: parent.width / 2
                                height: parent.height
                                radius: 8
                                color: "transparent"
                                border.width: 3
                                border.color: Theme.accent
                            }
                        }
                    }

                    Item {
                        id: entry

                        anchors.right: parent.right
                        anchors.bottom: parent.bottom
                        width: compared.stacked ? parent.width : parent.width - comparison.width - 16
                        height: codeText.height + 4 + box.height

                        Caption {
                            id: codeText

                            width: parent.width
                            text: panel.texts.code
                            horizontalAlignment: Text.AlignLeft
                        }
                        Rectangle {
                            id: box

                            anchors.bottom: parent.bottom
                            width: parent.width
                            height: Math.max(Theme.target, code.implicitHeight + 16)
                            radius: 8
                            color: Theme.ground
                            border.width: panel.model.refusal !== "" || (code.activeFocus) ? 2 : 1
                            border.color: panel.model.refusal !== "" ? Theme.danger : code.activeFocus ? Theme.accent : "#33162433"

                            LineInput {
                                id: code

                                // While what is typed goes to the model and comes back, the cursor stays where it is.
                                function show() {
                                    if (text !== panel.model.code)
                                        text = panel.model.code;
                                }

                                anchors.fill: parent
                                anchors.leftMargin: 12
                                anchors.rightMargin: 12
                                // A code reads from left to right in every language.
                                LayoutMirroring.enabled: false
                                maximumLength: 200
                                inputMethodHints: Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase | Qt.ImhPreferLatin
                                font.pixelSize: Theme.labelSize

                                Component.onCompleted: show()
                                onTextChanged: panel.model.code = text
                                Keys.onReturnPressed: panel.dialog.choose()
                                Keys.onEnterPressed: panel.dialog.choose()
                                onActiveFocusChanged: {
                                    if (offering)
                                        return;
                                    if (activeFocus)
                                        selectAll();
                                    else if (panel.dialog.shown && Window.activeFocusItem)
                                        panel.model.settle();
                                }

                                Accessible.ignored: !visible
                                Accessible.role: Accessible.EditableText
                                Accessible.name: panel.texts.code
                                Accessible.description: panel.model.refusal
                                Accessible.editable: true
                                Accessible.focusable: true
                            }
                        }
                    }
                }

                PlainText {
                    id: refusal

                    width: parent.width
                    visible: text !== ""
                    topPadding: 8
                    text: panel.model.refusal
                    color: Theme.danger
                    font.pixelSize: Theme.smallSize
                    lineHeight: 1.2
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignLeft

                    Accessible.ignored: !visible
                    Accessible.onIgnoredChanged: if (!Accessible.ignored)
                        panel.status.tellShown(refusal, true)
                    Accessible.role: Accessible.AlertMessage
                    Accessible.name: text
                }
            }
        }
    }

    Item {
        id: buttons

        readonly property bool stacked: Math.max(cancel.needed, choose.needed) > panel.width / 2

        anchors.bottom: parent.bottom
        width: parent.width
        height: stacked ? cancel.height + choose.height : Math.max(cancel.height, choose.height)

        Hairline {
            width: parent.width
        }
        PanelButton {
            id: cancel

            anchors.left: parent.left
            anchors.bottom: parent.bottom
            width: buttons.stacked ? parent.width : parent.width / 2
            title: panel.texts.cancel
            onTapped: panel.dialog.cancel()
        }
        PanelButton {
            id: choose

            anchors.right: parent.right
            anchors.top: parent.top
            width: buttons.stacked ? parent.width : parent.width / 2
            title: panel.texts.choose
            strong: true
            onTapped: panel.dialog.choose()
        }
    }

    readonly property color opaque: Qt.alpha(model.color, 1)

    Connections {
        target: panel.model
        function onChanged() {
            // Where a screen reader has set the value itself, the binding is gone.
            hue.value = panel.model.hue;
            alpha.value = panel.model.alpha;
            code.show();
        }
    }

    component Caption: PlainText {
        color: Theme.quiet
        font.pixelSize: Theme.smallSize
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }

    component Checks: Image {
        source: "image://glyph/checks/d3dae1"
        sourceSize: Qt.size(14, 14)
        fillMode: Image.Tile
        smooth: false
        Accessible.ignored: true
    }

    component PanelButton: FocusScope {
        id: button

        readonly property bool accessibleControl: true
        required property string title
        property bool strong: false
        readonly property real needed: label.implicitWidth + 24

        signal tapped

        height: Math.max(52, label.implicitHeight + 28)

        Keys.onSpacePressed: tapped()
        Keys.onReturnPressed: tapped()
        Keys.onEnterPressed: tapped()

        Accessible.ignored: !visible
        Accessible.role: Accessible.Button
        Accessible.name: title
        Accessible.focusable: true
        Accessible.onPressAction: tapped()

        Rectangle {
            anchors.fill: parent
            anchors.margins: 4
            radius: Theme.corner - 4
            color: area.pressed ? Theme.pressed : Theme.card
            border.width: button.activeFocus && panel.keyboardInUse ? 2 : 0
            border.color: Theme.accent
        }
        PlainText {
            id: label

            anchors.centerIn: parent
            text: button.title
            color: Theme.accent
            font.pixelSize: Theme.titleSize
            font.weight: button.strong ? Font.DemiBold : Font.Normal
            Accessible.ignored: true
        }
        MouseArea {
            id: area

            anchors.fill: parent
            onClicked: button.tapped()
        }
    }
}
