#include <QuillbayCloud/ui/HeaderTextField.h>
#include <QuillbayCore/DateExpirationOption.h>

#include <QAbstractItemView>
#include <QDesktopServices>
#include <QTextBlock>
#include <QTextDocument>
#include <QUrl>
#include <functional>

#include "ShareSheetTest.h"

namespace quillbay::cloud {
namespace {

using namespace std::chrono_literals;
using core::DateExpirationOption;
using platform::Date;

const std::string kFamily = "👨\u200D👩\u200D👧\u200D👦";

Date now() { return Date(std::chrono::system_clock::now()); }

/// Stands where the user's browser would.
class Browser : public QObject {
  Q_OBJECT
 public:
  Browser() { QDesktopServices::setUrlHandler("https", this, "open"); }
  ~Browser() override { QDesktopServices::unsetUrlHandler("https"); }

  Q_INVOKABLE void open(const QUrl& url) { opened << url.toString(); }

  QStringList opened;
};

class ShareViewControllerTest : public ShareSheetTest {
 protected:
  ShareViewControllerTest() { create(); }

  QList<QWidget*> formControls() const {
    return {&form().titleTextField(), &form().passwordTextField(), &form().linkExpirationButton(),
            &form().linkTypeButton(), &form().generatesLongLinkButton()};
  }

  /// How often what has been called.
  std::vector<qsizetype> calls() const {
    return {browser_.opened.size(), cancelCount_, std::ssize(confirmed_)};
  }

