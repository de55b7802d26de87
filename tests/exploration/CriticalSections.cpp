/// \file
/// The critical sections of the model. The comment below begins with the title of a page of the Windows documentation.

#include <algorithm>
#include <string>

#include "exploration/Machine.h"

namespace exploration {

// "Critical Section Objects": the owner may enter again, and must leave the section as often as it has entered it. The
// order in which waiting threads acquire the section is unspecified, and a thread that did not wait may acquire the
// section before waiting threads.

Machine::Section& Machine::section(const CRITICAL_SECTION* address) {
    if (m_destroyedSections.contains(address) && Scheduler::running()) {
        Scheduler::running()->fail("a task uses a critical section that was deleted");
    }
    return m_sections[address];
}

void Machine::initialize(CRITICAL_SECTION* address) {
    m_destroyedSections.erase(address);
    m_sections[address] = Section();
}

void Machine::destroy(CRITICAL_SECTION* address) {
    const Section& deleted = section(address);
    if ((deleted.recursion != 0 || deleted.waiters != 0) && Scheduler::running()) {
        Scheduler::running()->fail("a task deletes a critical section that is in use");
    }
    m_sections.erase(address);
    m_destroyedSections.insert(address);
}

void Machine::enter(CRITICAL_SECTION* address) {
    schedulingPoint();
    Section& entered = section(address);
    const TaskId self = task();
    if (entered.recursion != 0 && entered.owner != self) {
        if (!Scheduler::isInTask()) {
            return;  // the schedule has ended while a task held the section
        }
        ++entered.waiters;
        Scheduler::running()->block([&entered] { return entered.recursion == 0; }, std::nullopt);
        --entered.waiters;
    }
    entered.owner = self;
    ++entered.recursion;
    traceCall([&] { return std::string("EnterCriticalSection"); });
}

bool Machine::tryEnter(CRITICAL_SECTION* address) {
    schedulingPoint();
    Section& entered = section(address);
    if (entered.recursion != 0 && entered.owner != task()) {
        traceCall([&] { return std::string("TryEnterCriticalSection: another task owns it"); });
        return false;
    }
    entered.owner = task();
    ++entered.recursion;
    traceCall([&] { return std::string("TryEnterCriticalSection: entered"); });
    return true;
}

void Machine::leave(CRITICAL_SECTION* address) {
    schedulingPoint();
    Section& left = section(address);
    if (left.recursion == 0 || left.owner != task()) {
        ++m_misuses;
        if (Scheduler::isInTask() && !m_isMisuseCounted) {
            Scheduler::running()->fail("a task leaves a critical section that it does not own");
        }
        return;
    }
    if (--left.recursion == 0) {
        left.owner = kNoTask;
    }
    traceCall([&] { return std::string("LeaveCriticalSection"); });
    schedulingPoint();
}

bool Machine::holds(const void* address) const {
    const auto found = m_sections.find(address);
    return found != m_sections.end() && found->second.recursion != 0 && found->second.owner == task();
}

std::size_t Machine::heldSections() const {
    return static_cast<std::size_t>(std::count_if(m_sections.begin(), m_sections.end(),
                                                  [](const auto& entry) { return entry.second.recursion != 0; }));
}

}  // namespace exploration
