// SPDX-License-Identifier: MIT
import QtQuick

// The ground of a row: a piece of its group's card, with the corners round where the card ends.
Item {
    id: card

    property bool first: true
    property bool last: true
    property color color: Theme.card

    Rectangle {
        anchors.fill: parent
        radius: card.first || card.last ? Theme.corner : 0
        color: card.color
    }
    Rectangle {
        visible: !card.first && card.last
        width: parent.width
        height: Theme.corner
        color: card.color
    }
    Rectangle {
        visible: card.first && !card.last
        width: parent.width
        height: Theme.corner
        anchors.bottom: parent.bottom
        color: card.color
    }
}
