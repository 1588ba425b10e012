#include "MainWindow.h"

#include <QuillbayCloud/ui/ShareViewController.h>

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QPushButton>
#include <QShortcut>
#include <QStackedLayout>
#include <utility>

#include "DropPage.h"
#include "FormPage.h"
#include "Localized.h"
#include "Notification.h"
#include "RunPage.h"

namespace quillbay::desktop {
namespace {

using Phase = ShareRun::Phase;

constexpr QSize kDropSize(460, 340);
constexpr qsizetype kMostProblemsShown = 8;

}  // namespace

MainWindow::MainWindow(Arguments arguments)
    : arguments_(std::move(arguments)),
      guard_(*this),
      pages_(*new QStackedLayout(this)),
      dropPage_(*new DropPage(
          {.choose = [this] { chooseFiles(); }, .undoRemoval = [this] { undoRemoval(); }})) {
  setWindowTitle(localized("app.name"));
  setAcceptDrops(true);
  pages_.addWidget(&dropPage_);
  connect(new QShortcut(QKeySequence::HelpContents, this), &QShortcut::activated, this,
          [] { cloud::ShareViewController::didSelectHelpButton(); });
  // In a text field the key undoes typing.
  connect(new QShortcut(QKeySequence::Undo, this), &QShortcut::activated, this,
          [this] { undoRemoval(); });
  const QStringList problems = files_.add(arguments_.files);
  if (files_.isEmpty()) {
    resize(kDropSize);
  } else {
    makeForm();
  }
  // When the window is there for the message to appear on.
  QMetaObject::invokeMethod(
      this, [this, problems] { showProblems(problems); }, Qt::QueuedConnection);
}

MainWindow::~MainWindow() = default;

void MainWindow::chooseFiles() {
  auto* const dialog = new QFileDialog(this, localized("drop.choose").remove('&'));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFiles);
  connect(dialog, &QFileDialog::urlsSelected, this,
          [this](const QList<QUrl>& urls) { filesAdded(files_.add(urls)); });
  dialog->open();
}

void MainWindow::dropFiles(const QMimeData& dropped) { filesAdded(files_.add(dropped.urls())); }

void MainWindow::undoRemoval() {
  if (!isEditing()) return;
  files_.undoRemoval();
  filesChanged();
}

void MainWindow::filesAdded(const QStringList& problems) {
  filesChanged();
  showProblems(problems);
}

void MainWindow::showProblems(const QStringList& problems) {
  if (problems.isEmpty()) return;
  QStringList shown = problems.first(qMin(problems.size(), kMostProblemsShown));
  const qsizetype hidden = problems.size() - shown.size();
  if (hidden > 0) shown.append(localized("problem.more").arg(hidden));
  showDialog(*makeMessage(localized("problem.title"), shown.join('\n')));
}

void MainWindow::filesChanged() {
  dropPage_.setCanUndo(files_.canUndoRemoval());
  if (files_.isEmpty()) {
    if (formPage_ != nullptr) showPage(dropPage_);
    return;
  }
  if (formPage_ == nullptr) return makeForm();
  formPage_->filesChanged();
  showPage(*formPage_);
}

void MainWindow::makeForm() {
  formPage_ = new FormPage(
      files_, {.addFiles = [this] { chooseFiles(); },
               .undoRemoval = [this] { undoRemoval(); },
               .filesRemoved = [this] { filesChanged(); },
               .dropFiles = [this](const QMimeData& dropped) { dropFiles(dropped); },
               .share = [this](const cloud::SessionConfiguration& chosen) { startRun(chosen); },
               .cancel = [this] { close(); }});
  pages_.addWidget(formPage_);
  showPage(*formPage_);
}

void MainWindow::startAnew() {
  files_ = {};
  dropPage_.setCanUndo(false);
  removePage(std::exchange(runPage_, nullptr));
  removePage(std::exchange(formPage_, nullptr));
  showPage(dropPage_);
  dropPage_.setFocus();
}

void MainWindow::showPage(QWidget& page) {
  if (pages_.currentWidget() == &page) return;
  pages_.setCurrentWidget(&page);
  guard_.restart();
}

void MainWindow::removePage(QWidget* page) {
  if (page == nullptr) return;
  pages_.removeWidget(page);
  page->hide();
  // One of its buttons may be the one that has just called.
  page->deleteLater();
}

void MainWindow::startRun(const cloud::SessionConfiguration& configuration) {
  if (isRunning()) return;
  formPage_->showNotice(std::nullopt);
  isLinkSettled_ = false;
  run_ = std::make_unique<ShareRun>(
      cloud::SessionContext(arguments_.instanceIdentifier, files_.urls()), configuration,
      files_.paths(), arguments_.network);
  run_->setOnChange([this] { runChanged(); });
  runPage_ = new RunPage(*run_, files_,
                         {.cancel = [this] { run_->cancel(); },
                          .shareMore = [this] { settleLinkThen([this] { startAnew(); }); },
                          .deleteLink = [this] { askBeforeDeleting(); },
                          .close = [this] { close(); }});
  pages_.addWidget(runPage_);
  showPage(*runPage_);
  runPage_->setFocus();
  run_->start();
}

