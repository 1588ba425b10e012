#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QTreeView>

#include "DesktopTest.h"
#include "Languages.h"

namespace quillbay::desktop {
namespace {

class FormPageTest : public DesktopTest {
 protected:
  QTreeView& list() const { return *window_->findChild<QTreeView*>(); }

  /// Where a mouse would: the widget sees the drag before it may see the drop.
  static bool drop(QWidget& target, const std::vector<std::string>& paths) {
    QList<QUrl> urls;
    for (const auto& path : paths) urls.append(QUrl::fromLocalFile(QString::fromStdString(path)));
    QMimeData dropped;
    dropped.setUrls(urls);
    // As file managers do.
    dropped.setText(QString::fromStdString(paths.front()));
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&target, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent end({5, 5}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    return QApplication::sendEvent(&target, &end) && end.isAccepted();
  }
};

TEST_F(FormPageTest, FilesDroppedAnywhereAreSharedAndSeenInThePreview) {
  const std::string picture = folder_.path() / "red.png";
  QImage red(200, 200, QImage::Format_RGB32);
  red.fill(Qt::red);
  ASSERT_TRUE(red.save(QString::fromStdString(picture)));
  open({});
  EXPECT_TRUE(drop(*window_, {first_, folder_.path()}));
  ASSERT_NE(message(), nullptr) << "the folder is refused";
  message()->reject();
  EXPECT_TRUE(drop(titleField(), {picture}));
  EXPECT_EQ(titleField().text(), "");
  EXPECT_EQ(cell(1, FileListModel::name), "red.png");
  QColor shown;
  for (QWidget* const part : window_->findChildren<QWidget*>()) {
    const bool isPreview = part->minimumSize() == QSize(80, 80);
    if (isPreview) shown = part->grab().toImage().pixelColor(40, 40);
  }
  EXPECT_EQ(shown, QColor(Qt::red));

  test::showActive(*window_);
  share("run.done");
  EXPECT_FALSE(drop(*window_, {second_})) << "not while a link is shown";
  click("run.copy");
  click("run.again");
  EXPECT_TRUE(showsText("drop.title"));
  EXPECT_TRUE(waitUntil([&] { return field(false) == nullptr; })) << "nothing of it is left";
}

TEST_F(FormPageTest, FilesAreRemovedAndPutBackWithTheKeyboard) {
  open({first_, second_});
  QTest::keyClicks(&titleField(), "Holiday");
  list().setFocus();
  list().setCurrentIndex(list().model()->index(0, 0));
  press(Qt::Key_Delete);
  EXPECT_EQ(cell(0, FileListModel::name), "second");
  press(Qt::Key_Delete);
  EXPECT_TRUE(showsText("drop.title")) << "nothing is left";
  press(Qt::Key_Z, Qt::ControlModifier);
  click("files.undo");
  EXPECT_EQ(titleField().text(), "Holiday");
  EXPECT_EQ(list().model()->rowCount(), 2);
  EXPECT_EQ(cell(0, FileListModel::name), "first") << "in their old order";
}

TEST_F(FormPageTest, ReturnSharesFromTheControlsAroundTheSheetAndSpacePressesThem) {
  open({first_});
  button("files.add")->setFocus();
  press(Qt::Key_Space);
  auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
  ASSERT_NE(dialog, nullptr);
  dialog->reject();
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));

  for (const bool isInList : {false, true}) {
    const auto before = count("create");
    QWidget* const control = isInList ? static_cast<QWidget*>(&list()) : button("files.add");
    control->setFocus();
    press(Qt::Key_Return);
    waitUntilShown("run.done");
    EXPECT_EQ(count("create") - before, 1);
    open({first_});
  }
  list().setFocus();
  press(Qt::Key_Escape);
  EXPECT_FALSE(window_->isVisible());
}

TEST_F(FormPageTest, EveryButtonHasALetterOfItsOwn) {
  for (const char* const language : test::kLanguages) {
    platform::setPreferredLanguages({language});
    open({first_});
    for (const char* const page : {"files.add", "run.close", "shares.continue"}) {
      SCOPED_TRACE(localized(page).toStdString());
      ASSERT_TRUE(waitUntil([&] { return button(page) != nullptr; }));
      QStringList texts;
      for (const auto* part : window_->findChildren<QAbstractButton*>()) {
        if (part->isVisible() && !part->text().isEmpty()) texts.append(part->text());
      }
      for (const auto* part : window_->findChildren<QLabel*>()) {
        if (part->isVisible() && part->buddy() != nullptr) texts.append(part->text());
      }
      QSet<QKeySequence> letters;
      for (const QString& text : texts) letters.insert(QKeySequence::mnemonic(text));
      EXPECT_EQ(letters.size(), texts.size()) << texts.join('|').toStdString();
      EXPECT_FALSE(letters.contains(QKeySequence()));
      page == QString("run.close") ? click("shares.show") : press(Qt::Key_Return);
    }
  }
}

TEST_F(FormPageTest, LongAndDeceptiveNamesAreShownWithinTheWindow) {
  open({folder_.write(std::string(200, 'x'), "1"), folder_.write("photo\u202Egpj.exe", "2")});
  const auto check = [&] {
    EXPECT_LT(window_->minimumSizeHint().width(), 600);
    EXPECT_EQ(cell(1, FileListModel::name), "photo\uFFFDgpj.exe");
    EXPECT_EQ(cell(1, FileListModel::size), "1 byte");
  };
  check();
  share("run.done");
  check();
}

}  // namespace
}  // namespace quillbay::desktop
