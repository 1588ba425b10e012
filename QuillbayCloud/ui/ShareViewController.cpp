#include <QuillbayCloud/ui/HeaderTextField.h>
#include <QuillbayCloud/ui/HelpButton.h>
#include <QuillbayCloud/ui/ImageView.h>
#include <QuillbayCloud/ui/LocalizedText.h>
#include <QuillbayCloud/ui/SecureFirstRespondableTextField.h>
#include <QuillbayCloud/ui/SessionConfigurationView.h>
#include <QuillbayCloud/ui/ShareSheetLayout.h>
#include <QuillbayCloud/ui/ShareViewController.h>
#include <QuillbayCore/DateExpirationOption.h>
#include <QuillbayCore/FormSheetContentView.h>
#include <QuillbayPlatform/ui/Graphemes.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QUrl>
#include <algorithm>
#include <utility>

namespace quillbay::cloud {
namespace {

using core::DateExpirationOption;

constexpr qsizetype kMinimumPasswordLength = 4;
constexpr int kLineHeightPercent = 130;
constexpr const char* kProductName = "Quillbay Cloud";
constexpr const char* kInformationPage = "https://www.quillbay.example/services/quillbay-cloud";

bool isReturn(const QKeyEvent& event) {
  return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

/// Keeps Return for an open menu. The menu closes while the key is still being offered to it, and a
/// shortcut of the window behind would take it as well.
class OpenMenuFilter : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() != QEvent::ShortcutOverride) return false;
    const bool isOpen = QApplication::activePopupWidget() != nullptr;
    if (isOpen && isReturn(*static_cast<QKeyEvent*>(event))) event->accept();
    return false;
  }
};

template <class Values, class Value>
int indexOrFirst(const Values& values, const Value& value) {
  const auto place = std::ranges::find(values, value);
  return place == values.end() ? 0 : static_cast<int>(place - values.begin());
}

}  // namespace

std::shared_ptr<ShareViewController> ShareViewController::create(Configuration configuration) {
  return std::shared_ptr<ShareViewController>(new ShareViewController(std::move(configuration)));
}

ShareViewController::ShareViewController(Configuration configuration)
    : configuration_(std::move(configuration)),
      sessionConfiguration_(configuration_.sessionConfiguration()),
      unloadedParts_(std::make_unique<QWidget>()),
      brandingImageView_(new ImageView),
      configurationView_(new SessionConfigurationView),
      headerTextField_(new HeaderTextField),
      helpButton_(new HelpButton),
      cancelButton_(new QPushButton),
      shareButton_(new QPushButton) {
  for (QWidget* const part :
       {static_cast<QWidget*>(headerTextField_), static_cast<QWidget*>(brandingImageView_),
        static_cast<QWidget*>(configurationView_), static_cast<QWidget*>(helpButton_),
        static_cast<QWidget*>(cancelButton_), static_cast<QWidget*>(shareButton_)}) {
    part->setParent(unloadedParts_.get());
  }
  fillForm();
  brandingImageView_->setAccessibleName(kProductName);
  headerTextField_->setDocument(*makeHeaderText());

  platform::Mnemonics& mnemonics = configurationView_->mnemonics();
  shareButton_->setText(mnemonics.assign(localizedText("share-window.share-button.title")));
  shareButton_->setDefault(true);
  cancelButton_->setText(mnemonics.assign(localizedText("share-window.cancel-button.title")));
  // A dialog around would make it the default button while it has the focus.
  cancelButton_->setAutoDefault(false);
}

ShareViewController::~ShareViewController() = default;

std::unique_ptr<QTextDocument> ShareViewController::makeHeaderText() {
  const QString description = localizedText("share-window.description");
  auto document = std::make_unique<QTextDocument>();
  document->setDocumentMargin(0);

  QTextCursor cursor(document.get());
  QTextBlockFormat paragraph;
  paragraph.setAlignment(Qt::AlignHCenter);
  paragraph.setLineHeight(kLineHeightPercent, QTextBlockFormat::ProportionalHeight);
  cursor.setBlockFormat(paragraph);
  QTextCharFormat bold;
  bold.setFontWeight(QFont::Bold);
  const QString text = kProductName + ('\n' + description);
  cursor.insertText(text, bold);

  const qsizetype start = text.indexOf(description);
  if (description.isEmpty()) return document;
  cursor.setPosition(static_cast<int>(start));
  cursor.setPosition(static_cast<int>(start + description.size()), QTextCursor::KeepAnchor);
  QTextCharFormat regular;
  regular.setFontWeight(QFont::Normal);
  cursor.mergeCharFormat(regular);
  return document;
}

const QImage& ShareViewController::brandingImage() const { return brandingImageView_->image(); }

void ShareViewController::setBrandingImage(QImage image) {
  brandingImageView_->setImage(std::move(image));
}

void ShareViewController::setContentPreview(QImage image) {
  configurationView_->imageView().setImage(std::move(image));
}

void ShareViewController::loadView() {
  auto view = std::make_unique<core::FormSheetContentView>();
  for (QWidget* const control :
       {static_cast<QWidget*>(&configurationView_->linkExpirationButton()),
        static_cast<QWidget*>(&configurationView_->linkTypeButton()),
        static_cast<QWidget*>(&configurationView_->generatesLongLinkButton()),
        static_cast<QWidget*>(cancelButton_), static_cast<QWidget*>(shareButton_)}) {
    view->addFocusRing(*control);
  }
  setView(std::move(view));
}

