#pragma once

#include <QPointer>

#include "funds/funds_widget.h"
#include "host_tables/trade_link.h"
#include "services/module_base.h"

namespace panelry
{

/// The number of the funds panel.
inline constexpr unsigned kFundsPanelId = 41008;

/// The funds of both accounts as a panel. It also adds up the profit of the holdings, which nobody else does.
///
/// Listens to the frame commands (common/frame_commands.h).
///
/// Ownership: holds the widget, which the library may delete first; the widget holds the link to the host.
/// Threading: application thread.
class FundsModule : public ModuleBase
{
public:
    explicit FundsModule(const InstanceInfo& info);
    ~FundsModule() override;

    void SetProviders(void* quoteProvider, void* tradeProvider) override;
    void SetColorTable(void* table) override;
    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return m_widget; }

private:
    void Refresh();

    QPointer<FundsWidget> m_widget;
    QPointer<TradeLink> m_link;
};

}  // namespace panelry
