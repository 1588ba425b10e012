#include "modes.h"

#include <poll.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <mutex>
#include <thread>

#include "AnsweringProxy.h"
#include "ErrorReplies.h"
#include "Gate.h"
#include "Host.h"
#include "Line.h"

namespace quillbay::torture {
namespace {

using std::chrono::milliseconds;
using Kind = Disturbance::Kind;
using Path = std::filesystem::path;

/// Of every size alike: 0 to 10^digits.
std::uint64_t anySize(Random& random, double digits) {
  return static_cast<std::uint64_t>(
      std::pow(10, std::uniform_real_distribution(0.0, digits)(random)) - 1);
}

/// One share of six gets a signal.
void signalSometimes(Life& life) {
  constexpr int kSignals[] = {SIGINT, SIGTERM, SIGKILL};
  if (between(life.random(), 0, 5) > 0) return;
  const milliseconds moment(between(life.random(), 1, 400));
  life.signalAfter(moment, kSignals[between(life.random(), 0, 2)]);
}

Disturbance randomDisturbance(Random& random, Kind kind) {
  Disturbance disturbance{.kind = kind, .isOfRequests = between(random, 0, 2) > 0};
  disturbance.byteCount = anySize(random, disturbance.isOfRequests ? 6.2 : 4);
  if (between(random, 0, 2) == 0) disturbance.silence = milliseconds(between(random, 0, 400));
  return disturbance;
}

/// One of the first connections is disturbed, or every one.
Line::Plan planFor(Life& life, Disturbance (*choose)(Random&)) {
  constexpr int kEvery = 8;
  const int chosen = between(life.random(), 0, kEvery);
  return [&life, chosen, choose, random = Random(life.random()())](std::size_t connection) mutable {
    const bool isChosen = chosen == kEvery || std::cmp_equal(chosen, connection);
    return isChosen && !life.isCalm() ? choose(random) : Disturbance{};
  };
}

std::string runThrough(Line& line, Life& life) {
  life.routeThrough(line.port());
  signalSometimes(life);
  return life.run();
}

template <Kind K>
std::string disturbLine(const World& world, const Path& folder, const std::string& name,
                        Random random) {
  Life life(world, folder, name, random);
  Line line(world.sandbox.port(),
            planFor(life, [](Random& chance) { return randomDisturbance(chance, K); }));
  return runThrough(line, life);
}

/// Only the time-outs of the program end the wait.
std::string silence(const World& world, const Path& folder, const std::string& name,
                    Random random) {
  Life life(world, folder, name, random);
  constexpr std::int64_t kSpeedOfTimeouts = 30;
  life.surroundings().steadyClockSpeed = kSpeedOfTimeouts;
  Line line(world.sandbox.port(), planFor(life, [](Random& chance) {
              Disturbance disturbance = randomDisturbance(chance, Kind::cut);
              disturbance.silence = std::chrono::minutes(2);
              return disturbance;
            }));
  return runThrough(line, life);
}

/// Answers the n-th call of a kind, or every one.
class RandomAnswers {
 public:
  RandomAnswers(Life& life, bool ofStore)
      : life_(life),
        ofStore_(ofStore),
        random_(life.random()()),
        chosen_(between(random_, 0, kEvery)) {}

  std::optional<Substitution> operator()(const test::Request& head) {
    const std::lock_guard lock(mutex_);
    const bool isOfStore = !head.target().starts_with("/cloud/");
    if (life_.isCalm() || isOfStore != ofStore_) return std::nullopt;
    if (chosen_ != kEvery && chosen_ != count_++) return std::nullopt;
    const std::string address = "https://" + head.field("Host").value_or("") + head.target();
    const auto replies = allErrorReplies(address);
    const auto index = between(random_, 0, static_cast<int>(replies.size()) - 1);
    Substitution substitution{static_cast<Moment>(between(random_, 0, 3)),
                              replies[static_cast<std::size_t>(index)]};
    avoidLie(head, substitution);
    return substitution;
  }

