#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "MappedSurroundings.h"
#include "Sandbox.h"

namespace quillbay::torture {

using Random = std::mt19937_64;

/// At least `least`, at most `most`.
inline int between(Random& random, int least, int most) {
  return std::uniform_int_distribution(least, most)(random);
}

/// A promise that was broken.
struct Fault : std::runtime_error {
  using runtime_error::runtime_error;
};

/// What should have ended by itself.
struct Hang : Fault {
  using Fault::Fault;
};

/// What all lives share.
struct World {
  const Sandbox& sandbox;
  std::vector<std::filesystem::path> files;
  /// The authorities that programs trust.
  std::filesystem::path authorities;
  /// The program that holds the library.
  std::string host = {};

  /// Leads programs to a port in place of the service and the store.
  std::string routeThrough(int port) const;
};

/// One share by `quillbay`: shared, disturbed, continued, and deleted in the end. After each
/// command it compares what the program has told with what the sandbox holds.
class Life {
 public:
  /// `folder`: an empty one of its own. `instance`: of no other life.
  Life(const World& world, std::filesystem::path folder, std::string instance, Random random);
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;

  Random& random() { return random_; }
  const Sandbox& sandbox() const { return world_.sandbox; }
  /// Of the programs; ordinary again once the life is calm.
  Surroundings& surroundings() { return *surroundings_; }
  /// The trouble is over: what is left to do must succeed.
  bool isCalm() const { return isCalm_; }

  void routeThrough(int port) { port_ = port; }
  void limitMemory(int kibibyteCount) { memoryKibibyteCount_ = kibibyteCount; }
  void writeOutputTo(const std::string& file) { output_ = file; }
  void signalAfter(std::chrono::milliseconds moment, int number) {
    signalMoment_ = moment;
    signal_ = number;
  }
  /// The history cannot be relied on.
  void loseHistory() { hasHistory_ = false; }
  /// The trouble is none that may make the share fail.
  void expectSuccess() { mustSucceed_ = true; }

  /// Called when the trouble is to end.
  void whenCalm(std::function<void()> action) { whenCalm_ = std::move(action); }

  /// How the share ended. Throws `Fault`.
  std::string run();

 private:
  struct End;

  End start(const std::string& command);
  std::string share();
  void resume(bool mustSucceed);
  void remove(bool mustSucceed);
  void checkSession(const End& end) const;
  bool isUnfinished() const;
  std::string sessionOnService() const;

  const World& world_;
  const std::filesystem::path folder_;
  const std::string instance_;
  Random random_;
  const MappedSurroundings surroundings_;
  std::atomic<bool> isCalm_ = false;

  int port_;
  int memoryKibibyteCount_ = 0;
  std::string output_;
  std::chrono::milliseconds signalMoment_{0};
  int signal_ = 0;
  bool hasHistory_ = true;
  bool mustSucceed_ = false;
  std::function<void()> whenCalm_;

  std::string session_;
  std::string token_;
  bool isDone_ = false;
};

}  // namespace quillbay::torture
