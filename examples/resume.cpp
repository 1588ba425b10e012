// Shares files so that a run that was cut short can be continued: started again with the same state
// file and files, it uploads under the same link what has not arrived.
//
//   resume-example STATE-FILE FILE...

#include "TestService.h"

#include <QuillbayCloud/QuillbayCloud.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

using namespace quillbay;

namespace {

constexpr auto kDatePolicy = platform::JSONDatePolicy::secondsSince1970;

/// What is kept between launches: the session's record on the first line of the state file, and on
/// the others the positions of the files that have arrived. The instance, the files and the link
/// type must be the same, too; here the first and the last are constants, and the user names the
/// files again.
struct Unfinished {
  cloud::Session session;
  std::vector<std::size_t> uploadedItems;
};

std::optional<Unfinished> load(const std::filesystem::path& stateFile) {
  std::ifstream stream(stateFile);
  std::string record;
  std::getline(stream, record);
  const auto session = platform::JSONDecoder(kDatePolicy).decode<cloud::Session>(record);
  if (!session) return std::nullopt;
  Unfinished unfinished{*session, {}};
  for (std::size_t item = 0; stream >> item;) unfinished.uploadedItems.push_back(item);
  return unfinished;
}

void saveSession(const std::filesystem::path& stateFile, const cloud::Session& session) {
  const auto record = platform::JSONEncoder(kDatePolicy).encode(session);
  if (!record) return;
  std::ofstream stream(stateFile);
  // The record holds the session's token, a secret.
  using std::filesystem::perms;
  std::filesystem::permissions(stateFile, perms::owner_read | perms::owner_write);
  stream << *record << '\n';
}

void saveArrival(const std::filesystem::path& stateFile, std::size_t item) {
  std::ofstream(stateFile, std::ios::app) << item << '\n';
}

void show(const cloud::SessionActivity& activity) {
  if (activity.step != cloud::SessionActivity::Step::uploading) return;
  std::cerr << activity.file->url.lastPathComponent() << ": " << activity.sentByteCount << " of "
            << activity.totalByteCount << " bytes\n";
}

int share(const std::filesystem::path& stateFile, std::vector<platform::URL> files) {
  const auto controller = cloud::SessionController::create({"resume-example", std::move(files)},
                                                           cloud::SessionConfiguration::default_());
  const auto unfinished = load(stateFile);
  std::size_t savedItemCount = unfinished ? unfinished->uploadedItems.size() : 0;
  const auto saveArrivals = [&] {
    const auto& uploadedItems = controller->uploadedItems();
    while (savedItemCount < uploadedItems.size()) {
      saveArrival(stateFile, uploadedItems[savedItemCount++]);
    }
  };
  const auto observation = controller->observeActivity([&](const cloud::SessionActivity& activity) {
    saveArrivals();
    show(activity);
  });

  int status = EXIT_FAILURE;
  const auto completion = [&](const std::expected<cloud::Session, cloud::QuillbayCloudError>& end) {
    saveArrivals();
    if (end) {
      status = EXIT_SUCCESS;
      std::filesystem::remove(stateFile);
    } else {
      std::cerr << end.error().description() << '\n';
    }
    platform::stopMainQueue();
  };
  const auto showLink = [](const cloud::Session& session) {
    std::cout << session.url().absoluteString() << '\n' << std::flush;
  };
  if (unfinished) {
    showLink(unfinished->session);
    controller->resumeSession(unfinished->session, unfinished->uploadedItems, completion);
  } else {
    controller->createSession(
        [&](const cloud::Session& session) {
          saveSession(stateFile, session);
          showLink(session);
        },
        completion);
  }
  platform::runMainQueue();
  return status;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount < 3) {
    std::cerr << "usage: resume-example STATE-FILE FILE...\n";
    return EXIT_FAILURE;
  }
  std::vector<platform::URL> files;
  for (int i = 2; i < argumentCount; ++i) files.push_back(platform::URL::fileURL(arguments[i]));

  useTestService();
  return share(arguments[1], std::move(files));
}
