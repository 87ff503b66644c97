#pragma once

#include <vector>

#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "services/module_base.h"
#include "services/records.h"

/// Stands in for the library towards one module and keeps what it sends.
class RecordingManager : public ModuleManagerSpi
{
public:
    struct Sent {
        int msgId;
        StringMap stock;  // of 102
        ModuleBase* sender;
        int target;
    };

    void SendModuleMessage(int msgId, void* payload, ModuleBase* sender, int targetModuleId) override
    {
        const bool stock = msgId == panelry::kStockSelected && payload;
        sent.push_back(
            {msgId, stock ? *static_cast<StringMap*>(payload) : StringMap(), sender, targetModuleId});
    }
    std::shared_ptr<ModuleBase> CreateSubModule(int, ModuleBase*) override { return nullptr; }
    void WriteModuleLog(int, const char*) override {}

    std::vector<Sent> sent;
};

/// As the library hands texts to modules.
inline void Send(ModuleBase& module, int msgId, const char* text)
{
    module.OnMessage(msgId, const_cast<char*>(text));
}
