#pragma once

#include <QPointer>

#include "host_tables/tables_widget.h"
#include "services/module_base.h"

namespace panelry
{

/// A panel of tables as a module: follows its tables at the host's trade side, asks for them, cancels orders,
/// and tells the frame which stock was picked (102).
///
/// Listens to the frame commands (common/frame_commands.h).
///
/// Ownership: holds the widget, which the library may delete first; the widget holds the link to the host.
/// Threading: application thread.
/// Failures: an order whose cancel the host doesn't take is told in the status line.
class TablesModule : public ModuleBase
{
public:
    TablesModule(const InstanceInfo& info, TablesSpec spec);
    ~TablesModule() override;

    void SetProviders(void* quoteProvider, void* tradeProvider) override;
    void SetColorTable(void* table) override;
    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return m_widget; }

private:
    void Follow();
    void Refresh();
    void Cancel(const std::vector<std::string>& contracts);

    QPointer<TablesWidget> m_widget;
    QPointer<TradeLink> m_link;
};

}  // namespace panelry
