// SPDX-License-Identifier: MIT
import QtQuick

Window {
    id: window

    required property QtObject navigation
    required property QtObject status
    required property QtObject rowOrder
    required property QtObject trouble
    required property QtObject elsewhere
    required property var texts

    function revealRow(index) {
        stack.revealRow(index);
    }

    // Offers what can be done with the text of a line, at a place of the window.
    function offerEdits(line, place, byTouch) {
        if (edits.source.toString() === "")
            edits.setSource("EditMenu.qml", {
                status: window.status,
                texts: window.texts
            });
        edits.item.open(line, place, byTouch);
    }

    minimumWidth: 320
    // What a desktop leaves of a landscape phone.
    minimumHeight: 290
    color: Theme.ground
    title: navigation.top ? navigation.top.title : ""

    // What is being typed is committed, as on any other way out of its row.
    onClosing: navigation.endEditing()

    LayoutMirroring.enabled: status.rightToLeft
    LayoutMirroring.childrenInherit: true

    Binding {
        target: Theme
        property: "textScale"
        value: window.status.textScale
    }
    Binding {
        target: Theme
        property: "reducedMotion"
        value: window.status.reducedMotion
    }

    PageStack {
        id: stack

        anchors.fill: parent
        navigation: window.navigation
        status: window.status
        rowOrder: window.rowOrder
        trouble: window.trouble
        elsewhere: window.elsewhere
        texts: window.texts
        enabled: dialogs.item === null || !dialogs.item.shown
        focus: true
    }

    // The button of a mouse that leads back.
    TapHandler {
        acceptedButtons: Qt.BackButton
        onTapped: window.navigation.back()
    }

    // The dialogs are loaded with the first one that is shown: the window opens without them.
    Loader {
        id: dialogs

        readonly property bool wanted: window.navigation.dialog.shown

        anchors.fill: parent
        onWantedChanged: if (wanted && source.toString() === "")
            setSource("DialogLayer.qml", {
                dialog: window.navigation.dialog,
                status: window.status,
                stack: stack
            })
    }

    // The menu of the lines that are typed in, loaded with the first one that is shown.
    Loader {
        id: edits

        anchors.fill: parent
    }
}
