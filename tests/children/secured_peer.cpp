/// \file
/// A program that the tests of secured objects start. All tasks except `admin` create or open objects that other
/// processes also use, and use them.
///
///     task=mutex name=<mutex> [held=<event> release=<event>]
///         locks the mutex if it is free, and unlocks it; if events are given, sets `held` and waits for `release`
///         before it unlocks the mutex
///     task=event name=<event> answer=<event>
///         waits for the event `name`, then sets the event `answer`
///     task=mapping name=<mapping> [file=<path>] expect=<number> write=<number>
///         compares the first number of the mapping with `expect`, and overwrites it with `write`
///     task=admin
///         calls IsAdmin
///     task=race name=<prefix of the names> folder=<path> parties=<number> rounds=<number> log=<path>
///         opens or creates mappings while other processes do the same
///
/// The exit code is a combination of the bits of PeerResult.

#include <string>

#include <windows.h>

#include <vorel/secure/IsAdmin.h>
#include <vorel/secure/SecuredMappings.h>
#include <vorel/secure/SecuredObjects.h>

#include "secure/MappingRace.h"
#include "secure/PeerResult.h"
#include "support/ChildArguments.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"

namespace {

using test::ChildArguments;
using test::Handle;

test::PeerResult useMutex(const ChildArguments& arguments) {
    int created = 7;
    const Handle mutex(vorel::ObtainAccessableMutex(0, arguments.wide("name").c_str(), 0, 0, &created));
    test::PeerResult result = mutex ? test::kPeerObtained : 0;
    result |= created != 0 ? test::kPeerCreated : 0;
    if (!mutex || WaitForSingleObject(mutex.get(), 0) != WAIT_OBJECT_0) {
        return result;
    }
    if (!arguments.text("held").empty()) {
        const test::NamedEvent held(arguments.wide("held"));
        const test::NamedEvent release(arguments.wide("release"));
        held.set();
        (void)release.wait();
    }
    return result | (ReleaseMutex(mutex.get()) ? test::kPeerDone : 0);
}

Handle obtainEvent(const std::wstring& name) {
    vorel::BaseString<wchar_t> text;
    return Handle(vorel::ObtainAccessableEvent(0, 0, name.c_str(), 0, 0, text));
}

test::PeerResult answerEvent(const ChildArguments& arguments) {
    const Handle request = obtainEvent(arguments.wide("name"));
    const Handle answer = obtainEvent(arguments.wide("answer"));
    if (!request || !answer) {
        return 0;
    }
    const bool signalled = WaitForSingleObject(request.get(), test::kGenerousMs) == WAIT_OBJECT_0;
    return test::kPeerObtained | (signalled && SetEvent(answer.get()) ? test::kPeerDone : 0);
}

Handle obtainMapping(const ChildArguments& arguments, test::PeerResult& result) {
    const std::wstring name = arguments.wide("name");
    const std::wstring file = arguments.wide("file");
    bool isNew = false;
    int created = 7;
    Handle mapping;
    if (file.empty()) {
        mapping = Handle(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                            4096, name.c_str(), &created));
        isNew = created != 0;
    } else {
        mapping = Handle(vorel::ObtainAccessableFileMappingEx(file.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, 4096,
                                                              name.c_str(), nullptr, &isNew));
    }
    result |= mapping ? test::kPeerObtained : 0;
    result |= isNew ? test::kPeerCreated : 0;
    return mapping;
}

test::PeerResult useMapping(const ChildArguments& arguments) {
    test::PeerResult result = 0;
    const Handle mapping = obtainMapping(arguments, result);
    void* const view = mapping ? MapViewOfFile(mapping.get(), FILE_MAP_WRITE, 0, 0, 0) : nullptr;
    if (!view) {
        return result;
    }
    auto* const number = static_cast<volatile long long*>(view);
    result |= *number == arguments.number("expect") ? test::kPeerDone : 0;
    *number = arguments.number("write");
    UnmapViewOfFile(view);
    return result;
}

test::PeerResult raceForMappings(const ChildArguments& arguments) {
    vorel::Exception::SetErrorLogLocation(arguments.text("log").c_str(), -1);
    const int rounds = static_cast<int>(arguments.number("rounds"));
    const int good = test::runMappingRace(
        {arguments.wide("name"), arguments.wide("folder"), static_cast<long>(arguments.number("parties")), rounds});
    return good == rounds ? test::kPeerObtained | test::kPeerDone : 0;
}

test::PeerResult perform(const ChildArguments& arguments) {
    const std::string task = arguments.text("task");
    if (task == "mutex") {
        return useMutex(arguments);
    }
    if (task == "event") {
        return answerEvent(arguments);
    }
    if (task == "admin") {
        return test::kPeerObtained | (vorel::IsAdmin() ? test::kPeerDone : 0);
    }
    if (task == "race") {
        return raceForMappings(arguments);
    }
    return task == "mapping" ? useMapping(arguments) : test::kPeerFailed;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        return static_cast<int>(perform({argumentCount, arguments}));
    } catch (...) {
        return static_cast<int>(test::kPeerFailed);
    }
}
