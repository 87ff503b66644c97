#pragma once

#include <QtTest>
#include <set>
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
            Note(*static_cast<WatchlistRequest*>(payload));
            m_present.HandleRequest(*static_cast<WatchlistRequest*>(payload));
        } else if (msgId == kStockSelected) {
            m_selected.push_back(*static_cast<StringMap*>(payload));
            m_present.OnStockSelected(static_cast<StringMap*>(payload));
        }
    }
    std::shared_ptr<ModuleBase> CreateSubModule(int, ModuleBase*) override { return {}; }
    void WriteModuleLog(int, const char*) override {}

    std::vector<StringMap> m_selected;        // by message 102, as they were sent
    std::multiset<std::int32_t> m_listening;  // the commands with which listeners came that haven't gone

private:
    void Note(const WatchlistRequest& request)
    {
        const bool listens = request.cmd == kListenWatchlist || request.cmd == kListenLatest;
        if (listens) {
            m_listening.insert(request.cmd);
        } else if (request.cmd == kUnlistenWatchlist || request.cmd == kUnlistenLatest) {
            m_listening.erase(request.cmd - 1);
        }
    }

    WatchlistManagerPresent& m_present;
};

}  // namespace panelry::test
