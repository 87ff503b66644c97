#include <cstdint>
#include <cstdio>

#include "bridge/exports.h"

int main()
{
    Init(nullptr, nullptr, [](std::int32_t code, void*) { std::printf("callback %d\n", code); });
    NotifyMsg(0, 41001, R"({"operate":"clicked","need_wrapper":"1","need_display":"1"})");
    std::puts("Enter ends the panels.");
    std::getchar();
    Uninit();
}
