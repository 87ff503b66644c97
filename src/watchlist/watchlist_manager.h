#pragma once

#include <memory>

#include "base/singleton.h"
#include "services/module_base.h"

class WatchlistManagerPresent;

/// The watchlist service: a module inside the library that the plug-in manager hands messages 102 and 123.
///
/// Ownership: a singleton, made on the first of these messages, which reads the files. It dies at process
///   exit. Where the application thread still runs by then it is left alive, and the latest stocks are
///   written all the same.
/// Threading: any thread, normally the application thread.
/// Failures: those of WatchlistManagerPresent.
class WatchlistManager : public ModuleBase,
                         public panelry::Singleton<WatchlistManager, panelry::AtExit::LeaveIfRunning>
{
public:
    WatchlistManager();
    ~WatchlistManager() override;

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    /// 102, a StringMap*: the stock that was selected, may be null. 123, a WatchlistRequest*. Others mean
    /// nothing here.
    void OnMessage(int msgId, void* payload) override;

private:
    std::shared_ptr<WatchlistManagerPresent> m_present;
};
