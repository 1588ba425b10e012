#pragma once

#include <QuillbayPlatform/Export.h>

#include <QElapsedTimer>
#include <QObject>

namespace quillbay::platform {

/// Keeps the rest of a gesture from pressing what has just appeared: the second click of a double
/// click, the second of two quick key presses, the repetitions of a key that is held down.
///
/// It is closed for one double-click interval of the system, at least 500 ms, after each
/// `restart`; never where the system's interval is 0. Installed as the event filter of a button, it
/// drops the presses on it while closed, and the repetitions of a key always. Main thread only.
class QUILLBAY_EXPORT ActivationGuard : public QObject {
 public:
  using QObject::QObject;

  /// Call it when something new appears, and when a press has been taken.
  void restart() { sinceRestart_.start(); }
  /// Whether a press is meant for what is shown now. True before the first `restart`.
  bool isOpen() const;

 protected:
  /// Drops the presses named above; the guard must have been installed on the button.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QElapsedTimer sinceRestart_;
};

}  // namespace quillbay::platform
