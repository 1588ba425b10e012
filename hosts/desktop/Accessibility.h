#pragma once

#include <QAccessible>
#include <QString>

class QWidget;

namespace quillbay::desktop {

/// What `widget` is for screen readers, in place of what its class says. Call it first of all: Qt
/// keeps what it has found once. Main thread only.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

/// Has screen readers say `text` wherever the focus is. `widget` is visible and has the role
/// `AlertMessage`; `text` becomes its accessible name. Main thread only.
void announce(QWidget& widget, const QString& text);

}  // namespace quillbay::desktop
