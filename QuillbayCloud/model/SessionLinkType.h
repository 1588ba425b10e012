#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string_view>

namespace quillbay::cloud {

/// Where a shared link leads. An immutable value; any thread.
///
/// Use it like an enumeration: `SessionLinkType::page`, comparison, `switch`. Its JSON form is the
/// string `rawValue()`.
class SessionLinkType {
 public:
  /// The cases.
  enum Case {
    page,            ///< to the service's page for the session
    directDownload,  ///< to a download of the content
    directLink,      ///< to the content itself, shown inline
  };

  /// A case is a link type.
  constexpr SessionLinkType(Case value)  // NOLINT(google-explicit-constructor)
      : value_(value) {}
  /// For comparison and `switch`.
  constexpr operator Case() const { return value_; }  // NOLINT(google-explicit-constructor)

  /// The three cases in the order above.
  static const std::array<SessionLinkType, 3> allCases;

  /// "page", "download" or "direct".
  constexpr std::string_view rawValue() const {
    switch (value_) {
      case directDownload:
        return "download";
      case directLink:
        return "direct";
      case page:
        break;
    }
    return "page";
  }

  /// The case with exactly this raw value (case-sensitive), or nothing.
  static constexpr std::optional<SessionLinkType> fromRawValue(std::string_view rawValue);

 private:
  Case value_;
};

inline constexpr std::array<SessionLinkType, 3> SessionLinkType::allCases = {
    SessionLinkType::page, SessionLinkType::directDownload, SessionLinkType::directLink};

constexpr std::optional<SessionLinkType> SessionLinkType::fromRawValue(std::string_view rawValue) {
  for (const SessionLinkType linkType : allCases) {
    if (linkType.rawValue() == rawValue) return linkType;
  }
  return std::nullopt;
}

}  // namespace quillbay::cloud

template <>
struct std::hash<quillbay::cloud::SessionLinkType> {
  std::size_t operator()(quillbay::cloud::SessionLinkType linkType) const noexcept {
    return std::hash<std::string_view>()(linkType.rawValue());
  }
};
