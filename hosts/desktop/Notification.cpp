#include "Notification.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QWidget>

namespace quillbay::desktop {

void notify(QWidget& window, const QString& summary, const QString& body) {
  if (window.isActiveWindow()) return;
  QApplication::alert(&window);
  // Desktop Notifications Specification 1.2. Bodies are markup there.
  QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.Notifications",
                                                     "/org/freedesktop/Notifications",
                                                     "org.freedesktop.Notifications", "Notify");
  const QVariantMap hints = {{"desktop-entry", QGuiApplication::desktopFileName()}};
  constexpr int kServiceDecides = -1;
  call << QGuiApplication::applicationDisplayName() << 0U << QGuiApplication::desktopFileName()
       << summary << body.toHtmlEscaped() << QStringList() << hints << kServiceDecides;
  QDBusConnection::sessionBus().send(call);
}

}  // namespace quillbay::desktop
