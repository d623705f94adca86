// SPDX-License-Identifier: MIT
import QtQuick

// The one type of text of the window. Names come from outside, and none of them is markup.
Text {
    textFormat: Text.PlainText
}
