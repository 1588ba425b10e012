#include <QuillbayCloud/model/Item.h>
#include <QuillbayCloud/model/Session.h>

#include <cstdint>
#include <utility>

namespace quillbay::cloud {

struct Session::Contents {
  std::string identifier;
  std::optional<std::string> token;
  platform::URL url;
  std::optional<std::string> title;
  std::optional<platform::Date> expirationDate;
  std::optional<std::string> password;
  std::vector<Item> items;

  friend bool operator==(const Contents&, const Contents&) = default;
};

Session::Session(std::shared_ptr<const Contents> contents) : contents_(std::move(contents)) {}

const std::string& Session::identifier() const { return contents_->identifier; }
const std::optional<std::string>& Session::token() const { return contents_->token; }
const platform::URL& Session::url() const { return contents_->url; }
const std::optional<std::string>& Session::title() const { return contents_->title; }
const std::optional<platform::Date>& Session::expirationDate() const {
  return contents_->expirationDate;
}
const std::optional<std::string>& Session::password() const { return contents_->password; }

const std::vector<Item>& items(const Session& session) { return session.contents_->items; }

std::expected<Session, platform::ErrorPtr> Session::decode(platform::JSONReader& reader) {
  auto identifier = reader.required<std::string>("id");
  auto url = reader.required<platform::URL>("url");
  auto items = reader.required<std::vector<Item>>("items");
  auto title = reader.tolerant<std::string>("title");
  auto token = reader.tolerant<std::string>("token");
  const auto expiration = reader.tolerant<std::int64_t>("expiration");
  return reader.finish([&] {
    std::optional<platform::Date> expirationDate;
    if (expiration) {
      expirationDate = platform::dateFromSecondsSince1970(static_cast<double>(*expiration));
    }
    return Session(std::make_shared<const Contents>(Contents{.identifier = std::move(*identifier),
                                                             .token = std::move(token),
                                                             .url = std::move(*url),
                                                             .title = std::move(title),
                                                             .expirationDate = expirationDate,
                                                             .password = std::nullopt,
                                                             .items = std::move(*items)}));
  });
}

void Session::encode(platform::JSONWriter& writer) const {
  writer.write("id", contents_->identifier);
  writer.write("token", contents_->token);
  writer.write("url", contents_->url);
  writer.write("title", contents_->title);
  writer.write("expiration", contents_->expirationDate);
  writer.write("items", contents_->items);
}

bool operator==(const Session& left, const Session& right) {
  return left.contents_ == right.contents_ || *left.contents_ == *right.contents_;
}

}  // namespace quillbay::cloud
