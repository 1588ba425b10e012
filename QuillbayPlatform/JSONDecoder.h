#pragma once

#include <QuillbayPlatform/Date.h>
#include <QuillbayPlatform/Export.h>
#include <QuillbayPlatform/JSONError.h>
#include <QuillbayPlatform/URL.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace quillbay::platform {

/// What the number of a date counts. The same policy must read what it wrote.
enum class JSONDatePolicy {
  secondsSince2001,  ///< seconds since 2001-01-01T00:00:00Z
  secondsSince1970,  ///< seconds since 1970-01-01T00:00:00Z
};

class JSONReader;

/// A value whose JSON form is the string `rawValue()`.
template <class T>
concept JSONRawRepresentable = requires(const T& value, std::string_view text) {
  { value.rawValue() } -> std::convertible_to<std::string_view>;
  { T::fromRawValue(text) } -> std::same_as<std::optional<T>>;
};

/// A record that reads itself from a JSON object.
template <class T>
concept JSONDecodable = requires(JSONReader& reader) {
  { T::decode(reader) } -> std::same_as<std::expected<T, ErrorPtr>>;
};

/// Reads the members of one JSON object and remembers the first failure, so that a record reads as
/// a flat list of fields:
///
///     auto title = reader.optional<std::string>("title");
///     auto secret = reader.required<bool>("secret");
///     return reader.finish([&] { return Note(std::move(title), *secret); });
///
/// Types: `std::string`, `bool` (true and false only), `std::int64_t` (a number without fraction
/// or exponent), `Date` (a number, by the decoder's policy), `URL`, raw-value types, records, and
/// `std::vector` of records. After a failure every further read yields nothing. Members may be read
/// in any order; keys are compared with the bytes as they stand in the text, the first of several
/// equal ones counts, and unknown keys are ignored. One thread at a time.
class QUILLBAY_EXPORT JSONReader {
 public:
  JSONReader(const JSONReader&) = delete;
  JSONReader& operator=(const JSONReader&) = delete;
  ~JSONReader();

  /// The member must be there with this type; anything else is a failure.
  template <class T>
  std::optional<T> required(std::string_view key) {
    return read<T>(key, Rule::required);
  }

  /// A missing member or null gives nothing; a value of another type, or one that makes no sense,
  /// is a failure.
  template <class T>
  std::optional<T> optional(std::string_view key) {
    return read<T>(key, Rule::optional);
  }

  /// Whatever is not of this type gives nothing; never a failure.
  template <class T>
  std::optional<T> tolerant(std::string_view key) {
    return read<T>(key, Rule::tolerant);
  }

  /// The record that `make` builds, or the first failure without calling it.
  template <class Make>
  std::expected<std::invoke_result_t<Make>, ErrorPtr> finish(Make make) const {
    if (failure_) return std::unexpected(failure_);
    return make();
  }

 private:
  friend class JSONDecoder;
  enum class Rule { required, optional, tolerant };
  class QUILLBAY_HIDDEN Document;
  /// A value's place among all values of the document.
  using Place = std::uint32_t;

  JSONReader(std::string_view text, JSONDatePolicy datePolicy);
  /// The object at `place`, which `parent` is reading: the member found last, or its `index`th
  /// element.
  JSONReader(const JSONReader& parent, Place place, std::optional<std::size_t> index);

  template <class T>
  std::optional<T> read(std::string_view key, Rule rule) {
    std::optional<T> value;
    if (!find(key, rule)) return value;
    take(value);
    if (!value) reject(rule);
    return value;
  }

  // Each takes the member found last and leaves `value` empty if it is of another type.
  void take(std::optional<std::string>& value);
  void take(std::optional<bool>& value);
  void take(std::optional<std::int64_t>& value);
  void take(std::optional<Date>& value);
  void take(std::optional<URL>& value);

  template <JSONRawRepresentable T>
  void take(std::optional<T>& value) {
    std::optional<std::string> text;
    take(text);
    if (!text) return;
    value = T::fromRawValue(*text);
    isCorrupt_ = !value;
  }

  template <JSONDecodable T>
  void take(std::optional<T>& value) {
    auto record = decode<T>(found_, std::nullopt);
    if (record) value.emplace(std::move(*record));
  }

  template <JSONDecodable T>
  void take(std::optional<std::vector<T>>& value) {
    const auto count = elementCount();
    if (!count) return;
    std::vector<T> records;
    records.reserve(*count);
    Place place = found_ + 1;
    for (std::size_t index = 0; index < *count; ++index, place = placeAfter(place)) {
      auto record = decode<T>(place, index);
      if (!record) return;
      records.push_back(std::move(*record));
    }
    value.emplace(std::move(records));
  }

  template <class T>
  std::expected<T, ErrorPtr> decode(Place place, std::optional<std::size_t> index) {
    JSONReader child(*this, place, index);
    auto record = child.failure_ ? std::unexpected(child.failure_) : T::decode(child);
    if (!record) nestedFailure_ = record.error();
    return record;
  }

  bool find(std::string_view key, Rule rule);
  void reject(Rule rule);
  std::optional<std::size_t> elementCount() const;
  Place placeAfter(Place place) const;
  QUILLBAY_HIDDEN ErrorPtr error(JSONError::Kind kind, std::string_view key) const;
  QUILLBAY_HIDDEN std::string keyPath() const;

  std::unique_ptr<Document> ownedDocument_;  // the root's alone
  const Document* document_;
  const JSONReader* parent_ = nullptr;
  std::optional<std::size_t> index_;
  Place object_ = 0;
  // The member found last, and what taking it came upon.
  Place found_ = 0;
  std::string_view foundKey_;
  bool isCorrupt_ = false;
  ErrorPtr nestedFailure_;
  ErrorPtr failure_;
};

/// Reads records from JSON text (RFC 8259), UTF-8, nested at most 64 deep. Fails with a
/// `JSONError`. A decoder has no state but its policy; any thread.
class JSONDecoder {
 public:
  /// `policy`: what the numbers of dates count.
  explicit JSONDecoder(JSONDatePolicy policy = JSONDatePolicy::secondsSince2001)
      : datePolicy_(policy) {}

  /// The record in `text`, or the first failure as a `JSONError`. `text` is needed during the call
  /// alone.
  template <JSONDecodable T>
  std::expected<T, ErrorPtr> decode(std::string_view text) const {
    JSONReader root(text, datePolicy_);
    if (root.failure_) return std::unexpected(root.failure_);
    return T::decode(root);
  }

 private:
  JSONDatePolicy datePolicy_;
};

}  // namespace quillbay::platform
