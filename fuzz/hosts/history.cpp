// The history, in a database whose rows other programs have written.
#include <QuillbayPlatform/JSONDecoder.h>
#include <SQLiteCpp/SQLiteCpp.h>
#include <fuzz/support/Expect.h>
#include <fuzz/support/MemoryFolder.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "hosts/cli/ShareTable.h"
#include "hosts/common/History.h"
#include "hosts/common/PlainText.h"

using namespace quillbay;
using fuzz::expect;
using host::History;
using host::RememberedFile;
using host::RememberedShare;
using State = RememberedShare::State;

namespace {

const platform::Date now = platform::dateFromSecondsSince1970(1'700'000'000);
const std::vector<RememberedFile> soundFiles{{"/home/a/b.txt", 5, true},
                                             {"/home/a/c\xFF", 7, false}};

/// As the history makes it, without the constraints that other programs may not keep to.
constexpr const char* looseSchema = R"(
CREATE TABLE share (id INTEGER PRIMARY KEY, created, instance, session, link, record, link_type,
  state, uploader);
CREATE TABLE file (share INTEGER, position, path, byte_count, has_arrived);
PRAGMA user_version = 1;
)";

/// The history of a folder of its own, and another program that writes into its database.
class SharedDatabase {
 public:
  SharedDatabase() : other_(file_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE) {
    other_.exec(looseSchema);
    history_ = std::make_unique<History>(file_);
  }

  History& history() { return *history_; }
  SQLite::Database& other() { return other_; }

 private:
  fuzz::MemoryFolder folder_;
  std::filesystem::path file_ = folder_.path() / "history.sqlite";
  SQLite::Database other_;
  std::unique_ptr<History> history_;
};

void bindAnything(SQLite::Statement& statement, int index, FuzzedDataProvider& input) {
  const auto text = [&] { return input.ConsumeRandomLengthString(40); };
  switch (input.ConsumeIntegralInRange(0, 5)) {
    case 0:
      return statement.bind(index);
    case 1:
      return statement.bind(index, input.ConsumeIntegral<std::int64_t>());
    case 2:
      return statement.bind(index, input.ConsumeFloatingPoint<double>());
    case 3:
      return statement.bind(index, text());
    case 4: {
      const std::string bytes = text();
      return statement.bind(index, bytes.data(), static_cast<int>(bytes.size()));
    }
    default:
      return statement.bind(index, input.PickValueInArray({0, 1, 2, -1}));
  }
}

/// A session's record with a few wild values, so that most can be read.
std::string recordText(FuzzedDataProvider& input) {
  nlohmann::json record{
      {"id", "s"}, {"token", "t"}, {"url", "https://q/s"}, {"items", nlohmann::json::array()}};
  record["title"] = input.ConsumeRandomLengthString(60);
  if (input.ConsumeBool()) record["expiration"] = input.ConsumeIntegral<std::int64_t>();
  if (input.ConsumeBool()) record["url"] = "https://q/" + input.ConsumeRandomLengthString(20);
  if (input.ConsumeBool()) record["id"] = input.ConsumeRandomLengthString(10);
  return record.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void addShare(SQLite::Database& database, FuzzedDataProvider& input, std::int64_t identifier) {
  SQLite::Statement share(database, "INSERT INTO share VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
  share.bind(1, identifier);
  for (int column = 2; column <= 9; ++column) bindAnything(share, column, input);
  if (input.ConsumeBool()) share.bind(6, recordText(input));
  if (input.ConsumeBool())
    share.bind(8, input.PickValueInArray({"uploading", "deleted", "complete"}));
  share.exec();
  for (int count = input.ConsumeIntegralInRange(0, 3); count > 0; --count) {
    SQLite::Statement file(database, "INSERT INTO file VALUES (?, ?, ?, ?, ?)");
    file.bind(1, identifier);
    for (int column = 2; column <= 5; ++column) bindAnything(file, column, input);
    file.exec();
  }
}

cloud::Session soundSession() {
  return platform::JSONDecoder()
      .decode<cloud::Session>(R"({"id":"sound","token":"t","url":"https://q/sound","items":[]})")
      .value();
}

/// The row that a program of ours adds, whatever others have written.
void expectSound(const std::optional<RememberedShare>& share, History& history) {
  expect(share && share->session == soundSession(), "a sound share is found");
  expect(share->fileCount == 2 && share->arrivedFileCount == 1 && share->byteCount == 12,
         "a sound share has its files");
  expect(history.files(share->identifier) == soundFiles, "a sound share has its files in order");
}

void expectConsistent(const RememberedShare& share, History& history) {
  const auto files = history.files(share.identifier);
  expect(files.size() == share.fileCount, "all files are counted");
  const auto arrived = std::ranges::count_if(files, &RememberedFile::hasArrived);
  expect(static_cast<std::size_t>(arrived) == share.arrivedFileCount, "arrived files are counted");
}

void expectShown(const std::vector<RememberedShare>& shares) {
  std::istringstream table(cli::shareTable(shares, now, 100));
  std::size_t lineCount = 0;
  for (std::string line; std::getline(table, line); ++lineCount) {
    const std::string end = "|";
    expect(host::plainLine(line + end) == line + end || line.size() > 400, "a row is a plain line");
  }
  expect(lineCount == shares.size() + 1, "each share is one row");
  std::istringstream objects(cli::shareObjects(shares, now));
  for (std::string line; std::getline(objects, line); --lineCount) {
    expect(nlohmann::json::accept(line), "each share is one object");
  }
  expect(lineCount == 1, "each share has an object");
}

void expectClaimedAndFinished(const RememberedShare& share, History& history) {
  const bool isFree = share.state != State::uploading;
  expect(history.claim(share.identifier) == isFree, "a share that no program uploads is claimed");
  expect(!history.claim(share.identifier), "a share is claimed once");
  history.noteArrivals(share.identifier, std::array<std::size_t, 2>{0, 1});
  history.setState(share.identifier, State::complete);
  const auto shares = history.shares();
  const auto found = std::ranges::find(shares, share.identifier, &RememberedShare::identifier);
  expect(found != shares.end() && found->state == State::complete, "a share can be finished");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  FuzzedDataProvider input(bytes, byteCount);
  static SharedDatabase database;
  History& history = database.history();
  {
    SQLite::Transaction transaction(database.other());
    database.other().exec("DELETE FROM share; DELETE FROM file;");
    for (std::int64_t id = 1; id <= 3 && input.remaining_bytes() > 0; ++id)
      addShare(database.other(), input, id);
    transaction.commit();
  }
  const std::int64_t sound =
      history.add("host-1", soundSession(), cloud::SessionLinkType::page, soundFiles, now);
  expectSound(history.find("https://q/sound"), history);

  const auto shares = history.shares();
  const auto newest = history.newest();
  expect(newest && newest->identifier == shares.front().identifier, "the newest comes first");
  for (const RememberedShare& share : shares) expectConsistent(share, history);
  expectShown(shares);
  for (const RememberedShare& share : shares) {
    if (share.identifier != sound) expectClaimedAndFinished(share, history);
  }
  history.forgetExpired(now);
  for (const RememberedShare& share : history.shares()) {
    expect(!share.isExpired(now) && share.state != State::deleted, "what is over is forgotten");
  }
  expectSound(history.find("sound"), history);
  expect(!history.problem(), "no row keeps the history from being used");
  return 0;
}
