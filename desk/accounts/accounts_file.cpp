#include "desk/accounts/accounts_file.h"

#include <climits>
#include <stdexcept>

namespace panelry::desk
{

namespace
{

constexpr std::int64_t kApplication = 0x504E4C59;
constexpr std::int64_t kVersion = 1;

// A holding, an order and a deal name their security by its row here.
constexpr char kSchema[] = R"(
CREATE TABLE securities(id INTEGER PRIMARY KEY, market INTEGER NOT NULL, code TEXT NOT NULL, UNIQUE(market, code));
CREATE TABLE state(only INTEGER PRIMARY KEY CHECK(only = 1), day INTEGER NOT NULL, opening TEXT NOT NULL);
CREATE TABLE accounts(account INTEGER PRIMARY KEY, balance INTEGER NOT NULL, debt INTEGER NOT NULL,
  sold_today INTEGER NOT NULL);
CREATE TABLE holdings(account INTEGER, security INTEGER, total INTEGER NOT NULL, bought_today INTEGER NOT NULL,
  cost INTEGER NOT NULL, PRIMARY KEY(account, security)) WITHOUT ROWID;
CREATE TABLE orders(number INTEGER PRIMARY KEY, account INTEGER NOT NULL, security INTEGER NOT NULL,
  side INTEGER NOT NULL, price INTEGER NOT NULL, quantity INTEGER NOT NULL, funding INTEGER NOT NULL,
  day INTEGER NOT NULL, time INTEGER NOT NULL, dealt INTEGER NOT NULL, dealt_worth INTEGER NOT NULL,
  state INTEGER NOT NULL, reason TEXT NOT NULL, exchange_order INTEGER NOT NULL);
CREATE INDEX orders_of_day ON orders(day);
CREATE TABLE deals(number INTEGER PRIMARY KEY, contract INTEGER NOT NULL, account INTEGER NOT NULL,
  security INTEGER NOT NULL, side INTEGER NOT NULL, price INTEGER NOT NULL, quantity INTEGER NOT NULL,
  worth INTEGER NOT NULL, fees INTEGER NOT NULL, day INTEGER NOT NULL, time INTEGER NOT NULL);
CREATE INDEX deals_of_day ON deals(day);
PRAGMA application_id = 1347308633;
PRAGMA user_version = 1;
)";

constexpr char kOrders[] =
    "SELECT number, account, security, side, price, quantity, funding, day, time, dealt, dealt_worth, state,"
    " reason, exchange_order FROM orders";
constexpr char kDeals[] =
    "SELECT number, contract, account, security, side, price, quantity, worth, fees, day, time,"
    " (SELECT funding FROM orders WHERE orders.number = deals.contract) FROM deals";

std::string Select(const char* columns, const char* behind)
{
    return std::string(columns) + ' ' + behind + " ORDER BY number";
}

template <class Enumerator>
std::int64_t Place(Enumerator enumerator)
{
    return static_cast<std::int64_t>(enumerator);
}

// Looks before it writes: what isn't ours stays as it is.
Database OpenOurs(const std::filesystem::path& file)
{
    Database database(file);
    const std::int64_t tables = database.Number("SELECT count(*) FROM sqlite_schema");
    const std::int64_t application = database.Number("PRAGMA application_id");
    const std::int64_t version = database.Number("PRAGMA user_version");
    const bool empty = tables == 0 && application == 0 && version == 0;
    if (!empty && application != kApplication) {
        throw std::runtime_error(database.Name() + ": holds something else than the desk's accounts");
    }
    if (version > kVersion) {
        throw std::runtime_error(database.Name() + ": was written by a newer desk (version " +
                                 std::to_string(version) + " of the file)");
    }
    if (database.IsReadOnly()) {
        throw std::runtime_error(database.Name() + ": can't be written");
    }
    // The kernel keeps what was written when the process dies: waiting for the disk would buy nothing more.
    database.Run("PRAGMA synchronous = OFF; PRAGMA journal_mode = WAL");
    if (empty) {
        Transaction transaction(database);
        database.Run(kSchema);
        transaction.Commit();
    }
    return database;
}

}  // namespace