  const Browser browser_;
};

TEST_F(ShareViewControllerTest, TheFormShowsAConfigurationAndReportsIt) {
  struct Row {
    const char* name;
    SessionConfiguration given;
    int expirationIndex;
  };
  const std::optional<Date> never;
  const Row rows[] = {
      {"default", SessionConfiguration::default_(), 6},
      {"all", {"Holiday ☀", now() + 168h, SessionLinkType::directDownload, "päss word", true}, 3},
      {"direct link", {"Holiday", never, SessionLinkType::directLink, "abc", true}, 6},
      {"empty texts", {"", never, SessionLinkType::page, "", false}, 6},
      {"nearly a day", {"", now() + 20h, SessionLinkType::page, "", true}, 2},
      {"over already", {"", now() - 20h, SessionLinkType::directDownload, "", false}, 0},
      {"in ten years", {"", now() + 87600h, SessionLinkType::page, "", false}, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    create(row.given);
    show();
    const std::string title = row.given.title().value_or("");
    const std::string password = row.given.password().value_or("");
    EXPECT_EQ(form().titleTextField().text().toStdString(), title);
    EXPECT_EQ(form().passwordTextField().text().toStdString(), password);
    EXPECT_FALSE(form().passwordTextField().displayText().contains("word")) << "masked";
    EXPECT_EQ(form().linkTypeButton().currentIndex(), row.given.linkType());
    EXPECT_EQ(form().linkExpirationButton().currentIndex(), row.expirationIndex);
    EXPECT_EQ(form().generatesLongLinkButton().isChecked(), row.given.secret());

    const Date before = now();
    click(controller_->shareButton());
    ASSERT_EQ(confirmed_.size(), 1U);
    const SessionConfiguration& reported = confirmed_[0];
    EXPECT_EQ(reported.title(), title) << "present, though it may be empty";
    const bool isDirect = row.given.linkType() == SessionLinkType::directLink;
    EXPECT_EQ(reported.password(), isDirect ? std::nullopt : std::optional(password));
    EXPECT_EQ(reported.linkType(), row.given.linkType());
    EXPECT_EQ(reported.secret(), row.given.secret());
    const auto option =
        DateExpirationOption::defaultOptions().at(static_cast<std::size_t>(row.expirationIndex));
    EXPECT_GE(reported.expirationDate(), option.date(before)) << "counted from Share on";
    EXPECT_LE(reported.expirationDate(), option.date(now()));
    EXPECT_EQ(controller_->sessionConfiguration(), reported);
  }
}

TEST_F(ShareViewControllerTest, APasswordOfOneToThreeCharactersIsRefusedWithAnAlert) {
  struct Row {
    const char* name;
    SessionLinkType linkType;
    std::string password;
    bool isAccepted;
  };
  const Row rows[] = {
      {"empty", SessionLinkType::page, "", true},
      {"one", SessionLinkType::page, "a", false},
      {"three", SessionLinkType::directDownload, "abc", false},
      {"four", SessionLinkType::page, "abcd", true},
      {"three families", SessionLinkType::page, kFamily + kFamily + kFamily, false},
      {"four families", SessionLinkType::page, kFamily + kFamily + kFamily + kFamily, true},
      {"three for a direct link", SessionLinkType::directLink, "abc", true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const SessionConfiguration given = linkWith(row.linkType, row.password);
    create(given);
    show();
    click(controller_->shareButton());
    EXPECT_EQ(confirmed_.size(), row.isAccepted ? 1U : 0U);
    ASSERT_EQ(alert() == nullptr, row.isAccepted);
    if (row.isAccepted) continue;
    EXPECT_EQ(alert()->text(), localizedText("alert.invalid-password.title"));
    EXPECT_EQ(alert()->informativeText(), localizedText("alert.invalid-password.message"));
    EXPECT_EQ(alert()->standardButtons(), QMessageBox::Ok);
    EXPECT_EQ(alert()->parentWidget(), window_.get());
    press(Qt::Key_Return);
    EXPECT_EQ(alert(), nullptr);
    EXPECT_EQ(controller_->sessionConfiguration(), given);
    EXPECT_EQ(form().passwordTextField().text().toStdString(), row.password);
    EXPECT_TRUE(controller_->view().isVisible());
  }
}

TEST_F(ShareViewControllerTest, AKeyInAnyControlOfTheFormCallsOnceHoweverLongItIsHeld) {
  struct Row {
    const char* name;
    Qt::Key key;
    std::vector<qsizetype> calls;
  };
  show();
  for (const Row& row :
       {Row{"Return", Qt::Key_Return, {0, 0, 1}}, Row{"Enter", Qt::Key_Enter, {0, 0, 1}},
        Row{"Escape", Qt::Key_Escape, {0, 1, 0}}}) {
    for (QWidget* const control : formControls()) {
      SCOPED_TRACE(testing::Message() << row.name << " in " << control->metaObject()->className());
      confirmed_.clear();
      cancelCount_ = 0;
      control->setFocus();
      press(row.key);
      EXPECT_EQ(calls(), row.calls);
      repeat(row.key);
      EXPECT_EQ(calls(), row.calls) << "held down";
      ASSERT_TRUE(window_->isVisible()) << "that is for the host to do";
    }
  }
}

TEST_F(ShareViewControllerTest, AButtonCallsOnceHoweverItIsPressed) {
  struct Row {
    const char* name;
    QWidget& button;
    std::vector<qsizetype> calls;
  };
  show();
  const Row rows[] = {
      {"help", controller_->helpButton(), {1, 0, 0}},
      {"Cancel", controller_->cancelButton(), {1, 1, 0}},
      {"Share", controller_->shareButton(), {1, 1, 1}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    row.button.setFocus();
    press(Qt::Key_Return);
    EXPECT_EQ(calls(), row.calls);
    repeat(Qt::Key_Return);
    EXPECT_EQ(calls(), row.calls) << "held down";
  }
  for (const Row& row : rows) {
    click(row.button);
    press(Qt::Key_Space);
  }
  EXPECT_EQ(calls(), (std::vector<qsizetype>{3, 3, 3}));
  EXPECT_EQ(browser_.opened[0], "https://www.quillbay.example/services/quillbay-cloud");
}

TEST_F(ShareViewControllerTest, EscapeInAnOpenMenuClosesTheMenuAlone) {
  show();
  for (QComboBox* const menu : form().findChildren<QComboBox*>()) {
    menu->setFocus();
    press(Qt::Key_Space);
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu->view()->isVisible(); }));
    press(Qt::Key_Escape);
    EXPECT_FALSE(menu->view()->isVisible());
    EXPECT_EQ(cancelCount_, 0);
  }
}

TEST_F(ShareViewControllerTest, ShareStaysTheDefaultButtonWhateverHasHadTheFocus) {
  for (const bool isDialog : {true, false}) {
    SCOPED_TRACE(isDialog ? "in a dialog" : "in a plain window");
    window_ = isDialog ? std::make_unique<QDialog>() : std::make_unique<QWidget>();
    create();
    show();
    EXPECT_TRUE(controller_->shareButton().isDefault());
    for (QPushButton* const button : {&controller_->cancelButton(), &controller_->shareButton()}) {
      button->setFocus();
      form().titleTextField().setFocus();
      EXPECT_TRUE(controller_->shareButton().isDefault());
      EXPECT_FALSE(controller_->cancelButton().isDefault());
    }
    controller_.reset();
  }
}

TEST_F(ShareViewControllerTest, ACallbackMayReleaseTheController) {
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"Return in a field", [&] { press(Qt::Key_Return); }},
      {"Share", [&] { click(controller_->shareButton()); }},
      {"Share by its letter", [&] { pressMnemonic(controller_->shareButton().text()); }},
      {"Escape", [&] { press(Qt::Key_Escape); }},
      {"Cancel", [&] { click(controller_->cancelButton()); }},
  };
  for (const auto& [name, act] : rows) {
    SCOPED_TRACE(name);
    create();
    show();
    // What they capture must outlive the release, which destroys the controller's copy.
    const auto count = std::make_shared<int>(0);
    const auto release = [this, count] {
      controller_.reset();
      ++*count;
    };
    controller_->setOnConfirm([release](const SessionConfiguration& configuration) {
      release();
      EXPECT_EQ(configuration.linkType(), SessionLinkType::page);
    });
    controller_->setOnCancel(release);
    act();
    EXPECT_TRUE(QTest::qWaitFor([&] { return *count == 1; }));
    processEvents();
    EXPECT_TRUE(window_->findChildren<QPushButton*>().isEmpty()) << "the view goes with it";
    EXPECT_TRUE(window_->isVisible());
  }
}

TEST_F(ShareViewControllerTest, MayBeReleasedInEveryPhase) {
  const std::pair<const char*, std::function<void()>> phases[] = {
      {"created", [] {}},
      {"loaded", [&] { controller_->view(); }},
      {"about to appear", [&] { controller_->view().show(); }},
      {"shown", [&] { show(); }},
      {"with an alert",
       [&] {
         show();
         click(controller_->shareButton());
       }},
  };
  for (const auto& [name, reach] : phases) {
    create(linkWith(SessionLinkType::page, "abc"));
    reach();
    controller_.reset();
    processEvents();
  }
  ASSERT_NE(alert(), nullptr);
  press(Qt::Key_Return);
  EXPECT_EQ(alert(), nullptr);
}

}  // namespace
}  // namespace quillbay::cloud

#include "ShareViewControllerTest.moc"
