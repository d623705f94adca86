// SPDX-License-Identifier: MIT
import QtQuick

// Shows where the view is in a list while it moves.
Rectangle {
    required property Flickable list

    readonly property real share: list.visibleArea.heightRatio

    anchors.right: parent.right
    anchors.rightMargin: 3
    y: list.y + 4 + list.visibleArea.yPosition * (list.height - 8)
    width: 4
    height: Math.max(32, share * (list.height - 8))
    radius: 2
    color: Theme.quiet
    visible: share < 1 && opacity > 0
    opacity: list.moving ? 0.5 : 0

    Behavior on opacity {
        enabled: Theme.quick > 0
        NumberAnimation {
            duration: Theme.quick * 2
        }
    }
}
