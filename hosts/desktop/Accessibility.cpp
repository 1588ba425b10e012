#include "Accessibility.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace quillbay::desktop {
namespace {

constexpr const char* kRoleProperty = "quillbayAccessibleRole";

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
  const QVariant role = object->property(kRoleProperty);
  if (!role.isValid()) return nullptr;
  return new QAccessibleWidget(static_cast<QWidget*>(object),
                               static_cast<QAccessible::Role>(role.toInt()));
}

}  // namespace

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
  static const bool isInstalled = [] {
    QAccessible::installFactory(makeInterface);
    return true;
  }();
  static_cast<void>(isInstalled);
  widget.setProperty(kRoleProperty, static_cast<int>(role));
}

void announce(QWidget& widget, const QString& text) {
  widget.setAccessibleName(text);
  // On Linux an alert is read when it begins to show; Qt sends its Alert event elsewhere only.
  for (const QAccessible::Event kind : {QAccessible::ObjectShow, QAccessible::Alert}) {
    QAccessibleEvent event(&widget, kind);
    QAccessible::updateAccessibility(&event);
  }
}

}  // namespace quillbay::desktop
