#pragma once

#include <QuillbayPlatform/Date.h>
#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONError.h>
#include <QuillbayPlatform/URL.h>

#include <concepts>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::platform {

class JSONWriter;

/// A record that writes itself as the members of a JSON object.
template <class T>
concept JSONEncodable = requires(const T& value, JSONWriter& writer) { value.encode(writer); };

/// Writes the members of one JSON object, in the order of the calls. An absent optional leaves its
/// key out. Types as in `JSONReader`.
class QUILLBAY_EXPORT JSONWriter {
 public:
  JSONWriter(const JSONWriter&) = delete;
  JSONWriter& operator=(const JSONWriter&) = delete;
  ~JSONWriter();

  /// Writes a member of one of the types above. A value that cannot be written makes the encoder
  /// fail; nothing is reported here.
  template <class T>
  void write(std::string_view key, const T& value) {
    if constexpr (std::convertible_to<const T&, std::string_view>) {
      writeString(key, value);
    } else if constexpr (std::same_as<T, bool>) {
      writeBoolean(key, value);
    } else if constexpr (std::integral<T>) {
      writeInteger(key, value);
    } else if constexpr (std::same_as<T, Date>) {
      writeDate(key, value);
    } else if constexpr (std::same_as<T, URL>) {
      writeString(key, value.absoluteString());
    } else if constexpr (JSONRawRepresentable<T>) {
      writeString(key, value.rawValue());
    } else {
      value.encode(*beginObject(key));
    }
  }

  /// Writes the member if there is a value, and nothing otherwise.
  template <class T>
  void write(std::string_view key, const std::optional<T>& value) {
    if (value) write(key, *value);
  }

  /// Writes the member as an array of objects, one a record.
  template <JSONEncodable T>
  void write(std::string_view key, const std::vector<T>& records) {
    beginArray(key);
    for (const T& record : records) record.encode(*beginElement(key));
  }

 private:
  friend class JSONEncoder;
  struct QUILLBAY_HIDDEN Target;

  QUILLBAY_HIDDEN explicit JSONWriter(std::unique_ptr<Target> target);

  void writeString(std::string_view key, std::string_view text);
  void writeBoolean(std::string_view key, bool value);
  void writeInteger(std::string_view key, std::int64_t value);
  void writeDate(std::string_view key, Date date);
  std::unique_ptr<JSONWriter> beginObject(std::string_view key);
  void beginArray(std::string_view key);
  std::unique_ptr<JSONWriter> beginElement(std::string_view arrayKey);

  std::unique_ptr<Target> target_;
};

/// Writes records as compact JSON text (RFC 8259). Fails with a `JSONError` of kind `unwritable`
/// when a text is not UTF-8 or a date not finite. No state but its policy; any thread.
class QUILLBAY_EXPORT JSONEncoder {
 public:
  /// `policy`: what the numbers of dates count.
  explicit JSONEncoder(JSONDatePolicy policy = JSONDatePolicy::secondsSince2001)
      : datePolicy_(policy) {}

  /// The text of `record` without blanks and line breaks, or a `JSONError`.
  template <JSONEncodable T>
  std::expected<std::string, ErrorPtr> encode(const T& record) const {
    const auto writer = makeRoot();
    record.encode(*writer);
    return text(*writer);
  }

 private:
  std::unique_ptr<JSONWriter> makeRoot() const;
  static std::expected<std::string, ErrorPtr> text(const JSONWriter& root);

  JSONDatePolicy datePolicy_;
};

}  // namespace quillbay::platform
