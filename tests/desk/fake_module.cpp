// A module library that offers 7001 and 7002, or does what its file name says.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "hosting/module_library.h"

#ifdef FAKE_OTHER_ABI
namespace
{

struct Note {
    unsigned nameSize = 8;
    unsigned textSize = 28;
    unsigned type = 1;
    char name[8] = "Panelry";
    char text[28] = "cxxabi=1;qt=6;sdk=1";
};
__attribute__((section(".note.panelry.abi"), used, aligned(4))) const Note note;

}  // namespace
#endif

#ifdef FAKE_INCOMPLETE
void NobodyHasThis();
#endif

PANELRY_EXPORT std::vector<ModuleInfo>* GetModuleInfo()
{
    Dl_info self{};
    dladdr(reinterpret_cast<void*>(&GetModuleInfo), &self);
    const std::string path = self.dli_fname;
    const std::string name = path.substr(path.rfind('/') + 1);
    std::puts("a module may write to standard output");
    static std::vector<ModuleInfo> modules(2);
    modules[0].module_id = 7001;
    modules[0].module_title = "One";
    modules[1].module_id = name == "large_id.so" ? 0x80000000U : 7002;
    modules[1].module_title = "Two";
    if (name == "crash.so") {
        std::abort();
    }
    if (name == "exit.so") {
        std::exit(3);
    }
    if (name == "empty.so") {
        modules.clear();
    }
    return name == "null.so" ? nullptr : &modules;
}

PANELRY_EXPORT ModuleBase* CreateModule(InstanceInfo*)
{
#ifdef FAKE_INCOMPLETE
    NobodyHasThis();
#endif
    return nullptr;
}
