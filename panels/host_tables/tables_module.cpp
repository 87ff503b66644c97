#include "host_tables/tables_module.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

#include "common/frame_commands.h"
#include "common/panel_style.h"
#include "common/placement.h"
#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "hosting/widget_properties.h"
#include "services/resource_manager.h"
#include "services/trade_provider.h"

namespace panelry
{

TablesModule::TablesModule(const InstanceInfo& info, TablesSpec spec)
    : m_widget(new TablesWidget(std::move(spec)))
{
    m_instance = info;
    m_widget->setWindowTitle(QString::fromStdString(info.module_title));
    m_widget->setProperty(kSupportClone, true);
    style::SetFrameSize(m_widget, m_widget->sizeHint());
}

TablesModule::~TablesModule()
{
    delete m_widget;
}

void TablesModule::SetProviders(void* /*quoteProvider*/, void* tradeProvider)
{
    m_link = new TradeLink(static_cast<TradeProvider*>(tradeProvider), m_widget);
}

void TablesModule::SetColorTable(void* table)
{
    ModuleBase::SetColorTable(table);
    m_widget->SetColors(ReadTableColors(ResourceManager::Instance(true)->ColorTable()));
}

void TablesModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/, const char* initParam)
{
    if (!m_widget || !m_link) {
        return;
    }
    PlaceFrame(m_widget, initParam);
    QObject::connect(m_widget, &TablesWidget::RefreshWanted, m_link, [this] { Refresh(); });
    QObject::connect(m_widget, &TablesWidget::CancelWanted, m_link,
                     [this](const std::vector<std::string>& contracts) { Cancel(contracts); });
    QObject::connect(m_widget, &TablesWidget::Picked, m_link, [this](StringMap stock) {
        if (m_manager) {
            m_manager->SendModuleMessage(kStockSelected, &stock, this, kAlongLink);
        }
    });
    QObject::connect(m_link, &TradeLink::TableChanged, m_widget, &TablesWidget::SetTable);
    QObject::connect(m_link, &TradeLink::OrdersChanged, m_widget, &TablesWidget::Outdate);
    Follow();
    const QJsonObject creation = QJsonDocument::fromJson(QByteArray(initParam)).object();
    m_widget->Restore(creation.value(QLatin1String("init_data")).toObject().toVariantMap());
}

void TablesModule::Follow()
{
    for (const PageSpec& page : m_widget->Spec().pages) {
        for (const bool margin : {false, true}) {
            m_link->FollowTable(TableName(page, margin));
        }
    }
}

void TablesModule::OnMessage(int msgId, void* /*payload*/)
{
    if (m_widget) {
        HandleFrameCommand(msgId, m_widget);
    }
}

void TablesModule::Refresh()
{
    const bool margin = m_widget->Margin();
    const PageSpec& page = m_widget->Spec().pages[static_cast<std::size_t>(m_widget->Page())];
    m_link->Ask(page.query, TableName(page, margin), margin);
}

// The orders stay in the table until the host brings it anew.
void TablesModule::Cancel(const std::vector<std::string>& contracts)
{
    int taken = 0;
    for (const std::string& contract : contracts) {
        if (m_link->Cancel(contract, m_widget->Margin())) {
            ++taken;
        } else {
            m_widget->Warn(QStringLiteral("合同 %1 未能提交撤单").arg(QString::fromStdString(contract)));
        }
    }
    if (taken > 0) {
        m_widget->Tell(QStringLiteral("已提交撤单 %1 笔").arg(taken));
    }
}

}  // namespace panelry
