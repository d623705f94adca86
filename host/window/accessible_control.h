// SPDX-License-Identifier: MIT
#pragma once

namespace quellar::host::window {

/// To be called once after the QGuiApplication is made. The toolkit lists the actions of a control twice: once for its
/// role, once for what the view does on them. Items with a property "accessibleControl" list each action once, and a
/// static text among them does not claim to be focusable.
void listActionsOnce();

}  // namespace quellar::host::window
