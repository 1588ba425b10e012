#include <QuillbayCloud/service/MimeTypes.h>
#include <QuillbayCloud/service/RequestFactory.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::RequestFactory;
using cloud::SessionConfiguration;
using cloud::SessionContext;
using cloud::SessionLinkType;
using nlohmann::json;
using platform::URL;
using Disposition = RequestFactory::ContentDispositionType;
using HeaderFields = decltype(platform::URLRequest::headerFields);

const std::string kService = "https://" QUILLBAY_SERVICE_HOST "/cloud/";

class RequestFactoryTest : public testing::Test {
 protected:
  URL file(const std::string& name, std::string_view content = "") const {
    return URL::fileURL(folder_.write(name, content));
  }
  RequestFactory::Result createSession(
      std::vector<URL> files, const RequestFactory::Fingerprints& fingerprints = {},
      const SessionConfiguration& configuration = SessionConfiguration::default_()) const {
    return factory_->createSessionRequest(SessionContext("another", std::move(files)), fingerprints,
                                          configuration);
  }

  const TemporaryFolder folder_;
  const std::shared_ptr<const RequestFactory> factory_ = RequestFactory::create("host-1");
};

TEST_F(RequestFactoryTest, ServiceRequestsHaveTheirMethodAddressFieldsAndBody) {
  const std::string tokenField = "X-QUILLBAY-SESSION-TOKEN";
  const struct {
    platform::URLRequest request;
    const char* method;
    const char* address;
    HeaderFields headerFields;
    std::optional<std::string> body;
  } rows[] = {
      {*createSession({}), "POST", "session", {}, R"({"items":[],"config":{"link_type":"page"}})"},
      {factory_->deleteSessionRequest("s", "t"), "DELETE", "session/s", {{tokenField, "t"}}, {}},
      {factory_->uploadUrlRequest("s", "i", ""),
       "PUT",
       "session/s/items/i/upload_url",
       {{tokenField, ""}, {"X-QUILLBAY-CLOUD-SCP", "1"}},
       {}},
      {factory_->finalizeRequest("s", "i", "t", "\"e\""),
       "PUT",
       "session/s/items/i/finalize",
       {{tokenField, "t"}},
       R"({"etag":"\"e\""})"},
      // What no address allows is encoded in place.
      {factory_->deleteSessionRequest("a b\xC3\xA9/%20", ""),
       "DELETE",
       "session/a%20b%C3%A9/%20",
       {{tokenField, ""}},
       {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.address);
    EXPECT_EQ(row.request.method, row.method);
    EXPECT_EQ(row.request.url.absoluteString(), kService + "host-1/" + row.address);
    EXPECT_EQ(row.request.headerFields, row.headerFields);
    EXPECT_EQ(row.request.body, row.body);
    EXPECT_EQ(row.request.timeoutSeconds, 60);
  }
}

TEST_F(RequestFactoryTest, AnnouncesFilesInOrderWithSizeTypeAndOnlyTheirOwnFingerprint) {
  const URL first = file("b.bin", std::string(1 << 20, 'x'));
  const URL second = file("IMAGE.PNG");
  const auto request = createSession({first, second}, {{second, "f00"}});
  ASSERT_TRUE(request);
  EXPECT_EQ(json::parse(*request->body)["items"], R"([
      {"file_name": "b.bin", "content_length": "1048576",
       "content_type": "application/octet-stream"},
      {"file_name": "IMAGE.PNG", "content_length": "0", "content_type": "image/png", "f": "f00"}
    ])"_json);
}

TEST_F(RequestFactoryTest, SendsOnlyWhatTheConfigurationHoldsAndEverythingAsText) {
  const auto at = [](double seconds) { return platform::dateFromSecondsSince1970(seconds); };
  const std::pair<SessionConfiguration, json> rows[] = {
      {{"", at(1767225600), SessionLinkType::directDownload, "", true},
       R"({"link_type":"download","title":"","expiration":"1767225600.0","p":"","is_secret":"1"})"_json},
      {{"Ü", at(1767225600.125), SessionLinkType::directLink, "p\xC3\xA4ss", false},
       R"({"link_type":"direct","title":"Ü","expiration":"1767225600.125","p":"cMOkc3M="})"_json},
      {SessionConfiguration::default_(), R"({"link_type":"page"})"_json},
  };
  for (const auto& [configuration, config] : rows) {
    const auto request = createSession({}, {}, configuration);
    ASSERT_TRUE(request);
    EXPECT_EQ(json::parse(*request->body)["config"], config);
  }
}

