#include <QuillbayCloud/QuillbayCloud.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>

#include <optional>
#include <string>

#include "Promises.h"
#include "TestService.h"

using namespace quillbay;

namespace {

using Result = std::expected<cloud::Session, cloud::QuillbayCloudError>;

const std::string instanceIdentifier = "my-app";
const std::vector<platform::URL> files = {platform::URL::fileURL("video.mp4"),
                                          platform::URL::fileURL("report.pdf")};
std::shared_ptr<cloud::SessionController> controller;
std::optional<Result> end;

void done(Result result) {
  end = std::move(result);
  platform::stopMainQueue();
}

/// As a run leaves it that is cut short before its first upload.
std::string recordOfUnfinishedSession() {
  std::optional<cloud::Session> created;
  controller = cloud::SessionController::create(cloud::SessionContext(instanceIdentifier, files),
                                                cloud::SessionConfiguration::default_());
  controller->createSession(
      [&](const cloud::Session& session) {
        created = session;
        controller->cancel();
        platform::stopMainQueue();
      },
      done);
  platform::runMainQueue();
  expect(created.has_value(), "a session is created");
  return *platform::JSONEncoder(platform::JSONDatePolicy::secondsSince1970).encode(*created);
}

void resume(const std::string& record, const std::vector<std::size_t>& uploadedItems,
            std::string_view linkType) {
  // [restore]
  const platform::JSONDecoder decoder(platform::JSONDatePolicy::secondsSince1970);
  const auto session = decoder.decode<cloud::Session>(record);  // std::expected<Session, ErrorPtr>
  if (!session) return;

  controller = cloud::SessionController::create(
      cloud::SessionContext(instanceIdentifier, files),
      cloud::SessionConfiguration(std::nullopt, std::nullopt,
                                  cloud::SessionLinkType::fromRawValue(linkType), std::nullopt,
                                  false));
  controller->resumeSession(*session, uploadedItems, [](auto result) { done(result); });
  // [restore]
  platform::runMainQueue();
}

}  // namespace

int main() {
  useTestService();
  resume(recordOfUnfinishedSession(), {}, "page");
  expect(end && *end, "a session that was stored can be continued");
  expect(controller->uploadedItems().size() == files.size(), "every file has arrived");

  const cloud::Session session = **end;
  const auto uploadedItems = controller->uploadedItems();
  end.reset();
  // [resume]
  controller->resumeSession(session, uploadedItems, [](auto result) { done(result); });
  // [resume]
  platform::runMainQueue();
  expect(end && *end, "a session with nothing left ends well");
}
