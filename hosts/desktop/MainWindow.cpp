#include "MainWindow.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>
#include <utility>

#include "ContentPreview.h"
#include "DropPage.h"
#include "ElidedLabel.h"
#include "Localized.h"
#include "Notification.h"
#include "RunPage.h"

namespace quillbay::desktop {
namespace {

using Phase = ShareRun::Phase;

constexpr int kFilesLineMargin = 16;
constexpr QSize kDropSize(460, 340);
constexpr qsizetype kMostProblemsShown = 8;

}  // namespace

MainWindow::MainWindow(std::string instanceIdentifier, const std::vector<std::string>& paths)
    : instanceIdentifier_(std::move(instanceIdentifier)),
      pages_(*new QStackedLayout(this)),
      dropPage_(*new DropPage([this] { chooseFiles(); })) {
  setWindowTitle(localized("app.name"));
  setAcceptDrops(true);
  pages_.addWidget(&dropPage_);
  const QStringList problems = files_.add(paths);
  if (files_.isEmpty()) {
    resize(kDropSize);
  } else {
    makeForm();
  }
  // When the window is there for the message to stand on.
  QMetaObject::invokeMethod(this, [this, problems] { filesAdded(problems); }, Qt::QueuedConnection);
}

MainWindow::~MainWindow() = default;

void MainWindow::chooseFiles() {
  auto* const dialog = new QFileDialog(this, localized("drop.choose"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFiles);
  connect(dialog, &QFileDialog::urlsSelected, this,
          [this](const QList<QUrl>& urls) { filesAdded(files_.add(urls)); });
  dialog->open();
}

void MainWindow::filesAdded(const QStringList& problems) {
  if (!files_.isEmpty() && formPage_ == nullptr) makeForm();
  if (filesLabel_ != nullptr) {
    filesLabel_->setText(files_.summary());
    filesLabel_->setToolTip(files_.names().toHtmlEscaped().replace('\n', "<br>"));
  }
  if (problems.isEmpty()) return;
  QStringList shown = problems.first(qMin(problems.size(), kMostProblemsShown));
  const qsizetype hidden = problems.size() - shown.size();
  if (hidden > 0) shown.append(localized("problem.more").arg(hidden));
  makeMessage(localized("problem.title"), shown.join('\n'))->open();
}

void MainWindow::makeForm() {
  const QImage preview = contentPreview(files_.paths());
  sheet_ = cloud::ShareViewController::create({cloud::SessionConfiguration::default_(), preview});
  sheet_->setOnConfirm([this](const cloud::SessionConfiguration& chosen) { startRun(chosen); });
  sheet_->setOnCancel([this] { close(); });

  formPage_ = new QWidget;
  auto* const layout = new QVBoxLayout(formPage_);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(makeFilesLine());
  layout->addWidget(&sheet_->view(), 1);
  pages_.addWidget(formPage_);
  pages_.setCurrentWidget(formPage_);
}

QWidget* MainWindow::makeFilesLine() {
  auto* const line = new QWidget;
  auto* const layout = new QHBoxLayout(line);
  layout->setContentsMargins(kFilesLineMargin, kFilesLineMargin, kFilesLineMargin, 0);
  filesLabel_ = new ElidedLabel(files_.summary());
  layout->addWidget(filesLabel_, 1);
  auto* const addButton = new QPushButton(localized("files.add"));
  addButton->setAutoDefault(true);
  connect(addButton, &QPushButton::clicked, this, &MainWindow::chooseFiles);
  layout->addWidget(addButton);
  return line;
}

void MainWindow::startAnew() {
  files_ = {};
  sheet_.reset();
  removePage(std::exchange(runPage_, nullptr));
  removePage(std::exchange(formPage_, nullptr));
  filesLabel_ = nullptr;
  pages_.setCurrentWidget(&dropPage_);
  dropPage_.setFocus();
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
  run_ = std::make_unique<ShareRun>(cloud::SessionContext(instanceIdentifier_, files_.urls()),
                                    configuration, files_.byteCounts());
  run_->setOnChange([this] { runChanged(); });
  runPage_ = new RunPage(*run_, files_.summary(),
                         {.cancel = [this] { run_->cancel(); },
                          .shareMore = [this] { startAnew(); },
                          .close = [this] { close(); }});
  pages_.addWidget(runPage_);
  pages_.setCurrentWidget(runPage_);
  run_->start();
}

void MainWindow::runChanged() {
  if (run_->phase() == Phase::failed || run_->phase() == Phase::cancelled) return runCutShort();
  runPage_->showPhase();
  if (run_->phase() != Phase::done) return;
  if (closeQuestion_) closeQuestion_->close();
  notify(*this, localized("notice.done"), run_->link());
}

void MainWindow::runCutShort() {
  hasAbandonedWork_ = true;
  if (closeQuestion_) closeQuestion_->close();
  removePage(std::exchange(runPage_, nullptr));
  pages_.setCurrentWidget(formPage_);
  const bool hasFailed = run_->phase() == Phase::failed;
  if (run_->isSessionLeft()) showLeftover();
  if (isClosing_) {
    if (!run_->isSessionLeft()) close();
    return;
  }
  if (!hasFailed) return;
  showFailure();
  notify(*this, localized("notice.failed"), run_->failureText());
}

void MainWindow::cancelAndClose() {
  isClosing_ = true;
  if (!isRunning()) {
    close();
    return;
  }
  run_->cancel();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!isRunning()) return event->accept();
  event->ignore();
  if (run_->phase() == Phase::cleaningUp) {
    isClosing_ = true;
  } else if (!closeQuestion_ || !closeQuestion_->isVisible()) {
    askBeforeClosing();
  }
}

void MainWindow::askBeforeClosing() {
  closeQuestion_ = makeMessage(localized("close.title"), localized("close.message"));
  closeQuestion_->setIcon(QMessageBox::Question);
  closeQuestion_->setStandardButtons(QMessageBox::NoButton);
  auto* const goOn = closeQuestion_->addButton(localized("close.go-on"), QMessageBox::RejectRole);
  auto* const cancel =
      closeQuestion_->addButton(localized("close.cancel"), QMessageBox::DestructiveRole);
  closeQuestion_->setDefaultButton(goOn);
  closeQuestion_->setEscapeButton(goOn);
  connect(cancel, &QPushButton::clicked, this, &MainWindow::cancelAndClose);
  closeQuestion_->open();
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

void MainWindow::showFailure() {
  QMessageBox* const message = makeMessage(localized("failure.title"), run_->failureText());
  message->setIcon(QMessageBox::Critical);
  message->setStandardButtons(QMessageBox::Retry | QMessageBox::Close);
  message->setDefaultButton(QMessageBox::Retry);
  connect(message, &QMessageBox::buttonClicked, this, [this, message](QAbstractButton* button) {
    if (button == message->button(QMessageBox::Retry)) sheet_->didSelectShareButton();
  });
  message->open();
}

void MainWindow::showLeftover() {
  QMessageBox* const message =
      makeMessage(localized("leftover.title"), localized("leftover.message").arg(run_->link()));
  connect(message, &QMessageBox::finished, this, [this] {
    if (isClosing_) close();
  });
  message->open();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  const bool isForm = runPage_ == nullptr;
  if (isForm && event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  filesAdded(files_.add(event->mimeData()->urls()));
}

}  // namespace quillbay::desktop