AccountsFile::AccountsFile(const std::filesystem::path& file, const Listing& listing)
    : m_database(OpenOurs(file)),
      m_listing(listing),
      m_addOrder(m_database, "INSERT INTO orders VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      m_saveOrder(m_database,
                  "UPDATE orders SET dealt = ?, dealt_worth = ?, state = ?, reason = ?, exchange_order = ?"
                  " WHERE number = ?"),
      m_addDeal(m_database, "INSERT INTO deals VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      m_saveCash(m_database, "REPLACE INTO accounts VALUES(?, ?, ?, ?)"),
      m_savePosition(m_database, "REPLACE INTO holdings VALUES(?, ?, ?, ?, ?)"),
      m_removePosition(m_database, "DELETE FROM holdings WHERE account = ? AND security = ?")
{
}

bool AccountsFile::IsNew()
{
    return m_database.Number("SELECT count(*) FROM state") == 0;
}

void AccountsFile::Begin(const Opening& opening)
{
    Transaction transaction(m_database);
    m_database.Run(
        "DELETE FROM state; DELETE FROM accounts; DELETE FROM holdings; DELETE FROM orders; DELETE FROM "
        "deals;"
        "DELETE FROM securities");
    MapSecurities();
    Statement(m_database, "INSERT INTO state VALUES(1, 1, ?)").Run(OpeningText(opening, m_listing));
    for (const AccountKind kind : kAccountKinds) {
        Save(kind, Cash{.balance = opening.Of(kind).cash});
        for (const Holding& holding : opening.Of(kind).holdings) {
            Save(kind, holding.security, Position{.total = holding.total, .cost = holding.cost});
        }
    }
    transaction.Commit();
}

void AccountsFile::Continue()
{
    Transaction transaction(m_database);
    MapSecurities();
    transaction.Commit();
}

Opening AccountsFile::ReadOpening()
{
    Statement query(m_database, "SELECT opening FROM state");
    query.Ask();
    if (!query.Next()) {
        throw std::runtime_error(m_database.Name() + ": holds no opening");
    }
    return ParseOpening(query.Text(0), m_database.Name(), m_listing);
}

Books AccountsFile::ReadBooks()
{
    Books books;
    books.day = static_cast<int>(m_database.Number("SELECT day FROM state"));
    Statement cash(m_database, "SELECT account, balance, debt, sold_today FROM accounts");
    cash.Ask();
    while (cash.Next()) {
        books.Of(Known(cash.Number(0), AccountKind::Connect)).cash = {
            .balance = cash.Number(1), .debt = cash.Number(2), .soldToday = cash.Number(3)};
    }
    Statement holdings(m_database, "SELECT account, security, total, bought_today, cost FROM holdings");
    holdings.Ask();
    while (holdings.Next()) {
        books.Of(Known(holdings.Number(0), AccountKind::Connect)).positions[Listed(holdings.Number(1))] = {
            .total = holdings.Number(2), .boughtToday = holdings.Number(3), .cost = holdings.Number(4)};
    }
    Statement orders(m_database, Select(kOrders, "WHERE day = ?").c_str());
    orders.Ask(books.day);
    while (orders.Next()) {
        const auto before = static_cast<std::int64_t>(books.orders.size());
        books.firstOrder = before == 0 ? orders.Number(0) : books.firstOrder;
        if (orders.Number(0) != books.firstOrder + before) {
            FailAsDamaged("lacks an order in front of number " + std::to_string(orders.Number(0)));
        }
        books.orders.push_back(OrderOf(orders));
    }
    if (books.orders.empty()) {
        books.firstOrder = m_database.Number("SELECT coalesce(max(number), 0) + 1 FROM orders");
    }
    books.deals = DealsBetween(std::nullopt, books.day, books.day);
    books.nextDeal = m_database.Number("SELECT coalesce(max(number), 0) + 1 FROM deals");
    return books;
}

std::vector<Deal> AccountsFile::DealsBetween(std::optional<AccountKind> account, int firstDay, int lastDay)
{
    std::vector<Deal> deals;
    Statement query(m_database, Select(kDeals, "WHERE day BETWEEN ? AND ?").c_str());
    query.Ask(firstDay, lastDay);
    while (query.Next()) {
        if (Deal deal = DealOf(query); !account || deal.account == *account) {
            deals.push_back(std::move(deal));
        }
    }
    return deals;
}

void AccountsFile::ForEachOrder(const std::function<void(const Order&)>& action)
{
    Statement query(m_database, Select(kOrders, "").c_str());
    query.Ask();
    while (query.Next()) {
        action(OrderOf(query));
    }
}

void AccountsFile::ForEachDeal(const std::function<void(const Deal&)>& action)
{
    Statement query(m_database, Select(kDeals, "").c_str());
    query.Ask();
    while (query.Next()) {
        action(DealOf(query));
    }
}

void AccountsFile::Add(const Order& order)
{
    const OrderWish& wish = order.wish;
    m_addOrder.Run(ContractNumber(order.contract), Place(wish.account), m_filed.at(wish.security),
                   Place(wish.side), wish.price, wish.quantity, Place(wish.funding), order.time.day,
                   order.time.ofDay.count(), order.dealt, order.dealtWorth, Place(order.state), order.reason,
                   static_cast<std::int64_t>(order.exchangeOrder));
}

void AccountsFile::Save(const Order& order)
{
    m_saveOrder.Run(order.dealt, order.dealtWorth, Place(order.state), order.reason,
                    static_cast<std::int64_t>(order.exchangeOrder), ContractNumber(order.contract));
}

void AccountsFile::Add(std::int64_t number, const Deal& deal)
{
    m_addDeal.Run(number, ContractNumber(deal.contract), Place(deal.account), m_filed.at(deal.security),
                  Place(deal.side), deal.price, deal.quantity, deal.worth, deal.fees, deal.time.day,
                  deal.time.ofDay.count());
}

void AccountsFile::Save(AccountKind account, const Cash& cash)
{
    m_saveCash.Run(Place(account), cash.balance, cash.debt, cash.soldToday);
}

void AccountsFile::Save(AccountKind account, std::size_t security, const Position& position)
{
    const std::int64_t filed = m_filed.at(security);
    if (position.total == 0) {
        m_removePosition.Run(Place(account), filed);
    } else {
        m_savePosition.Run(Place(account), filed, position.total, position.boughtToday, position.cost);
    }
}

void AccountsFile::SaveDay(int day)
{
    Statement(m_database, "UPDATE state SET day = ?").Run(day);
    m_database.Run("UPDATE accounts SET sold_today = 0; UPDATE holdings SET bought_today = 0");
}

void AccountsFile::MapSecurities()
{
    Statement add(m_database, "INSERT OR IGNORE INTO securities(market, code) VALUES(?, ?)");
    for (const Security& security : m_listing.securities) {
        add.Run(security.market, security.code);
    }
    m_filed.resize(m_listing.securities.size());
    m_securities.clear();
    Statement query(m_database, "SELECT id, market, code FROM securities");
    query.Ask();
    while (query.Next()) {
        const std::int64_t filed = query.Number(0);
        const auto security = m_listing.Find(static_cast<std::uint8_t>(query.Number(1)), query.Text(2));
        if (security) {
            m_filed[*security] = filed;
            m_securities[filed] = *security;
        } else if (IsUsed(filed)) {
            throw std::runtime_error(m_database.Name() + ": holds " + query.Text(2) + " on market " +
                                     query.Text(1) + ", which isn't listed any more");
        }
    }
}

bool AccountsFile::IsUsed(std::int64_t filed)
{
    Statement query(m_database,
                    "SELECT EXISTS(SELECT 1 FROM holdings WHERE security = ?1)"
                    " OR EXISTS(SELECT 1 FROM orders WHERE security = ?1)");
    query.Ask(filed);
    return query.Next() && query.Number(0) != 0;
}

void AccountsFile::FailAsDamaged(const std::string& how) const
{
    throw std::runtime_error(m_database.Name() + ": is damaged, it " + how);
}

std::size_t AccountsFile::Listed(std::int64_t filed) const
{
    const auto found = m_securities.find(filed);
    if (found == m_securities.end()) {
        FailAsDamaged("doesn't name security " + std::to_string(filed));
    }
    return found->second;
}

template <class Enumerator>
Enumerator AccountsFile::Known(std::int64_t filed, Enumerator last) const
{
    if (filed < 0 || filed > Place(last)) {
        FailAsDamaged("holds a " + std::to_string(filed) + " that means nothing");
    }
    return static_cast<Enumerator>(filed);
}

Order AccountsFile::OrderOf(const Statement& row) const
{
    Order order;
    order.contract = ContractText(row.Number(0));
    order.wish = {Known(row.Number(1), AccountKind::Connect),
                  Listed(row.Number(2)),
                  Known(row.Number(3), Side::Sell),
                  row.Number(4),
                  row.Number(5),
                  Known(row.Number(6), Funding::PayBack)};
    order.time = {static_cast<int>(row.Number(7)), std::chrono::milliseconds(row.Number(8))};
    order.dealt = row.Number(9);
    order.dealtWorth = row.Number(10);
    order.state = Known(row.Number(11), OrderState::Refused);
    order.reason = row.Text(12);
    order.exchangeOrder = static_cast<OrderId>(row.Number(13));
    return order;
}

Deal AccountsFile::DealOf(const Statement& row) const
{
    Deal deal;
    deal.number = DealText(row.Number(0));
    deal.contract = ContractText(row.Number(1));
    deal.account = Known(row.Number(2), AccountKind::Connect);
    deal.security = Listed(row.Number(3));
    deal.side = Known(row.Number(4), Side::Sell);
    deal.price = row.Number(5);
    deal.quantity = row.Number(6);
    deal.worth = row.Number(7);
    deal.fees = row.Number(8);
    deal.time = {static_cast<int>(row.Number(9)), std::chrono::milliseconds(row.Number(10))};
    deal.funding = Known(row.Number(11), Funding::PayBack);
    return deal;
}

}  // namespace panelry::desk
