#pragma once

#include <memory>

#include "base/singleton.h"
#include "services/module_base.h"

class AutoRefreshPresent;

/// The service that keeps tables and funds true: a module inside the library, without a widget, that no
/// message reaches.
///
/// Ownership: a singleton that the application thread makes, unless section "system", key
///   "support_autorefresh" is "0", and destroys when it quits. Where the application thread still runs at the
///   end of the process it is left alive; see StopForExit().
/// Threading: application thread.
class AutoRefresh : public ModuleBase, public panelry::Singleton<AutoRefresh, panelry::AtExit::LeaveIfRunning>
{
public:
    AutoRefresh();
    /// Stops the presenter, which a provider may hold beyond this.
    ~AutoRefresh() override;

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    /// The host's QuoteProvider and TradeProvider; either may be null.
    void SetProviders(void* quoteProvider, void* tradeProvider) override;

    /// After the providers and the settings.
    void Start();

    /// The end of a process whose host didn't take leave: nothing of the host is touched after this. Any
    /// thread.
    static void StopForExit();

private:
    const std::shared_ptr<AutoRefreshPresent> m_present;
};
