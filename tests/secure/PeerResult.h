/// \file
/// The exit code of the program `secured_peer`, as bits.
#pragma once

namespace test {

using PeerResult = unsigned long;

inline constexpr PeerResult kPeerFailed = 0x80;    ///< an exception, or an unknown task
inline constexpr PeerResult kPeerObtained = 0x01;  ///< the handle was obtained, or IsAdmin returned
inline constexpr PeerResult kPeerCreated = 0x02;   ///< the call created the object
/// The mutex was locked, the event was signalled, the mapping had the expected content, the user is an administrator,
/// or all rounds of the race were correct.
inline constexpr PeerResult kPeerDone = 0x04;

}  // namespace test
