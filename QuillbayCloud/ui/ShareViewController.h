#pragma once

#include <QuillbayCloud/model/SessionConfiguration.h>
#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/ui/ViewController.h>

#include <QImage>
#include <functional>
#include <memory>

class QAbstractButton;
class QPushButton;
class QTextDocument;

namespace quillbay::cloud {

class HeaderTextField;
class ImageView;
class SessionConfigurationView;

/// The share sheet: a form in which the user edits the choices for a link, with Share and Cancel
/// buttons and a help button that opens the service's information page. It starts no upload and
/// never dismisses itself: the host shows `view()` where it likes, and takes it away.
///
/// Return presses Share wherever in the window the focus is, as long as the sheet is visible and no
/// menu or dialog is open in front; only a text of several lines keeps Return for itself. Space
/// presses the button that has the focus, Escape cancels, F1 is help. The user's actions count only
/// some time after the sheet has appeared, and after the action before (see
/// `platform::ActivationGuard`): a double click is one. A password of one to three characters
/// (grapheme clusters, Unicode Standard Annex #29) is refused with an alert, and nothing is
/// reported.
///
/// Main thread only, with a running QApplication. Callbacks are called directly from the user's
/// action, and may release the controller; see `platform::ViewController` for its lifetime. Their
/// exceptions are not caught.
class QUILLBAY_EXPORT ShareViewController : public platform::ViewController {
 public:
  /// What the sheet starts with. An immutable value.
  class Configuration {
   public:
    /// `sessionConfiguration` fills the form; an expiration becomes the nearest choice there is.
    /// `contentPreview` is shown beside the form, at most 80 by 80 device-independent pixels. Its
    /// text "Description" (`QImage::setText`), if there is one, is its name for screen readers.
    Configuration(SessionConfiguration sessionConfiguration, QImage contentPreview)
        : sessionConfiguration_(std::move(sessionConfiguration)),
          contentPreview_(std::move(contentPreview)) {}

    /// What fills the form.
    const SessionConfiguration& sessionConfiguration() const { return sessionConfiguration_; }
    /// The picture beside the form; a null image is none.
    const QImage& contentPreview() const { return contentPreview_; }

   private:
    SessionConfiguration sessionConfiguration_;
    QImage contentPreview_;
  };

  /// Gets the choices that the user has confirmed.
  using OnConfirm = std::function<void(SessionConfiguration)>;
  /// Called when the user has cancelled.
  using OnCancel = std::function<void()>;

  /// Builds all controls. Texts are in the language of this moment.
  static std::shared_ptr<ShareViewController> create(Configuration configuration);
  ~ShareViewController() override;

  /// Called with what the user has confirmed, each time. The title and, but for a direct link, the
  /// password are present, though they may be empty; the expiration counts from that moment.
  const OnConfirm& onConfirm() const { return onConfirm_; }
  /// Replaces it; an empty function reports nothing.
  void setOnConfirm(OnConfirm onConfirm) { onConfirm_ = std::move(onConfirm); }

  /// Called for the Cancel button and for Escape.
  const OnCancel& onCancel() const { return onCancel_; }
  /// Replaces it; an empty function reports nothing.
  void setOnCancel(OnCancel onCancel) { onCancel_ = std::move(onCancel); }

  /// Shown in its own size in the corner at the end of the first line; a null image is none.
  const QImage& brandingImage() const;
  /// Replaces it, also while the sheet is shown.
  void setBrandingImage(QImage image);

  /// Replaces the preview beside the form, such as when the content has changed; a null image is
  /// none. `configuration()` keeps the first.
  void setContentPreview(QImage image);

  /// What the sheet was created with.
  const Configuration& configuration() const { return configuration_; }

  void loadView() override;
  void viewDidLoad() override;
  void viewDidAppear() override;
  void cancelOperation() override;
  bool performKeyEquivalent(const QKeyEvent& event) override;

  /// What a press of Cancel does.
  void didSelectCancelButton();
  /// What a press of Share does.
  void didSelectShareButton();
  /// What a press of the help button does: opens the information page in the browser.
  static void didSelectHelpButton();

  /// The last confirmed configuration; before, the one to start from.
  const SessionConfiguration& sessionConfiguration() const { return sessionConfiguration_; }

  // The parts of the view, for as long as the controller lives.

  /// The first line.
  HeaderTextField& headerTextField() const { return *headerTextField_; }
  /// The form.
  SessionConfigurationView& configurationView() const { return *configurationView_; }
  /// Opens the service's information page.
  QAbstractButton& helpButton() const { return *helpButton_; }
  /// Cancel.
  QPushButton& cancelButton() const { return *cancelButton_; }
  /// Share.
  QPushButton& shareButton() const { return *shareButton_; }
  /// Holds the branding image.
  ImageView& brandingImageView() const { return *brandingImageView_; }

 private:
  QUILLBAY_HIDDEN explicit ShareViewController(Configuration configuration);

  QUILLBAY_HIDDEN void addShareShortcut(Qt::Key key);
  QUILLBAY_HIDDEN void fillForm();
  QUILLBAY_HIDDEN SessionConfiguration readForm() const;
  QUILLBAY_HIDDEN void confirm();
  QUILLBAY_HIDDEN void showInvalidPasswordAlert();
  QUILLBAY_HIDDEN void cancel();
  QUILLBAY_HIDDEN static std::unique_ptr<QTextDocument> makeHeaderText();

  OnConfirm onConfirm_;
  OnCancel onCancel_;
  const Configuration configuration_;
  SessionConfiguration sessionConfiguration_;

  /// Holds the parts until the view takes them.
  std::unique_ptr<QWidget> unloadedParts_;
  ImageView* const brandingImageView_;
  SessionConfigurationView* const configurationView_;
  HeaderTextField* const headerTextField_;
  QAbstractButton* const helpButton_;
  QPushButton* const cancelButton_;
  QPushButton* const shareButton_;
};

}  // namespace quillbay::cloud
