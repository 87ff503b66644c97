#include "desk/accounts/brokerage.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "desk/accounts/accounts_file.h"
#include "desk/accounts/audit.h"
#include "desk/accounts/books.h"
#include "desk/accounts/charges.h"

namespace panelry::desk
{

class Brokerage::Implementation
{
public:
    Implementation(std::shared_ptr<const Listing> listing, const Opening& opening, const Settings& settings);

    void OpenDay(int day);
    Placed Place(const OrderWish& wish, MarketTime time);
    void Accept(const std::string& contract, OrderId exchangeOrder);
    void Refuse(const std::string& contract, const std::string& reason);
    Deal OnDeal(const std::string& contract, Price price, Quantity quantity, MarketTime time);
    void OnGone(const std::string& contract);

    [[nodiscard]] const Books& All() const { return m_books; }
    [[nodiscard]] const Opening& Started() const { return m_opening; }
    [[nodiscard]] AccountsFile& File() { return m_file; }
    [[nodiscard]] std::string Audit() { return desk::Audit(*m_listing, m_opening, m_books, m_file); }
    [[nodiscard]] const Order* FindByExchangeOrder(OrderId order) const;
    [[nodiscard]] const Order* Find(const std::string& contract) const;
    [[nodiscard]] Holding HoldingOf(AccountKind account, std::size_t security) const;
    [[nodiscard]] Funds FundsOf(AccountKind account, const PriceOf& priceOf) const;
    [[nodiscard]] Quantity Buyable(const OrderWish& wish) const;

private:
    // What a change of one order leaves behind: computed, filed, then taken in.
    struct Next {
        Order order;
        Cash cash;
        Position position;
    };

    [[nodiscard]] const Security& SecurityOf(const OrderWish& wish) const
    {
        return m_listing->securities.at(wish.security);
    }
    [[nodiscard]] Position PositionOf(AccountKind account, std::size_t security) const;
    [[nodiscard]] std::string WhyRefused(const Order& order) const;
    [[nodiscard]] std::size_t OpenOrder(const std::string& contract) const;
    [[nodiscard]] Next StateOf(const Order& order) const;
    /// Sign 1 freezes what the open order needs, -1 frees it.
    void Freeze(Next& next, int sign) const;
    Deal Book(Next& next, Price price, Quantity quantity, MarketTime time) const;
    void TakeIn(const Next& next);
    void FreezeAll();
    void End(const std::string& contract, OrderState state, const std::string& reason);

