#pragma once

#include <QByteArray>
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
        QByteArray text;  // of 205
        ModuleBase* sender;
        int target;
    };

    void SendModuleMessage(int msgId, void* payload, ModuleBase* sender, int targetModuleId) override
    {
        Sent& kept = sent.emplace_back(Sent{msgId, {}, {}, sender, targetModuleId});
        if (msgId == panelry::kStockSelected && payload) {
            kept.stock = *static_cast<StringMap*>(payload);
        } else if (msgId == panelry::kToHost205) {
            kept.text = static_cast<const char*>(payload);
        }
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
