#pragma once

#include "ScriptedServer.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillbay::test {

/// The sharing service and the object store on one `ScriptedServer`, as a client sees them: the
/// session has the items "item-1", "item-2", ... for the announced files in their order. Every
/// single reply can be replaced.
class FakeService {
 public:
  enum class Call { createSession, uploadUrl, store, finalize, deleteSession, unknown };

  /// Gets the request and the ordinary reply, and returns what is to be sent; runs on a thread of
  /// the server. What the call does to the service has happened by then.
  using Hook = std::function<Reply(const Request& request, Reply ordinary)>;

  static constexpr const char* sessionIdentifier = "session-1";
  static constexpr const char* token = "token-of-session-1";
  static constexpr const char* link = "https://cloud.quillbay.example/s/session-1";

  FakeService();

  /// Makes it the service of this process: `useTestNetwork`.
  void install() const;

  /// Replaces the replies to one kind of call; an empty hook takes the replacement back.
  void setHook(Call call, Hook hook);
  /// Answers every call of this kind with `reply`.
  void answer(Call call, const Reply& reply);
  /// Holds the replies to this kind of call, the ordinary ones or `reply`, until the gate opens.
  std::shared_ptr<Gate> hold(Call call, const std::optional<Reply>& reply = std::nullopt);

  /// What was called, in the order of arrival: "create", "upload_url item-2", "store item-2",
  /// "finalize item-2", "delete session-1", or the request line of anything else.
  std::vector<std::string> calls() const;
  /// Requests of one kind, in the order of arrival.
  std::vector<Request> requests(Call call) const;

  /// The bytes that the store holds for an item ("" if it has none).
  std::string storedBytes(const std::string& itemIdentifier) const;

  ScriptedServer& server() { return server_; }

 private:
  struct Item {
    std::string identifier;
    std::string fingerprint;
    bool isUploaded = false;
    std::string storedBytes = {};
  };
  struct Route {
    Call call = Call::unknown;
    std::string identifier = {};
    std::string name = {};
  };

  static Route routeOf(const Request& request);
  Reply replyTo(const Request& request);
  // With the lock held.
  Reply perform(const Route& route, const Request& request);
  Reply createSession(const Request& request);
  Reply sessionReply(int status) const;

  mutable std::mutex mutex_;
  std::vector<Item> items_;
  std::map<Call, Hook> hooks_;
  std::vector<std::string> calls_;
  std::vector<std::pair<Call, Request>> requests_;
  ScriptedServer server_;
};

}  // namespace quillbay::test
