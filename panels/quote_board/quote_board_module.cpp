#include "quote_board/quote_board_module.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

#include "common/frame_commands.h"
#include "common/market.h"
#include "common/panel_style.h"
#include "common/placement.h"
#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "hosting/widget_properties.h"
#include "quote_board/quote_colors.h"
#include "services/records.h"
#include "services/resource_manager.h"

namespace panelry
{

QuoteBoardModule::QuoteBoardModule(const InstanceInfo& info) : m_widget(new QuoteBoardWidget)
{
    m_instance = info;
    m_widget->setWindowTitle(QString::fromStdString(info.module_title));
    m_widget->setProperty(kSupportClone, true);
    style::SetFrameSize(m_widget, m_widget->sizeHint());
    QObject::connect(m_widget, &QuoteBoardWidget::StockPicked, m_widget,
                     [this](const QString& code, const QString& name) { TellStock(code, name); });
}

QuoteBoardModule::~QuoteBoardModule()
{
    delete m_widget;
}

void QuoteBoardModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/,
                                  const char* initParam)
{
    if (!m_widget) {
        return;
    }
    PlaceFrame(m_widget, initParam);
    m_widget->SetColors(ReadQuoteColors(ResourceManager::Instance(true)->ColorTable()));
    const QJsonObject creation = QJsonDocument::fromJson(QByteArray(initParam)).object();
    const QJsonValue source = creation.value(QLatin1String("init_data"));
    if (source.isObject()) {
        m_widget->Restore(source.toObject().toVariantMap());
    }
    const QJsonObject parameters = creation.value(QLatin1String("init_param")).toObject();
    if (!parameters.isEmpty()) {
        m_widget->ApplyStart(QJsonDocument(parameters).toJson(QJsonDocument::Compact));
    }
}

void QuoteBoardModule::OnMessage(int msgId, void* payload)
{
    if (!m_widget || HandleFrameCommand(msgId, m_widget)) {
        return;
    }
    switch (msgId) {
        case kStockSelected:
            OnStockSelected(payload);
            break;
        case kInitData:
            OnInitData(static_cast<const char*>(payload));
            break;
        case kPushData:
            OnPushData(static_cast<const char*>(payload));
            break;
        default:
            break;
    }
}

void QuoteBoardModule::OnInitData(const char* text)
{
    m_awaited = QByteArray(text);
    m_widget->ApplyPush(*m_awaited, true);
}

void QuoteBoardModule::OnPushData(const char* text)
{
    const QByteArray push(text);
    if (std::exchange(m_awaited, std::nullopt) != push) {
        m_widget->ApplyPush(push, false);
    }
}

void QuoteBoardModule::OnStockSelected(const void* payload)
{
    const auto* const stock = static_cast<const StringMap*>(payload);
    if (stock && !FieldOf(*stock, "stockcode").empty()) {
        m_widget->Select(QString::fromStdString(FieldOf(*stock, "stockcode")));
    }
}

void QuoteBoardModule::TellStock(const QString& code, const QString& name)
{
    if (!m_manager) {
        return;
    }
    StringMap stock{
        {"stockcode", code.toStdString()}, {"market", MarketOf(code)}, {"stockname", name.toStdString()}};
    m_manager->SendModuleMessage(kStockSelected, &stock, this, kAlongLink);
}

}  // namespace panelry
