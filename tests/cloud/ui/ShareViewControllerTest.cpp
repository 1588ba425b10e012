#include <QuillbayCore/DateExpirationOption.h>

#include <QAbstractItemView>
#include <QDesktopServices>
#include <QPlainTextEdit>
#include <QStyleHints>
#include <QTextBlock>
#include <QTextDocument>
#include <QUrl>

#include "ShareSheetTest.h"

namespace quillbay::cloud {
namespace {

using namespace std::chrono_literals;
using core::DateExpirationOption;
using platform::Date;

constexpr int kEndless = 3'600'000;
const std::string kFamily = "👨\u200D👩\u200D👧\u200D👦";

Date now() { return Date(std::chrono::system_clock::now()); }

/// In place of the user's browser.
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
  static void setDoubleClickInterval(int milliseconds) {
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(milliseconds);
  }

  /// How often help, Cancel and Share have been called.
  std::vector<qsizetype> calls() const {
    return {browser_.opened.size(), cancelCount_, std::ssize(confirmed_)};
  }

  Browser browser_;
};

TEST_F(ShareViewControllerTest, TheFormShowsAConfigurationAndReportsIt) {
  const std::optional<Date> never;
  const std::tuple<const char*, SessionConfiguration, int> rows[] = {
      {"default", SessionConfiguration::default_(), 6},
      {"all", {"Holiday ☀", now() + 168h, SessionLinkType::directDownload, "päss word", true}, 3},
      {"direct link", {"Holiday", never, SessionLinkType::directLink, "abc", true}, 6},
      {"empty texts", {"", never, SessionLinkType::page, "", false}, 6},
      {"nearly a day", {"", now() + 20h, SessionLinkType::page, "", true}, 2},
      {"over already", {"", now() - 20h, SessionLinkType::directDownload, "", false}, 0},
      {"in ten years", {"", now() + 87600h, SessionLinkType::page, "", false}, 5},
  };
  for (const auto& [name, given, expirationIndex] : rows) {
    SCOPED_TRACE(name);
    create(given);
    show();
    const std::string title = given.title().value_or("");
    const std::string password = given.password().value_or("");
    EXPECT_EQ(form().titleTextField().text().toStdString(), title);
    EXPECT_EQ(form().passwordTextField().text().toStdString(), password);
    EXPECT_FALSE(form().passwordTextField().displayText().contains("word")) << "masked";
    EXPECT_EQ(form().linkTypeButton().currentIndex(), given.linkType());
    EXPECT_EQ(form().linkExpirationButton().currentIndex(), expirationIndex);
    EXPECT_EQ(form().generatesLongLinkButton().isChecked(), given.secret());

    const Date before = now();
    click(controller_->shareButton());
    ASSERT_EQ(confirmed_.size(), 1U);
    const SessionConfiguration& reported = confirmed_[0];
    const std::optional<Date> end = reported.expirationDate();
    const bool isDirect = given.linkType() == SessionLinkType::directLink;
    // Texts are present, though they may be empty.
    EXPECT_EQ(reported, SessionConfiguration(title, end, given.linkType(),
                                             isDirect ? std::nullopt : std::optional(password),
                                             given.secret()));
    const auto option =
        DateExpirationOption::defaultOptions().at(static_cast<std::size_t>(expirationIndex));
    EXPECT_TRUE(option.date(before) <= end && end <= option.date(now())) << "not from Share on";
    EXPECT_EQ(controller_->sessionConfiguration(), reported);
  }
}

TEST_F(ShareViewControllerTest, APasswordOfOneToThreeCharactersIsRefusedWithAnAlert) {
  const std::tuple<const char*, SessionLinkType, std::string, bool> rows[] = {
      {"empty", SessionLinkType::page, "", true},
      {"one", SessionLinkType::page, "a", false},
      {"three", SessionLinkType::directDownload, "abc", false},
      {"four", SessionLinkType::page, "abcd", true},
      {"three families", SessionLinkType::page, kFamily + kFamily + kFamily, false},
      {"four families", SessionLinkType::page, kFamily + kFamily + kFamily + kFamily, true},
      {"three for a direct link", SessionLinkType::directLink, "abc", true},
  };
  for (const auto& [name, linkType, password, isAccepted] : rows) {
    SCOPED_TRACE(name);
    const SessionConfiguration given = linkWith(linkType, password);
    create(given);
    if (!isAccepted) controller_->didSelectShareButton();
    EXPECT_EQ(message(), nullptr) << "there is no window";
    show();
    click(controller_->shareButton());
    EXPECT_EQ(confirmed_.size(), isAccepted ? 1U : 0U);
    ASSERT_EQ(message() == nullptr, isAccepted);
    if (isAccepted) continue;
    EXPECT_EQ(message()->text(), localizedText("alert.invalid-password.title"));
    EXPECT_EQ(message()->informativeText(), localizedText("alert.invalid-password.message"));
    EXPECT_EQ(message()->standardButtons(), QMessageBox::Ok);
    setDoubleClickInterval(kEndless);
    press(Qt::Key_Return);
    ASSERT_NE(message(), nullptr) << "a quick key does not dismiss it unread";
    click(*message()->button(QMessageBox::Ok));
    setDoubleClickInterval(0);
    test::repeat(Qt::Key_Return);
    ASSERT_NE(message(), nullptr) << "nor a quick click, nor a held key";
    press(Qt::Key_Return);
    EXPECT_EQ(message(), nullptr);
    EXPECT_EQ(controller_->sessionConfiguration(), given);
    EXPECT_EQ(form().passwordTextField().text().toStdString(), password);
  }
}

TEST_F(ShareViewControllerTest, AKeyCallsOnceWhereverTheFocusIsAndHoweverLongItIsHeld) {
  auto* const buttonOfHost = new QPushButton("Add Files", window_.get());
  show();
  const QList<QWidget*> inside = formControls() + buttons();
  const std::tuple<Qt::Key, QList<QWidget*>, std::vector<qsizetype>> rows[] = {
      {Qt::Key_Return, inside + QList<QWidget*>{buttonOfHost}, {0, 0, 1}},
      {Qt::Key_Enter, inside + QList<QWidget*>{buttonOfHost}, {0, 0, 1}},
      {Qt::Key_Escape, inside, {0, 1, 0}},
      {Qt::Key_Space, buttons(), {}},
      {Qt::Key_F1, inside, {1, 0, 0}},
  };
  for (const auto& [key, controls, expected] : rows) {
    for (QWidget* const control : controls) {
      SCOPED_TRACE(testing::Message() << key << " in " << control->metaObject()->className());
      browser_.opened.clear();
      cancelCount_ = 0;
      confirmed_.clear();
      control->setFocus();
      press(key, key == Qt::Key_Enter ? Qt::KeypadModifier : Qt::NoModifier);
      const auto own = buttons().indexOf(control);
      const std::vector<qsizetype> pressed = {own == 0, own == 1, own == 2};
      EXPECT_EQ(calls(), expected.empty() ? pressed : expected);
      const auto before = calls();
      test::repeat(key);
      EXPECT_EQ(calls(), before) << "held down";
      ASSERT_TRUE(window_->isVisible()) << "that is for the host to do";
      EXPECT_TRUE(controller_->shareButton().isDefault() || control == buttonOfHost);
    }
  }
  EXPECT_EQ(browser_.opened[0], "https://www.quillbay.example/services/quillbay-cloud");
}

TEST_F(ShareViewControllerTest, ReturnInAnOpenMenuAndInATextOfSeveralLinesIsTheirs) {
  auto* const textOfHost = new QPlainTextEdit(window_.get());
  show();
  QComboBox& menu = form().linkTypeButton();
  menu.setFocus();
  press(Qt::Key_Space);
  ASSERT_TRUE(test::waitUntil([&] { return menu.view()->isVisible(); }));
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(menu.currentIndex(), 1);
  EXPECT_FALSE(menu.view()->isVisible());
  textOfHost->setFocus();
  press(Qt::Key_Return);
  EXPECT_EQ(textOfHost->toPlainText(), "\n");
  EXPECT_EQ(calls(), (std::vector<qsizetype>{0, 0, 0}));
}

TEST_F(ShareViewControllerTest, WhatHasJustAppearedTakesNoAction) {
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"Return", [] { press(Qt::Key_Return); }},
      {"Escape", [] { press(Qt::Key_Escape); }},
      {"Space", [] { press(Qt::Key_Space); }},
      {"a click on help", [&] { click(controller_->helpButton()); }},
      {"a click on Cancel", [&] { click(controller_->cancelButton()); }},
      {"a click on Share", [&] { click(controller_->shareButton()); }},
  };
  for (const auto& [name, act] : rows) {
    SCOPED_TRACE(name);
    create();
    browser_.opened.clear();
    setDoubleClickInterval(kEndless);
    show();
    controller_->cancelButton().setFocus();
    act();
    EXPECT_THAT(calls(), testing::Each(0)) << "of the gesture before";
    setDoubleClickInterval(0);
    act();
    EXPECT_THAT(calls(), testing::UnorderedElementsAre(0, 0, 1));
  }
}

