/// \file
/// `NamedCondition`: an event with a name, which any process of the machine can signal and wait for, whatever user it
/// runs under.
///
///     vorel::NamedCondition done(L"Global\\TalvenorImportDone");
///     done.signal();                 // in one process
///     done.wait(60000);              // in another
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/KernelHandle.h"

namespace vorel {

/// A signal releases one waiter of all processes, or the next one to come; there is no broadcast. Thread-safe.
class VOREL_API NamedCondition {
public:
    /// Creates the event `name`, or opens it when it is there. The name is used as it is; "Global\" in front makes it
    /// machine-wide.
    /// \throws Exception "Failed to create condition '%ls': %ls" with the name and the reason.
    explicit NamedCondition(const wchar_t* name);
    ~NamedCondition() noexcept(false);

    /// Releases one waiter, or the next one to come.
    /// \throws Exception "Failed to set event."
    void signal();

    /// Waits for a signal for up to `timeout` milliseconds (-1: without limit). True only when there was one.
    bool wait(int timeout);

private:
    static const wchar_t* const ClassName;

    /// These exist, and throw, for clients that bind to them by name.
    NamedCondition();
    NamedCondition(const NamedCondition& other);
    NamedCondition& operator=(const NamedCondition& other);

    void createCondition(const wchar_t* name);
    void closeCondition();

    detail::KernelHandle m_event;
    BaseString<wchar_t> m_name;
};

}  // namespace vorel
