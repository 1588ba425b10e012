#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "sandbox/model/Session.h"

namespace quillbay::sandbox {

/// All sessions, one folder each. May be used on any thread.
class SessionStore {
 public:
  /// Loads what earlier runs have left; a damaged session is reported through `warn` and left
  /// alone.
  SessionStore(std::filesystem::path folder, const std::function<void(const std::string&)>& warn);

  std::shared_ptr<Session> create(SessionRecord record);
  /// Nothing when there is no such session.
  std::shared_ptr<Session> findByIdentifier(const std::string& identifier) const;
  std::shared_ptr<Session> findBySlug(const std::string& slug) const;
  void remove(Session& session);

  /// Frees the disk space of expired sessions, and forgets them when they are long gone.
  void sweep(Instant now);

 private:
  using Sessions = std::unordered_map<std::string, std::shared_ptr<Session>>;

  void add(std::shared_ptr<Session> session);
  std::shared_ptr<Session> find(const Sessions& sessions, const std::string& key) const;

  const std::filesystem::path folder_;
  mutable std::mutex mutex_;
  Sessions byIdentifier_;
  Sessions bySlug_;
};

}  // namespace quillbay::sandbox
