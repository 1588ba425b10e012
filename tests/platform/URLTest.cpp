#include <QuillbayPlatform/URL.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

TEST(URL, ParsesWhatTheSyntaxAllowsAndNothingElse) {
  using namespace std::string_view_literals;
  for (const std::string_view text :
       {"https://a.example:8443/b/c?d=e&f#g"sv, "../x?y"sv, "https://[2001:db8::1]:443/"sv,
        "https://a.example/%C3%A9%20"sv, "mailto:someone@a.example"sv}) {
    const auto url = URL::parse(text);
    EXPECT_EQ(url ? url->absoluteString() : "none", text);
  }
  for (const std::string_view text :
       {""sv, "https://a.example/b c"sv, "https://a.example/\xC3\xA9"sv, "https://a.example/\0"sv,
        "https://a.example/\n"sv, "https://a.example/%4"sv, "https://a.example/%zz"sv,
        "https://a.example:x/"sv, "https://[::1/"sv}) {
    EXPECT_FALSE(URL::parse(text)) << text;
  }
}

TEST(URL, TellsItsComponents) {
  using Components = std::tuple<std::string, std::string, int, bool, std::string, std::string>;
  const std::pair<const char*, Components> cases[] = {
      {"HTTPS://A.Example/b/c%20d?q=/x#f", {"https", "a.example", 443, false, "/b/c d", "c d"}},
      {"http://a.example:8080", {"http", "a.example", 8080, false, "", ""}},
      {"http://a.example:/", {"http", "a.example", 80, false, "/", "/"}},
      {"https://user:pa:ss@a.example:1/", {"https", "a.example", 1, true, "/", "/"}},
      {"https://a.example?x@y:9/z", {"https", "a.example", 443, false, "", ""}},
      {"https://[::AB]:8443/x/", {"https", "::ab", 8443, false, "/x/", "x"}},
      {"https://a.example:65536/", {"https", "a.example", 0, false, "/", "/"}},
      {"file:///tmp/%FF.txt", {"file", "", 0, false, "/tmp/\xFF.txt", "\xFF.txt"}},
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
  };
  for (const auto& [text, encoded] : cases) {
    const auto url = URL::parseEncodingInvalid(text);
    EXPECT_EQ(url ? url->absoluteString() : "none", encoded);
  }
  EXPECT_FALSE(URL::parseEncodingInvalid("https://a.example:x y/"));
}

TEST(URL, FileURLsCarryEveryByteOfAPath) {
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
}

TEST(URL, OneFileHasOneFileURL) {
  const auto folder = std::filesystem::current_path();
  EXPECT_EQ(URL::fileURL("./a"), URL::fileURL(folder / "a"));
  EXPECT_EQ(URL::fileURL(folder.native() + "//a"), URL::fileURL(folder / "a"));
}

TEST(URL, ResolvesReferencesAsTheStandardsExamplesDo) {
  const std::pair<const char*, const char*> cases[] = {
      {"g:h", "g:h"},
      {"g", "http://a/b/c/g"},
      {"/g", "http://a/g"},
      {"//g", "http://g"},
      {"?y", "http://a/b/c/d;p?y"},
      {"#s", "http://a/b/c/d;p?q#s"},
      {"", "http://a/b/c/d;p?q"},
      {"../../../g", "http://a/g"},
      {"./g/.", "http://a/b/c/g/"},
      {"/../g?y/../x#s/../x", "http://a/g?y/../x#s/../x"},
      {"https://[::1]:8443/x", "https://[::1]:8443/x"},
  };
  for (const auto& [reference, expected] : cases) {
    const auto resolved = URL::parse("http://a/b/c/d;p?q")->resolve(reference);
    EXPECT_EQ(resolved ? resolved->absoluteString() : "none", expected) << reference;
  }
  EXPECT_FALSE(URL::parse("https://a")->resolve("a b"));
  EXPECT_EQ(URL::parse("https://a")->resolve("g/../h")->absoluteString(), "https://a/h");
  EXPECT_EQ(URL::parse("https://[::1]")->resolve("/g")->host(), "::1");
}

TEST(URL, ShowsNoSecretOfAnAddress) {
  EXPECT_EQ(URL::parse("https://user:secret@[::1]:8443/a%20b?signature=secret#c")->redacted(),
            "https://[::1]:8443/a%20b");
}

}  // namespace
}  // namespace quillbay::platform
