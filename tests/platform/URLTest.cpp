#include <QuillbayPlatform/URL.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

std::string textOf(const std::optional<URL>& url) { return url ? url->absoluteString() : "none"; }

TEST(URL, TellsItsComponents) {
  using Components = std::tuple<std::string, std::string, int, bool, std::string, std::string>;
  const std::pair<const char*, Components> cases[] = {
      {"HTTPS://A.Example/b/c%20d?q=/x#f", {"https", "a.example", 443, false, "/b/c d", "c d"}},
      {"http://a.example:/", {"http", "a.example", 80, false, "/", "/"}},
      {"https://user:pa:ss@a.example:1/", {"https", "a.example", 1, true, "/", "/"}},
      {"https://a.example?x@y:9/z", {"https", "a.example", 443, false, "", ""}},
      {"https://[::AB]:8443/x/", {"https", "::ab", 8443, false, "/x/", "x"}},
      {"https://a.example:65536/", {"https", "a.example", 0, false, "/", "/"}},
  };
  for (const auto& [text, expected] : cases) {
    const URL url = URL::parse(text).value();
    EXPECT_EQ(Components(url.scheme(), url.host(), url.port(), url.hasUserInfo(), url.path(),
                         url.lastPathComponent()),
              expected)
        << text;
  }
}

TEST(URL, EncodesInPlaceOnlyWhatDoesNotParse) {
  const std::pair<const char*, const char*> cases[] = {
      {"https://a.example/x%20y?z=%2f", "https://a.example/x%20y?z=%2f"},
      {"https://a.example/\xC3\xA9%41%/%4z", "https://a.example/%C3%A9%41%25/%254z"},
      {"https://a.example/[a]?b[]=c d#e#f", "https://a.example/%5Ba%5D?b%5B%5D=c%20d#e%23f"},
      {"https://[::1]/a b", "https://[::1]/a%20b"},
      {"https://a.example:x y/", "none"},
  };
  for (const auto& [text, encoded] : cases) {
    EXPECT_EQ(textOf(URL::parseEncodingInvalid(text)), encoded);
    EXPECT_EQ(textOf(URL::parse(text)), std::string(text) == encoded ? encoded : "none");
  }
  EXPECT_FALSE(URL::parse(std::string_view("https://a.example/\0", 19)));
}

TEST(URL, FileURLsCarryEveryByteOfAPathAndOneFileHasOne) {
  std::string everyByte = "/dir/";
  for (int byte = 1; byte < 256; ++byte) {
    if (byte != '/') everyByte += static_cast<char>(byte);
  }
  for (const std::string& path : {everyByte, std::string("/a/../b"), std::string("/a/")}) {
    const URL url = URL::fileURL(path);
    EXPECT_TRUE(url.isFileURL());
    EXPECT_EQ(url.path(), path);
    EXPECT_TRUE(URL::parse(url.absoluteString())) << url.absoluteString();
  }
  const auto folder = std::filesystem::current_path();
  EXPECT_EQ(URL::fileURL("./a"), URL::fileURL(folder / "a"));
  EXPECT_EQ(URL::fileURL(folder.native() + "//a"), URL::fileURL(folder / "a"));
  EXPECT_EQ(URL::fileURL("/./").path(), "/");
}

TEST(URL, ResolvesReferencesAsTheStandardsExamplesDo) {
  const std::pair<const char*, const char*> cases[] = {
      {"g", "http://a/b/c/g"},
      {"//g", "http://g"},
      {"?y", "http://a/b/c/d;p?y"},
      {"../../../g", "http://a/g"},
      {"./g/.", "http://a/b/c/g/"},
      {"/../g?y/../x#s/../x", "http://a/g?y/../x#s/../x"},
      {"https://[::1]:8443/x", "https://[::1]:8443/x"},
      {"a b", "none"},
  };
  for (const auto& [reference, expected] : cases) {
    EXPECT_EQ(textOf(URL::parse("http://a/b/c/d;p?q")->resolve(reference)), expected) << reference;
  }
  EXPECT_EQ(textOf(URL::parse("https://[::1]")->resolve("g/../h")), "https://[::1]/h");
}

TEST(URL, ShowsNoSecretOfAnAddress) {
  EXPECT_EQ(URL::parse("https://user:secret@[::1]:8443/a%20b?signature=secret#c")->redacted(),
            "https://[::1]:8443/a%20b");
}

}  // namespace
}  // namespace quillbay::platform
