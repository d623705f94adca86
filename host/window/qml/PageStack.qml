// SPDX-License-Identifier: MIT
import QtQuick

// The stack of pages. A page that is pushed slides over the one beneath, which moves aside at a slower pace; one that
// is popped slides off again. A swipe from the edge moves the top page with the finger. In a wide window the first page
// keeps a column of its own, and the others are stacked beside it.
FocusScope {
    id: stack

    required property QtObject navigation
    required property QtObject status
    required property QtObject rowOrder
    required property QtObject trouble
    required property QtObject elsewhere
    required property var texts

    readonly property int depth: navigation.depth
    readonly property Item topView: pages.count >= depth && depth > 0 ? pages.itemAt(depth - 1) : null
    readonly property Item firstView: pages.count > 0 ? pages.itemAt(0) : null
    readonly property bool columns: width >= Theme.columnsFrom
    readonly property real firstWidth: columns ? Math.round(Math.max(300, Math.min(400, width * 0.36))) : width
    // The bar button that was pressed last, which a popover points at.
    property Item pressedItem: null
    readonly property Item anchorItem: pressedItem && pressedItem.visible ? pressedItem : topView ? topView.bar.rightItem : null
    readonly property int direction: LayoutMirroring.enabled ? -1 : 1

    function revealRow(index) {
        topView.list.show(index);
    }

    // Pages that show what another program has set stay as they lie, and nothing on them moves.
    Connections {
        target: stack.elsewhere
        function onAboutToRebuild() {
            Theme.still = true;
            for (let index = 0; index < pages.count; ++index)
                pages.itemAt(index)?.takePlace();
        }
        function onRebuilt() {
            for (let index = 0; index < pages.count; ++index)
                pages.itemAt(index)?.comeBack();
            Theme.still = false;
            stack.status.tellQuietly(stack.topView, stack.texts.changedElsewhere);
        }
    }

    onTopViewChanged: if (topView)
        topView.forceActiveFocus()

    Repeater {
        id: pages

        model: stack.navigation

        PageView {
            id: view

            required property int index

            // It stands beside the others, or is one of those others.
            readonly property bool beside: stack.columns && index === 0
            readonly property bool detail: stack.columns && index > 0
            readonly property real leftEdge: detail ? stack.firstWidth : 0
            // How far the page is off the screen: 0 on it, 1 beside it.
            property real shift: 0
            // How far the page above covers this one.
            readonly property Item above: index + 1 < pages.count ? pages.itemAt(index + 1) : null
            readonly property real covered: above && !beside ? 1 - above.shift : 0
            readonly property real aside: shift * width - 0.28 * covered * width
            // Another program has changed what the page shows.
            readonly property bool isOld: stack.topView === view && stack.elsewhere && stack.elsewhere.changed

            function selectedIndex() {
                return list.rows.indexOpening(detailClass);
            }
            function showSelected() {
                if (beside && selectedIndex() >= 0)
                    list.bringIn(selectedIndex());
            }
            function slideTo(target) {
                slide.to = target;
                slide.restart();
            }

            status: stack.status
            notice: stack.topView === view ? stack.status.hint : ""
            waiting: isOld ? stack.texts.changedElsewhere : ""
            trouble: stack.topView === view ? stack.trouble : null
            rowOrder: stack.rowOrder
            width: beside ? stack.firstWidth : stack.width - leftEdge
            height: stack.height
            x: stack.direction > 0 ? leftEdge + aside : stack.width - leftEdge - width - aside
            // What slides in a column comes from under the other one.
            z: beside ? pages.count + 1 : index
            visible: covered < 1
            enabled: !page.leaving

            leads: index > (stack.columns ? 1 : 0)
            detailClass: beside ? stack.navigation.detailClass : ""
            neighbour: !stack.columns || stack.topView === stack.firstView ? null : beside ? stack.topView : stack.firstView

            onDetailClassChanged: selection.restart()
            onBesideChanged: selection.restart()
            onBackTapped: {
                if (detail && index === 1)
                    stack.firstView.list.focusRow(stack.firstView.selectedIndex());
                else if (!beside)
                    stack.navigation.back();
            }
            onBarTapped: (side, button) => {
                stack.pressedItem = button;
                stack.navigation.pressBar(side, page);
            }

            Component.onCompleted: if (page.arriving && Theme.slide > 0 && !(detail && index === 1) && stack.Window.visibility !== Window.Hidden) {
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
                target: view.list
                // Also while the page goes, when nothing is to wait for it any more.
                function onCountChanged() {
                    if (view.beside && !view.page.leaving)
                        selection.restart();
                }
            }
            // Once the rows have their places. A timer goes with its page, which a call put off does not.
            Timer {
                id: selection

                interval: 0
                onTriggered: view.showSelected()
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
            // The edge of the page that slides, and of the column that stays.
            Rectangle {
                visible: view.beside
                anchors.right: parent.right
                width: 1
                height: parent.height
                color: Theme.hairline
            }
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
                enabled: view.leads

                DragHandler {
                    id: swipe

                    property real last: 0
                    property bool outward: false
                    // Where the page was when the finger took it, maybe on its way.
                    property real from: 0

                    target: null
                    yAxis.enabled: false
                    onActiveChanged: {
                        if (active) {
                            slide.stop();
                            from = view.shift;
                            last = 0;
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
                        view.shift = Math.max(0, Math.min(1, from + along / view.width));
                    }
                }
            }
        }
    }

    // Until a page is chosen, the column beside the list shows the picture of the first page's title.
    Image {
        readonly property QtObject page: stack.firstView ? stack.firstView.page : null

        visible: stack.columns && stack.depth < 2 && page !== null && page.titleImage !== ""
        x: (stack.direction > 0 ? stack.firstWidth : 0) + (stack.width - stack.firstWidth - width) / 2
        y: (stack.height - height) / 2
        z: -1
        height: 56
        sourceSize.height: Math.round(height * Screen.devicePixelRatio)
        fillMode: Image.PreserveAspectFit
        opacity: 0.22
        source: visible ? page.titleImage + (page.titleImageIsTemplate ? "/" + Theme.hex(Theme.accent) : "") : ""
        Accessible.ignored: true
    }
}
