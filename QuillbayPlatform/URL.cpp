#include <QuillbayPlatform/ASCIICase.h>
#include <QuillbayPlatform/TextEncoding.h>
#include <QuillbayPlatform/URL.h>
#include <uriparser/Uri.h>

#include <algorithm>
#include <charconv>
#include <ranges>

namespace quillbay::platform {
namespace {

/// The characters of a path segment beside letters and digits (RFC 3986, section 3.3).
constexpr std::string_view kPathCharacters = "-._~!$&'()*+,;=:@";

bool isURIReference(std::string_view text) {
  UriUriA uri;
  const bool isValid =
      uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(), nullptr) == URI_SUCCESS;
  if (isValid) uriFreeUriMembersA(&uri);
  return isValid;
}

/// The components of a text by their delimiters alone (RFC 3986, appendix B), each with its own
/// delimiter removed. Joined again, with the delimiters, they are the text.
struct Components {
  std::optional<std::string_view> scheme;
  std::optional<std::string_view> authority;
  std::string_view path;
  std::optional<std::string_view> query;
  std::optional<std::string_view> fragment;
};

/// Splits off what follows `delimiter`.
std::optional<std::string_view> takeAfter(std::string_view& text, char delimiter) {
  const std::size_t place = text.find(delimiter);
  if (place == std::string_view::npos) return std::nullopt;
  const std::string_view tail = text.substr(place + 1);
  text = text.substr(0, place);
  return tail;
}

Components split(std::string_view text) {
  Components components;
  components.fragment = takeAfter(text, '#');
  components.query = takeAfter(text, '?');
  const std::size_t schemeEnd = text.find_first_of(":/");
  if (schemeEnd != std::string_view::npos && schemeEnd > 0 && text[schemeEnd] == ':') {
    components.scheme = text.substr(0, schemeEnd);
    text.remove_prefix(schemeEnd + 1);
  }
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    const std::size_t pathStart = std::min(text.find('/'), text.size());
    components.authority = text.substr(0, pathStart);
    text.remove_prefix(pathStart);
  }
  components.path = text;
  return components;
}

struct Authority {
  bool hasUserInfo = false;
  std::string_view host;  // with the brackets of an IP literal
  std::string_view port;
};

Authority splitAuthority(std::string_view text) {
  Authority authority;
  const std::size_t at = text.rfind('@');
  authority.hasUserInfo = at != std::string_view::npos;
  if (authority.hasUserInfo) text.remove_prefix(at + 1);
  const std::size_t bracket = text.rfind(']');
  const std::size_t colon = text.find(':', bracket == std::string_view::npos ? 0 : bracket);
  authority.host = text.substr(0, colon);
  if (colon != std::string_view::npos) authority.port = text.substr(colon + 1);
  return authority;
}

Authority authorityOf(std::string_view text) {
  return splitAuthority(split(text).authority.value_or(std::string_view()));
}

std::string lowercased(std::string_view text) {
  std::string result(text);
  for (char& character : result) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character + 32);
  }
  return result;
}

bool isTriplet(std::string_view text) {
  return percentDecoded(text.substr(0, 3)).size() == 1 && text.size() >= 3;
}

/// `text` with every character encoded that is neither allowed nor part of a percent triplet.
std::string encodingInvalid(std::string_view text, std::string_view allowed) {
  std::string encoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && isTriplet(text.substr(i))) {
      encoded += '%';
      continue;
    }
    encoded += percentEncoded(text.substr(i, 1), allowed);
  }
  return encoded;
}

/// `path` without its "." and ".." segments (RFC 3986, section 5.2.4).
std::string removingDotSegments(std::string_view path) {
  while (path.starts_with("../") || path.starts_with("./")) path.remove_prefix(path.find('/') + 1);
  if (path == "." || path == "..") return {};
  std::string result;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/', 1), path.size());
    const std::string_view segment = path.substr(0, end);
    const bool isLast = end == path.size();
    path.remove_prefix(end);
    if (segment == "/..") result.resize(std::min(result.rfind('/'), result.size()));
    if (segment != "/." && segment != "/..") {
      result.append(segment);
    } else if (isLast) {
      result.append("/");
    }
  }
  return result;
}

/// The path of a reference that has one of its own, against its base (sections 5.2.2, 5.2.3).
std::string mergedPath(const Components& base, std::string_view path) {
  if (path.starts_with('/')) return removingDotSegments(path);
  if (base.authority && base.path.empty()) {
    return removingDotSegments(std::string("/").append(path));
  }
  const std::size_t folderEnd = base.path.rfind('/') + 1;  // 0 where there is no slash
  return removingDotSegments(std::string(base.path.substr(0, folderEnd)).append(path));
}

