#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "desk/providers/client_requests.h"
#include "desk/providers/delivery.h"
#include "desk/providers/memory_table.h"
#include "desk/providers/simulation.h"
#include "services/trade_observer.h"
#include "services/trade_provider.h"

namespace panelry::desk
{

/// The trade side of the desk's host: three accounts at a broker.
///
/// Answers. A query of a list or of funds that names a table (local "table_name") is answered by that table:
/// it is kept under the name, and who has subscribed it is told; there is no answer record besides. Without a
/// name, and for all other requests, the answer is a record for the sender, with the list in its table; a
/// notice of a setting (2304) has none. A record has the request as it was sent, and reply body "ret" "0", or
/// "-1" with "ret_text", the reason. What isn't known (type, "cmd"), and everything while the log-in is lost,
/// is turned down at once, with -1.
///
/// News that nobody asked for go to the subscribers of their names:
///   - after an order has come in, through whatever client: the map "auto_refresh_data" {"htbh": contract,
///     "rzrq": "0" or "1"}, then the table of orders that can be cancelled ("chedan_table",
///     "rzrq_chedan_table", "ggt_chedan_table");
///   - after a cancel: "auto_refresh_data" {"chedan": "1", "rzrq": ...} and the table likewise;
///   - nothing after a deal, nor at the day's end: this host tells of them when it is asked;
///   - nothing after a refused order or cancel.
/// Stock Connect has no "auto_refresh_data", which knows two accounts only.
///
/// Log-in. Attached clients are told states 0 and 1 (normal, margin) once a client listens to
/// "auto_refresh_data", "chedan_table" and "rzrq_chedan_table"; who attaches later is told when it listens to
/// all three.
///
/// Ownership: keeps subscribers until they end their subscription, the log-in is lost, or Stop(); of those
///   that have only attached it keeps none alive. Borrows market and faults.
/// Threading: any thread; answers and news come on a thread of the desk's. OnOrder() comes with the market
///   locked. No lock is held over a client's call.
class TradeDesk : public TradeProvider
{
public:
    using Request = std::shared_ptr<ddsdk::TradeRequestParam>;
    using Client = std::shared_ptr<TradeObserver>;
    /// Hears of requests, log-ins and settings, see MarketListener.
    using Announce = std::function<void(const std::string& event, const nlohmann::ordered_json& fields)>;

    TradeDesk(Simulation& market, Faults& faults, Announce announce);
    ~TradeDesk() override;

    void OnOrder(const Order& order, OrderEvent event);
    void LoseLogin();
    void LogIn();

    /// Ends deliveries and lets go of all subscribers. Calls fail from here on. Harmless the second time.
    void Stop();

    int Attach(int kind, Client client) override;
    int SendTradeRequest(Client client, Request request) override;
    int GetString(const std::string& key, std::shared_ptr<std::string>& value) override;
    int SubscribeKey(const std::string& name, bool on, Client client) override;
    int SetStringMap(const std::string& name, std::shared_ptr<StringMap> map) override;
    std::shared_ptr<StringMap> GetStringMap(const std::string& name) override;
    std::shared_ptr<HostTable> GetTable(const std::string& name) override;

private:
    using AttachedClients = std::map<std::weak_ptr<TradeObserver>, bool, std::owner_less<>>;  ///< true: told

    bool IsCut();
    void PublishTheAccounts();
    void Handle(const ClientRequest& asked, const Client& client, const Request& request);
    void PlaceOrder(const Client& client, const Request& request);
    void CancelOrder(AccountKind account, const Client& client, const Request& request);
    void AnswerQuery(const ClientRequest& asked, const Client& client, const Request& request);
    std::shared_ptr<MemoryTable> TableFor(const ClientRequest& asked, const ddsdk::TradeRequestParam& request,
                                          const std::string& name);
    void NoteSetting(const ddsdk::TradeRequestParam& request);
    void Answer(const Client& client, const Request& request, ddsdk::TradeRequestParam reply,
                std::shared_ptr<MemoryTable> table = nullptr);
    void Refuse(const Client& client, const Request& request, const std::string& reason,
                ddsdk::TradeRequestParam reply = {});
    void Publish(std::shared_ptr<MemoryTable> table);
    void PublishMap(const std::string& name, const StringMap& map);
    void PublishOpenOrders(AccountKind account);
    std::shared_ptr<MemoryTable> FindTable(const std::string& name);
    std::set<Client> SubscribersOf(const std::string& name);
    bool IsSubscribed(const std::string& name, const Client& client);
    bool IsLoggedIn();
    void TellLogin();
    void TellState(int state, const std::vector<Client>& clients);

    Simulation& m_market;
    Faults& m_faults;
    const Announce m_announce;

    std::mutex m_lock;  // guards the next seven
    std::map<std::string, std::string> m_texts;
    std::map<std::string, StringMap> m_maps;
    std::map<std::string, std::shared_ptr<MemoryTable>> m_tables;
    AttachedClients m_attached;
    std::map<std::string, std::set<Client>> m_subscribers;
    bool m_loggedIn = true;
    bool m_stopped = false;

    Delivery m_delivery;
};

}  // namespace panelry::desk