 private:
  using Moment = Substitution::Moment;

  /// A client must believe a confirmation of what was not done, and a refusal of what was.
  static void avoidLie(const test::Request& head, Substitution& substitution) {
    auto& [moment, reply] = substitution;
    if (!reply.raw.empty()) return;
    const int kind = reply.status / 100;
    const bool isRefusal = kind == 3 || kind == 4;
    if (head.method() == "DELETE" && kind == 2) moment = Moment::afterCarryingOut;
    if (head.method() == "POST" && isRefusal) moment = std::min(moment, Moment::afterBody);
  }

  static constexpr int kEvery = 9;

  std::mutex mutex_;
  const Life& life_;
  const bool ofStore_;
  Random random_;
  const int chosen_;
  int count_ = 0;
};

template <bool OfStore>
std::string answer(const World& world, const Path& folder, const std::string& name, Random random) {
  Life life(world, folder, name, random);
  RandomAnswers answers(life, OfStore);
  const AnsweringProxy proxy(world.sandbox.port(),
                             [&](const test::Request& head) { return answers(head); });
  life.routeThrough(proxy.port());
  signalSometimes(life);
  return life.run();
}

/// After a moment, unless the mode is over before.
std::jthread later(milliseconds moment, const std::function<void()>& action) {
  return std::jthread([=](const std::stop_token& stop) {
    test::Gate stopped;
    const std::stop_callback open(stop, [&] { stopped.open(); });
    pollfd event{stopped.descriptor(), POLLIN, 0};
    if (::poll(&event, 1, static_cast<int>(moment.count())) == 0) action();
  });
}

/// A jump of hours must change nothing: time-outs are of the steady clock, and certificates are
/// valid for longer. A jump of years may make TLS fail.
std::string jumpClock(const World& world, const Path& folder, const std::string& name,
                      Random random) {
  Life life(world, folder, name, random);
  constexpr int kHour = 3600;
  constexpr int kYear = 8766 * kHour;
  const bool isSmall = between(life.random(), 0, 1) == 0;
  const int unit = isSmall ? kHour : kYear;
  const int jump = unit * between(life.random(), isSmall ? 0 : -20, isSmall ? 12 : 20);
  if (isSmall) life.expectSuccess();
  auto jumping = later(milliseconds(between(life.random(), 0, 300)),
                       [&, jump] { life.surroundings().wallClockJumpSeconds = jump; });
  life.whenCalm([&] { jumping = {}; });
  return life.run();
}

std::string fillHistory(const World& world, const Path& folder, const std::string& name,
                        Random random) {
  Life life(world, folder, name, random);
  life.surroundings().freeByteCount = between(life.random(), 0, 120'000);
  life.loseHistory();
  life.expectSuccess();
  return life.run();
}

std::string fillOutput(const World& world, const Path& folder, const std::string& name,
                       Random random) {
  Life life(world, folder, name, random);
  life.writeOutputTo("/dev/full");
  Line line(world.sandbox.port(),
            planFor(life, [](Random& chance) { return randomDisturbance(chance, Kind::cut); }));
  life.routeThrough(line.port());
  return life.run();
}

/// Of a sandbox of its own, which is started anew in the end.
std::string fillSandbox(const World& world, const Path& folder, const std::string& name,
                        Random random) {
  const Path control = folder / "sandbox-surroundings";
  const MappedSurroundings disk(control);
  Sandbox sandbox(folder / "sandbox", "env LD_PRELOAD=" TORTURE_SURROUNDINGS " " +
                                          std::string(Surroundings::kVariable) + "=" +
                                          control.string() + " ");
  const World own{sandbox, world.files, sandbox.authorityFile()};
  Life life(own, folder, name, random);
  const auto largest = static_cast<std::int64_t>(std::filesystem::file_size(world.files.back()));
  const bool isInJournal = between(life.random(), 0, 1) == 0;
  disk->freeByteCount = isInJournal ? largest + between(life.random(), 0, 3000)
                                    : static_cast<std::int64_t>(anySize(life.random(), 6.3));
  const auto cleaning = later(milliseconds(between(life.random(), 50, 1500)),
                              [&] { disk->freeByteCount = Surroundings::kUnlimited; });
  life.whenCalm([&] {
    disk->freeByteCount = Surroundings::kUnlimited;
    sandbox.restart();
  });
  return life.run();
}

std::string limitMemory(const World& world, const Path& folder, const std::string& name,
                        Random random) {
  Life life(world, folder, name, random);
  life.limitMemory(between(life.random(), 50'000, 200'000));
  return life.run();
}

/// One share by the library, which is continued if it fails, and deleted.
Host::Report shareByHost(const World& world, Host& host) {
  Host::Report report = host.order("share");
  const std::string session = report.session;
  for (int i = 0; i < 2 && !report.isSuccess() && world.sandbox.has(session); ++i) {
    report = host.order("resume");
  }
  const auto lack = report.isSuccess() ? world.sandbox.lackOf(session, world.files) : std::nullopt;
  if (lack) throw Fault("success, but " + *lack);
  if (session == "-" || !host.order("delete").isSuccess()) return report;
  if (world.sandbox.has(session)) throw Fault("told deleted, but it is there");
  return report;
}

/// The most that a host has needed in a while.
struct Peak {
  long kibibyteCount = 0;
  long descriptorCount = 0;
};

Peak shareOften(const World& world, Host& host) {
  constexpr int kShareCount = 100;
  Peak peak;
  for (int i = 0; i < kShareCount; ++i) {
    const Host::Report report = shareByHost(world, host);
    peak.kibibyteCount = std::max(peak.kibibyteCount, report.residentKibibyteCount);
    peak.descriptorCount = std::max(peak.descriptorCount, report.descriptorCount);
  }
  return peak;
}

/// Many shares in one process, whose memory and descriptors must not grow.
std::string shareByHost(const World& world, const Path& folder, const std::string& name,
                        Random random) {
  constexpr long kTolerableKibibyteCount = 2048;
  std::atomic<bool> isCalm = false;
  const Line line(world.sandbox.port(), [&](std::size_t) {
    constexpr Kind kKinds[] = {Kind::none, Kind::none, Kind::cut, Kind::reset, Kind::trickle};
    const Kind kind = isCalm ? Kind::none : kKinds[between(random, 0, 4)];
    return randomDisturbance(random, kind);
  });
  Host host(world, folder, name, line.port());
  const Peak first = shareOften(world, host);
  shareOften(world, host);
  const Peak last = shareOften(world, host);
  isCalm = true;
  shareByHost(world, host);  // on what is left of the connections
  const Host::Report report = shareByHost(world, host);
  if (!report.isSuccess()) throw Fault("does not recover: " + report.outcome);
  host.end();
  if (last.kibibyteCount > first.kibibyteCount + kTolerableKibibyteCount) {
    throw Fault("grows to " + std::to_string(last.kibibyteCount) + " KiB");
  }
  if (last.descriptorCount > first.descriptorCount) {
    throw Fault("grows to " + std::to_string(last.descriptorCount) + " descriptors");
  }
  return "flat";
}

constexpr Mode kModes[] = {
    {"cut", disturbLine<Kind::cut>},
    {"reset", disturbLine<Kind::reset>},
    {"trickle", disturbLine<Kind::trickle>},
    {"silence", silence},
    {"store-answers", answer<true>},
    {"service-answers", answer<false>},
    {"full-history", fillHistory},
    {"full-output", fillOutput},
    {"full-sandbox", fillSandbox},
    {"clock", jumpClock},
    {"memory", limitMemory},
    {"host", shareByHost, 50},
};

}  // namespace

std::span<const Mode> allModes() { return kModes; }

}  // namespace quillbay::torture
