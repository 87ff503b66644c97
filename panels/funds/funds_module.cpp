#include "funds/funds_module.h"

#include "common/frame_commands.h"
#include "common/panel_style.h"
#include "common/placement.h"
#include "hosting/widget_properties.h"
#include "services/resource_manager.h"
#include "services/trade_provider.h"

namespace panelry
{

namespace
{

constexpr char kHoldings[] = "gupiao_table";
// The normal account's, and the margin account's by currency.
constexpr const char* kPublished[] = {"zijin_data_proc", "zijin_data_rzrq_0", "zijin_data_rzrq_1",
                                      "zijin_data_rzrq_2"};

}  // namespace

FundsModule::FundsModule(const InstanceInfo& info) : m_widget(new FundsWidget)
{
    m_instance = info;
    m_widget->setWindowTitle(QString::fromStdString(info.module_title));
    m_widget->setProperty(kSupportClone, true);
    style::SetFrameSize(m_widget, m_widget->sizeHint());
}

FundsModule::~FundsModule()
{
    delete m_widget;
}

void FundsModule::SetProviders(void* /*quoteProvider*/, void* tradeProvider)
{
    m_link = new TradeLink(static_cast<TradeProvider*>(tradeProvider), m_widget);
}

void FundsModule::SetColorTable(void* table)
{
    ModuleBase::SetColorTable(table);
    m_widget->SetColors(ReadTableColors(ResourceManager::Instance(true)->ColorTable()));
}

void FundsModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/, const char* initParam)
{
    if (!m_widget || !m_link) {
        return;
    }
    PlaceFrame(m_widget, initParam);
    QObject::connect(m_widget, &FundsWidget::RefreshWanted, m_link, [this] { Refresh(); });
    QObject::connect(m_link, &TradeLink::OrdersChanged, m_link, [this] { Refresh(); });
    QObject::connect(m_link, &TradeLink::MapChanged, m_widget, &FundsWidget::SetFunds);
    QObject::connect(m_link, &TradeLink::TableChanged, m_link,
                     [this](const std::string&, const std::shared_ptr<HostTable>& table) {
                         m_link->PublishProfit(table);
                     });
    for (const char* const name : kPublished) {
        m_link->FollowMap(name);
    }
    m_link->FollowTable(kHoldings);
    Refresh();
}

void FundsModule::OnMessage(int msgId, void* /*payload*/)
{
    if (m_widget) {
        HandleFrameCommand(msgId, m_widget);
    }
}

void FundsModule::Refresh()
{
    m_link->AskFunds(false);
    m_link->AskFunds(true);
    m_link->Ask(&DataDealBase::QueryPositions, kHoldings, false);
}

}  // namespace panelry
