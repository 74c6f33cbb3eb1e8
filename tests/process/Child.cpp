// A small engine that does what engines do when they start and end. Its first argument selects an
// action; the tests read its output, its trace and its exit status.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <thread>

#include "ExchangeModels.h"
#include "KORDMInstance.h"
#include "KORPSNTrace.h"
#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"

namespace {

// Long enough to require memory.
void TraceLine(const char* label) {
    KORPSNTrace trace(label, 12, 0);
    trace.GetLigne().GetStream() << KORPSNTrace::Indent(KORPSNTrace::GetIndent() + 3)
                                 << trace.GetMethod()
                                 << " a line that is longer than what a text holds in itself"
                                 << std::endl;
    trace.Out();
}

// ---- Tracing at the end of threads and of the process

// Called after the destructors of all static objects.
void (*atTheVeryEnd)() = nullptr;
[[gnu::destructor]] void TheVeryEnd() {
    if (atTheVeryEnd != nullptr) atTheVeryEnd();
}

struct TracesWhenDestroyed {
    explicit TracesWhenDestroyed(const char* ofLabel) : label(ofLabel) {}
    ~TracesWhenDestroyed() { TraceLine(label); }
    const char* label;
};

int TraceAtTheEnd() {
    static const TracesWhenDestroyed process("process ->");
    TraceLine("main ->");
    std::thread([] {
        thread_local const TracesWhenDestroyed thread("thread ->");
        (void)thread;
        TraceLine("in thread ->");
    }).join();
    atTheVeryEnd = [] { TraceLine("very end ->"); };
    return 0;
}

// ---- Versions, with the module loaded by name

struct Module {
    Module() : library(dlopen(MODULE_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
        if (library == nullptr) std::abort();
    }
    void Unload() { dlclose(library); }

    SdaiPrimitiveH Call(const char* name, const SdaiPrimitiveH& a, const SdaiPrimitiveH& b) const {
        using Function = SdaiPrimitiveH (*)(const SdaiPrimitiveH&, const SdaiPrimitiveH&);
        return reinterpret_cast<Function>(dlsym(library, name))(a, b);
    }
    SdaiPrimitiveH Call(const char* name, const SdaiPrimitiveH& a) const {
        using Function = SdaiPrimitiveH (*)(const SdaiPrimitiveH&);
        return reinterpret_cast<Function>(dlsym(library, name))(a);
    }
    SdaiPrimitiveH RemoveValueVersion() const {
        using Function = SdaiPrimitiveH (*)();
        return reinterpret_cast<Function>(dlsym(library, "RemoveValueVersion"))();
    }

    void* library;
};

// Two revisions of a part, with their records and their family. Never destroyed.
struct Parts {
    Parts() {
        std::vector<std::string> messages;
        model = exchange::NewModel("cdma", messages).release();
        KORListValKORDMInstance family;
        for (SdaiAppInstance** part : {&older, &newer}) {
            *part = New("part_object");
            SdaiAppInstance* record = New("cdma_id");
            const char* id = part == &older ? "1" : "2";
            record->PutAttr("CdmaObject", *part);
            record->PutAttr("Coid", SdaiString(id));
            record->PutAttr("Compid", SdaiString("1"));
            record->PutAttr("Caenv", SdaiString("an environment with a long name"));
            record->PutAttr("Catab", SdaiString("PART"));
            family.Append(KORDMInstance("KORCON", "an environment with a long name", "PART",
                                        part == &older ? 1.0 : 2.0, 1.0));
        }
        KORDMStore::AddFamily(family);
    }
    SdaiAppInstance* New(const char* type) const {
        return model->GetEntityDefinition(SdaiString(type))->CreateEntityInstance(model);
    }

