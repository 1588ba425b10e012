#include <QuillbayCloud/service/MimeTypes.h>
#include <QuillbayCloud/service/RequestFactory.h>
#include <sys/stat.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::RequestFactory;
using cloud::SessionConfiguration;
using cloud::SessionContext;
using cloud::SessionLinkType;
using platform::URL;
using Disposition = RequestFactory::ContentDispositionType;

class RequestFactoryTest : public ServiceTest {
 protected:
  RequestFactory::Result createSession(
      std::vector<URL> files, const RequestFactory::Fingerprints& fingerprints = {},
      const SessionConfiguration& configuration = SessionConfiguration::default_()) const {
    return factory_.createSessionRequest(SessionContext("another", std::move(files)), fingerprints,
                                         configuration);
  }

  const RequestFactory& factory_ = webservice_->requestFactory();
};

/// The request in words: "60 s PUT ADDRESS, NAME: VALUE, ..., BODY".
std::string described(const platform::URLRequest& request) {
  std::string text = std::to_string(request.timeoutSeconds) + " s " + request.method + " " +
                     request.url.absoluteString();
  for (const auto& [name, value] : request.headerFields) text += ", " + name + ": " + value;
  return request.body ? text + ", " + *request.body : text;
}

TEST_F(RequestFactoryTest, RequestsHaveTheirTimeoutMethodAddressFieldsAndBody) {
  const std::string service = "https://" QUILLBAY_SERVICE_HOST "/cloud/host-1/session";
  const std::string token = ", X-QUILLBAY-SESSION-TOKEN: ";
  const URL first = file("b.bin", std::string(1 << 20, 'x'));
  const URL second = file("IMAGE.PNG");
  const auto at = [](double seconds) { return platform::dateFromSecondsSince1970(seconds); };
  const std::string create = "60 s POST " + service + R"(, {"items":[)";
  const std::pair<RequestFactory::Result, std::string> rows[] = {
      {createSession({}), create + R"(],"config":{"link_type":"page"}})"},
      {createSession({first, second}, {{second, "f00"}}),
       create + R"({"file_name":"b.bin","content_length":"1048576",)"
                R"("content_type":"application/octet-stream"},)"
                R"({"file_name":"IMAGE.PNG","content_length":"0","content_type":"image/png",)"
                R"("f":"f00"}],"config":{"link_type":"page"}})"},
      {createSession({}, {}, {"", at(1767225600), SessionLinkType::directDownload, "", true}),
       create + R"(],"config":{"link_type":"download","title":"","expiration":"1767225600.0",)"
                R"("p":"","is_secret":"1"}})"},
      {createSession({}, {},
                     {"Ü", at(1767225600.125), SessionLinkType::directLink, "p\xC3\xA4ss", false}),
       create + R"(],"config":{"link_type":"direct","title":"Ü","expiration":"1767225600.125",)"
                R"("p":"cMOkc3M="}})"},
      {factory_.deleteSessionRequest("s", "t"), "60 s DELETE " + service + "/s" + token + "t"},
      {factory_.uploadUrlRequest("s", "i", ""),
       "60 s PUT " + service + "/s/items/i/upload_url, X-QUILLBAY-CLOUD-SCP: 1" + token},
      {factory_.finalizeRequest("s", "i", "t", "\"e\""),
       "60 s PUT " + service + "/s/items/i/finalize" + token + R"(t, {"etag":"\"e\""})"},
      // What no address allows is encoded in place.
      {factory_.deleteSessionRequest("a b\xC3\xA9/%20", ""),
       "60 s DELETE " + service + "/a%20b%C3%A9/%20" + token},
      {factory_.uploadRequest(*URL::parse("https://s.example/b/k?X-Sig=a%2Fb+c"),
                              file("a.tar.gz", "12345"), Disposition::attachment()),
       "30 s PUT https://s.example/b/k?X-Sig=a%2Fb+c, Content-Disposition: attachment; "
       "filename=\"a.tar.gz\"; filename*=UTF-8''a.tar.gz, Content-Length: 5, "
       "Content-Type: application/octet-stream"},
  };
  for (const auto& [request, description] : rows) EXPECT_EQ(described(*request), description);
}

TEST_F(RequestFactoryTest, TheFirstFileThatCannotBeAnnouncedEndsTheBuild) {
  const URL good = file("good");
  const URL missing = URL::fileURL(folder_ / "missing");
  const URL pipe = URL::fileURL(folder_ / "pipe");
  ASSERT_EQ(::mkfifo(pipe.path().c_str(), 0600), 0);
  const std::pair<URL, const char*> rows[] = {
      {pipe, "a file has no size"},
      {URL::fileURL(folder_.path()), "a file has no size"},
      {missing, "missing"},
  };
  for (const auto& [bad, why] : rows) {
    const auto creation = createSession({good, bad, missing});
    ASSERT_FALSE(creation);
    EXPECT_TRUE(creation.error()->description().contains(why)) << creation.error()->description();
    EXPECT_FALSE(factory_.uploadRequest(good, bad, Disposition::inline_()));
  }
}

TEST_F(RequestFactoryTest, WhatCannotBeSentFailsTheBuildAndThrowsNothing) {
  EXPECT_FALSE(createSession({file("caf\xE9.txt")}));
  for (const char* number : {"nan", "inf", "-inf"}) {
    const platform::Date date = platform::dateFromSecondsSince1970(std::strtod(number, nullptr));
    EXPECT_FALSE(createSession({}, {}, {{}, date, {}, {}, false})) << number;
  }
  EXPECT_FALSE(factory_.finalizeRequest("s", "i", "t", "\xFF").body);
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
    const auto request = factory_.uploadRequest(*URL::parse("https://s.example/"), file(name),
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
