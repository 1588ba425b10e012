#include "sandbox/SandboxServer.h"

#include <fcntl.h>
#include <sys/file.h>

#include <stdexcept>

#include "sandbox/http/Router.h"
#include "sandbox/http/TlsServer.h"
#include "sandbox/links/LinkEndpoint.h"
#include "sandbox/service/ServiceEndpoint.h"
#include "sandbox/store/StoreEndpoint.h"
#include "sandbox/support/Files.h"
#include "sandbox/support/Hex.h"
#include "sandbox/support/Random.h"

namespace quillbay::sandbox {

namespace {

constexpr std::chrono::seconds sweepInterval{30};

FileDescriptor lockFolder(const std::filesystem::path& folder) {
  createPrivateFolder(folder);
  FileDescriptor lock = openFile(folder / "lock", O_RDWR | O_CREAT);
  if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
    throw std::runtime_error("another quillbay-sandbox is using the folder " + folder.string());
  }
  return lock;
}

/// Kept over restarts, so that addresses and cookies that are out there stay good.
std::string persistentSecret(const std::filesystem::path& file) {
  if (!std::filesystem::exists(file)) writeFileAtomically(file, hexEncode(randomBytes(32)));
  return readFile(file);
}

/// What uploads that a crash cut short have left.
std::filesystem::path emptyFolder(const std::filesystem::path& folder) {
  std::filesystem::remove_all(folder);
  createPrivateFolder(folder);
  return folder;
}

}  // namespace

struct SandboxServer::Parts {
  explicit Parts(const SandboxOptions& options)
      : folder(options.dataFolder),
        lock(lockFolder(folder)),
        identity(folder / "tls"),
        sessions(folder / "sessions", options.log),
        addresses({"QUILLBAYSANDBOX", persistentSecret(folder / "store.key")}, options.clock),
        gate(persistentSecret(folder / "cookie.key"), options.clock),
        server(identity.serverContext(), options.log, options.connectionLimit),
        port(server.bind(options.port)),
        service(sessions, addresses, options.clock, "localhost:" + std::to_string(port)),
        store(sessions, addresses, options.clock, emptyFolder(folder / "incoming")),
        links(sessions, gate, options.clock),
        router({{"cloud", &service}, {StoreEndpoint::bucket, &store}}, links),
        clock(options.clock) {}

  std::filesystem::path folder;
  FileDescriptor lock;
  TlsIdentity identity;
  SessionStore sessions;
  PresignedAddress addresses;
  PasswordGate gate;
  TlsServer server;
  int port;
  ServiceEndpoint service;
  StoreEndpoint store;
  LinkEndpoint links;
  Router router;
  Clock clock;
};

SandboxServer::SandboxServer(SandboxOptions options) {
  options.dataFolder = std::filesystem::absolute(options.dataFolder);
  parts_ = std::make_unique<Parts>(options);
}

SandboxServer::~SandboxServer() { stop(); }

void SandboxServer::start() {
  parts_->server.start(parts_->router);
  sweeper_ = std::jthread([this](const std::stop_token& stop) { sweepRegularly(stop); });
}

void SandboxServer::stop() {
  sweeper_.request_stop();
  parts_->server.stop();
  if (sweeper_.joinable()) sweeper_.join();
}

int SandboxServer::port() const { return parts_->port; }

std::filesystem::path SandboxServer::authorityFile() const {
  return parts_->identity.authorityFile();
}

void SandboxServer::sweepRegularly(const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  while (!stop.stop_requested()) {
    parts_->sessions.sweep(parts_->clock());
    wake_.wait_for(lock, stop, sweepInterval, [] { return false; });
  }
}

}  // namespace quillbay::sandbox
