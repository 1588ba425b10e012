
#include <QuillbayPlatform/JSONDecoder.h>

#include "DesktopTest.h"
#include "hosts/desktop/SharesModel.h"

namespace quillbay::desktop {
namespace {

using State = host::RememberedShare::State;

class SharesTest : public DesktopTest {
 protected:
  /// Puts a share of one file into the history.
  std::int64_t remember(const std::string& expiration = "null") {
    const auto session = platform::JSONDecoder().decode<cloud::Session>(
        R"({"id":"session-1","token":"t","url":"https://q/old","title":"Old","items":[],)"
        R"("expiration":)" +
        expiration + "}");
    const auto identifier = history_->add("instance-1", *session, cloud::SessionLinkType::page,
                                          {{first_, 3, false}}, platform::Date());
    history_->setState(identifier, State::unfinished);
    return identifier;
  }
  void openShares() {
    open({});
    click("shares.show");
  }
};

TEST_F(SharesTest, WhatIsUnfinishedIsContinuedUnderTheSameLinkAndDeletedAfterAQuestion) {
  for (const bool isStopped : {false, true}) {
    SCOPED_TRACE(isStopped ? "stopped when the window was closed" : "failed");
    const auto before = std::array{count("create"), count("finalize item-2")};
    const auto deleted = count("delete session-1");
    const auto gate = service_.hold(Call::finalize, FakeService::refusal(413, "no"), 1);
    if (!isStopped) gate->open();
    openAndShare({first_, second_}, isStopped ? "run.uploading" : "unfinished.title");
    if (isStopped) {
      const QString sent = localized("files.uploading").arg(100);
      ASSERT_TRUE(waitUntil([&] { return cell(0, FileListModel::state) == sent; }));
      window_->close();
      click("close.later", message());
      EXPECT_FALSE(window_->isVisible());
      openShares();
    }
    EXPECT_EQ(cell(0, SharesModel::state), localized("shares.unfinished").arg(1).arg(2));
    gate->open();
    service_.setHook(Call::finalize, {});
    click("shares.continue");
    waitUntilShown("run.done");
    EXPECT_EQ(shownLink(), FakeService::link);
    EXPECT_EQ(service_.storedBytes("item-1"), "one");
    EXPECT_EQ(count("create") - before[0], 1);
    EXPECT_EQ(count("finalize item-2") - before[1], 1) << "what had arrived is not sent again";
    EXPECT_EQ(count("delete session-1"), deleted);

    click("shares.show");
    EXPECT_EQ(cell(0, SharesModel::state), localized("shares.complete"));
    press(Qt::Key_Delete);
    EXPECT_EQ(message()->defaultButton(), button("delete.keep"));
    click("run.delete", message());
    waitUntilShown("deleted.title");
    EXPECT_EQ(cell(0, SharesModel::state), "") << "it has left the list";
    EXPECT_EQ(count("delete session-1"), deleted + 1);
  }
}

TEST_F(SharesTest, AShareThatAnotherProgramUploadsIsRefused) {
  const auto identifier = remember();
  openShares();
  history_->setState(identifier, State::uploading);
  click("shares.continue");
  EXPECT_TRUE(showsText("in-use.title"));
  EXPECT_EQ(cell(0, SharesModel::state), localized("shares.uploading"));
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(SharesTest, WhatTheServiceNoLongerHasCanLeaveTheList) {
  refuse(Call::deleteSession, "unknown", 404);
  for (const bool isExpired : {true, false}) {
    SCOPED_TRACE(isExpired ? "expired" : "unknown to the service");
    remember(isExpired ? "1" : "null");
    openShares();
    click("run.delete");
    if (!isExpired) {
      click("run.delete", message());
      ASSERT_TRUE(waitUntil([] { return button("forget.remove") != nullptr; }));
      EXPECT_TRUE(showsText("leftover.title"));
      EXPECT_EQ(history_->shares().size(), 1U) << "not without a question";
      click("forget.remove", message());
    }
    EXPECT_TRUE(history_->shares().empty());
    EXPECT_EQ(count("delete session-1"), isExpired ? 0 : 1);
  }
}

TEST_F(SharesTest, AHistoryThatCannotBeUsedIsSaidAndOneThatChangesIsReadAgain) {
  remember();
  openShares();
  remember();
  QWidget front;
  test::showActive(front);
  test::showActive(*window_);
  EXPECT_EQ(cell(1, SharesModel::title), "Old");
  press(Qt::Key_Escape);
  EXPECT_TRUE(showsText("drop.title"));
  useHistory(std::nullopt);
  openShares();
  EXPECT_TRUE(showsText("history.title"));
}

}  // namespace
}  // namespace quillbay::desktop
