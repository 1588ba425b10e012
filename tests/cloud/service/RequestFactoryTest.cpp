#include <QuillbayCloud/service/MimeTypes.h>
#include <QuillbayCloud/service/RequestFactory.h>
#include <QuillbayPlatform/JSONError.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "CloudTesting.h"
#include "TemporaryFolder.h"

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
  std::string contentDisposition(const std::string& name, Disposition type) const {
    const auto request =
        factory_->uploadRequest(*URL::parse("https://s.example/"), file(name), type);
    return request ? request->headerFields.at("Content-Disposition") : "";
  }

  const TemporaryFolder folder_;
  const std::shared_ptr<const RequestFactory> factory_ = RequestFactory::create("host-1");
};

TEST_F(RequestFactoryTest, ServiceRequestsHaveTheirMethodAddressFieldsAndBody) {
  const auto creation = createSession({});
  ASSERT_TRUE(creation);
  EXPECT_EQ(creation->method, "POST");
  EXPECT_EQ(creation->url.absoluteString(), kService + "host-1/session");
  EXPECT_EQ(creation->headerFields, HeaderFields());
  EXPECT_EQ(json::parse(*creation->body), R"({"items":[],"config":{"link_type":"page"}})"_json);
  EXPECT_EQ(creation->timeoutSeconds, 60);

  const auto deletion = factory_->deleteSessionRequest("s", "t");
  EXPECT_EQ(deletion.method, "DELETE");
  EXPECT_EQ(deletion.url.absoluteString(), kService + "host-1/session/s");
  EXPECT_EQ(deletion.headerFields, (HeaderFields{{"X-QUILLBAY-SESSION-TOKEN", "t"}}));
  EXPECT_FALSE(deletion.body);

  const auto uploadUrl = factory_->uploadUrlRequest("s", "i", "");
  EXPECT_EQ(uploadUrl.method, "PUT");
  EXPECT_EQ(uploadUrl.url.absoluteString(), kService + "host-1/session/s/items/i/upload_url");
  EXPECT_EQ(uploadUrl.headerFields,
            (HeaderFields{{"X-QUILLBAY-SESSION-TOKEN", ""}, {"X-QUILLBAY-CLOUD-SCP", "1"}}));
  EXPECT_FALSE(uploadUrl.body);

  const auto finalization = factory_->finalizeRequest("s", "i", "t", "\"e\"");
  EXPECT_EQ(finalization.method, "PUT");
  EXPECT_EQ(finalization.url.absoluteString(), kService + "host-1/session/s/items/i/finalize");
  EXPECT_EQ(finalization.headerFields, (HeaderFields{{"X-QUILLBAY-SESSION-TOKEN", "t"}}));
  EXPECT_EQ(finalization.body, R"({"etag":"\"e\""})");
  EXPECT_EQ(finalization.timeoutSeconds, 60);
}

TEST_F(RequestFactoryTest, IdentifiersThatNoAddressAllowsAreEncodedInPlace) {
  const auto request = factory_->deleteSessionRequest("a b\xC3\xA9/%20", "");
  EXPECT_EQ(request.url.absoluteString(), kService + "host-1/session/a%20b%C3%A9/%20");
}

