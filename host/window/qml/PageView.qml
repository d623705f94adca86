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
        // A list that has no height yet begins at its top.
        const moved = list.height > 0 ? list.contentY - list.originY : 0;
        const top = moved < 1 ? -1 : list.indexAt(list.width / 2, list.contentY + 1);
        return {
            top: top,
            offset: top >= 0 ? list.contentY - list.itemAtIndex(top).y : Math.max(0, moved)
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
            list.page(event.key === Qt.Key_PageDown ? 1 : -1);
        } else if (event.key === Qt.Key_Home && plain) {
            list.focusRow(list.rows.nextFocusable(-1, 1));
        } else if (event.key === Qt.Key_End && plain) {
            list.focusRow(list.rows.nextFocusable(list.count, -1));
        } else if (event.key === Qt.Key_Escape && list.editing) {
            list.rows.endEditing(list.currentIndex);
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
        readonly property bool editing: view.Window.activeFocusItem instanceof TextInput && !view.Window.activeFocusItem.readOnly

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
            const distance = outOfSight(index);
            if (distance !== 0)
                scrollBy(distance);
        }
        // How far a row is out of sight, with a gap; below zero above the view.
        function outOfSight(index) {
            const item = itemAtIndex(index);
            if (!item)
                return 0;
            const gap = 12;
            const above = item.y - gap - contentY;
            const below = item.y + item.height + gap - (contentY + height);
            return above < 0 ? above : Math.max(0, Math.min(below, above));
        }
        // Scrolls by a page and takes the focus along, to the row nearest to where it was seen; at either end to the last
        // row there. A text is not opened for that.
        function page(direction) {
            const seen = currentItem ? Math.max(0, Math.min(height, currentItem.y - contentY)) : direction > 0 ? 0 : height;
            const before = contentY;
            scrollBy(direction * 0.85 * height);
            const wanted = contentY === before ? direction * Infinity : contentY + seen;
            let nearest = -1;
            for (let row = rows.nextFocusable(-1, 1); row >= 0; row = rows.nextFocusable(row, 1)) {
                const item = itemAtIndex(row);
                const inSight = item && item.y >= contentY && item.y + item.height <= contentY + height;
                if (!inSight || rows.kindAt(row) === "text")
                    continue;
                const best = nearest < 0 ? null : itemAtIndex(nearest);
                if (!best || wanted === Infinity || (wanted !== -Infinity && Math.abs(item.y - wanted) < Math.abs(best.y - wanted)))
                    nearest = row;
            }
            if (nearest < 0)
                return;
            currentIndex = nearest;
            forceActiveFocus(Qt.TabFocusReason);
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
            resettling.kept = null;
            moveBy(distance);
        }
        function moveBy(distance) {
            cancelFlick();
            const lowest = originY + Math.max(0, contentHeight - height);
            // The toolkit rounds what rests between two points, at a moment of its own.
            contentY = Math.max(originY, Math.min(lowest, Math.round(contentY + distance)));
        }
        function keep(place) {
            if (height <= 0)
                return;
            forceLayout();
            if (place.top >= 0 && !itemAtIndex(place.top))
                positionViewAtIndex(place.top, ListView.Beginning);
            const item = itemAtIndex(place.top);
            moveBy((item ? item.y + Math.min(place.offset, item.height - 1) : originY + place.offset) - contentY);
            if (place.follows)
                moveBy(outOfSight(currentIndex));
        }
        // A function of this list alone: of calls that wait for one and the same function only the last is made.
        function restoreOrder() {
            view.rowOrder.restore(contentItem);
        }

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
        anchors.left: parent.left
        anchors.right: parent.right
        // A window that is not shown yet has no height: the toolkit would move a list that is less than nothing high.
        height: Math.max(0, view.height - y)
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
        onWidthChanged: if (resettling.running)
            resettling.keep()
        onHeightChanged: if (resettling.running)
            resettling.keep()
        // A movement that leads nowhere is the toolkit's own, which brings a list back into its bounds.
        onMovementEnded: if (!resettling.running && !resettling.keeping && contentY !== resettling.settledAt)
            resettling.kept = null

        Connections {
            target: view.status
            function onResizing() {
                // A window may be told of one size more than once.
                if (!resettling.kept || (!resettling.running && resettling.rows !== list.count)) {
                    const current = list.currentItem;
                    // What has the focus is to be seen, if all of it was.
                    resettling.kept = Object.assign(view.place(), {
                        follows: current !== null && current.y >= list.contentY && current.y + current.height <= list.contentY + list.height
                    });
                }
                resettling.start();
            }
        }
        // Holds one place through all sizes until the list is scrolled: a place taken anew from each size would be a
        // little off it each time.
        Timer {
            id: resettling

            property var kept: null
            property bool keeping: false
            property real settledAt: 0
            property int rows: 0

            function keep() {
                if (!kept)
                    return;
                keeping = true;
                list.keep(kept);
                keeping = false;
            }

            interval: 0
            onTriggered: {
                keep();
                settledAt = list.contentY;
                rows = list.count;
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
