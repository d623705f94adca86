// SPDX-License-Identifier: MIT
#pragma once

#include <QAccessible>
#include <QQuickItem>
#include <QString>
#include <vector>

namespace quellar::tests {

/// The items below one that a screen reader finds with a role, in their order; those with a name only, where it is
/// given.
inline std::vector<QQuickItem*> accessibleItems(QQuickItem* root, QAccessible::Role role, const QString& name = {}) {
  std::vector<QQuickItem*> found;
  if (!root->isVisible()) return found;
  if (QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(root)) {
    const bool named = name.isNull() || interface->text(QAccessible::Name) == name;
    if (interface->role() == role && named && !interface->state().invisible) found.push_back(root);
  }
  const auto children = root->childItems();
  for (QQuickItem* child : children) {
    const auto below = accessibleItems(child, role, name);
    found.insert(found.end(), below.begin(), below.end());
  }
  return found;
}

}  // namespace quellar::tests