void ShareViewController::viewDidLoad() {
  ViewController::viewDidLoad();
  connect(helpButton_, &QAbstractButton::clicked, this, [this] {
    activationGuard().restart();
    didSelectHelpButton();
  });
  connect(cancelButton_, &QAbstractButton::clicked, this, [this] { didSelectCancelButton(); });
  connect(shareButton_, &QAbstractButton::clicked, this, [this] { didSelectShareButton(); });
  for (QAbstractButton* const button : {helpButton_, static_cast<QAbstractButton*>(cancelButton_),
                                        static_cast<QAbstractButton*>(shareButton_)}) {
    button->installEventFilter(&activationGuard());
  }
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) addShareShortcut(key);
  qApp->installEventFilter(new OpenMenuFilter(&view()));

  new ShareSheetLayout(view(), {*headerTextField_, *brandingImageView_, *configurationView_,
                                *helpButton_, *cancelButton_, *shareButton_});
  unloadedParts_.reset();
  QWidget::setTabOrder(&configurationView_->generatesLongLinkButton(), helpButton_);
  QWidget::setTabOrder(helpButton_, cancelButton_);
  QWidget::setTabOrder(cancelButton_, shareButton_);
}

void ShareViewController::addShareShortcut(Qt::Key key) {
  // A shortcut comes before the control that has the focus, wherever in the window that is.
  auto* const shortcut = new QShortcut(key, &view());
  shortcut->setAutoRepeat(false);
  connect(shortcut, &QShortcut::activated, this, [this] {
    if (activationGuard().isOpen()) shareButton_->click();
  });
}

void ShareViewController::viewDidAppear() {
  ViewController::viewDidAppear();
  // A dialog around makes the first button its default one, unless told which while it is inside.
  shareButton_->setDefault(false);
  shareButton_->setDefault(true);
  configurationView_->didAppear();
}

void ShareViewController::cancelOperation() { cancel(); }

bool ShareViewController::performKeyEquivalent(const QKeyEvent& event) {
  // An open menu has used it; a dialog around must not press its default button too.
  if (isReturn(event)) return true;
  if (!event.matches(QKeySequence::HelpContents)) return false;
  if (!event.isAutoRepeat()) didSelectHelpButton();
  return true;
}

void ShareViewController::didSelectCancelButton() { cancel(); }

void ShareViewController::didSelectShareButton() { confirm(); }

void ShareViewController::didSelectHelpButton() {
  QDesktopServices::openUrl(QUrl(kInformationPage));
}

void ShareViewController::cancel() {
  activationGuard().restart();
  // A copy: the callback may set another, or release this object and the callback with it.
  if (const OnCancel callback = onCancel_) callback();
}

void ShareViewController::confirm() {
  activationGuard().restart();
  const std::optional<std::string> password = configurationView_->password();
  if (password && !password->empty() &&
      platform::graphemeCount(QString::fromStdString(*password)) < kMinimumPasswordLength) {
    return showInvalidPasswordAlert();
  }
  sessionConfiguration_ = readForm();
  // A copy: see above.
  if (const OnConfirm callback = onConfirm_) callback(sessionConfiguration_);
}

void ShareViewController::showInvalidPasswordAlert() {
  QWidget* const window = view().window();
  if (!window->isVisible()) return;
  auto* const alert = new QMessageBox(QMessageBox::Warning, {}, {}, QMessageBox::Ok, window);
  alert->setAttribute(Qt::WA_DeleteOnClose);
  alert->setTextFormat(Qt::PlainText);
  alert->setText(localizedText("alert.invalid-password.title"));
  alert->setInformativeText(localizedText("alert.invalid-password.message"));
  alert->setWindowModality(Qt::WindowModal);
  auto* const guard = new platform::ActivationGuard(alert);
  guard->restart();
  for (QAbstractButton* const button : alert->buttons()) button->installEventFilter(guard);
  alert->open();
}

void ShareViewController::fillForm() {
  SessionConfigurationView& form = *configurationView_;
  const SessionConfiguration& values = configuration_.sessionConfiguration();
  form.imageView().setImage(configuration_.contentPreview());
  form.imageView().setAccessibleName(kProductName);
  form.titleTextField().setText(QString::fromStdString(values.title().value_or("")));
  form.passwordTextField().setText(QString::fromStdString(values.password().value_or("")));
  form.linkTypeButton().setCurrentIndex(indexOrFirst(SessionLinkType::allCases, values.linkType()));
  form.linkExpirationButton().setCurrentIndex(
      indexOrFirst(DateExpirationOption::defaultOptions(),
                   DateExpirationOption::closest(values.expirationDate())));
  form.generatesLongLinkButton().setChecked(values.secret());
}

SessionConfiguration ShareViewController::readForm() const {
  const SessionConfigurationView& form = *configurationView_;
  const auto options = DateExpirationOption::defaultOptions();
  const auto option = static_cast<std::size_t>(form.linkExpirationButton().currentIndex());
  return {form.titleTextField().text().toStdString(), options.at(option).date(), form.linkType(),
          form.password(), form.generatesLongLinkButton().isChecked()};
}

}  // namespace quillbay::cloud
