#include "Dialogs.h"

#include <QPushButton>

#include "Localized.h"
#include "WindowGuard.h"

namespace quillbay::desktop {

void Dialogs::tell(const QString& title, const QString& text) { show(*makeMessage(title, text)); }

void Dialogs::ask(const QString& title, const QString& text, const std::vector<Answer>& answers) {
  if (question_ && question_->isVisible()) return;
  question_ = makeMessage(title, text);
  question_->setIcon(QMessageBox::Question);
  question_->setStandardButtons(QMessageBox::NoButton);
  for (const Answer& answer : answers) {
    auto* const button = question_->addButton(localized(answer.key), answer.role);
    if (question_->defaultButton() == nullptr) question_->setDefaultButton(button);
    if (answer.action) QObject::connect(button, &QPushButton::clicked, &window_, answer.action);
  }
  show(*question_);
}

void Dialogs::withdrawQuestion() {
  if (question_) question_->close();
}

QMessageBox* Dialogs::makeMessage(const QString& title, const QString& text) {
  auto* const message = new QMessageBox(QMessageBox::Warning, window_.windowTitle(), title,
                                        QMessageBox::Ok, &window_);
  message->setAttribute(Qt::WA_DeleteOnClose);
  message->setWindowModality(Qt::WindowModal);
  // Texts of servers and names of files are no markup.
  message->setTextFormat(Qt::PlainText);
  message->setInformativeText(text);
  return message;
}

void Dialogs::show(QMessageBox& message) {
  message.open();
  guard_.restart();
}

}  // namespace quillbay::desktop
