#pragma once

#include <QMessageBox>
#include <QPointer>
#include <functional>
#include <vector>

class QWidget;

namespace quillbay::desktop {

class WindowGuard;

/// Messages and questions in front of a window. They take nothing in their first moment. Main
/// thread only.
class Dialogs {
 public:
  /// A button of a question. `key`: of its text.
  struct Answer {
    const char* key;
    QMessageBox::ButtonRole role;
    std::function<void()> action = {};
  };

  /// Both outlive the dialogs.
  Dialogs(QWidget& window, WindowGuard& guard) : window_(window), guard_(guard) {}

  void tell(const QString& title, const QString& text);

  /// The first answer is the default one; Escape is the one that rejects. Does nothing while
  /// another question is open.
  void ask(const QString& title, const QString& text, const std::vector<Answer>& answers);
  /// Closes the question that is open, without an answer.
  void withdrawQuestion();

 private:
  QMessageBox* makeMessage(const QString& title, const QString& text);
  void show(QMessageBox& message);

  QWidget& window_;
  WindowGuard& guard_;
  QPointer<QMessageBox> question_;
};

}  // namespace quillbay::desktop
