// [store]
#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/JSONEncoder.h>
// [store]
#include <QuillbayCloud/QuillbayCloud.h>

#include "Promises.h"

using namespace quillbay;

int main() {
  const cloud::SessionConfiguration configuration(
      "Holiday", platform::dateFromSecondsSince1970(1.5e9), std::nullopt, "password", true);

  // [store]
  const platform::JSONEncoder encoder(platform::JSONDatePolicy::secondsSince1970);
  const auto text = encoder.encode(configuration);  // std::expected<std::string, ErrorPtr>

  const platform::JSONDecoder decoder(platform::JSONDatePolicy::secondsSince1970);
  const auto back = decoder.decode<cloud::SessionConfiguration>(*text);
  // [store]

  expect(back && *back == configuration, "what is read is what was written");
}
