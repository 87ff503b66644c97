#include "watchlist/watchlist_module.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <exception>

#include "common/frame_commands.h"
#include "common/panel_style.h"
#include "common/placement.h"
#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "hosting/widget_properties.h"

namespace panelry
{

WatchlistModule::WatchlistModule(const InstanceInfo& info) : m_widget(new WatchlistWidget)
{
    m_instance = info;
    m_widget->setWindowTitle(QString::fromStdString(info.module_title));
    m_widget->setProperty(kSupportClone, true);
    style::SetFrameSize(m_widget, m_widget->sizeHint());
    ConnectWidget();
}

WatchlistModule::~WatchlistModule()
{
    m_latest.reset();
    m_watchlist.reset();
    delete m_widget;
}

void WatchlistModule::ConnectWidget()
{
    QObject::connect(m_widget, &WatchlistWidget::Picked, m_widget,
                     [this](const StringMap& stock, bool fromLatest) { Pick(stock, fromLatest); });
    QObject::connect(m_widget, &WatchlistWidget::AddWanted, m_widget,
                     [this](const StringMap& stock) { Add(stock); });
    QObject::connect(m_widget, &WatchlistWidget::RemoveWanted, m_widget,
                     [this](const StringMap& stock) { Remove(stock); });
    QObject::connect(m_widget, &WatchlistWidget::MoveWanted, m_widget,
                     [this](int from, int to) { Move(from, to); });
}

void WatchlistModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/,
                                 const char* initParam)
{
    if (!m_widget) {
        return;
    }
    PlaceFrame(m_widget, initParam);
    const QJsonObject creation = QJsonDocument::fromJson(QByteArray(initParam)).object();
    m_widget->Restore(creation.value(QLatin1String("init_data")).toObject().toVariantMap());
    try {
        m_latest.emplace(*this, *this, kListenLatest);
        m_watchlist.emplace(*this, *this, kListenWatchlist);
    } catch (const std::exception& problem) {
        m_widget->Warn(QStringLiteral("自选股文件有误，无法显示：%1").arg(QString::fromUtf8(problem.what())));
    }
}

void WatchlistModule::OnMessage(int msgId, void* payload)
{
    if (!m_widget || HandleFrameCommand(msgId, m_widget)) {
        return;
    }
    const auto* const stock = static_cast<const StringMap*>(payload);
    if (msgId == kStockSelected && stock && !FieldOf(*stock, "stockcode").empty()) {
        m_widget->ShowSelected(*stock);
    }
}

void WatchlistModule::OnWatchlistEvent(int code, const void* list)
{
    if (!m_widget) {
        return;
    }
    const auto& stocks = *static_cast<const StockList*>(list);
    if (code == kLatestFirst || code == kLatestChanged) {
        m_widget->SetLatest(stocks);
    } else {
        m_widget->SetWatchlist(stocks);
    }
}

bool WatchlistModule::Send(WatchlistRequest& request)
{
    if (!m_manager) {
        return false;
    }
    try {
        m_manager->SendModuleMessage(kWatchlistRequest, &request, this, kAlongLink);
        return true;
    } catch (const std::exception& problem) {
        m_widget->Warn(QStringLiteral("自选股文件有误，未能修改：%1").arg(QString::fromUtf8(problem.what())));
        return false;
    }
}

void WatchlistModule::Add(const StringMap& stock)
{
    WatchlistRequest test;
    test.cmd = kTestStocks;
    test.items = {stock};
    test.found = {false};
    if (!Send(test)) {
        return;
    }
    if (!test.found[0]) {
        WatchlistRequest add;
        add.cmd = kAddStocks;
        add.items = {stock};
        if (!Send(add)) {
            return;
        }
    }
    m_widget->ShowAdded(stock, !test.found[0]);
}

void WatchlistModule::Remove(const StringMap& stock)
{
    WatchlistRequest request;
    request.cmd = kRemoveStocks;
    request.items = {stock};
    Send(request);
}

void WatchlistModule::Move(int from, int to)
{
    WatchlistRequest request;
    request.cmd = kMoveStock;
    request.from = from;
    request.to = to;
    Send(request);
}

void WatchlistModule::Pick(const StringMap& stock, bool fromLatest)
{
    if (!m_manager) {
        return;
    }
    StringMap selected;
    for (const char* const key : {"stockcode", "market", "stockname"}) {
        selected[key] = FieldOf(stock, key);
    }
    if (fromLatest) {
        selected[kFromLatest] = "1";
    }
    m_manager->SendModuleMessage(kStockSelected, &selected, this, kAlongLink);
}

}  // namespace panelry
