// URLs, as text and as paths of files. libcurl and uriparser read each address too: where they see
// another host than the library does, its rules would guard another place than the one that is
// connected to.
#include <QuillbayPlatform/TextEncoding.h>
#include <QuillbayPlatform/URL.h>
#include <QuillbayPlatform/network/AddressPolicy.h>
#include <arpa/inet.h>
#include <curl/curl.h>
#include <fuzz/support/Expect.h>
#include <uriparser/Uri.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <vector>

using namespace quillbay;
using fuzz::expect;
using platform::URL;

namespace {

/// Where libcurl would connect.
struct Destination {
  std::string scheme;
  std::string host;
  std::string port;
  bool hasUserInfo = false;

  friend bool operator==(const Destination&, const Destination&) = default;
};

std::string part(CURLU* address, CURLUPart which) {
  char* text = nullptr;
  curl_url_get(address, which, &text, CURLU_DEFAULT_PORT);
  const std::unique_ptr<char, decltype(&curl_free)> owned(text, curl_free);
  return text != nullptr ? text : "";
}

/// Nothing if libcurl takes it for no address.
std::optional<Destination> destination(const URL& url) {
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> address(curl_url(), curl_url_cleanup);
  const char* text = url.absoluteString().c_str();
  if (curl_url_set(address.get(), CURLUPART_URL, text, CURLU_PATH_AS_IS) != CURLUE_OK) return {};
  std::string host = part(address.get(), CURLUPART_HOST);
  if (host.starts_with('[')) host = host.substr(1, host.size() - 2);
  std::ranges::transform(host, host.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
  });
  return Destination{part(address.get(), CURLUPART_SCHEME), host,
                     part(address.get(), CURLUPART_PORT),
                     !part(address.get(), CURLUPART_USER).empty() ||
                         !part(address.get(), CURLUPART_PASSWORD).empty()};
}

/// An IP address as libcurl writes it; a name as it is.
std::string normalized(const std::string& host) {
  in6_addr address = {};
  char text[INET6_ADDRSTRLEN] = {};
  if (inet_pton(AF_INET6, host.c_str(), &address) != 1) return host;
  return inet_ntop(AF_INET6, &address, text, sizeof text);
}

/// Names that libcurl neither decodes nor takes for a number.
bool isPlainHost(const std::string& host) {
  const char first = host.empty() ? '%' : host[host.find_last_of('.') + 1];
  return host.find('%') == std::string::npos && (first < '0' || first > '9') && first != '\0';
}

void expectSameHost(const URL& url) {
  const bool isLiteral = url.absoluteString().find("//[") != std::string::npos;
  const auto place = destination(url);
  if (!place || !platform::isAllowedAddress(url)) return;
  if (!isLiteral && !isPlainHost(url.host())) return;
  expect(normalized(place->host) == normalized(url.host()), "libcurl finds the same host");
  expect(place->port == std::to_string(url.port()), "and the same port");
}

void expectRulesGuardTheDestination(const URL& first, const URL& second) {
  if (!platform::isAllowedAddress(first)) return;
  const auto place = destination(first);
  if (!place) return;
  expect(place->scheme == first.scheme(), "libcurl uses the scheme that was looked at");
  expect(!place->hasUserInfo, "libcurl finds no password in an allowed address");
  expect(place->scheme == "https" || platform::isLoopbackHost(place->host),
         "without TLS, libcurl connects to this machine alone");
  const bool areAllowed = platform::isAllowedAddress(second);
  if (!areAllowed || !platform::haveSameOrigin(first, second)) return;
  expect(destination(second).value_or(*place) == *place, "libcurl connects to one place an origin");
}

void expectShownWithoutSecrets(const URL& url) {
  const std::string shown = url.redacted();
  expect(shown.find_first_of("?#") == std::string::npos, "no query is shown");
  if (shown.empty()) return;
  const auto parsed = URL::parse(shown);
  expect(parsed.has_value(), "what is shown is an address");
  expect(!parsed->hasUserInfo(), "no user name and no password is shown");
  expect(parsed->scheme() == url.scheme() && parsed->host() == url.host() &&
             parsed->port() == url.port() && parsed->path() == url.path(),
         "the rest is shown");
}

/// Where `secret` would be in a text that parses.
void expectHidden(std::string_view host, std::string_view secret) {
  const std::string text = std::string("https://").append(secret).append("@").append(host);
  const auto url = URL::parse(text + "/p?" + std::string(secret));
  if (!url || host.find_first_of("@/?#") != std::string::npos) return;
  if (secret.find_first_of("@/?#") != std::string::npos) return;
  // An empty port is left out.
  const std::string_view shownHost = host.ends_with(':') ? host.substr(0, host.size() - 1) : host;
  expect(url->redacted() == std::string("https://").append(shownHost).append("/p"),
         "scheme, host and path are shown alone");
  expect(url->hasUserInfo() && !platform::isAllowedAddress(*url), "a password is refused");
}

