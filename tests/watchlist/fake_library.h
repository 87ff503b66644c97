#pragma once

#include <QtTest>
#include <vector>

#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "watchlist/watchlist_manager_present.h"

namespace panelry::test
{

/// The library as a module sees it: messages of the watchlist reach a presenter, all of them are kept.
class FakeLibrary : public ModuleManagerSpi
{
public:
    explicit FakeLibrary(WatchlistManagerPresent& present) : m_present(present) {}

    void SendModuleMessage(int msgId, void* payload, ModuleBase* sender, int target) override
    {
        QVERIFY(target == kAlongLink && sender != nullptr);
        if (msgId == kWatchlistRequest) {
            auto& request = *static_cast<WatchlistRequest*>(payload);
            m_listening += request.cmd == kListenWatchlist || request.cmd == kListenLatest;
            m_listening -= request.cmd == kUnlistenWatchlist || request.cmd == kUnlistenLatest;
            m_present.HandleRequest(request);
        } else if (msgId == kStockSelected) {
            m_selected.push_back(*static_cast<StringMap*>(payload));
            m_present.OnStockSelected(static_cast<StringMap*>(payload));
        }
    }
    std::shared_ptr<ModuleBase> CreateSubModule(int, ModuleBase*) override { return {}; }
    void WriteModuleLog(int, const char*) override {}

    std::vector<StringMap> m_selected;  // by message 102, as they were sent
    int m_listening = 0;                // listeners that came and haven't gone

private:
    WatchlistManagerPresent& m_present;
};

}  // namespace panelry::test
