#include <QuillbayPlatform/ui/ViewController.h>

#include <QCoreApplication>
#include <QKeyEvent>

namespace quillbay::platform {

ViewController::~ViewController() {
  if (!view_) return;
  view_->window()->removeEventFilter(this);
  view_->removeEventFilter(this);
  // A button of the view may be the one that has just called.
  view_->hide();
  view_->deleteLater();
}

QWidget& ViewController::view() {
  if (!view_) {
    loadView();
    viewDidLoad();
  }
  return *view_;
}

void ViewController::setView(std::unique_ptr<QWidget> view) {
  view_ = view.release();
  view_->installEventFilter(this);
}

void ViewController::loadView() { setView(std::make_unique<QWidget>()); }

bool ViewController::eventFilter(QObject* watched, QEvent* event) {
  if (!view_) return false;
  // A dialog in front has gone: the second click on its button lands here.
  const bool isUncovered = event->type() == QEvent::WindowUnblocked;
  if (isUncovered && watched == view_->window()) activationGuard_.restart();
  if (watched != view_) return false;
  if (event->type() == QEvent::Show && !event->spontaneous()) appear();
  // Keys come here only when the control with the focus has left them.
  if (event->type() == QEvent::KeyPress) return keyPressed(*static_cast<QKeyEvent*>(event));
  return false;
}

void ViewController::appear() {
  view_->window()->installEventFilter(this);
  activationGuard_.restart();
  viewDidAppear();
}

bool ViewController::keyPressed(const QKeyEvent& event) {
  if (!event.matches(QKeySequence::Cancel)) return performKeyEquivalent(event);
  // Holding the key down is one wish, not many; and a window around must not take the rest for one.
  if (!event.isAutoRepeat() && activationGuard_.isOpen()) cancelOperation();
  return true;
}

}  // namespace quillbay::platform
