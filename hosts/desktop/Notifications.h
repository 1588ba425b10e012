#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

class QDBusPendingCallWatcher;
class QWidget;

namespace quillbay::desktop {

/// Tells the user, who is busy elsewhere: through the desktop's notification service, and by
/// marking the window in the task bar. Main thread only.
class Notifications : public QObject {
  Q_OBJECT

 public:
  /// A button of a notification, where the desktop shows one.
  struct Action {
    QString text;
    std::function<void()> perform;
  };

  /// `window` outlives the notifications.
  explicit Notifications(QWidget& window) : window_(window) {}

  /// Does nothing while the window is in front. `body` is plain text. Replaces the one before.
  void show(const QString& summary, const QString& body, std::vector<Action> actions = {});

 private slots:
  void sent(QDBusPendingCallWatcher* call);
  void actionInvoked(uint identifier, const QString& key);

 private:
  void listen();

  QWidget& window_;
  bool isListening_ = false;
  /// Of the latest one, as the service calls it; 0 before it has answered.
  uint identifier_ = 0;
  std::vector<Action> actions_;
};

}  // namespace quillbay::desktop
