#pragma once

#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/ui/ActivationGuard.h>

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <memory>

class QKeyEvent;

namespace quillbay::platform {

/// Runs one view: builds it when it is first asked for, and learns when it appears and what keys
/// nothing in it has used. Main thread only.
///
/// Lifetime: the view belongs to the controller, also while it is shown in a window of the host.
/// Let the controller go before that window. It may be released inside any of its own callbacks:
/// its view is hidden at once and destroyed in the next turn of the event loop.
class QUILLBAY_EXPORT ViewController : public QObject {
 public:
  ViewController(const ViewController&) = delete;
  ViewController& operator=(const ViewController&) = delete;
  ~ViewController() override;

  /// The view; the first call loads it (`loadView`, then `viewDidLoad`).
  QWidget& view();
  /// Whether the view is there: loaded, and not yet destroyed.
  bool isViewLoaded() const { return view_ != nullptr; }

  /// Hands over the view. For `loadView`.
  void setView(std::unique_ptr<QWidget> view);

  /// Creates the view; unless overridden, an empty one.
  virtual void loadView();
  /// Called once, when the view has been loaded.
  virtual void viewDidLoad() {}
  /// Called each time the view has been shown by the program.
  virtual void viewDidAppear() {}
  /// Called for Escape, where no control has used it, and not right after the view has appeared
  /// (see `activationGuard`).
  virtual void cancelOperation() {}
  /// Called for every other key that no control has used, again and again while it is held down.
  /// Returns whether it was of use here.
  virtual bool performKeyEquivalent(const QKeyEvent& /*event*/) { return false; }

 protected:
  ViewController() = default;

  /// Closed when the view has been shown, and when a dialog in front of it has gone.
  ActivationGuard& activationGuard() { return activationGuard_; }

  /// Turns events of the view into the calls above.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QUILLBAY_HIDDEN void appear();
  QUILLBAY_HIDDEN bool keyPressed(const QKeyEvent& event);

  ActivationGuard activationGuard_;
  QPointer<QWidget> view_;
};

}  // namespace quillbay::platform
