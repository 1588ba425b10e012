#include "benchmarks/runner/Groups.h"

namespace quillbay::bench {

const std::vector<Group>& groups() {
  static const std::vector<Group> all = {
      {"fingerprint", "Fingerprints",
       R"(SHA-256 of files. The library uses OpenSSL's digest, the fastest here, so what is compared is how the
bytes get to it. `openssl dgst` and `sha256sum` are the programs that people use; a *whole process* is
a program from start to end. The digest in memory reads no file: the limit against it leaves room for
the copy out of the page cache, which counts for more where SHA instructions make the digest fast.)",
       fingerprintRows},
      {"upload", "One large file",
       R"(`curl -T` sends a file through the same libraries for HTTP and TLS, so what is compared is what ours adds.
The store throws away what it gets. `quillbay share` fingerprints the file as well: its peers are two
programs, one after the other.)",
       uploadRows},
      {"session", "Many small files",
       R"(Three requests a file, one after the other: address, upload, finalize. A tight libcurl loop does the least
work that these requests can be, and `curl -K` does it from a ready list; both throw the replies away.
`quillbay share` also fingerprints the files and reads the replies. The service sends the whole session
with every finalize reply: that is the row of 1,000 items.)",
       sessionRows},
      {"distance", "A service far away",
       R"(The same where a round trip to the service takes 20 ms: a relay passes on every byte 10 ms later. The peer
is the least time that the protocol allows: three round trips a file, two for opening each of the two
connections (TCP, TLS 1.3), and one for creating the session. Opening TCP takes no time on loopback, so
the relay holds the first bytes of a connection for one round trip more. The limit leaves 1.6 ms a round
trip for the work of both sides.)",
       distanceRows},
      {"start", "Starting",
       R"(Both programs load libcurl and the thirty libraries that it needs, which is nearly all that they do here.
`quillbay` also loads the C++ library, SQLite, and what reads JSON, XML and URLs.)",
       startRows},
      {"idle", "Doing nothing",
       R"(A host that only runs its main queue, as one does that waits for its user. The kernel's count of how often
its threads ran is read before and after 65 seconds, and scaled to an hour; what wakes more rarely than
that would not show. Nothing may wake: every wake-up costs power.)",
       idleRows},
      {"activity", "Observers",
       R"(What a host pays for observing a run. An observer is called ten times a second, and at each of three steps
a file. The limit is the difference between two runs of the same program.)",
       activityRows},
      {"memory", "Memory",
       R"(Memory must not depend on the size of a file, and must grow no faster than their number. `curl -T` keeps no
history, reads no JSON, and has no C++ library.)",
       memoryRows}};
  return all;
}

}  // namespace quillbay::bench
