#include "desk/host_library.h"

#include <dlfcn.h>

#include <string>

namespace fs = std::filesystem;

namespace panelry::desk
{

namespace
{

void* Open(const fs::path& path)
{
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        throw HostLibrary::LoadError(dlerror());
    }
    return handle;
}

template <class Function>
void Find(void* handle, const char* name, const fs::path& path, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(handle, name));
    if (!function) {
        throw HostLibrary::LoadError(path.string() + ": " + name + " is missing");
    }
}

}  // namespace

HostLibrary::HostLibrary(const fs::path& path)
{
    void* const handle = Open(path);
    Find(handle, "Init", path, Init);
    Find(handle, "NotifyMsg", path, NotifyMsg);
    Find(handle, "Uninit", path, Uninit);
}

fs::path ProgramDirectory()
{
    return fs::read_symlink("/proc/self/exe").parent_path();
}

fs::path DefaultLibrary()
{
    const fs::path beside = ProgramDirectory() / "libpanelry.so";
    const fs::path installed = ProgramDirectory() / PANELRY_DESK_INSTALLED_LIBRARY;
    return !fs::exists(beside) && fs::exists(installed) ? installed.lexically_normal() : beside;
}

}  // namespace panelry::desk