TEST_F(RequestFactoryTest, TheFirstFileThatCannotBeAnnouncedEndsTheBuild) {
  const URL good = file("good");
  const URL missing = URL::fileURL(folder_ / "missing");
  const auto pipe = folder_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const std::pair<URL, const char*> rows[] = {
      {URL::fileURL(pipe), "a file has no size"},
      {URL::fileURL(folder_.path()), "a file has no size"},
      {missing, "missing"},
  };
  for (const auto& [bad, why] : rows) {
    const auto creation = createSession({good, bad, missing});
    ASSERT_FALSE(creation);
    EXPECT_TRUE(creation.error()->description().contains(why)) << creation.error()->description();
    EXPECT_FALSE(factory_->uploadRequest(good, bad, Disposition::inline_()));
  }
}

TEST_F(RequestFactoryTest, WhatCannotBeSentFailsTheBuildAndThrowsNothing) {
  EXPECT_FALSE(createSession({file("caf\xE9.txt")}));
  for (const char* number : {"nan", "inf", "-inf"}) {
    const platform::Date date = platform::dateFromSecondsSince1970(std::strtod(number, nullptr));
    EXPECT_FALSE(createSession({}, {}, {{}, date, {}, {}, false})) << number;
  }
  EXPECT_FALSE(factory_->finalizeRequest("s", "i", "t", "\xFF").body);
}

TEST_F(RequestFactoryTest, TheUploadHasThreeFieldsAndItsOwnTimeout) {
  const URL address = *URL::parse("https://s.example/b/k?X-Sig=a%2Fb+c");
  const auto request =
      factory_->uploadRequest(address, file("a.tar.gz", "12345"), Disposition::attachment());
  ASSERT_TRUE(request);
  EXPECT_EQ(request->method, "PUT");
  EXPECT_EQ(request->url, address);
  EXPECT_EQ(request->timeoutSeconds, 30);
  EXPECT_EQ(request->headerFields,
            (HeaderFields{{"Content-Length", "5"},
                          {"Content-Disposition",
                           "attachment; filename=\"a.tar.gz\"; filename*=UTF-8''a.tar.gz"},
                          {"Content-Type", "application/octet-stream"}}));
}

TEST_F(RequestFactoryTest, DispositionsQuoteTheNameVerbatimAndEscapeItAsTold) {
  const std::pair<const char*, const char*> rows[] = {
      {"My Photo.JPG", "My+Photo.JPG"},
      {"r\xC3\xA9sum\xC3\xA9.pdf", "r%C3%A9sum%C3%A9.pdf"},
      {"a&b (1).txt", "a%26b+%281%29.txt"},
      {"say \"\\+~%\".txt", "say+%22%5C%2B~%25%22.txt"},
      {"-_.!*';:@=$,?#[]|", "-_.%21%2A%27%3B%3A%40%3D%24%2C%3F%23%5B%5D%7C"},
  };
  for (const auto& [name, escapedName] : rows) {
    const auto request = factory_->uploadRequest(*URL::parse("https://s.example/"), file(name),
                                                 Disposition::inline_());
    ASSERT_TRUE(request);
    EXPECT_EQ(request->headerFields.at("Content-Disposition"),
              "inline; filename=\"" + std::string(name) + "\"; filename*=UTF-8''" + escapedName);
  }
}

TEST(MimeType, GoesByTheLastExtensionInAnyCase) {
  const std::pair<const char*, const char*> rows[] = {
      {"a.JPG", "image/jpeg"},
      {"a.png", "image/png"},
      {"a.txt", "text/plain"},
      {"a.pdf", "application/pdf"},
      {"a.docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
      {"a.mp4", "video/mp4"},
      {"a.pdf.txt", "text/plain"},
      {".png", "image/png"},
      {"a.txt/", "text/plain"},
      {"a.txt/b", "application/octet-stream"},
      {"backup.tar.gz", "application/octet-stream"},
  };
  for (const auto& [path, type] : rows) EXPECT_EQ(cloud::mimeType(path), type) << path;
}

}  // namespace
}  // namespace quillbay::test
