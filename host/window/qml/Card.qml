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
    // Makes the corners at one end square, where the card goes on.
    Rectangle {
        visible: card.first !== card.last
        y: card.first ? parent.height - height : 0
        width: parent.width
        height: Theme.corner
        color: card.color
    }
}
