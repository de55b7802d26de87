/// \file
/// The exit code of the program `secured_peer`, as bits.
#pragma once

namespace test {

using PeerResult = unsigned long;

inline constexpr PeerResult kPeerFailed = 0x80;  ///< an exception, or an unknown task
/// Depends on the task: all handles were obtained, IsAdmin returned, or all rounds of the race were correct.
inline constexpr PeerResult kPeerObtained = 0x01;
inline constexpr PeerResult kPeerCreated = 0x02;  ///< the call created the mutex or the mapping
/// Depends on the task: the mutex was locked and unlocked, the event was signalled and answered, the mapping had the
/// expected content, the user is an administrator, or all rounds of the race were correct.
inline constexpr PeerResult kPeerDone = 0x04;

}  // namespace test
