#include "hosts/cli/ResultOutput.h"

#include <QuillbayPlatform/JSONDecoder.h>
#include <fcntl.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "TemporaryFolder.h"
#include "hosts/common/FileDescriptor.h"

namespace quillbay::cli {
namespace {

using cloud::QuillbayCloudError;

cloud::Session session(const std::string& text) {
  return *platform::JSONDecoder().decode<cloud::Session>(text);
}

const cloud::Session kFullSession = session(
    R"({"id":"s1","token":"t1","url":"https://x/s","title":"T\u00fc\u009b","expiration":60,"items":[]})");

/// What `use` makes an output write.
std::string written(std::unique_ptr<ResultOutput> (*make)(int),
                    const std::function<void(ResultOutput&)>& use) {
  const test::TemporaryFolder folder;
  const std::string path = folder.write("output", "");
  const host::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  use(*make(file.get()));
  return test::readFile(path);
}

struct NoRoute final : platform::Error {
  std::string description() const override { return "no route"; }
};

TEST(ResultOutput, anEventIsOneLineOfASCIIWithWhatIsKnown) {
  EXPECT_EQ(
      written(ResultOutput::json,
              [](ResultOutput& out) {
                out.sessionCreated(kFullSession);
                out.sessionCreated(session(R"({"id":"s1","url":"https://x/s","items":[]})"));
                out.failed(
                    FailureReport::of(QuillbayCloudError::aws({"AccessDenied", "No\n\xff"})));
                out.failed(FailureReport::of(QuillbayCloudError::webservice("Full", 507)));
                out.failed(FailureReport::of(
                    QuillbayCloudError::underlying(std::make_shared<const NoRoute>())));
              }),
      R"({"event":"session","id":"s1","token":"t1","url":"https://x/s","title":"T\u00fc\u009b","expires":"1970-01-01T00:01:00Z"}
{"event":"session","id":"s1","url":"https://x/s"}
{"event":"error","case":"aws","description":"No\n\ufffd","code":"AccessDenied"}
{"event":"error","case":"webservice","description":"Full","status":507}
{"event":"error","case":"underlying"}
)");
}

TEST(ResultOutput, progressNeverFallsRepeatsOrReachesOneBeforeTheEnd) {
  const auto use = [](ResultOutput& out) {
    for (const double fraction : {0.0, 0.42, 0.42001, 0.3, 0.99999, 1.0}) out.progressed(fraction);
  };
  EXPECT_EQ(written(ResultOutput::json, use),
            "{\"event\":\"progress\",\"fraction\":0.42}\n"
            "{\"event\":\"progress\",\"fraction\":0.9999}\n");
}

}  // namespace
}  // namespace quillbay::cli