TEST_F(ShareViewControllerTest, ADoubleClickIsOneAction) {
  setDoubleClickInterval(kEndless);
  for (const int index : {0, 1, 2}) {
    create();
    browser_.opened.clear();
    // Loaded but not shown: nothing before the first click keeps the second from counting.
    controller_->view();
    for (int count = 0; count < 2; ++count) QTest::mouseClick(buttons()[index], Qt::LeftButton);
    EXPECT_THAT(calls(), testing::UnorderedElementsAre(0, 0, 1)) << index;
  }
}

TEST_F(ShareViewControllerTest, TheHeaderIsAProductNameInBoldAboveACentredDescription) {
  QTextDocument header;
  header.setHtml(controller_->headerTextField().text());
  EXPECT_EQ(header.toPlainText(), "Quillbay Cloud\n" + localizedText("share-window.description"));
  for (QTextBlock line = header.begin(); line.isValid(); line = line.next()) {
    SCOPED_TRACE(line.text().toStdString());
    EXPECT_EQ(line.blockFormat().alignment(), Qt::AlignHCenter);
    EXPECT_EQ(line.blockFormat().lineHeight(), 130);
    EXPECT_EQ(line.blockFormat().lineHeightType(), QTextBlockFormat::ProportionalHeight);
    const QTextCharFormat letters = line.begin().fragment().charFormat();
    EXPECT_EQ(letters.fontWeight(), line == header.begin() ? QFont::Bold : QFont::Normal);
    EXPECT_FALSE(letters.hasProperty(QTextFormat::ForegroundBrush)) << "the label's own colour";
  }
}

TEST_F(ShareViewControllerTest, ACallbackMayReleaseTheController) {
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"Return in a field", [&] { press(Qt::Key_Return); }},
      {"Share", [&] { click(controller_->shareButton()); }},
      {"Share by its letter", [&] { test::pressMnemonic(controller_->shareButton().text()); }},
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
    EXPECT_TRUE(test::waitUntil([&] { return *count == 1; }));
    processEvents();
    EXPECT_TRUE(window_->findChildren<QPushButton*>().isEmpty()) << "the view goes with it";
    EXPECT_TRUE(window_->isVisible());
  }
}

TEST_F(ShareViewControllerTest, MayBeReleasedWhileItAppearsAndBehindAnAlert) {
  controller_->view().show();
  controller_.reset();
  create(linkWith(SessionLinkType::page, "abc"));
  show();
  controller_->didSelectShareButton();
  controller_.reset();
  processEvents();
  ASSERT_NE(message(), nullptr);
  press(Qt::Key_Return);
  EXPECT_EQ(message(), nullptr);
}

}  // namespace
}  // namespace quillbay::cloud

#include "ShareViewControllerTest.moc"
