// SPDX-License-Identifier: MIT
import QtQuick

// A few choices side by side, one of which stands out; one under the other where their titles don't fit.
Item {
    id: control

    required property var titles
    required property int chosen

    readonly property bool stacked: titles.length * (widestOf(titles, metrics.font.pixelSize) + 20) > width - 4
    readonly property Item chosenItem: chosen >= 0 && chosen < choices.count ? choices.itemAt(chosen) : null
    readonly property real choiceHeight: Math.max(34, metrics.height + 14)
    // The first look is not a change.
    property bool ready: false

    signal picked(int choice)

    // The size is given so that the width is found anew when it changes.
    function widestOf(titles, size) {
        return titles.reduce((widest, title) => Math.max(widest, metrics.advanceWidth(title)), 0);
    }

    implicitHeight: grid.height + 4
    Component.onCompleted: Qt.callLater(() => ready = true)

    FontMetrics {
        id: metrics

        font.pixelSize: Theme.text(14)
        font.weight: Font.DemiBold
    }

    Rectangle {
        anchors.fill: parent
        radius: 10
        color: Theme.ground
    }
    Rectangle {
        visible: control.chosenItem !== null
        x: control.chosenItem ? grid.x + control.chosenItem.x : 0
        y: control.chosenItem ? grid.y + control.chosenItem.y : 0
        width: control.chosenItem ? control.chosenItem.width : 0
        height: control.chosenItem ? control.chosenItem.height : 0
        radius: 8
        color: Theme.card
        border.width: 1
        border.color: Theme.hairline

        Behavior on x {
            enabled: control.ready && !Theme.reducedMotion
            NumberAnimation {
                duration: Theme.quick
                easing.type: Easing.OutCubic
            }
        }
    }

    Grid {
        id: grid

        x: 2
        y: 2
        columns: control.stacked ? 1 : Math.max(1, control.titles.length)

        Repeater {
            id: choices

            model: control.titles

            Item {
                id: choice

                required property int index
                required property string modelData
                readonly property bool accessibleControl: true
                readonly property bool isChosen: index === control.chosen

                width: (control.width - 4) / grid.columns
                height: control.stacked ? Math.max(Theme.target, title.contentHeight + 20) : control.choiceHeight

                Accessible.ignored: !visible
                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData
                Accessible.checkable: true
                Accessible.checked: isChosen
                Accessible.onPressAction: control.picked(index)

                PlainText {
                    id: title

                    anchors.centerIn: parent
                    width: parent.width - 8
                    horizontalAlignment: Text.AlignHCenter
                    text: choice.modelData
                    color: choice.isChosen ? Theme.title : Theme.quiet
                    opacity: area.pressed ? 0.5 : 1
                    font.pixelSize: metrics.font.pixelSize
                    font.weight: choice.isChosen ? Font.DemiBold : Font.Normal
                    wrapMode: control.stacked ? Text.Wrap : Text.NoWrap
                    Accessible.ignored: true
                }
                MouseArea {
                    id: area

                    anchors.fill: parent
                    anchors.topMargin: control.stacked ? 0 : -(Theme.target - parent.height) / 2
                    anchors.bottomMargin: anchors.topMargin
                    onClicked: control.picked(choice.index)
                }
            }
        }
    }
}
