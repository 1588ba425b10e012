#include <QuillbayCloud/Classes/SessionController.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::SessionLinkType;
using platform::URL;

using SessionControllerTest = ServiceTest;

TEST_F(SessionControllerTest, UploadsTheLastItemFirstOneAtATimeFromItsOwnFile) {
  Host host(files(3));
  host.onSession = [&] { EXPECT_EQ(service_.calls(), Lines{"create"}); };
  host.share();
  EXPECT_EQ(host.events, Lines());
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(host.events, (Lines{"session", "done"}));
  EXPECT_EQ(host.sessions.at(0), host.sessions.at(1));
  const Lines lines = RecordingLogger::lines();
  const std::string creating = "debug createSession(sessionCreation:completion:): ";
  EXPECT_EQ(lines.at(0), creating + "Creating fingerprints...");
  EXPECT_EQ(lines.at(1),
            creating + "Finished creating fingerprints, proceeding to create session...");
  EXPECT_EQ(lines.back(), "debug uploadNextItem(): No more uploads left, we are done");
  EXPECT_EQ(service_.calls(),
            (Lines{"create", "upload_url item-3", "store item-3", "finalize item-3",
                   "upload_url item-2", "store item-2", "finalize item-2", "upload_url item-1",
                   "store item-1", "finalize item-1"}));
  for (const std::string number : {"1", "2", "3"}) {
    EXPECT_EQ(service_.storedBytes("item-" + number), "content of file-" + number);
  }
  const std::string hash = "0b79f932aca63602096c74f2fb7b45d94ed3ba08399954129f9180edb6743c73";
  EXPECT_TRUE(service_.requests(Call::createSession).at(0).body.contains(hash));
}

TEST_F(SessionControllerTest, OnlyADirectLinkIsUploadedForInlineDisplay) {
  for (const auto linkType : SessionLinkType::allCases) {
    Host host(files(1), {{}, {}, linkType, {}, false});
    host.share();
    ASSERT_TRUE(host.waitForEnd());
    const auto disposition = service_.requests(Call::store).back().field("Content-Disposition");
    EXPECT_EQ(disposition->starts_with("inline;"), linkType == SessionLinkType::directLink);
  }
}

TEST_F(SessionControllerTest, ProgressGoesFromZeroToOneAndNeverBack) {
  auto urls = files(2);
  urls.push_back(URL::fileURL(folder_.writePattern("large", 3'000'000)));
  urls.push_back(file("empty", ""));
  Host host(urls);
  const auto& progress = host.controller->progress();
  EXPECT_EQ(progress->totalUnitCount(), 400);
  std::vector<double> fractions;
  const auto observation =
      progress->observe([&](const auto& p) { fractions.push_back(p.fractionCompleted()); });
  host.onSession = [&] { EXPECT_EQ(progress->fractionCompleted(), 0); };
  host.onEnd = [&] { EXPECT_EQ(progress->fractionCompleted(), 1); };
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  drainMainQueue();
  EXPECT_TRUE(std::ranges::is_sorted(fractions));
  ASSERT_FALSE(fractions.empty());
  EXPECT_EQ(fractions.back(), 1);
}

TEST_F(SessionControllerTest, FilesThatCannotBeAnnouncedEndTheRunBeforeAnyRequest) {
  const std::pair<std::vector<URL>, const char*> rows[] = {
      {{file("good", ""), URL::fileURL(folder_ / "missing")}, "fingerprintFailure"},
      {{file("caf\xE9", "no UTF-8")}, "invalidFile"},
  };
  for (const auto& [files, error] : rows) {
    Host host(files);
    host.share();
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_EQ(host.events, Lines{error});
  }
  EXPECT_EQ(service_.calls(), Lines());
  EXPECT_EQ(RecordingLogger::lines().at(1),
            "error createSession(sessionCreation:completion:): Failed to create "
            "fingerprints, stopping now");
}

TEST_F(SessionControllerTest, WhatStandsInTheWayEndsTheRunWithOneError) {
  const Reply noItems = Reply::json(R"({"id":"s","url":"https://q.example","items":[]})");
  const Reply threeItems = Reply::json(R"({"id":"s","url":"https://q.example","items":[
      {"id":"1","is_uploaded":false,"fingerprint":""},
      {"id":"2","is_uploaded":false,"fingerprint":""},
      {"id":"3","is_uploaded":false,"fingerprint":""}]})");
  const std::tuple<const char*, int, Call, Reply, Lines, std::size_t> rows[] = {
      {"no files", 0, Call::unknown, {}, {"session", "missingItems"}, 1},
      {"refused", 2, Call::createSession, gone_, {"webservice: status 410: Gone"}, 1},
      {"unreadable", 2, Call::createSession, Reply::empty(502), {"invalidResponse"}, 1},
      {"no items", 2, Call::createSession, noItems, {"session", "missingItems"}, 1},
      {"more items", 2, Call::createSession, threeItems, {"session", "invalidResponse"}, 1},
      {"second upload", 2, Call::store, Reply::empty(403), {"session", "invalidResponse"}, 6},
  };
  for (const auto& [name, fileCount, call, refusal, events, callCount] : rows) {
    SCOPED_TRACE(name);
    service_.setHook(call, [reply = refusal](const Request& request, const Reply& ordinary) {
      return request.target().contains("item-2") ? ordinary : reply;
    });
    const std::size_t earlierCallCount = service_.calls().size();
    Host host(files(fileCount));
    host.share();
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_EQ(host.events, events);
    EXPECT_EQ(service_.calls().size() - earlierCallCount, callCount);
    service_.setHook(call, nullptr);
  }
}

TEST_F(SessionControllerTest, AnAnnouncedFileMayShrinkOrVanish) {
  for (const bool vanishes : {false, true}) {
    const URL changing = file("changing", "content");
    Host host({changing});
    host.onSession = [&] {
      if (vanishes) return std::filesystem::remove(changing.path()), void();
      std::filesystem::resize_file(changing.path(), 3);
    };
    host.share();
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_EQ(host.events, (Lines{"session", vanishes ? "invalidFile" : "done"}));
  }
  EXPECT_EQ(service_.requests(Call::store).size(), 1U);
}

}  // namespace
}  // namespace quillbay::test