void MainWindow::runChanged() {
  runPage_->showPhase();
  if (!run_->isOver()) return;
  if (question_) question_->close();
  guard_.restart();
  if (run_->phase() != Phase::done) return runEnded();
  if (std::exchange(isClosing_, false)) close();
  if (!run_->isSessionLeft()) notify(*this, localized("notice.done"), run_->link());
}

void MainWindow::runEnded() {
  removePage(std::exchange(runPage_, nullptr));
  showPage(*formPage_);
  showOutcome();
  // A link that may still work has to be seen first.
  if (isTerminating_ || !run_->isSessionLeft()) {
    if (isClosing_) close();
  }
  isClosing_ = false;
}

void MainWindow::showOutcome() {
  const QString leftover = localized("leftover.message").arg(run_->link());
  switch (run_->phase()) {
    case Phase::deleted:
      return formPage_->showNotice({{localized("deleted.title"), localized("deleted.message")}});
    case Phase::cancelled:
      if (run_->isSessionLeft()) formPage_->showNotice({{localized("leftover.title"), leftover}});
      return;
    default:
      break;
  }
  QString text = run_->failureText();
  if (run_->isSessionLeft())
    text += "\n\n" + leftover;
  else if (!run_->link().isEmpty())
    text += "\n\n" + localized("failure.link-deleted");
  formPage_->showNotice({{localized("failure.title"), text}});
  if (!isClosing_) notify(*this, localized("notice.failed"), run_->failureText());
}

void MainWindow::terminate() {
  isTerminating_ = true;
  isClosing_ = true;
  if (!isRunning()) {
    close();
    return;
  }
  run_->cancel();
}

QString MainWindow::lastWords() const {
  if (!isTerminating_ || !run_) return {};
  if (wouldLoseLink()) return localized("notice.done") + ": " + run_->link();
  if (run_->phase() == Phase::done || !run_->isSessionLeft()) return {};
  return localized("leftover.title") + " " + localized("leftover.message").arg(run_->link());
}

bool MainWindow::wouldLoseLink() const {
  return runPage_ != nullptr && run_->phase() == Phase::done && !runPage_->isLinkPassedOn() &&
         !isLinkSettled_;
}

void MainWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (!event->spontaneous()) guard_.restart();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  const bool mayClose = !isRunning() && (isTerminating_ || !wouldLoseLink());
  if (mayClose) return event->accept();
  event->ignore();
  if (!isRunning()) {
    settleLinkThen([this] { close(); });
  } else if (run_->phase() == Phase::cleaningUp || run_->phase() == Phase::deleting) {
    isClosing_ = true;
  } else {
    askBeforeClosing();
  }
}

void MainWindow::askBeforeClosing() {
  const bool hasLink = run_->phase() == Phase::uploading;
  ask(localized(hasLink ? "close.title" : "close.early.title"),
      localized(hasLink ? "close.message" : "close.early.message"),
      {{"close.go-on", QMessageBox::RejectRole},
       {hasLink ? "close.cancel" : "close.early.cancel", QMessageBox::DestructiveRole, [this] {
          isClosing_ = true;
          run_->cancel();
        }}});
}

void MainWindow::askBeforeDeleting() {
  ask(localized("delete.title"), localized("delete.message"),
      {{"delete.keep", QMessageBox::RejectRole},
       {"run.delete", QMessageBox::DestructiveRole, [this] { run_->deleteShare(); }}});
}

void MainWindow::settleLinkThen(const std::function<void()>& action) {
  if (!wouldLoseLink()) return action();
  const auto settle = [this, action] {
    isLinkSettled_ = true;
    action();
  };
  ask(localized("uncopied.title"), localized("uncopied.message").arg(run_->link()),
      {{"run.copy", QMessageBox::AcceptRole,
        [this, settle] {
          runPage_->copyLink();
          settle();
        }},
       {"uncopied.drop", QMessageBox::DestructiveRole, settle},
       {"uncopied.back", QMessageBox::RejectRole}});
}

QMessageBox* MainWindow::makeMessage(const QString& title, const QString& text) {
  auto* const message =
      new QMessageBox(QMessageBox::Warning, windowTitle(), title, QMessageBox::Ok, this);
  message->setAttribute(Qt::WA_DeleteOnClose);
  message->setWindowModality(Qt::WindowModal);
  // Texts of servers and names of files are no markup.
  message->setTextFormat(Qt::PlainText);
  message->setInformativeText(text);
  return message;
}

void MainWindow::showDialog(QMessageBox& message) {
  message.open();
  guard_.restart();
}

void MainWindow::ask(const QString& title, const QString& text,
                     std::initializer_list<Answer> answers) {
  if (question_ && question_->isVisible()) return;
  question_ = makeMessage(title, text);
  question_->setIcon(QMessageBox::Question);
  question_->setStandardButtons(QMessageBox::NoButton);
  // The first answer is the default one; Escape is the one that rejects.
  for (const Answer& answer : answers) {
    auto* const button = question_->addButton(localized(answer.key), answer.role);
    if (question_->defaultButton() == nullptr) question_->setDefaultButton(button);
    if (answer.action) connect(button, &QPushButton::clicked, this, answer.action);
  }
  showDialog(*question_);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (isEditing() && event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  dropFiles(*event->mimeData());
}

}  // namespace quillbay::desktop
