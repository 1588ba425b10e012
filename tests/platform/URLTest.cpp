#include <QuillbayPlatform/URL.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

TEST(URL, ParsesWhatTheSyntaxAllowsAndNothingElse) {
  struct Case {
    const char* name;
    std::string_view text;
    bool parses;
  };
  using namespace std::string_view_literals;
  const Case cases[] = {
      {"address", "https://a.example:8443/b/c?d=e&f#g", true},
      {"relative reference", "../x?y", true},
      {"IPv6 host", "https://[2001:db8::1]:443/", true},
      {"escaped bytes", "https://a.example/%C3%A9%20", true},
      {"opaque", "mailto:someone@a.example", true},
      {"empty", "", false},
      {"space", "https://a.example/b c", false},
      {"raw UTF-8", "https://a.example/\xC3\xA9", false},
      {"NUL", "https://a.example/\0"sv, false},
      {"line feed", "https://a.example/\n", false},
      {"half an escape", "https://a.example/%4", false},
      {"escape without digits", "https://a.example/%zz", false},
      {"brackets in a path", "https://a.example/[1]", false},
      {"second fragment", "https://a.example/#a#b", false},
      {"port without digits", "https://a.example:x/", false},
      {"unclosed IPv6 host", "https://[::1/", false},
      {"scheme that begins with a digit", "1a://b", false},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    const auto url = URL::parse(row.text);
    ASSERT_EQ(url.has_value(), row.parses);
    EXPECT_EQ(url ? url->absoluteString() : row.text, row.text);
  }
}

TEST(URL, TellsItsComponents) {
  struct Case {
    const char* text;
    const char* scheme;
    const char* host;
    int port;
    bool hasUserInfo;
    const char* path;
    const char* lastPathComponent;
  };
  const Case cases[] = {
      {"HTTPS://A.Example/b/c%20d?q=/x#f", "https", "a.example", 443, false, "/b/c d", "c d"},
      {"http://a.example:8080", "http", "a.example", 8080, false, "", ""},
      {"http://a.example:/", "http", "a.example", 80, false, "/", "/"},
      {"https://user:pa:ss@a.example:1/", "https", "a.example", 1, true, "/", "/"},
      {"https://a.example/b@c", "https", "a.example", 443, false, "/b@c", "b@c"},
      {"https://a.example?x@y:9/z", "https", "a.example", 443, false, "", ""},
      {"https://[::1]:8443/x/", "https", "::1", 8443, false, "/x/", "x"},
      {"https://[::AB]", "https", "::ab", 443, false, "", ""},
      {"https://a.example:65536/", "https", "a.example", 0, false, "/", "/"},
      {"https://a.example:99999999999999999999/", "https", "a.example", 0, false, "/", "/"},
      {"file:///tmp/%FF.txt", "file", "", 0, false, "/tmp/\xFF.txt", "\xFF.txt"},
      {"a/b:c", "", "", 0, false, "a/b:c", "b:c"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.text);
    const auto url = URL::parse(row.text);
    ASSERT_TRUE(url);
    EXPECT_EQ(url->scheme(), row.scheme);
    EXPECT_EQ(url->host(), row.host);
    EXPECT_EQ(url->port(), row.port);
    EXPECT_EQ(url->hasUserInfo(), row.hasUserInfo);
    EXPECT_EQ(url->path(), row.path);
    EXPECT_EQ(url->lastPathComponent(), row.lastPathComponent);
  }
}

