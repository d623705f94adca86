// SPDX-License-Identifier: MIT
#pragma once

namespace quellar::host::window {

/// To be called once before the QGuiApplication is made. The toolkit's Wayland input method takes it for granted that
/// the compositor has a seat, and crashes with the first text where there is none, as on a compositor without a screen.
/// There it gets the input method that asks for none.
void chooseInputMethod();

}  // namespace quellar::host::window
