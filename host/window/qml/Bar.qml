// SPDX-License-Identifier: MIT
import QtQuick

// The navigation bar of a page: the way back, the title or its picture, and the page's own buttons.
Item {
    id: bar

    required property QtObject page
    property bool keyboardInUse: false
    property bool lifted: false
    // Whether the page that leads here is out of sight, so that there is a way back to it.
    property bool leads: true
    property alias backItem: back
    property alias leftItem: left
    property alias rightItem: right

    signal backTapped
    signal barTapped(string side, Item button)

    readonly property real side: Theme.sideInset(width) - 8
    // The title comes before the name of the page that the way back leads to.
    readonly property bool tight: !title.pictured && titleLength.advanceWidth > width - 2 * (side + Math.max(back.wholeWidth, right.visible ? right.width : 0)) - 8
    readonly property real sidesWidth: Math.max(leading.width, right.visible ? right.width : 0)

    implicitHeight: Math.max(52, Math.ceil(Theme.barSize * 1.3) + 24)

    // What goes from sight to wholly under an opaque rectangle in one frame is not erased by the software renderer: it
    // leaves out the place where that was. One with a radius is never taken for opaque; below 1 it is drawn square.
    Rectangle {
        anchors.fill: parent
        radius: 0.5
        color: Theme.ground
    }
    Hairline {
        anchors.bottom: parent.bottom
        width: parent.width
        color: Qt.darker(Theme.hairline, 1.1)
        opacity: bar.lifted ? 1 : 0
        Behavior on opacity {
            enabled: Theme.quick > 0
            NumberAnimation {
                duration: Theme.quick
            }
        }
    }

    Item {
        id: leading

        anchors.left: parent.left
        anchors.leftMargin: bar.side
        height: parent.height
        width: (back.visible ? back.width : 0) + (left.visible ? left.width : 0)

        BarButton {
            id: back

            visible: bar.leads && bar.page.backButton.title !== undefined
            anchors.verticalCenter: parent.verticalCenter
            anchors.left: parent.left
            title: bar.page.backButton.title ?? ""
            back: true
            compact: bar.tight
            longest: bar.width * 0.34
            keyboardInUse: bar.keyboardInUse
            onTapped: bar.backTapped()
        }
        BarButton {
            id: left

            visible: bar.page.leftButton.title !== undefined
            anchors.verticalCenter: parent.verticalCenter
            anchors.right: parent.right
            title: bar.page.leftButton.title ?? ""
            done: bar.page.leftButton.done ?? false
            longest: bar.width * 0.34
            keyboardInUse: bar.keyboardInUse
            onTapped: bar.barTapped("left", left)
        }
    }

    Item {
        id: title

        readonly property real room: bar.width - 2 * (bar.side + bar.sidesWidth) - 8
        readonly property bool pictured: bar.page.titleImage !== ""

        anchors.centerIn: parent
        width: room
        height: parent.height

        Accessible.ignored: !visible
        Accessible.role: Accessible.Heading
        Accessible.name: bar.page.title

        TextMetrics {
            id: titleLength

            font.pixelSize: Theme.barSize
            font.weight: Font.DemiBold
            text: bar.page.title
        }
        PlainText {
            id: titleText

            anchors.centerIn: parent
            width: parent.width
            visible: !title.pictured
            horizontalAlignment: Text.AlignHCenter
            text: bar.page.title
            color: Theme.title
            font.pixelSize: Theme.barSize
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 14
            font.weight: Font.DemiBold
            elide: Text.ElideRight
            Accessible.ignored: true
        }
        Image {
            id: picture

            anchors.centerIn: parent
            visible: title.pictured
            // Between two long buttons it is smaller.
            height: 30
            width: Math.max(0, Math.min(implicitWidth, title.room))
            sourceSize.height: Math.round(height * Screen.devicePixelRatio)
            fillMode: Image.PreserveAspectFit
            source: title.pictured ? bar.page.titleImage + (bar.page.titleImageIsTemplate ? "/" + Theme.hex(Theme.accent) : "") : ""
            opacity: bar.page.titleAlpha
            Accessible.ignored: true

            Behavior on opacity {
                enabled: bar.page.titleFade > 0
                NumberAnimation {
                    duration: Theme.reducedMotion ? 0 : bar.page.titleFade
                    easing.type: Easing.InOutQuad
                }
            }
        }
    }

    BarButton {
        id: right

        visible: bar.page.rightButton.title !== undefined
        anchors.right: parent.right
        anchors.rightMargin: bar.side
        anchors.verticalCenter: parent.verticalCenter
        title: bar.page.rightButton.title ?? ""
        done: bar.page.rightButton.done ?? false
        longest: bar.width * 0.42
        keyboardInUse: bar.keyboardInUse
        onTapped: bar.barTapped("right", right)
    }
}
