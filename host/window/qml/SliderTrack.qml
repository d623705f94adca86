// SPDX-License-Identifier: MIT
import QtQuick

// A knob on a track. It goes with a finger that moves along the track, and tells where it was let go; a finger that
// moves across it scrolls the page and changes nothing.
Item {
    id: track

    required property real level
    required property real minimum
    required property real maximum
    required property color tint
    required property color restTint
    property bool usable: true
    // The value that the knob is put at for a place of the finger.
    property var nearest: value => value

    readonly property bool dragged: area.dragging
    property real draggedTo: 0
    readonly property real shown: dragged ? draggedTo : level
    readonly property bool mirrored: LayoutMirroring.enabled
    readonly property real share: maximum > minimum ? (shown - minimum) / (maximum - minimum) : 0
    readonly property real span: Math.max(1, width - knob.width)

    signal grabbed
    signal letGo(real value)

    function valueAt(x) {
        const along = Math.max(0, Math.min(1, (x - knob.width / 2) / span));
        return nearest(minimum + (mirrored ? 1 - along : along) * (maximum - minimum));
    }

    implicitHeight: knob.height

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        height: 4
        radius: 2
        color: track.restTint
    }
    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        x: track.mirrored ? knob.x + knob.width / 2 : 0
        width: track.mirrored ? parent.width - x : knob.x + knob.width / 2
        height: 4
        radius: 2
        color: track.tint
    }
    Rectangle {
        id: knob

        anchors.verticalCenter: parent.verticalCenter
        x: (track.mirrored ? 1 - track.share : track.share) * track.span
        width: 26
        height: 26
        radius: 13
        color: area.pressed ? Theme.ground : "#ffffff"
        border.width: 1
        border.color: Theme.faint
    }

    MouseArea {
        id: area

        property bool dragging: false
        property point start
        property bool onKnob: false
        // Where on the knob the finger is, so that the knob does not jump under it.
        property real grip: 0

        anchors.fill: parent
        anchors.topMargin: -(Theme.target - parent.height) / 2
        anchors.bottomMargin: anchors.topMargin
        enabled: track.usable
        preventStealing: dragging

        onPressed: mouse => {
            const offset = mouse.x - (knob.x + knob.width / 2);
            start = Qt.point(mouse.x, mouse.y);
            onKnob = Math.abs(offset) <= Theme.target / 2;
            grip = onKnob ? offset : 0;
        }
        onPositionChanged: mouse => {
            const along = Math.abs(mouse.x - start.x);
            if (!dragging && along >= Qt.styleHints.startDragDistance && along > Math.abs(mouse.y - start.y)) {
                dragging = true;
                track.grabbed();
            }
            if (dragging)
                track.draggedTo = track.valueAt(mouse.x - grip);
        }
        // The knob stays with the finger until its value is the row's.
        onReleased: mouse => {
            if (dragging)
                track.letGo(track.draggedTo);
            else if (!onKnob && containsMouse)
                track.letGo(track.valueAt(mouse.x));
            dragging = false;
        }
        onCanceled: dragging = false
    }
}
