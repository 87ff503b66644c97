#pragma once

#include <QObject>
#include <QTimer>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "base/wake_up.h"
#include "services/host_table.h"
#include "services/records.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/table_form_info.h"
#include "tables/zi_jin_info.h"

class TradeProvider;

namespace panelry
{

/// A panel's end of the host's trade side: follows tables and maps by name, tells their news on the panel's
/// thread, and sends what the panel asks for.
///
/// News that come faster than the panel takes them are told once, with the newest content.
///
/// A host may forget its subscribers when the log-in is lost: at each log-in all is followed anew, and what the
/// panel has asked for is asked once more.
///
/// Ownership: a plain child object; the provider is the host's and may keep the observer behind it, which is
///   deaf then. Threading: application thread; the host's threads only leave news.
/// Failures: without a provider nothing is followed, and Cancel() returns false. A host that blocks in a call
///   holds the panel up.
class TradeLink : public QObject
{
    Q_OBJECT

public:
    /// `provider` may be null.
    TradeLink(TradeProvider* provider, QObject* parent);
    ~TradeLink() override;

    /// News under `name` from here on; what the host has by now is told at once.
    void FollowTable(const std::string& name);
    void FollowMap(const std::string& name);

    /// Asks for one table; see TableFormInfo.
    using Query = void (DataDealBase::*)(StringMap&);
    void Ask(Query query, const std::string& table, bool margin);
    /// Asks for the funds of one account; the answer is published as maps.
    void AskFunds(bool margin);
    /// Adds up the profit of the holdings in `table` and publishes it with the funds.
    void PublishProfit(const std::shared_ptr<HostTable>& table) { m_funds.OnPositionsTable(table); }

    /// Sends the cancel of the order `contract`; false if the host didn't take it.
    bool Cancel(const std::string& contract, bool margin);

Q_SIGNALS:
    /// `table` isn't null.
    void TableChanged(const std::string& name, const std::shared_ptr<HostTable>& table);
    void MapChanged(const std::string& name, const StringMap& map);
    /// Orders or cancels have come in, through whatever client, in the last fifth of a second: lists, holdings and
    /// funds are out of date, but not the orders that can be cancelled, which the host brings by itself.
    void OrdersChanged();

private:
    class Observer;
    class OrderNews;

    void FollowOrders(bool on);
    void TakeNews();
    void Resume();
    void TakeAnswer(const std::shared_ptr<StockInfoAnswer>& answer);

    WakeUp m_reader;  // called when there is news
    TradeProvider* const m_provider;
    std::shared_ptr<Observer> m_observer;    // null without a provider
    std::shared_ptr<OrderNews> m_orderNews;  // likewise
    QTimer m_ordersSettle;
    TableFormInfo m_form;
    ZiJinInfo m_funds;
    RzrqZiJinInfo m_marginFunds;
    std::set<std::string> m_tables;                         // followed
    std::set<std::string> m_maps;                           // followed
    std::map<std::string, std::pair<Query, bool>> m_asked;  // by table: how, and of the margin account
    std::set<bool> m_fundsAsked;                            // true: of the margin account
};

}  // namespace panelry
