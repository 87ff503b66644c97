// host TEXT: opens the greeter's panel, pushes data to it and fails unless the answer is TEXT.

#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <future>
#include <string>

#include "bridge/exports.h"
#include "hosting/message_ids.h"

namespace
{

std::promise<std::string> answered;

void OnCallback(std::int32_t code, void* data)
{
    if (code == panelry::kToHost205) {
        answered.set_value(static_cast<const char*>(data));
    }
}

template <class Function>
Function* Find(void* library, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(library, name));
}

}  // namespace

int main(int, char* argv[])
{
    void* const library = dlopen(PANELRY_LIBRARY, RTLD_NOW);
    if (!library) {
        std::puts(dlerror());
        return 1;
    }
    Find<decltype(Init)>(library, "Init")(nullptr, nullptr, &OnCallback);
    const auto notify = Find<decltype(NotifyMsg)>(library, "NotifyMsg");
    notify(0, 42000, R"({"operate":"clicked","need_wrapper":"1"})");
    notify(1, 42000, "600000");

    std::future<std::string> answer = answered.get_future();
    const bool came = answer.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    const std::string text = came ? answer.get() : "nothing";
    std::printf("the panel answered: %s\n", text.c_str());
    Find<decltype(Uninit)>(library, "Uninit")();
    return text == argv[1] ? 0 : 1;
}