std::string joined(const Components& components) {
  std::string text;
  if (components.scheme) text.append(*components.scheme).append(":");
  if (components.authority) text.append("//").append(*components.authority);
  text.append(components.path);
  if (components.query) text.append("?").append(*components.query);
  if (components.fragment) text.append("#").append(*components.fragment);
  return text;
}

std::string encodingInvalid(std::string_view text) {
  const std::string pathCharacters = std::string(kPathCharacters).append("/");
  const std::string queryCharacters = std::string(pathCharacters).append("?");
  const std::string authorityCharacters = std::string(kPathCharacters).append("[]");
  Components components = split(text);
  const auto authority = encodingInvalid(components.authority.value_or(""), authorityCharacters);
  const auto path = encodingInvalid(components.path, pathCharacters);
  const auto query = encodingInvalid(components.query.value_or(""), queryCharacters);
  const auto fragment = encodingInvalid(components.fragment.value_or(""), queryCharacters);
  if (components.authority) components.authority = authority;
  components.path = path;
  if (components.query) components.query = query;
  if (components.fragment) components.fragment = fragment;
  return joined(components);
}

/// By hand: std::filesystem::path makes a path object of every component, which for a list of many
/// small files takes a tenth of the time of their fingerprints.
std::string fileURLText(std::string_view absolutePath) {
  std::string text = "file://";
  text.reserve(text.size() + absolutePath.size() + 1);
  const std::size_t pathStart = text.size();
  for (const auto part : std::views::split(absolutePath, '/')) {
    const std::string_view component(part.begin(), part.end());
    if (component.empty() || component == ".") continue;
    text.append("/").append(percentEncoded(component, kPathCharacters));
  }
  if (absolutePath.ends_with('/') || text.size() == pathStart) text += '/';
  return text;
}

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
  if (text.empty() || !isURIReference(text)) return std::nullopt;
  return URL(std::string(text));
}

std::optional<URL> URL::parseEncodingInvalid(std::string_view text) {
  if (auto url = parse(text)) return url;
  return parse(encodingInvalid(text));
}

URL URL::fileURL(const std::filesystem::path& path) {
  if (path.is_absolute()) return URL(fileURLText(path.native()));
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(path, error);
  if (error) absolute = "/" / path;
  return URL(fileURLText(absolute.native()));
}

std::string URL::scheme() const {
  return lowercased(split(text_).scheme.value_or(std::string_view()));
}

std::string URL::host() const {
  std::string_view host = authorityOf(text_).host;
  if (host.starts_with('[')) host = host.substr(1, host.size() - 2);
  return lowercased(host);
}

int URL::port() const {
  const std::string_view text = authorityOf(text_).port;
  if (text.empty()) {
    const std::string scheme = this->scheme();
    if (scheme == "https") return 443;
    return scheme == "http" ? 80 : 0;
  }
  int port = 0;
  const auto conversion = std::from_chars(text.data(), text.data() + text.size(), port);
  constexpr int kHighestPort = 65535;
  return conversion.ec == std::errc() && port <= kHighestPort ? port : 0;
}

bool URL::hasUserInfo() const { return authorityOf(text_).hasUserInfo; }

std::string URL::path() const { return percentDecoded(split(text_).path); }

std::string URL::lastPathComponent() const {
  std::string path = this->path();
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

bool URL::isFileURL() const {
  return equalsIgnoringASCIICase(split(text_).scheme.value_or(std::string_view()), "file");
}

std::string URL::redacted() const {
  const Components components = split(text_);
  std::string text;
  if (components.scheme) text.append(*components.scheme).append(":");
  if (components.authority) {
    const Authority authority = splitAuthority(*components.authority);
    text.append("//").append(authority.host);
    if (!authority.port.empty()) text.append(":").append(authority.port);
  }
  return text.append(components.path);
}

// By hand, since uriparser's own writes every IPv6 host anew in its longest form: then neither a
// host nor an origin compares equal any more.
std::optional<URL> URL::resolve(std::string_view reference) const {
  const Components base = split(text_);
  if (!base.scheme || !isURIReference(reference)) return std::nullopt;
  Components target = split(reference);
  std::string path;
  if (target.scheme || target.authority) {
    path = removingDotSegments(target.path);
  } else {
    target.authority = base.authority;
    if (target.path.empty()) {
      path = base.path;
      if (!target.query) target.query = base.query;
    } else {
      path = mergedPath(base, target.path);
    }
  }
  if (!target.scheme) target.scheme = base.scheme;
  target.path = path;
  // Such a path would be read as an authority.
  if (!target.authority && path.starts_with("//")) return std::nullopt;
  return parse(joined(target));
}

}  // namespace quillbay::platform
