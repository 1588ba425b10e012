#pragma once

namespace quillbay::bench {

/// Serves one connection of a client to the server at `port`, as if the two were a round trip
/// apart: what either sends arrives half of it later. The client's first bytes take a whole round
/// trip more, because on loopback the connection itself is opened in no time. Returns when both
/// have closed.
void relayWithDelay(int client, int port);

}  // namespace quillbay::bench