TEST(URL, EncodesInPlaceOnlyWhatDoesNotParse) {
  struct Case {
    const char* text;
    const char* encoded;
  };
  const Case cases[] = {
      {"https://a.example/x%20y?z=%2f", "https://a.example/x%20y?z=%2f"},
      {"https://a.example/my id/session", "https://a.example/my%20id/session"},
      {"https://a.example/\xC3\xA9%41%/%4z", "https://a.example/%C3%A9%41%25/%254z"},
      {"https://a.example/[a]?b[]=c d#e#f", "https://a.example/%5Ba%5D?b%5B%5D=c%20d#e%23f"},
      {"https://[::1]/a b", "https://[::1]/a%20b"},
      {"https://a b.example/", "https://a%20b.example/"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.text);
    const auto url = URL::parseEncodingInvalid(row.text);
    ASSERT_TRUE(url);
    EXPECT_EQ(url->absoluteString(), row.encoded);
  }
  for (const char* text : {"", "https://a.example:x y/", "a b://c"}) {
    EXPECT_FALSE(URL::parseEncodingInvalid(text)) << text;
  }
}

TEST(URL, FileURLsCarryEveryByteOfAPath) {
  std::string everyByte = "/dir/";
  for (int byte = 1; byte < 256; ++byte) {
    if (byte != '/') everyByte += static_cast<char>(byte);
  }
  for (const std::string& path : {everyByte, std::string("/"), std::string("/a/../b"),
                                  std::string("/a//./b").erase(3, 3), std::string("/a/")}) {
    SCOPED_TRACE(path);
    const URL url = URL::fileURL(path);
    EXPECT_TRUE(url.isFileURL());
    EXPECT_EQ(url.path(), path);
    EXPECT_TRUE(URL::parse(url.absoluteString())) << url.absoluteString();
  }
}

TEST(URL, OneFileHasOneFileURL) {
  const URL plain = URL::fileURL(std::filesystem::current_path() / "a");
  EXPECT_EQ(URL::fileURL("a"), plain);
  EXPECT_EQ(URL::fileURL("./a"), plain);
  EXPECT_EQ(URL::fileURL(std::filesystem::current_path().native() + "//a"), plain);
}

TEST(URL, ResolvesReferencesAsTheStandardsExamplesDo) {
  const auto base = URL::parse("http://a/b/c/d;p?q");
  ASSERT_TRUE(base);
  struct Case {
    const char* reference;
    const char* resolved;
  };
  const Case cases[] = {
      {"g:h", "g:h"},
      {"g", "http://a/b/c/g"},
      {"/g", "http://a/g"},
      {"//g", "http://g"},
      {"?y", "http://a/b/c/d;p?y"},
      {"#s", "http://a/b/c/d;p?q#s"},
      {"", "http://a/b/c/d;p?q"},
      {"../../g", "http://a/g"},
      {"../../../g", "http://a/g"},
      {"g;x=1/../y", "http://a/b/c/y"},
      {"./g/.", "http://a/b/c/g/"},
      {"..", "http://a/b/"},
      {"/../g?y/../x#s/../x", "http://a/g?y/../x#s/../x"},
      {"%2E%2e/g", "http://a/b/c/%2E%2e/g"},
      {"https://[::1]:8443/x", "https://[::1]:8443/x"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.reference);
    const auto resolved = base->resolve(row.reference);
    ASSERT_TRUE(resolved);
    EXPECT_EQ(resolved->absoluteString(), row.resolved);
  }
  EXPECT_FALSE(base->resolve("a b"));
  EXPECT_FALSE(URL::parse("relative/base")->resolve("g"));
  EXPECT_EQ(URL::parse("https://a")->resolve("g/../h")->absoluteString(), "https://a/h");
  EXPECT_EQ(URL::parse("https://[::1]")->resolve("/g")->host(), "::1");
  EXPECT_EQ(URL::parse("x:y")->resolve("../g")->absoluteString(), "x:g");
  EXPECT_FALSE(URL::parse("x:/y")->resolve("/.//g"));
}

TEST(URL, ShowsNoSecretOfAnAddress) {
  const auto url =
      URL::parse("https://user:secret@[::1]:8443/bucket/a%20b?signature=secret#secret");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->redacted(), "https://[::1]:8443/bucket/a%20b");
}

}  // namespace
}  // namespace quillbay::platform
