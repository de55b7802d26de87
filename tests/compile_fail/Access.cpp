// Not part of any program. The compiler must reject every line with the comment "rejected", and no other line.

#include <cstdarg>

#include <vorel/vorelCore.h>

void fromOutside(vorel::Exception& e, const vorel::Exception& other, va_list args);
void fromOutside(vorel::Exception& e, const vorel::Exception& other, va_list args) {
    using vorel::Exception;
    e = other;
    e.clear();
    e.SetMessageOnStack(L"text", args);                                  // rejected: protected
    e.SetMessageOnStack("text", args);                                   // rejected: protected
    e.UpdateMessageOnStack(0, L"text", args);                            // rejected: protected
    e.CleanAll();                                                        // rejected: protected
    e.AssignFrom(other);                                                 // rejected: protected
    Exception::MirrorErrorMessage(nullptr, 0, "prefix", L"text", true);  // rejected: protected
    static_cast<void>(Exception::CurrentLogSize);                        // rejected: protected
    static_cast<void>(Exception::DefaultLogSize);
    static_cast<void>(Exception::MaxPathSize);          // rejected: private
    static_cast<void>(Exception::ErrorLogLocation);     // rejected: private
    static_cast<void>(Exception::m_mirrorToErrorLog);   // rejected: private
    static_cast<void>(e.m_stack);                       // rejected: private
    static_cast<void>(e.m_delayedLogging);              // rejected: private
    static_cast<void>(e.m_hasTracedProtocolStateInfo);  // rejected: private
    static_cast<void>(e.m_charBlock);                   // rejected: private
    static_cast<void>(e.m_wideBlock);                   // rejected: private
}

struct Derived : vorel::Exception {
    void fromInside(const vorel::Exception& other, const wchar_t* text, va_list args) {
        SetMessageOnStack(L"text", args);
        SetMessageOnStack("text", args);
        UpdateMessageOnStack(0, L"text", args);
        CleanAll();
        AssignFrom(other);
        MirrorErrorMessage(nullptr, CurrentLogSize, "prefix", text, true);
        StackEntry* entry = nullptr;  // rejected: private
        static_cast<void>(entry);
        MessageStack* stack = nullptr;  // rejected: private
        static_cast<void>(stack);
        CheckOldLogSize(nullptr, 0);                                      // rejected: private
        LockLogFile(0, true);                                             // rejected: private
        vDebugInternal("target", "text", args);                           // rejected: private
        vDebugInternal(L"target", L"text", args);                         // rejected: private
        vDebugClassInternal(L"class", L"method", L"target", text, args);  // rejected: private
        isDebugTargetActiveInternal("target");                            // rejected: private
        isDebugTargetActiveInternal(L"target");                           // rejected: private
        Invalid_Parameter_Handler(text, text, text, 0, 0);                // rejected: private
        static_cast<void>(ErrorLogLocation);                              // rejected: private
        static_cast<void>(m_stack);                                       // rejected: private
    }
};
