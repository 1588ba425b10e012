#pragma once

#include <nlohmann/json.hpp>

#include "ScriptedServer.h"

#include <map>
#include <optional>

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

  static constexpr const char* token = "token-of-session-1";
  static constexpr const char* link = "https://cloud.quillbay.example/s/session-1";

  FakeService();

  /// Makes it the service of this process: `useTestNetwork`.
  void install() const { useTestNetwork(&server_); }

  /// Replaces the replies to one kind of call; an empty hook takes the replacement back.
  void setHook(Call call, Hook hook) {
    const std::lock_guard lock(mutex_);
    hooks_[call] = std::move(hook);
  }
  /// Answers every call of this kind, for item `item` alone if that is not 0, with `reply`.
  void answer(Call call, const Reply& reply, int item = 0) { hold(call, reply, item)->open(); }
  /// Holds these replies, the ordinary ones or `reply`, until the gate opens.
  std::shared_ptr<Gate> hold(Call call, const std::optional<Reply>& reply = std::nullopt,
                             int item = 0);

  /// What the service says when it does not do a thing.
  static Reply refusal(int status, const std::string& message);
  /// "Access denied", as the store says it.
  static Reply storeRefusal(const std::string& message = "No");

  /// What was called, in the order of arrival: "create", "upload_url item-2", "store item-2",
  /// "finalize item-2", "delete session-1", or the request line of anything else.
  std::vector<std::string> calls() const;
  /// Requests of one kind, in the order of arrival.
  std::vector<Request> requests(Call call) const;
  /// The bytes that the store was last sent for an item; "" if none.
  std::string storedBytes(const std::string& itemIdentifier) const;

  ScriptedServer& server() { return server_; }

 private:
  struct Arrival {
    Request request;
    Call call = Call::unknown;
    std::string name;
    std::string identifier = {};  // of the session, or the number of the item
  };

  static Arrival recognized(const Request& request);
  Reply replyTo(const Request& request);
  // With the lock held.
  Reply perform(const Arrival& arrival);
  Reply sessionReply(int status) const;

  mutable std::mutex mutex_;
  nlohmann::ordered_json items_;  // as they are in the session's JSON
  std::map<Call, Hook> hooks_;
  std::vector<Arrival> arrivals_;
  ScriptedServer server_;
};

}  // namespace quillbay::test
