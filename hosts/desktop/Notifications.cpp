#include "Notifications.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QWidget>
#include <utility>

namespace quillbay::desktop {
namespace {

// Desktop Notifications Specification 1.2.
constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr const char* kInterface = "org.freedesktop.Notifications";

}  // namespace

void Notifications::show(const QString& summary, const QString& body, std::vector<Action> actions) {
  if (window_.isActiveWindow()) return;
  QApplication::alert(&window_);
  listen();
  actions_ = std::move(actions);
  QStringList buttons;
  for (std::size_t index = 0; index < actions_.size(); ++index) {
    buttons << QString::number(index) << QString(actions_[index].text).remove('&');
  }
  QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, "Notify");
  const QVariantMap hints = {{"desktop-entry", QGuiApplication::desktopFileName()}};
  constexpr int kServiceDecides = -1;
  // Bodies are markup.
  call << QGuiApplication::applicationDisplayName() << identifier_
       << QGuiApplication::desktopFileName() << summary << body.toHtmlEscaped() << buttons << hints
       << kServiceDecides;
  auto* const watcher =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, &Notifications::sent);
}

void Notifications::listen() {
  if (std::exchange(isListening_, true)) return;
  QDBusConnection::sessionBus().connect(kService, kPath, kInterface, "ActionInvoked", this,
                                        SLOT(actionInvoked(uint, QString)));
}

void Notifications::sent(QDBusPendingCallWatcher* call) {
  const QDBusPendingReply<uint> reply = *call;
  if (reply.isValid()) identifier_ = reply.value();
  call->deleteLater();
}

void Notifications::actionInvoked(uint identifier, const QString& key) {
  bool isNumber = false;
  const std::size_t index = key.toUInt(&isNumber);
  const bool isOurs = identifier == identifier_ && isNumber && index < actions_.size();
  if (isOurs) actions_[index].perform();
}

}  // namespace quillbay::desktop
