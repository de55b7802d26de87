// Not part of any program. The compiler must reject every line with the comment "refused", and no other line.

#include <cstdarg>

#include <vorel/vorelCore.h>

void fromOutside(vorel::Exception& e, const vorel::Exception& other, va_list args);
void fromOutside(vorel::Exception& e, const vorel::Exception& other, va_list args) {
    using vorel::Exception;
    e = other;
    e.clear();
    e.SetMessageOnStack(L"text", args);                                  // refused: protected
    e.SetMessageOnStack("text", args);                                   // refused: protected
    e.UpdateMessageOnStack(0, L"text", args);                            // refused: protected
    e.CleanAll();                                                        // refused: protected
    e.AssignFrom(other);                                                 // refused: protected
    Exception::MirrorErrorMessage(nullptr, 0, "prefix", L"text", true);  // refused: protected
    static_cast<void>(Exception::CurrentLogSize);                        // refused: protected
    static_cast<void>(Exception::DefaultLogSize);
    static_cast<void>(Exception::MaxPathSize);          // refused: private
    static_cast<void>(Exception::ErrorLogLocation);     // refused: private
    static_cast<void>(Exception::m_mirrorToErrorLog);   // refused: private
    static_cast<void>(e.m_stack);                       // refused: private
    static_cast<void>(e.m_delayedLogging);              // refused: private
    static_cast<void>(e.m_hasTracedProtocolStateInfo);  // refused: private
    static_cast<void>(e.m_charBlock);                   // refused: private
    static_cast<void>(e.m_wideBlock);                   // refused: private
}

struct Derived : vorel::Exception {
    void fromInside(const vorel::Exception& other, const wchar_t* text, va_list args) {
        SetMessageOnStack(L"text", args);
        SetMessageOnStack("text", args);
        UpdateMessageOnStack(0, L"text", args);
        CleanAll();
        AssignFrom(other);
        MirrorErrorMessage(nullptr, CurrentLogSize, "prefix", text, true);
        StackEntry* entry = nullptr;  // refused: private
        static_cast<void>(entry);
        CheckOldLogSize(nullptr, 0);                                      // refused: private
        LockLogFile(0, true);                                             // refused: private
        vDebugInternal("target", "text", args);                           // refused: private
        vDebugInternal(L"target", L"text", args);                         // refused: private
        vDebugClassInternal(L"class", L"method", L"target", text, args);  // refused: private
        isDebugTargetActiveInternal("target");                            // refused: private
        isDebugTargetActiveInternal(L"target");                           // refused: private
        Invalid_Parameter_Handler(text, text, text, 0, 0);                // refused: private
        static_cast<void>(ErrorLogLocation);                              // refused: private
        static_cast<void>(m_stack);                                       // refused: private
    }
};
