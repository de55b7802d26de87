/// \file
/// What the program `secured_peer` tells the test that started it, as bits of its exit code.
#pragma once

namespace test {

using PeerResult = unsigned long;

inline constexpr PeerResult kPeerFailed = 0x80;    ///< an exception, or an unknown task
inline constexpr PeerResult kPeerObtained = 0x01;  ///< it got a handle
inline constexpr PeerResult kPeerCreated = 0x02;   ///< the object was new to it
inline constexpr PeerResult kPeerDone = 0x04;      ///< mutex: it had it; event: the signal came; mapping: as expected

}  // namespace test
