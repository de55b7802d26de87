/// \file
/// `NamedCondition`: a named event that processes can signal and wait for.
///
///     vorel::NamedCondition done(L"Global\\TalvenorImportDone");
///     done.signal();                 // in one process
///     done.wait(60000);              // in another
#pragma once

#include <concepts>

#include "vorel/Attributes.h"
#include "vorel/Export.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/KernelHandle.h"
#include "vorel/sync/NarrowName.h"

namespace vorel {

/// A signal releases one waiter in any process. If no thread waits, one signal is kept for the next waiter; further
/// signals are lost. Unlike `Condition`, this class has no broadcast. Thread-safe.
class VOREL_API NamedCondition {
public:
    /// Opens the event `name`, and creates it if it does not exist. The name is used unchanged; the prefix "Global\"
    /// makes it machine-wide. A null `name` creates an event without a name. If the event can be neither created nor
    /// opened, tries again for half a second.
    /// \throws Exception "Failed to create condition '%ls': %ls" with the name and the reason; MemoryException.
    explicit NamedCondition(const wchar_t* name);

    /// The same with a name in UTF-8, which is converted to UTF-16. The constructor is a template, so that
    /// `NamedCondition(nullptr)` is not ambiguous.
    /// \throws Exception with the message "Failed to convert utf8 text to String: ..." if a byte of `name` should
    ///         start a sequence but cannot (see vorel/text/Unicode.h); the exceptions of the constructor for wide
    ///         names.
    template <std::same_as<char> Narrow>
    explicit NamedCondition(const Narrow* name) : NamedCondition(detail::NarrowName(name).wide()) {}

    /// Closes the condition. No thread may be waiting on the object.
    ~NamedCondition() noexcept(false);

    /// Releases one waiter. If no thread waits, the next waiter is released at once.
    /// \throws Exception "Failed to set event."
    void signal();

    /// Waits up to `timeout` milliseconds for a signal (-1: without limit). Returns true after a signal, and false
    /// after a timeout or a failure.
    bool wait(int timeout);

private:
    static const wchar_t* const ClassName;

    /// These members always throw. They exist for clients that link to them by name.
    NamedCondition();
    NamedCondition(const NamedCondition& other);
    NamedCondition& operator=(const NamedCondition& other);

    void createCondition(const wchar_t* name);
    void closeCondition();

    VOREL_BEGIN_OWN_MEMBERS
    detail::KernelHandle m_event;
    BaseString<wchar_t> m_name;
    VOREL_END_OWN_MEMBERS
};

}  // namespace vorel
