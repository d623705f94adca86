// SPDX-License-Identifier: MIT
#include "host/window/accessible_control.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QAccessibleObject>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>

namespace quellar::host::window {

namespace {

// What the view says of an item by its attached "Accessible"; nothing where it says nothing.
QObject* descriptionOf(const QQuickItem& item) {
  for (QObject* const each : item.children()) {
    if (each->inherits("QQuickAccessibleAttached")) return each;
  }
  return nullptr;
}

// The accessible objects right beneath an item; those that are ignored make way for what is beneath them.
QList<QAccessibleInterface*> beneath(const QQuickItem& item) {
  QList<QAccessibleInterface*> found;
  const auto children = item.childItems();
  for (QQuickItem* const child : children) {
    const QObject* const described = descriptionOf(*child);
    const bool isListed = described && !described->property("ignored").toBool();
    QAccessibleInterface* const interface = isListed ? QAccessible::queryAccessibleInterface(child) : nullptr;
    if (interface) {
      found.append(interface);
    } else {
      found.append(beneath(*child));
    }
  }
  return found;
}

// A control or a text, as its attached "Accessible" describes it.
class AccessibleControl final : public QAccessibleObject,
                                public QAccessibleActionInterface,
                                public QAccessibleValueInterface {
 public:
  explicit AccessibleControl(QQuickItem& item) : QAccessibleObject(&item) {}

  [[nodiscard]] QAccessibleInterface* parent() const override {
    for (QQuickItem* above = item().parentItem(); above; above = above->parentItem()) {
      QAccessibleInterface* found = QAccessible::queryAccessibleInterface(above);
      if (found && found->indexOfChild(this) >= 0) return found;
    }
    return QAccessible::queryAccessibleInterface(item().window());
  }
  [[nodiscard]] QWindow* window() const override { return item().window(); }
  [[nodiscard]] int childCount() const override { return static_cast<int>(beneath(item()).size()); }
  [[nodiscard]] QAccessibleInterface* child(int index) const override { return beneath(item()).value(index); }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
    const auto children = beneath(item());
    const auto found = std::ranges::find(children, child);
    return found == children.end() ? -1 : static_cast<int>(found - children.begin());
  }
  [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override {
    const auto children = beneath(item());
    const auto found = std::ranges::find_if(children, [&](const auto* each) { return each->rect().contains(x, y); });
    return found == children.end() ? nullptr : *found;
  }

  [[nodiscard]] QString text(QAccessible::Text kind) const override {
    switch (kind) {
      case QAccessible::Name:
        return attached("name").toString();
      case QAccessible::Description:
        return attached("description").toString();
      case QAccessible::Value:
      case QAccessible::Help:
      case QAccessible::Accelerator:
      case QAccessible::DebugDescription:
      case QAccessible::UserText:
        break;
    }
    return {};
  }
  [[nodiscard]] QAccessible::Role role() const override {
    const QVariant role = attached("role");
    return role.isValid() ? static_cast<QAccessible::Role>(role.toInt()) : QAccessible::PushButton;
  }
  [[nodiscard]] QRect rect() const override {
    const QQuickWindow* const shown = item().window();
    if (!shown) return {};
    const QRect inWindow = item().mapRectToScene(QRectF(0, 0, item().width(), item().height())).toRect();
    return {shown->mapToGlobal(inWindow.topLeft()), inWindow.size()};
  }
  [[nodiscard]] QAccessible::State state() const override {
    QAccessible::State state;
    state.focusable = attached("focusable").toBool();
    state.focused = item().hasActiveFocus();
    state.checkable = attached("checkable").toBool();
    state.checked = attached("checked").toBool();
    state.selectable = attached("selectable").toBool();
    state.selected = attached("selected").toBool();
    const QQuickWindow* const shown = item().window();
    state.invisible = !shown || !shown->isVisible() || !item().isVisible() || item().opacity() == 0;
    state.offscreen = !shown || !QRect(shown->mapToGlobal(QPoint(0, 0)), shown->size()).intersects(rect());
    return state;
  }

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ActionInterface && role() != QAccessible::StaticText)
      return static_cast<QAccessibleActionInterface*>(this);
    if (type == QAccessible::ValueInterface && hasValue()) return static_cast<QAccessibleValueInterface*>(this);
    return nullptr;
  }

  [[nodiscard]] QStringList actionNames() const override {
    QStringList names{pressAction()};
    if (hasValue()) {
      names = {increaseAction(), decreaseAction()};
    } else if (role() != QAccessible::PushButton) {
      names.prepend(toggleAction());
    }
    if (attached("focusable").toBool()) names.append(setFocusAction());
    return names;
  }
  void doAction(const QString& action) override {
    if (action == setFocusAction()) return item().forceActiveFocus();
    QObject* const described = descriptionOf(item());
    if (!described) return;
    if (action == increaseAction()) {
      QMetaObject::invokeMethod(described, "increaseAction");
    } else if (action == decreaseAction()) {
      QMetaObject::invokeMethod(described, "decreaseAction");
    } else {
      // The view acts on presses alone; a toggle is one.
      QMetaObject::invokeMethod(described, "pressAction");
    }
  }

  [[nodiscard]] QVariant currentValue() const override { return item().property("value"); }
  void setCurrentValue(const QVariant& value) override { item().setProperty("value", value); }
  [[nodiscard]] QVariant minimumValue() const override { return item().property("minimumValue"); }
  [[nodiscard]] QVariant maximumValue() const override { return item().property("maximumValue"); }
  [[nodiscard]] QVariant minimumStepSize() const override { return item().property("stepSize"); }

  [[nodiscard]] QStringList keyBindingsForAction(const QString& /*action*/) const override { return {}; }

 private:
  [[nodiscard]] bool hasValue() const { return role() == QAccessible::Slider || role() == QAccessible::SpinBox; }
  [[nodiscard]] QQuickItem& item() const { return *static_cast<QQuickItem*>(object()); }
  [[nodiscard]] QVariant attached(const char* property) const {
    const QObject* const described = descriptionOf(item());
    return described ? described->property(property) : QVariant();
  }
};

QAccessibleInterface* controlFor(const QString& /*className*/, QObject* object) {
  auto* const item = qobject_cast<QQuickItem*>(object);
  const bool isControl = item && item->metaObject()->indexOfProperty("accessibleControl") >= 0;
  return isControl ? new AccessibleControl(*item) : nullptr;
}

}  // namespace

void listActionsOnce() {
  QAccessible::installFactory(controlFor);
}

}  // namespace quellar::host::window