    std::shared_ptr<const Listing> m_listing;
    AccountsFile m_file;
    Opening m_opening;
    Books m_books;
    std::unordered_map<OrderId, std::size_t> m_byExchangeOrder;  // places in m_books.orders
};

namespace
{

Opening Started(AccountsFile& file, const Opening& opening, bool afresh)
{
    if (afresh || file.IsNew()) {
        file.Begin(opening);
    } else {
        file.Continue();
    }
    return file.ReadOpening();
}

Money Available(const Cash& cash)
{
    return cash.balance - cash.frozen;
}

Money Credit(const Opening& opening, AccountKind account, const Cash& cash)
{
    return opening.Of(account).creditLine - cash.debt - cash.frozenCredit;
}

Quantity Sellable(const Position& position)
{
    return position.total - position.boughtToday - position.frozen;
}

void AddShares(Position& position, Quantity quantity, Money cost, bool sameDay)
{
    position.total += quantity;
    position.boughtToday += sameDay ? 0 : quantity;
    position.cost += cost;
}

// The rest keeps what rounding leaves.
void TakeShares(Position& position, Quantity quantity)
{
    const Quantity total = position.total;
    position.cost -= position.cost / total * quantity + position.cost % total * quantity / total;
    position.total -= quantity;
}

void TakeProceeds(Cash& cash, Money proceeds, bool payBack)
{
    const Money paid = payBack ? std::min(cash.debt, proceeds) : 0;
    cash.debt -= paid;
    cash.balance += proceeds - paid;
    cash.soldToday += proceeds - paid;
}

}  // namespace

Brokerage::Implementation::Implementation(std::shared_ptr<const Listing> listing, const Opening& opening,
                                          const Settings& settings)
    : m_listing(std::move(listing)),
      m_file(settings.file, *m_listing),
      m_opening(desk::Started(m_file, opening, settings.afresh)),
      m_books(m_file.ReadBooks())
{
    FreezeAll();
}

void Brokerage::Implementation::FreezeAll()
{
    for (std::size_t place = 0; place < m_books.orders.size(); ++place) {
        const Order& order = m_books.orders[place];
        if (order.exchangeOrder != 0) {
            m_byExchangeOrder[order.exchangeOrder] = place;
        }
        if (order.IsOpen()) {
            Next next = StateOf(order);
            Freeze(next, 1);
            TakeIn(next);
        }
    }
}

void Brokerage::Implementation::OpenDay(int day)
{
    if (day <= m_books.day) {
        throw std::logic_error("day " + std::to_string(day) + " isn't behind the accounts' day");
    }
    Books next;
    next.day = day;
    next.firstOrder = m_books.firstOrder + static_cast<std::int64_t>(m_books.orders.size());
    next.nextDeal = m_books.nextDeal;
    next.accounts = m_books.accounts;
    for (AccountBooks& account : next.accounts) {
        account.cash.frozen = account.cash.frozenCredit = account.cash.soldToday = 0;
        for (auto& [security, position] : account.positions) {
            position.frozen = position.boughtToday = 0;
        }
    }
    Transaction transaction(m_file.Base());
    for (Order order : m_books.orders) {
        if (order.IsOpen()) {
            order.state = order.dealt == 0 ? OrderState::Cancelled : OrderState::PartlyCancelled;
            m_file.Save(order);
        }
    }
    m_file.SaveDay(day);
    transaction.Commit();
    m_books = std::move(next);
    m_byExchangeOrder.clear();
}

Brokerage::Placed Brokerage::Implementation::Place(const OrderWish& wish, MarketTime time)
{
    Order order;
    order.contract = ContractText(m_books.firstOrder + static_cast<std::int64_t>(m_books.orders.size()));
    order.wish = wish;
    order.time = {m_books.day, time.ofDay};
    order.reason = WhyRefused(order);
    order.state = order.reason.empty() ? OrderState::Sent : OrderState::Refused;
    Next next = StateOf(order);
    Freeze(next, 1);
    Transaction transaction(m_file.Base());
    m_file.Add(order);
    transaction.Commit();
    m_books.orders.push_back(order);
    TakeIn(next);
    return {order.contract, order.reason};
}

std::string Brokerage::Implementation::WhyRefused(const Order& order) const
{
    const OrderWish& wish = order.wish;
    std::string unsound = WhyUnsound(wish, SecurityOf(wish));
    if (!unsound.empty()) {
        return unsound;
    }
    const Next now = StateOf(order);
    if (wish.side == Side::Sell) {
        return wish.quantity <= Sellable(now.position) ? "" : "可卖数量不足";
    }
    const Money needed = StillNeeded(m_opening, SecurityOf(wish), order);
    if (wish.funding == Funding::Borrowed) {
        return needed <= Credit(m_opening, wish.account, now.cash) ? "" : "融资可用额度不足";
    }
    return needed <= Available(now.cash) ? "" : "可用资金不足";
}

void Brokerage::Implementation::Accept(const std::string& contract, OrderId exchangeOrder)
{
    const std::size_t place = OpenOrder(contract);
    Order order = m_books.orders[place];
    order.exchangeOrder = exchangeOrder;
    Transaction transaction(m_file.Base());
    m_file.Save(order);
    transaction.Commit();
    const auto before = m_byExchangeOrder.find(m_books.orders[place].exchangeOrder);
    if (before != m_byExchangeOrder.end() && before->second == place) {
        m_byExchangeOrder.erase(before);
    }
    m_byExchangeOrder[exchangeOrder] = place;
    m_books.orders[place] = std::move(order);
}

void Brokerage::Implementation::Refuse(const std::string& contract, const std::string& reason)
{
    if (m_books.orders[OpenOrder(contract)].dealt != 0) {
        throw std::logic_error("order " + contract + " was dealt in part and can't be refused");
    }
    End(contract, OrderState::Refused, reason);
}

void Brokerage::Implementation::OnGone(const std::string& contract)
{
    const bool dealt = m_books.orders[OpenOrder(contract)].dealt != 0;
    End(contract, dealt ? OrderState::PartlyCancelled : OrderState::Cancelled, "");
}

void Brokerage::Implementation::End(const std::string& contract, OrderState state, const std::string& reason)
{
    Next next = StateOf(m_books.orders[OpenOrder(contract)]);
    Freeze(next, -1);
    next.order.state = state;
    next.order.reason = reason;
    Transaction transaction(m_file.Base());
    m_file.Save(next.order);
    transaction.Commit();
    TakeIn(next);
}

Deal Brokerage::Implementation::OnDeal(const std::string& contract, Price price, Quantity quantity,
                                       MarketTime time)
{
    Next next = StateOf(m_books.orders[OpenOrder(contract)]);
    const OrderWish& wish = next.order.wish;
    const bool worse = wish.side == Side::Buy ? price > wish.price : price < wish.price;
    if (quantity <= 0 || quantity > next.order.Rest() || price <= 0 || worse) {
        throw std::logic_error("a deal of " + std::to_string(quantity) + " at " + std::to_string(price) +
                               " doesn't fit order " + contract);
    }
    Freeze(next, -1);
    Deal deal = Book(next, price, quantity, time);
    Freeze(next, 1);
    Transaction transaction(m_file.Base());
    m_file.Save(next.order);
    m_file.Add(m_books.nextDeal, deal);
    m_file.Save(wish.account, wish.security, next.position);
    m_file.Save(wish.account, next.cash);
    transaction.Commit();
    m_books.deals.push_back(deal);
    ++m_books.nextDeal;
    TakeIn(next);
    return deal;
}

Deal Brokerage::Implementation::Book(Next& next, Price price, Quantity quantity, MarketTime time) const
{
    Order& order = next.order;
    const OrderWish& wish = order.wish;
    const Security& security = SecurityOf(wish);
    const Rates& rates = m_opening.RatesFor(security.kind);
    Deal deal{DealText(m_books.nextDeal),
              order.contract,
              wish.account,
              wish.security,
              wish.side,
              wish.funding,
              price,
              quantity,
              DealWorth(m_opening, security, order, price, quantity),
              0,
              {m_books.day, time.ofDay}};
    deal.fees = OrderFees(rates, wish.side, order.dealtWorth + deal.worth) -
                OrderFees(rates, wish.side, order.dealtWorth);
    order.dealt += quantity;
    order.dealtWorth += deal.worth;
    order.state = order.Rest() == 0 ? OrderState::Dealt : OrderState::PartlyDealt;
    if (wish.side == Side::Sell) {
        TakeShares(next.position, quantity);
        TakeProceeds(next.cash, deal.worth - deal.fees, wish.funding == Funding::PayBack);
    } else {
        AddShares(next.position, quantity, deal.worth + deal.fees, security.sameDay);
        (wish.funding == Funding::Borrowed ? next.cash.debt : next.cash.balance) +=
            (wish.funding == Funding::Borrowed ? 1 : -1) * (deal.worth + deal.fees);
    }
    return deal;
}

Brokerage::Implementation::Next Brokerage::Implementation::StateOf(const Order& order) const
{
    return {order, m_books.Of(order.wish.account).cash, PositionOf(order.wish.account, order.wish.security)};
}

Position Brokerage::Implementation::PositionOf(AccountKind account, std::size_t security) const
{
    const auto& positions = m_books.Of(account).positions;
    const auto found = positions.find(security);
    return found == positions.end() ? Position() : found->second;
}

void Brokerage::Implementation::Freeze(Next& next, int sign) const
{
    const OrderWish& wish = next.order.wish;
    if (!next.order.IsOpen()) {
        return;
    }
    if (wish.side == Side::Sell) {
        next.position.frozen += sign * next.order.Rest();
    } else {
        (wish.funding == Funding::Borrowed ? next.cash.frozenCredit : next.cash.frozen) +=
            sign * StillNeeded(m_opening, SecurityOf(wish), next.order);
    }
}

void Brokerage::Implementation::TakeIn(const Next& next)
{
    const OrderWish& wish = next.order.wish;
    AccountBooks& account = m_books.Of(wish.account);
    account.cash = next.cash;
    if (next.position.total == 0) {
        account.positions.erase(wish.security);
    } else {
        account.positions[wish.security] = next.position;
    }
    m_books.orders[static_cast<std::size_t>(ContractNumber(next.order.contract) - m_books.firstOrder)] =
        next.order;
}

std::size_t Brokerage::Implementation::OpenOrder(const std::string& contract) const
{
    const Order* const order = Find(contract);
    if (order == nullptr || !order->IsOpen()) {
        throw std::logic_error("order " + contract + " isn't open today");
    }
    return static_cast<std::size_t>(order - m_books.orders.data());
}

const Order* Brokerage::Implementation::Find(const std::string& contract) const
{
    const std::int64_t place = ContractNumber(contract) - m_books.firstOrder;
    return place >= 0 && place < static_cast<std::int64_t>(m_books.orders.size())
               ? &m_books.orders[static_cast<std::size_t>(place)]
               : nullptr;
}

const Order* Brokerage::Implementation::FindByExchangeOrder(OrderId order) const
{
    const auto found = m_byExchangeOrder.find(order);
    return found == m_byExchangeOrder.end() ? nullptr : &m_books.orders[found->second];
}

Holding Brokerage::Implementation::HoldingOf(AccountKind account, std::size_t security) const
{
    const Position position = PositionOf(account, security);
    return {account, security, position.total, Sellable(position), position.frozen, position.cost};
}

Funds Brokerage::Implementation::FundsOf(AccountKind account, const PriceOf& priceOf) const
{
    const Cash& cash = m_books.Of(account).cash;
    Funds funds;
    funds.balance = cash.balance;
    funds.frozen = cash.frozen;
    funds.available = Available(cash);
    funds.withdrawable = std::max<Money>(0, funds.available - cash.soldToday);
    for (const auto& [security, position] : m_books.Of(account).positions) {
        funds.marketValue +=
            m_opening.AccountWorth(m_listing->securities.at(security), priceOf(security), position.total);
    }
    funds.debt = cash.debt;
    funds.assets = funds.balance + funds.marketValue - funds.debt;
    funds.creditLine = m_opening.Of(account).creditLine;
    funds.credit = Credit(m_opening, account, cash);
    return funds;
}

// What a quantity needs grows with it, so the largest is found by halving.
Quantity Brokerage::Implementation::Buyable(const OrderWish& wish) const
{
    Order order;
    order.wish = wish;
    const Security& security = SecurityOf(wish);
    const Cash& cash = m_books.Of(wish.account).cash;
    const Money means =
        wish.funding == Funding::Borrowed ? Credit(m_opening, wish.account, cash) : Available(cash);
    Quantity least = 0;
    Quantity most = security.maximum / security.lot;
    while (least < most) {
        const Quantity lots = least + (most - least + 1) / 2;
        order.wish.quantity = lots * security.lot;
        const bool enough =
            WhyUnsound(order.wish, security).empty() && StillNeeded(m_opening, security, order) <= means;
        (enough ? least : most) = enough ? lots : lots - 1;
    }
    return least * security.lot >= security.minimum ? least * security.lot : 0;
}

Brokerage::Brokerage(std::shared_ptr<const Listing> listing, const Opening& opening, const Settings& settings)
    : m_(std::make_unique<Implementation>(std::move(listing), opening, settings))
{
}

Brokerage::~Brokerage() = default;

int Brokerage::Day() const
{
    return m_->All().day;
}

void Brokerage::OpenDay(int day)
{
    m_->OpenDay(day);
}

Brokerage::Placed Brokerage::Place(const OrderWish& wish, MarketTime time)
{
    return m_->Place(wish, time);
}

void Brokerage::Accept(const std::string& contract, OrderId exchangeOrder)
{
    m_->Accept(contract, exchangeOrder);
}

void Brokerage::Refuse(const std::string& contract, const std::string& reason)
{
    m_->Refuse(contract, reason);
}

Deal Brokerage::OnDeal(const std::string& contract, Price price, Quantity quantity, MarketTime time)
{
    return m_->OnDeal(contract, price, quantity, time);
}

void Brokerage::OnGone(const std::string& contract)
{
    m_->OnGone(contract);
}

const Order* Brokerage::FindByExchangeOrder(OrderId order) const
{
    return m_->FindByExchangeOrder(order);
}

const Order* Brokerage::Find(const std::string& contract) const
{
    return m_->Find(contract);
}

std::vector<Order> Brokerage::Orders(AccountKind account, bool onlyOpen) const
{
    std::vector<Order> orders;
    std::copy_if(m_->All().orders.begin(), m_->All().orders.end(), std::back_inserter(orders),
                 [account, onlyOpen](const Order& order) {
                     return order.wish.account == account && (order.IsOpen() || !onlyOpen);
                 });
    return orders;
}

std::vector<Deal> Brokerage::Deals(AccountKind account) const
{
    std::vector<Deal> deals;
    std::copy_if(m_->All().deals.begin(), m_->All().deals.end(), std::back_inserter(deals),
                 [account](const Deal& deal) { return deal.account == account; });
    return deals;
}

std::vector<Deal> Brokerage::DealsBetween(AccountKind account, int firstDay, int lastDay) const
{
    return m_->File().DealsBetween(account, firstDay, lastDay);
}

std::vector<Holding> Brokerage::Holdings(AccountKind account) const
{
    std::vector<Holding> holdings;
    for (const auto& [security, position] : m_->All().Of(account).positions) {
        holdings.push_back(m_->HoldingOf(account, security));
    }
    return holdings;
}

Holding Brokerage::HoldingOf(AccountKind account, std::size_t security) const
{
    return m_->HoldingOf(account, security);
}

Funds Brokerage::FundsOf(AccountKind account, const PriceOf& priceOf) const
{
    return m_->FundsOf(account, priceOf);
}

Quantity Brokerage::Buyable(AccountKind account, std::size_t security, Price price, Funding funding) const
{
    return m_->Buyable({account, security, Side::Buy, price, 0, funding});
}

const Opening& Brokerage::Started() const
{
    return m_->Started();
}

std::string Brokerage::Audit() const
{
    return m_->Audit();
}

}  // namespace panelry::desk
