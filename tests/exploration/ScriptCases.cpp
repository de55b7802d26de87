#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "exploration/Script.h"

namespace exploration {

namespace {

/// Chooses one of several texts.
struct Pick {
    std::string operator()(std::initializer_list<const char*> texts) const {
        return texts.begin()[random() % texts.size()];
    }

    std::mt19937& random;
};

/// A step for a random script. There are few slots and names, so that steps affect each other.
std::string randomStep(std::mt19937& random) {
    const Pick pick{random};
    const std::string thread = pick({"A ", "B ", "C "});
    switch (random() % 8) {
    case 0:
        return thread + "event " + pick({"e", "f"}) + pick({" auto", " manual", " set", " manual-set"}) +
               pick({" n", " m", ""}) + pick({"", "", " secured"});
    case 1:
        return thread + "mutex " + pick({"m", "o"}) + pick({" owned", " free"}) + pick({" n", " k", ""}) +
               pick({"", "", " secured"});
    case 2:
        return thread + pick({"open-event e n", "open-mutex m k", "open-mapping p q", "open-event f k",
                              "open-mutex o n", "mapping p sized q", "mapping p sized q secured"});
    case 3: return thread + pick({"set e", "reset e", "set f", "reset f", "set m"});
    case 4: return thread + pick({"wait e", "wait f", "wait m", "wait o", "wait m", "wait m"});
    case 5: return thread + pick({"release m", "release o", "release e", "close e", "close m", "close o"});
    case 6: return thread + pick({"wait m", "release m"});
    default: return pick({"B ", "C "}) + "end";
    }
}

std::string randomFileStep(std::mt19937& random) {
    const Pick pick{random};
    const std::string slot = pick({"s", "t", "u"});
    switch (random() % 7) {
    case 0:
    case 1: return "A open " + slot + pick({" x", " x", " y"}) + " append";
    case 2: return "A " + pick({"lock ", "unlock "}) + slot;
    case 3: return "A print " + slot + pick({" one", " three"});
    case 4: return "A close " + slot;
    case 5: return "A " + pick({"delete x", "delete y", "move x y", "move y x"});
    default: return "A size " + slot;
    }
}

}  // namespace

std::vector<Script> allScripts() {
    std::vector<Script> scripts = {
        {"an auto-reset event ends one wait, even if it was signalled twice",
         {"A event e set", "A wait e", "B wait e", "B set e", "B set e", "A wait e", "A wait e"}},
        {"a manual-reset event stays signalled",
         {"A event e manual", "B wait e", "A set e", "B wait e", "A wait e", "A reset e", "B wait e"}},
        {"handles with the same name share one event",
         {"A event e set n", "B event f auto n", "B wait f", "A wait e", "A close e", "B close f", "A event e auto n",
          "A wait e"}},
        {"a name belongs to objects of one kind",
         {"A event e auto n", "A mutex m free n", "A mapping p sized n", "A open-mutex m n", "A open-mapping p n"}},
        {"names without an object", {"A open-event e n", "A open-mutex m n", "A open-mapping p n"}},
        {"a mutex is recursive",
         {"A mutex m owned", "A wait m", "B wait m", "A release m", "B wait m", "A release m", "B wait m", "A wait m",
          "B release m", "B release m"}},
        {"only the owner can release a mutex", {"A mutex m owned", "B release m", "A release m", "A release m"}},
        {"an existing mutex is not owned by the thread that opens it",
         {"A mutex m owned n", "B mutex o owned n", "B wait o", "A release m", "B wait o"}},
        {"an abandoned mutex is reported once",
         {"B mutex m owned", "A wait m", "B end", "A wait m", "A wait m", "A release m", "A release m", "C wait m"}},
        {"an abandoned mutex that was locked twice needs one release",
         {"B mutex m owned", "B wait m", "B end", "C wait m", "C release m", "A wait m"}},
        {"a mutex that is released before its thread ends is not abandoned",
         {"B mutex m owned", "B release m", "B end", "A wait m"}},
        {"a mutex exists while it has an open handle",
         {"A mutex m free n", "B open-mutex o n", "A close m", "B wait o", "A mutex m free n"}},
        {"an existing secured event can be opened, but not created again",
         {"A event e auto n secured", "B event f auto n", "B open-event f n", "B set f", "A wait e"}},
        {"an existing secured mutex can be opened, but not created again",
         {"A mutex m free k secured", "B mutex o free k", "B open-mutex o k", "B wait o", "A wait m"}},
        {"an existing secured mapping can be opened, but not created again",
         {"A mapping p sized q secured", "B mapping r sized q", "B open-mapping r q"}},
        {"a mapping without a file needs a size",
         {"A mapping p empty q", "A mapping p sized q", "B mapping r sized q"}},
        {"calls with an object of the wrong kind",
         {"A event e auto", "A mutex m free", "A release e", "A set m", "A reset m"}},
        {"a closed event cannot be used", {"A event e set", "A close e", "A set e", "A wait e"}},
        {"a lock excludes other handles",
         {"A open s x append", "A open t x append", "A lock s", "A lock t", "A lock s", "A unlock t", "A unlock s",
          "A lock t", "A unlock s"}},
        {"closing a file unlocks it", {"A open s x append", "A open t x append", "A lock s", "A close s", "A lock t"}},
        {"a locked file cannot be written",
         {"A open s x append", "A open t x append", "A lock s", "A print t one", "A size s"}},
        {"the handle that holds the lock can write",
         {"A open s x append", "A open t x append", "A lock s", "A print s one", "A size t"}},
        {"each line is appended at the end of the file",
         {"A open s x append", "A open t x append", "A print s one", "A print t three", "A close s", "A close t",
          "A open s x append", "A size s"}},
        {"an open file is neither renamed nor deleted",
         {"A open s x append", "A move x y", "A delete x", "A close s", "A move x y", "A delete x", "A delete y"}},
        {"a rename does not replace a file",
         {"A open s x append", "A close s", "A open s y append", "A close s", "A move x y", "A delete y", "A move x y",
          "A move x y"}},
        {"a rename while a reader that shares deletion has the file open",
         {"A open s x append", "A close s", "A read t x all", "A move x y", "A close t"}},
        {"a reader that does not share deletion",
         {"A open s x append", "A close s", "A read t x no-delete", "A move x y", "A delete x", "A open s x append"}},
        {"a reader that shares nothing",
         {"A open s x append", "A close s", "A read t x none", "A open s x append", "A delete x", "A close t",
          "A open s x append"}},
        {"readers with each sharing mode while a writer has the file open",
         {"A open s x append", "A read t x none", "A read t x all", "A read u x no-delete"}},
        {"deletion while a reader that shares deletion has the file open",
         {"A open s x append", "A close s", "A read t x all", "A delete x", "A open s x append", "A move x y",
          "A close t", "A open s x append"}},
        {"a reader's lock stops writers",
         {"A open s x append", "A read t x all", "A lock t", "A lock s", "A print s one", "A unlock t", "A lock s"}},
        {"a file that is not opened for appending",
         {"A open s x write", "A open t x write", "A lock s", "A print t one"}},
        {"files that do not exist", {"A delete x", "A move x y", "A read t x all"}},
    };
    std::mt19937 random(20261122);
    for (int number = 1; number <= 120; ++number) {
        Script script{"random objects " + std::to_string(number), {"A event e auto n", "A mutex m free k"}};
        for (int step = 0; step < 16; ++step) {
            script.steps.push_back(randomStep(random));
        }
        scripts.push_back(script);
    }
    for (int number = 1; number <= 80; ++number) {
        Script script{"random files " + std::to_string(number), {"A open s x append"}};
        for (int step = 0; step < 14; ++step) {
            script.steps.push_back(randomFileStep(random));
        }
        scripts.push_back(script);
    }
    return scripts;
}

}  // namespace exploration