TEST_F(RequestFactoryTest, AFinalizeTagThatIsNoUTF8GoesOutWithoutABody) {
  EXPECT_FALSE(factory_->finalizeRequest("s", "i", "t", "\xFF").body);
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

struct ConfigurationRow {
  SessionConfiguration configuration;
  json config;
};

TEST_F(RequestFactoryTest, SendsOnlyWhatTheConfigurationHoldsAndEverythingAsText) {
  const auto at = [](double seconds) { return platform::dateFromSecondsSince1970(seconds); };
  const ConfigurationRow rows[] = {
      {{"", at(1767225600), SessionLinkType::directDownload, "", true},
       R"({"link_type":"download","title":"","expiration":"1767225600.0","p":"","is_secret":"1"})"_json},
      {{std::nullopt, at(1767000000), SessionLinkType::directLink, "p\xC3\xA4ss", false},
       R"({"link_type":"direct","expiration":"1767000000.0","p":"cMOkc3M="})"_json},
      {{"Ü", at(1767225600.125), SessionLinkType::page, std::nullopt, false},
       R"({"link_type":"page","title":"Ü","expiration":"1767225600.125"})"_json},
      {{std::nullopt, at(-0.5), SessionLinkType::page, std::nullopt, false},
       R"({"link_type":"page","expiration":"-0.5"})"_json},
  };
  for (const auto& row : rows) {
    const auto request = createSession({}, {}, row.configuration);
    ASSERT_TRUE(request);
    EXPECT_EQ(json::parse(*request->body)["config"], row.config);
  }
}

TEST_F(RequestFactoryTest, TheFirstFileThatCannotBeAnnouncedEndsTheBuild) {
  const URL good = file("good");
  const URL missing = URL::fileURL(folder_ / "missing");
  const auto withMissing = createSession({good, missing});
  ASSERT_FALSE(withMissing);
  EXPECT_NE(withMissing.error()->description().find("missing"), std::string::npos);

  const auto pipe = folder_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const auto& path : {pipe, folder_.path()}) {
    const auto withoutSize = createSession({good, URL::fileURL(path), missing});
    ASSERT_FALSE(withoutSize) << path;
    const auto* error = dynamic_cast<const RequestFactory::Error*>(withoutSize.error().get());
    ASSERT_TRUE(error) << path;
    EXPECT_EQ(error->value(), RequestFactory::Error::Case::invalidFileSize);
    EXPECT_FALSE(factory_->uploadRequest(good, URL::fileURL(path), Disposition::inline_()));
  }
}

TEST_F(RequestFactoryTest, AFileNameThatIsNoUTF8FailsTheBuildAndThrowsNothing) {
  const auto request = createSession({file("caf\xE9.txt")});
  ASSERT_FALSE(request);
  const auto* error = dynamic_cast<const platform::JSONError*>(request.error().get());
  ASSERT_TRUE(error);
  EXPECT_EQ(error->kind(), platform::JSONError::Kind::unwritable);
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
  EXPECT_EQ(contentDisposition("My Photo.JPG", Disposition::attachment()),
            "attachment; filename=\"My Photo.JPG\"; filename*=UTF-8''My+Photo.JPG");
  EXPECT_EQ(contentDisposition("r\xC3\xA9sum\xC3\xA9.pdf", Disposition::attachment()),
            "attachment; filename=\"r\xC3\xA9sum\xC3\xA9.pdf\"; "
            "filename*=UTF-8''r%C3%A9sum%C3%A9.pdf");
  EXPECT_EQ(contentDisposition("a&b (1).txt", Disposition::inline_()),
            "inline; filename=\"a&b (1).txt\"; filename*=UTF-8''a%26b+%281%29.txt");
  EXPECT_EQ(contentDisposition("say \"\\+~%\".txt", Disposition::inline_()),
            "inline; filename=\"say \"\\+~%\".txt\"; filename*=UTF-8''say+%22%5C%2B~%25%22.txt");
}

TEST(MimeTypes, OnlyTheLastExtensionOfTheNameCounts) {
  const std::pair<const char*, const char*> rows[] = {
      {"/a/IMAGE.PNG", "image/png"},
      {"backup.tar.gz", "application/octet-stream"},
      {"a.b.jpeg", "image/jpeg"},
      {"/folder.png/name", "application/octet-stream"},
      {"name.", "application/octet-stream"},
      {"", "application/octet-stream"},
      {"x.3gp", "video/3gpp"},
      {"x.avi", "video/x-msvideo"},
      {"x.svgz", "image/svg+xml"},
      {"x.\xC3\x9F", "application/octet-stream"},
  };
  for (const auto& [path, type] : rows) EXPECT_EQ(cloud::mimeType(path), type) << path;
}

TEST(ContentDispositionType, IsMadeOfItsExactRawValueOnly) {
  EXPECT_EQ(Disposition::fromRawValue("inline"), Disposition::inline_());
  EXPECT_EQ(Disposition::fromRawValue("attachment"), Disposition::attachment());
  EXPECT_FALSE(Disposition::fromRawValue("Inline"));
}

}  // namespace
}  // namespace quillbay::test
