#pragma once

#include <filesystem>

#include "sandbox/http/Endpoint.h"
#include "sandbox/model/SessionStore.h"
#include "sandbox/store/PresignedAddress.h"

namespace quillbay::sandbox {

/// The object store: takes the bytes of one item by a PUT to its presigned address.
class StoreEndpoint : public Endpoint {
 public:
  /// The first segment of every object's path.
  static constexpr const char* bucket = "quillbay-objects";

  /// Borrows the sessions and the addresses; `incomingFolder` lies on their file system.
  StoreEndpoint(SessionStore& sessions, const PresignedAddress& addresses, Clock clock,
                std::filesystem::path incomingFolder);

  static std::string objectPath(const SessionRecord& session, const Item& item);

  Reply answer(Call& call) override;
  std::optional<Reply> refuseEarly(Call& call) override;

 private:
  struct Upload;

  /// All that can be said before the body: throws StoreError or tells where the bytes belong.
  Upload admit(const Call& call) const;
  Reply receive(Call& call, const Upload& upload) const;

  SessionStore& sessions_;
  const PresignedAddress& addresses_;
  Clock clock_;
  std::filesystem::path incomingFolder_;
};

}  // namespace quillbay::sandbox
