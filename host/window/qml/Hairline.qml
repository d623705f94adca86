// SPDX-License-Identifier: MIT
import QtQuick

// A line as thin as the screen can draw it. The software renderer draws an opaque rectangle anew only where that one
// changes, so that one which is thinner than a point is lost when its ground is drawn anew. One with a radius is never
// taken for opaque; below 1 it is drawn square.
Rectangle {
    height: 1 / Screen.devicePixelRatio
    radius: 0.5
    color: Theme.hairline
}
