// SPDX-License-Identifier: MIT
import QtQuick
import Qt.labs.qmlmodels

// One page: its bar and its rows, or the previews that it has in their place.
FocusScope {
    id: view

    required property QtObject page
    required property QtObject status
    required property QtObject rowOrder

    // The page that stands beside this one, and the class of the one that the rows here may stand for.
    property Item neighbour: null
    property string detailClass: ""
    property alias leads: bar.leads
    property alias list: list
    property alias bar: bar
    // The grid of previews on a page that has one, else null.
    readonly property Item grid: previews.item
    readonly property Flickable scroller: grid ? grid.flickable : list

    // A line above the rows, and one over them while the page waits to show other values.
    property string notice: ""
    property string waiting: ""
    // What the store could not do; null where another page tells it.
    property QtObject trouble: null
    property var keptPlace: null

    signal backTapped
    signal barTapped(string side, Item button)

    // Where the page is scrolled to; and how to come back there.
    function place() {
        const top = list.indexAt(list.width / 2, list.contentY + 1);
        return {
            top: top,
            offset: top >= 0 ? list.contentY - list.itemAtIndex(top).y : list.contentY - list.originY
        };
    }
    function takePlace() {
        keptPlace = grid ? null : place();
    }
    function comeBack() {
        const kept = keptPlace;
        keptPlace = null;
        if (!kept || kept.top < 0)
            return;
        list.forceLayout();
        const now = place();
        // A scroll that goes on is left alone where no row has come or gone.
        if (now.top !== kept.top || now.offset !== kept.offset)
            list.keep(kept);
    }
    // Before the page goes: rows that are still being made must not outlive it.
    function close() {
        list.model = null;
    }

    // Focus goes round: the bar's buttons, then the rows, in the order in which they are seen, then the page beside
    // this one.
    function moveFocus(step) {
        const buttons = barButtons();
        const onBar = buttons.findIndex(item => item.activeFocus);
        const row = onBar < 0 && !grid ? list.rows.nextFocusable(list.currentIndex, step) : -1;
        const button = onBar >= 0 ? onBar + step : step < 0 ? buttons.length - 1 : -1;
        if (row >= 0)
            list.focusRow(row);
        else if (button >= 0 && button < buttons.length)
            buttons[button].forceActiveFocus(Qt.TabFocusReason);
        else if (onBar >= 0 && step > 0)
            enterBody(step);
        else
            (neighbour ?? view).enter(step);
    }
    // The focus comes to this page, at its beginning or its end.
    function enter(step) {
        const buttons = barButtons();
        if (step > 0 && buttons.length > 0)
            buttons[0].forceActiveFocus(Qt.TabFocusReason);
        else
            enterBody(step);
    }
    function enterBody(step) {
        const row = list.rows.nextFocusable(step > 0 ? -1 : list.count, step);
        if (grid)
            grid.forceActiveFocus(Qt.TabFocusReason);
        else if (row >= 0)
            list.focusRow(row);
        else
            barButtons()[0]?.forceActiveFocus(Qt.TabFocusReason);
    }
    function barButtons() {
        return [bar.backItem, bar.leftItem, bar.rightItem, banner.actionItem, banner.closeItem].filter(item => item.visible);
    }

    Keys.onPressed: event => {
        const plain = event.modifiers === Qt.NoModifier || event.modifiers === Qt.KeypadModifier;
        if (event.key === Qt.Key_Tab || (event.key === Qt.Key_Down && plain)) {
            moveFocus(1);
        } else if (event.key === Qt.Key_Backtab || (event.key === Qt.Key_Up && plain)) {
            moveFocus(-1);
        } else if (event.key === Qt.Key_PageDown || event.key === Qt.Key_PageUp) {
            list.scrollBy((event.key === Qt.Key_PageDown ? 0.85 : -0.85) * list.height);
        } else if (event.key === Qt.Key_Home && plain) {
            list.focusRow(list.rows.nextFocusable(-1, 1));
        } else if (event.key === Qt.Key_End && plain) {
            list.focusRow(list.rows.nextFocusable(list.count, -1));
        } else if (event.key === Qt.Key_Escape && list.editing) {
            list.rest();
        } else if (event.key === Qt.Key_Escape && banner.visible) {
            view.trouble.dismiss();
        } else if (event.key === Qt.Key_Escape || event.key === Qt.Key_Back || (event.key === Qt.Key_Left && event.modifiers & Qt.AltModifier) || (event.key === Qt.Key_Backspace && plain && !list.editing)) {
            view.backTapped();
        } else {
            return;
        }
        event.accepted = true;
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.ground
    }

    // Holds the focus while no row does.
    Item {
        id: rest
    }

    // The bar is read before the rows, and lies above them.
    Bar {
        id: bar

        z: 1
        width: parent.width
        page: view.page
        keyboardInUse: view.status.keyboardInUse
        lifted: view.scroller.contentY > view.scroller.originY + 4
        onBackTapped: view.backTapped()
        onBarTapped: (side, button) => view.barTapped(side, button)
    }

    Banner {
        id: notice

        z: 1
        anchors.top: banner.bottom
        width: parent.width
        text: view.notice
        ground: Theme.selected
        textColor: Theme.title
        keyboardInUse: view.status.keyboardInUse
        onDismissed: view.status.dismissHint()
        onAppeared: view.status.tellShown(notice, true)
    }

    Banner {
        id: banner

        z: 1
        anchors.top: bar.bottom
        width: parent.width
        text: view.trouble ? view.trouble.text : ""
        detail: view.trouble ? view.trouble.detail : ""
        action: view.trouble ? view.trouble.action : ""
        closing: view.trouble ? view.trouble.dismissal : ""
        keyboardInUse: view.status.keyboardInUse
        onActed: view.trouble.act()
        onDismissed: view.trouble.dismiss()
        // The focus does not go with it.
        onVisibleChanged: if (!visible && focus)
            view.grid ? view.grid.forceActiveFocus() : list.forceActiveFocus()
        onAppeared: view.status.tellShown(banner, true)
    }

    // Over the rows, since it comes while one of them is under the finger.
    Banner {
        id: waitingLine

        z: 2
        anchors.top: notice.bottom
        width: parent.width
        text: view.waiting
        passive: true
        ground: Theme.selected
        textColor: Theme.title
        onAppeared: view.status.tellShown(waitingLine, true)
    }

    ListView {
        id: list

        readonly property QtObject rows: view.page.rows
        readonly property bool keyboardInUse: view.status.keyboardInUse
        readonly property string detailClass: view.detailClass
        readonly property bool editing: view.Window.activeFocusItem instanceof TextInput

        // On a page that has just come up the focus starts at its first row; a text is not opened for that.
        function start() {
            if (currentIndex >= 0)
                return;
            const first = rows.nextFocusable(-1, 1);
            if (first >= 0 && rows.kindAt(first) !== "text")
                currentIndex = first;
        }
        // A row is used: it takes the focus, and so does no other.
        function take(index) {
            currentIndex = index;
            forceActiveFocus(Qt.MouseFocusReason);
        }
        function focusRow(index) {
            if (index < 0)
                return;
            bringIn(index);
            currentIndex = index;
            forceActiveFocus(Qt.TabFocusReason);
        }
        // Makes a row to be seen that may be so far away that there is no item for it yet.
        function bringIn(index) {
            positionViewAtIndex(index, ListView.Contain);
            reveal(index);
        }
        // The row that got the focus, from whom ever, is the current one and to be seen.
        function follow(index) {
            currentIndex = index;
            reveal(index);
        }
        function reveal(index) {
            const item = itemAtIndex(index);
            if (!item)
                return;
            const gap = 12;
            const above = item.y - gap - contentY;
            const below = item.y + item.height + gap - (contentY + height);
            if (above < 0)
                scrollBy(above);
            else if (below > 0)
                scrollBy(Math.min(below, above));
        }
        // Brings a row to the upper part of the view, where what belongs to it is seen below.
        function show(index) {
            // Not back to where it was before the window took its size.
            resettling.stop();
            resettling.kept = null;
            positionViewAtIndex(index, ListView.Beginning);
            scrollBy(-height * 0.15);
            focusRow(index);
        }
        function scrollBy(distance) {
            cancelFlick();
            const lowest = originY + Math.max(0, contentHeight - height);
            contentY = Math.max(originY, Math.min(lowest, contentY + distance));
        }
        function keep(place) {
            if (place.top < 0)
                return;
            forceLayout();
            positionViewAtIndex(place.top, ListView.Beginning);
            scrollBy(place.offset);
            if (place.follows)
                reveal(currentIndex);
        }
        // A function of this list alone: of calls that wait for one and the same function only the last is made.
        function restoreOrder() {
            view.rowOrder.restore(contentItem);
        }
        // No row has the focus; the next one that the keys reach is the neighbour of the last.
        function rest() {
            view.forceActiveFocus();
            restItem.forceActiveFocus();
        }
        readonly property Item restItem: rest

        // Lines that come or go above a page that is scrolled leave its rows where they are.
        readonly property real pushed: banner.height + notice.height
        property real pushedBefore: 0
        onPushedChanged: {
            const moved = pushed - pushedBefore;
            pushedBefore = pushed;
            if (!resettling.kept && contentY > originY + 1)
                contentY = Math.max(originY, contentY + moved);
        }

        anchors.top: notice.bottom
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        focus: !view.page.previews
        visible: !view.page.previews
        model: rows
        currentIndex: -1
        // Up to 200 rows all stand ready, so that a screen reader finds each of them; beyond, those near the view.
        cacheBuffer: count <= 200 ? 1000000 : 1200
        // The buffer is filled in the direction of the last movement alone, which leaves out the rows above one that the
        // page opens at.
        displayMarginBeginning: count <= 200 ? cacheBuffer : 0
        highlightFollowsCurrentItem: false
        keyNavigationEnabled: false
        boundsBehavior: Flickable.DragAndOvershootBounds
        maximumFlickVelocity: 6000
        header: Item {
            width: 1
            height: 10
        }
        footer: Item {
            width: 1
            height: 36
        }
        onCountChanged: Qt.callLater(start)
        // Rows become higher or lower in a window of another width; the one at the top stays there.
        onWidthChanged: if (resettling.kept)
            keep(resettling.kept)

        Connections {
            target: view.status
            function onResizing() {
                // A window may be told of one size more than once.
                if (resettling.kept)
                    return;
                const current = list.currentItem;
                // What has the focus is to be seen, if it was.
                resettling.kept = Object.assign(view.place(), {
                    follows: current !== null && current.y + current.height > list.contentY && current.y < list.contentY + list.height
                });
                resettling.start();
            }
        }
        Timer {
            id: resettling

            property var kept: null

            interval: 0
            onTriggered: {
                list.keep(kept);
                kept = null;
            }
        }

        // Rows off the window are made one after the other, and each comes behind all others.
        Connections {
            target: list.contentItem
            function onChildrenChanged() {
                Qt.callLater(list.restoreOrder);
            }
        }

        // Rows make way together; a block that comes fades in behind them, one that goes fades out.
        add: Transition {
            enabled: list.rows.animated && Theme.move > 0
            SequentialAnimation {
                // No pause: for one the toolkit stops its clock, and complains where what pauses goes.
                NumberAnimation {
                    property: "opacity"
                    from: 0
                    to: 0
                    duration: Theme.move * 0.3
                }
                NumberAnimation {
                    property: "opacity"
                    to: 1
                    duration: Theme.move * 0.7
                }
            }
        }
        remove: Transition {
            enabled: list.rows.animated && Theme.move > 0
            NumberAnimation {
                property: "opacity"
                to: 0
                duration: Theme.move * 0.5
            }
        }
        displaced: Transition {
            enabled: list.rows.animated && Theme.move > 0
            NumberAnimation {
                property: "y"
                duration: Theme.move
                easing.type: Easing.OutCubic
            }
            // A row that was still fading in when it is moved on.
            NumberAnimation {
                property: "opacity"
                to: 1
                duration: Theme.move * 0.5
            }
        }

        // One for all rows: it goes to the one that has the focus.
        FocusRing {
            readonly property Item row: list.currentItem

            parent: row && row.card ? row.card : list.contentItem
            visible: list.keyboardInUse && row !== null && row.activeFocus
        }

        delegate: DelegateChooser {
            role: "kind"
            DelegateChoice {
                roleValue: "group"
                GroupRow {}
            }
            DelegateChoice {
                roleValue: "footer"
                FooterRow {}
            }
            DelegateChoice {
                roleValue: "link"
                LinkRow {}
            }
            DelegateChoice {
                roleValue: "switch"
                SwitchRow {}
            }
            DelegateChoice {
                roleValue: "text"
                TextRow {}
            }
            DelegateChoice {
                roleValue: "button"
                ButtonRow {}
            }
            DelegateChoice {
                roleValue: "color"
                ColorRow {}
            }
            DelegateChoice {
                roleValue: "staticText"
                StaticTextRow {}
            }
            DelegateChoice {
                roleValue: "slider"
                SliderRow {}
            }
            DelegateChoice {
                roleValue: "typedSlider"
                SliderRow {
                    typed: true
                }
            }
            DelegateChoice {
                roleValue: "stepper"
                StepperRow {}
            }
            DelegateChoice {
                roleValue: "segment"
                SegmentRow {}
            }
            DelegateChoice {
                roleValue: "picker"
                PickerRow {}
            }
            DelegateChoice {
                roleValue: "pickerItem"
                PickerItemRow {}
            }
            DelegateChoice {
                PlaceholderRow {}
            }
        }
    }

    ScrollMark {
        list: list
    }

    Loader {
        id: previews

        anchors.fill: list
        focus: view.page.previews !== null
        Component.onCompleted: if (view.page.previews)
            setSource("BackdropGrid.qml", {
                previews: view.page.previews,
                status: view.status,
                focus: true
            })
    }
}
