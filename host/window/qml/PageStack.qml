// SPDX-License-Identifier: MIT
import QtQuick

// The stack of pages. A page that is pushed slides over the one beneath, which moves aside at a slower pace; one that
// is popped slides off again. A swipe from the edge moves the top page with the finger.
FocusScope {
    id: stack

    required property QtObject navigation
    required property QtObject status
    required property QtObject rowOrder

    readonly property int depth: navigation.depth
    readonly property Item topView: pages.count >= depth && depth > 0 ? pages.itemAt(depth - 1) : null
    readonly property Item rightBarItem: topView ? topView.bar.rightItem : null
    readonly property int direction: LayoutMirroring.enabled ? -1 : 1

    function revealRow(index) {
        topView.list.show(index);
    }

    onTopViewChanged: if (topView)
        topView.forceActiveFocus()

    Repeater {
        id: pages

        model: stack.navigation

        PageView {
            id: view

            required property int index

            // How far the page is off the screen: 0 on it, 1 beside it.
            property real shift: 0
            // How far the page above covers this one.
            readonly property Item above: index + 1 < pages.count ? pages.itemAt(index + 1) : null
            readonly property real covered: above ? 1 - above.shift : 0

            function slideTo(target) {
                slide.to = target;
                slide.restart();
            }

            status: stack.status
            rowOrder: stack.rowOrder
            width: stack.width
            height: stack.height
            x: stack.direction * (shift * width - 0.28 * covered * width)
            z: index
            visible: covered < 1
            enabled: !page.leaving

            onBackTapped: stack.navigation.back()
            onBarTapped: side => stack.navigation.pressBar(side)

            Component.onCompleted: if (page.arriving && Theme.slide > 0 && stack.Window.visibility !== Window.Hidden) {
                shift = 1;
                slideTo(0);
            }

            NumberAnimation {
                id: slide

                target: view
                property: "shift"
                duration: Theme.slide
                easing.type: Easing.OutCubic
                onFinished: {
                    if (!view.page.leaving)
                        return;
                    view.close();
                    stack.navigation.pageIsGone(view.page);
                }
            }
            Connections {
                target: view.page
                function onLeavingChanged() {
                    view.slideTo(1);
                }
            }

            Rectangle {
                anchors.fill: parent
                color: "#000000"
                opacity: 0.06 * view.covered
                visible: opacity > 0
            }
            // The edge of the page that slides.
            Rectangle {
                visible: view.shift > 0
                anchors.right: parent.left
                width: 1
                height: parent.height
                color: Theme.hairline
            }

            Item {
                id: edge

                anchors.left: parent.left
                width: 20
                height: parent.height
                enabled: view.index > 0

                DragHandler {
                    id: swipe

                    property real last: 0
                    property bool outward: false

                    target: null
                    yAxis.enabled: false
                    onActiveChanged: {
                        if (active) {
                            slide.stop();
                        } else if (view.shift > 0.4 || (outward && view.shift > 0.1)) {
                            stack.navigation.back();
                        } else {
                            view.slideTo(0);
                        }
                    }
                    onActiveTranslationChanged: {
                        const along = activeTranslation.x * stack.direction;
                        if (!active)
                            return;
                        outward = along > last;
                        last = along;
                        view.shift = Math.max(0, Math.min(1, along / view.width));
                    }
                }
            }
        }
    }
}
