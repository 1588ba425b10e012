#include <csignal>
#include <exception>
#include <iostream>

#include "sandbox/Announcement.h"
#include "sandbox/CommandLine.h"
#include "sandbox/SandboxServer.h"

namespace {

using namespace quillbay::sandbox;

/// Blocked before any thread starts, so that all of them leave the signals to `sigwait`.
sigset_t blockStopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

void run(const CommandLine& line) {
  const sigset_t stopSignals = blockStopSignals();
  SandboxServer server({.port = line.port,
                        .dataFolder = line.dataFolder,
                        .log = [](const std::string& text) { std::clog << text + "\n"; }});
  const Announcement announcement(line.readyFile);
  server.start();
  announcement.publish(shellSettings(server.port(), server.authorityFile()));
  int received = 0;
  sigwait(&stopSignals, &received);
  server.stop();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  try {
    const auto parsed = parseCommandLine(argumentCount, arguments);
    if (const int* status = std::get_if<int>(&parsed)) return *status;
    run(std::get<CommandLine>(parsed));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "quillbay-sandbox: " << error.what() << "\n";
    return 1;
  }
}
