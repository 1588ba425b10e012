#include "hosts/cli/ResultOutput.h"

#include <QuillbayPlatform/JSONDecoder.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>
#include <ostream>
#include <string>

#include "hosts/common/FileDescriptor.h"

namespace quillbay::cli {
namespace {

cloud::Session session(const std::string& text) {
  auto decoded = platform::JSONDecoder().decode<cloud::Session>(text);
  EXPECT_TRUE(decoded) << decoded.error()->description();
  return *decoded;
}

const char* const kFullSession =
    R"({"id":"s1","token":"t1","url":"https://x/s","title":"T\u00fc\u009b","expiration":60,"items":[]})";
const char* const kBareSession = R"({"id":"s1","url":"https://x/s","items":[]})";

using Maker = std::unique_ptr<ResultOutput> (*)(int);
using Use = std::function<void(ResultOutput&)>;

/// What `use` makes an output write.
std::string written(Maker make, const Use& use) {
  std::array<int, 2> ends{};
  EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
  const host::FileDescriptor source(ends[0]);
  {
    const host::FileDescriptor sink(ends[1]);
    use(*make(sink.get()));
  }
  std::string text;
  std::array<char, 4096> buffer{};
  while (true) {
    const ssize_t count = ::read(source.get(), buffer.data(), buffer.size());
    if (count <= 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

struct Line {
  const char* name;
  Use use;
  const char* text;

  friend void PrintTo(const Line& row, std::ostream* out) { *out << row.name; }
};

class JSONEvent : public testing::TestWithParam<Line> {};

TEST_P(JSONEvent, isThisLine) {
  EXPECT_EQ(written(ResultOutput::json, GetParam().use), GetParam().text);
}

FailureReport report(const cloud::QuillbayCloudError& error) { return FailureReport::of(error); }

struct Silent final : platform::Error {
  std::string description() const override { return "no route"; }
};

INSTANTIATE_TEST_SUITE_P(
    ResultOutput, JSONEvent,
    testing::Values(
        Line{
            "session", [](auto& out) { out.sessionCreated(session(kFullSession)); },
            R"({"event":"session","id":"s1","token":"t1","url":"https://x/s","title":"T\u00fc\u009b","expires":"1970-01-01T00:01:00Z"})"
            "\n"},
        Line{"bareSession", [](auto& out) { out.sessionCreated(session(kBareSession)); },
             R"({"event":"session","id":"s1","url":"https://x/s"})"
             "\n"},
        Line{"done", [](auto& out) { out.done(); },
             "{\"event\":\"progress\",\"fraction\":1.0}\n{\"event\":\"done\"}\n"},
        Line{"deleted", [](auto& out) { out.deleted(); }, "{\"event\":\"deleted\"}\n"},
        Line{"aws",
             [](auto& out) {
               out.failed(report(cloud::QuillbayCloudError::aws({"AccessDenied", "No\n\xff"})));
             },
             R"({"event":"error","case":"aws","description":"No\n\ufffd","code":"AccessDenied"})"
             "\n"},
        Line{"webservice",
             [](auto& out) {
               out.failed(report(cloud::QuillbayCloudError::webservice("Full", 507)));
             },
             R"({"event":"error","case":"webservice","description":"Full","status":507})"
             "\n"},
        Line{"underlying",
             [](auto& out) {
               out.failed(
                   report(cloud::QuillbayCloudError::underlying(std::make_shared<const Silent>())));
             },
             R"({"event":"error","case":"underlying"})"
             "\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ResultOutput, theCasesWithoutValuesKeepTheirNames) {
  using cloud::QuillbayCloudError;
  EXPECT_STREQ(report(QuillbayCloudError::invalidFile()).caseName(), "invalidFile");
  EXPECT_STREQ(report(QuillbayCloudError::invalidResponse()).caseName(), "invalidResponse");
  EXPECT_STREQ(report(QuillbayCloudError::missingItems()).caseName(), "missingItems");
  EXPECT_STREQ(report(QuillbayCloudError::fingerprintFailure()).caseName(), "fingerprintFailure");
}

TEST(ResultOutput, progressNeverFallsRepeatsOrReachesOneBeforeTheEnd) {
  EXPECT_EQ(written(ResultOutput::json,
                    [](auto& out) {
                      for (const double fraction : {0.0, 0.42, 0.42001, 0.3, 0.99999, 1.0}) {
                        out.progressed(fraction);
                      }
                    }),
            "{\"event\":\"progress\",\"fraction\":0.42}\n"
            "{\"event\":\"progress\",\"fraction\":0.9999}\n");
}

TEST(ResultOutput, plainOutputIsTheLinkAlone) {
  EXPECT_EQ(written(ResultOutput::plain,
                    [](auto& out) {
                      out.sessionCreated(session(kFullSession));
                      out.progressed(0.5);
                      out.failed(report(cloud::QuillbayCloudError::invalidFile()));
                      out.deleted();
                      out.done();
                    }),
            "https://x/s\n");
  EXPECT_EQ(written(ResultOutput::plain,
                    [](auto& out) { out.doomedSessionCreated(session(kFullSession)); }),
            "");
}

TEST(ResultOutput, aFailedWriteIsRememberedWithItsReason) {
  const host::FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  const auto output = ResultOutput::plain(full.get());
  output->sessionCreated(session(kFullSession));
  EXPECT_EQ(output->writeError(), ENOSPC);
}

}  // namespace
}  // namespace quillbay::cli
