#include "hosts/cli/ResultOutput.h"

#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/URLError.h>
#include <fcntl.h>
#include <gtest/gtest.h>

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

FailureReport reportOf(const QuillbayCloudError& error) {
  return FailureReport::of(error, {.cause = host::FailureCause::serviceBusy,
                                   .whatFailed = "it failed",
                                   .whatToDo = {},
                                   .detail = "why"});
}

TEST(ResultOutput, anEventIsOneLineOfASCIIWithWhatIsKnown) {
  const auto noRoute = std::make_shared<const platform::URLError>(
      platform::URLError::Code::cannotConnectToHost, "no route");
  const auto use = [&](ResultOutput& out) {
    out.sessionCreated(kFullSession);
    out.sessionCreated(session(R"({"id":"s1","url":"https://x/s","items":[]})"));
    FailureReport report = reportOf(QuillbayCloudError::aws({"AccessDenied", "No\n\xff"}));
    report.file = "a\xff";
    out.failed(report);
    out.failed(reportOf(QuillbayCloudError::webservice("Full", 507)));
    out.failed(reportOf(QuillbayCloudError::underlying(noRoute)));
    out.retrying(std::chrono::seconds(2), 1, "connection-lost");
    out.cancelled();
  };
  const char* expected =
      R"-({"event":"session","id":"s1","token":"t1","url":"https://x/s","title":"T\u00fc\u009b","expires":"1970-01-01T00:01:00Z"}
{"event":"session","id":"s1","url":"https://x/s"}
{"event":"error","case":"aws","description":"No\n\ufffd","code":"AccessDenied","cause":"service-busy","file":"a\ufffd","detail":"it failed (why)"}
{"event":"error","case":"webservice","description":"Full","status":507,"cause":"service-busy","detail":"it failed (why)"}
{"event":"error","case":"underlying","cause":"service-busy","detail":"it failed (why)"}
{"event":"retry","in":2,"attempt":1,"cause":"connection-lost"}
{"event":"cancelled"}
)-";
  EXPECT_EQ(written(ResultOutput::json, use), expected);
}

TEST(ResultOutput, progressNeverFallsRepeatsOrReachesOneBeforeTheEnd) {
  const auto use = [](ResultOutput& out) {
    for (const double fraction : {0.42, 0.42001, 0.3, 0.99999, 1.0}) {
      out.progressed({fraction, "uploading", "f", 3, 4});
    }
    out.progressed({0.9999, "finalizing", std::nullopt, 4, 4});
    out.done(4);
  };
  const char* expected =
      R"-({"event":"progress","fraction":0.42,"step":"uploading","file":"f","bytes":3,"total":4}
{"event":"progress","fraction":0.9999,"step":"uploading","file":"f","bytes":3,"total":4}
{"event":"progress","fraction":0.9999,"step":"finalizing","bytes":4,"total":4}
{"event":"progress","fraction":1.0,"step":"finished","bytes":4,"total":4}
{"event":"done"}
)-";
  EXPECT_EQ(written(ResultOutput::json, use), expected);
}

}  // namespace
}  // namespace quillbay::cli
