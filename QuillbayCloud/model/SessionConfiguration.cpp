#include <QuillbayCloud/model/SessionConfiguration.h>

#include <utility>

namespace quillbay::cloud {

SessionConfiguration::SessionConfiguration(std::optional<std::string> title,
                                           std::optional<platform::Date> expirationDate,
                                           std::optional<SessionLinkType> linkType,
                                           std::optional<std::string> password, bool secret)
    : title_(std::move(title)),
      expirationDate_(expirationDate),
      password_(std::move(password)),
      linkType_(linkType.value_or(SessionLinkType::page)),
      secret_(secret) {}

SessionConfiguration SessionConfiguration::default_() {
  return {std::nullopt, std::nullopt, SessionLinkType::page, std::nullopt, false};
}

std::expected<SessionConfiguration, platform::ErrorPtr> SessionConfiguration::decode(
    platform::JSONReader& reader) {
  auto title = reader.optional<std::string>("title");
  const auto expirationDate = reader.optional<platform::Date>("expirationDate");
  auto password = reader.optional<std::string>("password");
  const auto linkType = reader.required<SessionLinkType>("linkType");
  const auto secret = reader.required<bool>("secret");
  return reader.finish([&] {
    return SessionConfiguration(std::move(title), expirationDate, linkType, std::move(password),
                                *secret);
  });
}

void SessionConfiguration::encode(platform::JSONWriter& writer) const {
  writer.write("title", title_);
  writer.write("expirationDate", expirationDate_);
  writer.write("password", password_);
  writer.write("linkType", linkType_);
  writer.write("secret", secret_);
}

}  // namespace quillbay::cloud
