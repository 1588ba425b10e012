#include "sandbox/model/SessionStore.h"

namespace quillbay::sandbox {

namespace {

// How long a link says that it has expired before it becomes unknown.
constexpr std::chrono::days remembranceOfExpired{30};

}  // namespace

SessionStore::SessionStore(std::filesystem::path folder,
                           const std::function<void(const std::string&)>& warn)
    : folder_(std::move(folder)) {
  createPrivateFolder(folder_);
  for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
    try {
      add(Session::load(entry.path()));
    } catch (const std::exception& error) {
      warn("cannot load the session in " + entry.path().string() + ": " + error.what());
    }
  }
}

std::shared_ptr<Session> SessionStore::create(SessionRecord record) {
  const auto folder = folder_ / record.identifier;
  auto session = Session::create(folder, std::move(record));
  add(session);
  return session;
}

std::shared_ptr<Session> SessionStore::findByIdentifier(const std::string& identifier) const {
  return find(byIdentifier_, identifier);
}

std::shared_ptr<Session> SessionStore::findBySlug(const std::string& slug) const {
  return find(bySlug_, slug);
}

void SessionStore::remove(Session& session) {
  {
    const std::lock_guard lock(mutex_);
    byIdentifier_.erase(session.record().identifier);
    bySlug_.erase(session.record().slug);
  }
  session.remove();
}

void SessionStore::sweep(Instant now) {
  std::vector<std::shared_ptr<Session>> expired;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& [identifier, session] : byIdentifier_) {
      if (session->record().isExpired(now)) expired.push_back(session);
    }
  }
  for (const auto& session : expired) {
    if (session->record().isExpired(now - remembranceOfExpired)) {
      remove(*session);
    } else {
      session->discardObjects();
    }
  }
}

void SessionStore::add(std::shared_ptr<Session> session) {
  const std::lock_guard lock(mutex_);
  bySlug_.emplace(session->record().slug, session);
  byIdentifier_.emplace(session->record().identifier, std::move(session));
}

std::shared_ptr<Session> SessionStore::find(const Sessions& sessions,
                                            const std::string& key) const {
  const std::lock_guard lock(mutex_);
  const auto found = sessions.find(key);
  return found == sessions.end() ? nullptr : found->second;
}

}  // namespace quillbay::sandbox
