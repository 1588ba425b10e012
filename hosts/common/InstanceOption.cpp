#include "InstanceOption.h"

#include "OptionTable.h"
#include "PlainText.h"

namespace quillbay::host {

void InstanceOption::addTo(OptionTable& table, std::string_view defaultName) {
  table.addText(
      "--instance", "ID",
      "name of this installation for the service\n(default " + std::string(defaultName) + ")",
      value_);
}

std::expected<std::optional<std::string>, std::string> InstanceOption::checked() const {
  if (value_ && value_->empty()) return std::unexpected("--instance is empty");
  if (value_ && !codePointCount(*value_)) return std::unexpected("--instance is not UTF-8 text");
  return value_;
}

}  // namespace quillbay::host
