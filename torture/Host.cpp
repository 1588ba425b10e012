#include "Host.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <sstream>

#include "TemporaryFolder.h"

namespace quillbay::torture {
namespace {

// Longer than the host itself waits.
constexpr int kBoundMilliseconds = 30'000;

/// Open for both, so that neither side waits for the other to open it.
host::FileDescriptor makePipe(const std::filesystem::path& path) {
  ::mkfifo(path.c_str(), 0600);
  return host::FileDescriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC));
}

std::string commandFor(const World& world, const std::string& folder, const std::string& instance,
                       int port) {
  std::string command = "env QUILLBAY_CACERT=" + world.authorities.string() +
                        " QUILLBAY_CONNECT_TO=" + world.routeThrough(port) +
                        " TORTURE_INSTANCE=" + instance + " " + world.host + " obey 0";
  for (const auto& file : world.files) command += " " + file.string();
  return command + " <" + folder + "/orders >" + folder + "/reports 2>" + folder + "/error";
}

}  // namespace

Host::Host(const World& world, const std::filesystem::path& folder, const std::string& instance,
           int port)
    : folder_(folder),
      orders_(makePipe(folder / "orders")),
      reports_(makePipe(folder / "reports")),
      process_(commandFor(world, folder.string(), instance, port)) {}

Host::Report Host::order(const std::string& what) {
  const std::string line = what + "\n";
  if (::write(orders_.get(), line.data(), line.size()) < 0) fail("takes no order");
  Report report;
  std::istringstream fields(readLine());
  fields >> report.outcome >> report.session >> report.residentKibibyteCount >>
      report.descriptorCount;
  return report;
}

std::string Host::readLine() {
  std::string line;
  while (!line.ends_with('\n')) {
    pollfd event{reports_.get(), POLLIN, 0};
    // The pipe does not end with the host.
    for (int waited = 0; ::poll(&event, 1, 100) == 0; waited += 100) {
      if (process_.waitFor(std::chrono::seconds(0))) fail("the host has ended");
      if (waited > kBoundMilliseconds) throw Hang("the host");
    }
    char byte = 0;
    if (::read(reports_.get(), &byte, 1) == 1) line += byte;
  }
  return line;
}

void Host::end() {
  orders_.reset();
  const auto status = process_.waitFor(std::chrono::milliseconds(kBoundMilliseconds));
  if (!status) throw Hang("the host at its end");
  if (*status != 0) fail("the host ended with " + std::to_string(*status));
}

void Host::fail(const std::string& what) const {
  throw Fault(what + "\n" + test::readFile(folder_ / "error"));
}

}  // namespace quillbay::torture