    SdaiModel* model;
    SdaiAppInstance* older;
    SdaiAppInstance* newer;
};

const char* TruthOf(const SdaiPrimitiveH& logical) {
    return static_cast<const SdaiLogical&>(logical) == sdaiLTRUE ? "TRUE" : "FALSE";
}

const char* PartIn(const Parts& parts, const SdaiPrimitiveH& handle) {
    const SdaiEntityInstance* instance = handle;
    return instance == nullptr ? "none" : instance == parts.older ? "older" : "newer";
}

const Module* module = nullptr;
const Parts* parts = nullptr;

void ForgetVersions() {
    std::printf("IsNewer %s\n", TruthOf(module->Call("IsNewer", parts->newer, parts->older)));
    std::printf("IsVersion %s\n", PartIn(*parts, module->Call("IsVersion", parts->newer, 1)));
    std::printf("RemoveValueVersion %s\n", TruthOf(module->RemoveValueVersion()));
    std::fflush(stdout);
}

// A singleton of the engine is created before the module is loaded, and destroyed after it.
int ForgetVersionsAtTheEnd() {
    static const struct Singleton {
        ~Singleton() { ForgetVersions(); }
    } singleton;
    module = new Module;
    parts = new Parts;
    std::printf("IsVersion %s\n", PartIn(*parts, module->Call("IsVersion", parts->older, 1)));
    std::printf("IsVersion %s\n", PartIn(*parts, module->Call("IsVersion", parts->newer, 1)));
    std::printf("IsNewer %s\n", TruthOf(module->Call("IsNewer", parts->newer, parts->older)));
    atTheVeryEnd = ForgetVersions;
    return 0;
}

// The state of the module is unloaded with it.
int UnloadModule() {
    parts = new Parts;
    for (const SdaiPrimitiveH& part :
         {SdaiPrimitiveH(parts->older), SdaiPrimitiveH(parts->newer)}) {
        Module loaded;
        std::printf("IsVersion %s\n", PartIn(*parts, loaded.Call("IsVersion", part, 1)));
        std::printf("IsVersion %s\n", PartIn(*parts, loaded.Call("IsVersion", parts->newer, 1)));
        loaded.Unload();
        if (dlopen(MODULE_LIBRARY, RTLD_NOW | RTLD_NOLOAD) != nullptr) return 1;
    }
    return 0;
}

// ---- Placements: the lists that threads keep in reserve, and the texts of the module

void Place() {
    const SdaiPrimitiveH placement = module->Call("GetAbsPlacement", SdaiPrimitiveH());
    const SdaiAggrInstance* values = placement;
    std::printf("%ld values\n", values == nullptr ? 0L : values->GetMemberCount());
    std::fflush(stdout);
}

void PlaceInEveryWay() {
    Place();
    for (const char* name : {"GetPlacement1", "GetPlacement2"}) {
        const SdaiPrimitiveH done = module->Call(name, SdaiPrimitiveH(), SdaiPrimitiveH());
        std::printf("%s\n", static_cast<const SdaiString&>(done).ToUtf8().c_str());
    }
    std::fflush(stdout);
}

int PlaceAtTheEnd() {
    static const struct Singleton {
        ~Singleton() { PlaceInEveryWay(); }
    } singleton;
    module = new Module;
    PlaceInEveryWay();
    atTheVeryEnd = PlaceInEveryWay;
    return 0;
}

// Each thread ends after the module has been unloaded that it called. There are more rounds than a
// process may have keys for thread-specific values.
int UnloadModuleBeforeAThreadEnds() {
    for (int round = 0; round < 1100; ++round) {
        Module loaded;
        module = &loaded;
        std::promise<void> called;
        std::promise<void> unloaded;
        std::thread thread([&] {
            if (round % 100 == 0) {
                Place();
            } else {
                loaded.Call("GetAbsPlacement", SdaiPrimitiveH());
            }
            called.set_value();
            unloaded.get_future().wait();
        });
        called.get_future().wait();
        loaded.Unload();
        if (dlopen(MODULE_LIBRARY, RTLD_NOW | RTLD_NOLOAD) != nullptr) return 1;
        unloaded.set_value();
        thread.join();
    }
    return 0;
}

// ---- Child processes

int TraceInChildren() {
    TraceLine("parent ->");
    const pid_t forked = fork();
    if (forked == 0) {
        TraceLine("forked ->");
        std::_Exit(0);
    }
    waitpid(forked, nullptr, 0);
    const pid_t started = fork();
    if (started == 0) execl("/proc/self/exe", "child", "once", nullptr);
    waitpid(started, nullptr, 0);
    TraceLine("parent again ->");
    return 0;
}

int TraceOnce() {
    TraceLine("started ->");
    return 0;
}

// The first line is written in another working directory than that of the start.
int TraceFromElsewhere() {
    if (chdir("/") != 0) return 1;
    TraceLine("elsewhere ->");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::map<std::string, std::function<int()>> kActions = {
        {"end", TraceAtTheEnd},   {"versions", ForgetVersionsAtTheEnd},
        {"unload", UnloadModule}, {"children", TraceInChildren},
        {"once", TraceOnce},      {"elsewhere", TraceFromElsewhere},
        {"place", PlaceAtTheEnd}, {"unload-first", UnloadModuleBeforeAThreadEnds},
    };
    const auto action = kActions.find(argc > 1 ? argv[1] : "");
    return action != kActions.end() ? action->second() : 2;
}