struct UriDeleter {
  void operator()(UriUriA* uri) const {
    uriFreeUriMembersA(uri);
    delete uri;
  }
};
using Uri = std::unique_ptr<UriUriA, UriDeleter>;

Uri parsedByUriparser(const std::string& text) {
  Uri uri(new UriUriA{});
  if (uriParseSingleUriA(uri.get(), text.c_str(), nullptr) != URI_SUCCESS) return nullptr;
  return uri;
}

std::optional<std::string> resolvedByUriparser(const URL& base, const std::string& reference) {
  const Uri baseUri = parsedByUriparser(base.absoluteString());
  const Uri referenceUri = parsedByUriparser(reference);
  if (!baseUri || !referenceUri) return std::nullopt;
  const Uri target(new UriUriA{});
  if (uriAddBaseUriA(target.get(), referenceUri.get(), baseUri.get()) != URI_SUCCESS) return {};
  int length = 0;
  uriToStringCharsRequiredA(target.get(), &length);
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  uriToStringA(text.data(), target.get(), length + 1, nullptr);
  text.pop_back();
  return text;
}

void expectResolved(const URL& base, const std::string& reference) {
  const auto target = base.resolve(reference);
  if (!target) return;
  const std::string& text = target->absoluteString();
  expect(!target->scheme().empty(), "a resolved reference is absolute");
  expect(target->resolve("#x") == URL::parse(text.substr(0, text.find('#')) + "#x"),
         "a fragment alone is of the same document");
  // Engines follow addresses with a host alone.
  if (base.host().empty() || target->host().empty()) return;
  // A reference without a path leaves the base's as it is, dots included.
  const auto withoutDots = target->resolve(text);
  expect(withoutDots && withoutDots->resolve(withoutDots->absoluteString()) == withoutDots,
         "an absolute address resolves to itself");
  // uriparser writes IPv6 hosts anew, and "/." before slashes that nothing could take for those
  // before a host.
  const auto expected = resolvedByUriparser(base, reference);
  if (!expected || text.find('[') != std::string::npos) return;
  expect(*expected == text || expected->find("/.//") != std::string::npos,
         "uriparser resolves to the same");
}

void expectEncodedInPlace(const std::string& text) {
  const auto url = URL::parse(text);
  const auto encoded = URL::parseEncodingInvalid(text);
  expect(!url || url->absoluteString() == text, "what parses is kept");
  expect(!url || encoded == url, "what parses is not encoded");
  if (!encoded) return;
  expect(URL::parse(encoded->absoluteString()) == encoded, "what was encoded parses");
  expect(platform::percentDecoded(encoded->absoluteString()) == platform::percentDecoded(text),
         "decoding gives the text back");
}

std::vector<std::string> pathComponents(std::string_view path) {
  std::vector<std::string> components;
  for (const auto component : path | std::views::split('/')) {
    const std::string_view name(component.begin(), component.end());
    if (!name.empty() && name != ".") components.emplace_back(name);
  }
  return components;
}

void expectFileURL(const std::string& name) {
  const std::string path = "/" + name;
  const URL url = URL::fileURL(path);
  expect(URL::parse(url.absoluteString()) == url, "a file's URL parses");
  expect(url.isFileURL() && url.host().empty() && !url.hasUserInfo(), "it has a path alone");
  expect(pathComponents(url.path()) == pathComponents(path), "its path is the file's");
  expect(URL::fileURL(url.path()) == url, "one path has one URL");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t byteCount) {
  const std::string text(reinterpret_cast<const char*>(bytes), byteCount);
  const std::size_t lineEnd = std::min(text.find('\n'), text.size());
  const std::string first = text.substr(0, lineEnd);
  const std::string second = text.substr(std::min(lineEnd + 1, text.size()));
  expectEncodedInPlace(text);
  expectFileURL(text);
  expect(platform::percentDecoded(platform::percentEncoded(text, "")) == text,
         "what was encoded is decoded");
  expectHidden(first, second);
  const auto url = URL::parse(first);
  if (!url) return 0;
  expectShownWithoutSecrets(*url);
  expectSameHost(*url);
  expectResolved(*url, second);
  expectRulesGuardTheDestination(*url, URL::parse(second).value_or(*url));
  return 0;
}
