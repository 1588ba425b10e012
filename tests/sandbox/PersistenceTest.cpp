#include <gtest/gtest.h>

#include "sandbox/model/SessionStore.h"
#include "sandbox/support/Files.h"
#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

using Persistence = RunningSandbox;

TEST_F(Persistence, KeepsSessionsUploadsAndAuthorityOverARestart) {
  const json session = createSession({letter, letter}, {{"title", "Post"}, {"p", "Z2VoZWlt"}});
  upload(session, 0, letter);
  const auto stored = put(uploadTarget(session, 1), letter);
  const std::string authority = readFile(server_->authorityFile());
  restart();
  EXPECT_EQ(readFile(server_->authorityFile()), authority);
  const auto reply = finalize(session, 1, stored->get_header_value("ETag"));
  const json after = json::parse(reply->body);
  EXPECT_EQ(after["title"], "Post");
  EXPECT_EQ(after["items"][0]["is_uploaded"], true);
  EXPECT_EQ(after["items"][1]["is_uploaded"], true);
  EXPECT_EQ(client_->Get(linkOf(session))->status, 403);
}

TEST_F(Persistence, WritesNoTokenOrPasswordToDiskAndKeepsItsKeysToItself) {
  const json session = createSession({letter}, {{"p", "dmVyeSBzZWNyZXQ="}});  // "very secret"
  std::string text;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
    if (!entry.is_regular_file()) continue;
    text += readFile(entry.path());
    using std::filesystem::perms;
    const bool isPrivate =
        (entry.status().permissions() & (perms::group_all | perms::others_all)) == perms::none;
    EXPECT_TRUE(isPrivate || entry.path().extension() != ".key") << entry.path();
  }
  EXPECT_TRUE(text.contains("letter.txt"));
  EXPECT_FALSE(text.contains(session["token"].get<std::string>()));
  EXPECT_FALSE(text.contains("very secret"));
  EXPECT_FALSE(text.contains("dmVyeSBzZWNyZXQ="));
}

TEST_F(Persistence, SurvivesAJournalLineThatWasCutShort) {
  const json session = createSession({letter, letter});
  upload(session, 0, letter);
  const auto journal = folder_ / "sessions" / session["id"].get<std::string>() / "journal.jsonl";
  writeFileAtomically(journal, readFile(journal) + "{\"item\":1,\"fin");
  restart();
  upload(session, 1, letter);
  restart();
  EXPECT_FALSE(client_->Get(linkOf(session))->body.contains("on its way"));
}

TEST(SessionStore, FreesTheSpaceOfExpiredSessionsAndForgetsThemInTheEnd) {
  TemporaryFolder folder;
  SessionStore sessions(folder.path(), [](const std::string& warning) { FAIL() << warning; });
  const Instant now = systemTime();
  CreateRequest request;
  request.expiration = now + std::chrono::hours(1);
  const auto session = sessions.create(makeSession("test", request).record);
  const auto objects = folder / session->record().identifier / "objects";
  sessions.sweep(now);
  EXPECT_TRUE(std::filesystem::exists(objects));
  sessions.sweep(now + std::chrono::hours(2));
  EXPECT_FALSE(std::filesystem::exists(objects));
  EXPECT_NE(sessions.findBySlug(session->record().slug), nullptr);
  sessions.sweep(now + std::chrono::days(40));
  EXPECT_EQ(sessions.findBySlug(session->record().slug), nullptr);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(Persistence, SharesNeitherItsFolderNorItsPort) {
  EXPECT_THROW(SandboxServer({.dataFolder = folder_.path()}), std::exception);
  TemporaryFolder other;
  EXPECT_THROW(SandboxServer({.port = server_->port(), .dataFolder = other.path()}),
               std::exception);
}

}  // namespace
}  // namespace quillbay::sandbox
