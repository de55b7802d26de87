/// \file
/// The private members of the named mutex that tests use.
#pragma once

#include "support/PrivateMember.h"
#include "vorel/sync/AutoMutex.h"

namespace test {

using vorel::AutoMutex;
using vorel::BaseString;

struct Terminate : PrivateMember<Terminate, void (AutoMutex::*)()> {};
struct GetLockCount : PrivateMember<GetLockCount, int (AutoMutex::*)()> {};
struct SetLockCount : PrivateMember<SetLockCount, void (AutoMutex::*)(bool)> {};
struct GetLockingThreadID : PrivateMember<GetLockingThreadID, long long (AutoMutex::*)()> {};
struct SetLockingThreadID : PrivateMember<SetLockingThreadID, void (AutoMutex::*)()> {};
struct ResetLockingThreadID : PrivateMember<ResetLockingThreadID, void (AutoMutex::*)()> {};
template struct Reveal<Terminate, &AutoMutex::terminate>;
template struct Reveal<GetLockCount, &AutoMutex::GetLockCount>;
template struct Reveal<SetLockCount, &AutoMutex::SetLockCount>;
template struct Reveal<GetLockingThreadID, &AutoMutex::GetLockingThreadID>;
template struct Reveal<SetLockingThreadID, &AutoMutex::SetLockingThreadID>;
template struct Reveal<ResetLockingThreadID, &AutoMutex::ResetLockingThreadID>;

struct MutexHandle : PrivateMember<MutexHandle, vorel::detail::KernelHandle AutoMutex::*> {};
struct Name : PrivateMember<Name, BaseString<wchar_t> AutoMutex::*> {};
struct InitializeError : PrivateMember<InitializeError, BaseString<wchar_t> AutoMutex::*> {};
struct Bookkeeping : PrivateMember<Bookkeeping, vorel::AutoCriticalSection AutoMutex::*> {};
struct LockCount : PrivateMember<LockCount, int AutoMutex::*> {};
struct LockingThreadId : PrivateMember<LockingThreadId, long long AutoMutex::*> {};
struct Flag : PrivateMember<Flag, bool AutoMutex::*> {};
struct UseFcntlTimeout : PrivateMember<UseFcntlTimeout, bool AutoMutex::*> {};
template struct Reveal<MutexHandle, &AutoMutex::m_mutex>;
template struct Reveal<Name, &AutoMutex::m_name>;
template struct Reveal<InitializeError, &AutoMutex::m_initializeError>;
template struct Reveal<Bookkeeping, &AutoMutex::m_bookkeeping>;
template struct Reveal<LockCount, &AutoMutex::m_lockCount>;
template struct Reveal<LockingThreadId, &AutoMutex::m_lockingThreadId>;
template struct Reveal<Flag, &AutoMutex::m_flag>;
template struct Reveal<UseFcntlTimeout, &AutoMutex::m_useFcntlTimeout>;

/// Calls a private member function.
template <class Tag, class... Arguments>
decltype(auto) call(AutoMutex& mutex, Arguments... arguments) {
    return (mutex.*reveal(Tag()))(arguments...);
}

}  // namespace test
