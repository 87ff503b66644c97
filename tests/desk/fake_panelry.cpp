// A stand-in for the panels' library that tells through the callback what it is called with. Some texts make
// it do more, see NotifyMsg.

#include <string>
#include <thread>
#include <vector>

#include "bridge/exports.h"
#include "bridge/host_callback.h"
#include "services/records.h"

namespace
{

panelry::bridge::HostCallbackFunction callback = nullptr;
std::vector<std::thread> threads;

void Tell(std::int32_t code, std::string text)
{
    callback(code, text.data());
}

void AskTitle(const std::string& id)
{
    StringMap record{{"component_id", id}};
    callback(panelry::bridge::kComponentName, &record);
    Tell(205, "title " + (record.contains("component_name") ? record["component_name"] : "none"));
}

void Chatter(int thread)
{
    const std::string padding(8000, 'x');  // longer than what a pipe takes in one piece
    for (int i = 0; i < 50; ++i) {
        Tell(206, std::to_string(thread) + ' ' + std::to_string(i) + ' ' + padding);
    }
}

}  // namespace

void Init(void* quoteProvider, void* tradeProvider, void (*hostCallback)(std::int32_t nCode, void* pData))
{
    callback = hostCallback;
    Tell(205, !quoteProvider && !tradeProvider ? "Init" : "Init with providers");
}

void NotifyMsg(std::int32_t type, std::int32_t id, const char* text)
{
    const std::string order = text;
    if (order == "ask the title") {
        threads.emplace_back([id] { AskTitle(std::to_string(id)); });
    } else if (order == "chatter") {
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([i] { Chatter(i); });
        }
    } else if (order == "all codes") {
        int unread = 0;
        callback(panelry::bridge::kUserActive, nullptr);
        Tell(panelry::bridge::kCloneHandle, "8388613");
        Tell(206, "\xff");
        callback(99, &unread);
    } else {
        Tell(205, std::to_string(type) + ' ' + std::to_string(id) + ' ' + order);
    }
}

void Uninit()
{
    for (std::thread& thread : threads) {
        thread.join();
    }
    Tell(205, "Uninit");
}
