#include "desk/accounts/audit.h"

#include <algorithm>
#include <unordered_map>

namespace panelry::desk
{

namespace
{

// Wide enough for every product, so that each rounding is the one that its formula shows.
__extension__ typedef __int128 Wide;  // NOLINT(modernize-use-using): only a typedef takes the mark

std::int64_t HalfUp(Wide amount, Wide parts)
{
    return static_cast<std::int64_t>((2 * amount + parts) / (2 * parts));
}

// An order as its deals tell it.
struct Told {
    Order order;
    Quantity dealt = 0;
    Money worth = 0;
    Money fees = 0;
};

class Recount
{
public:
    Recount(const Listing& listing, const Opening& opening, int day)
        : m_listing(listing), m_opening(opening), m_day(day)
    {
        for (const AccountKind kind : kAccountKinds) {
            AccountBooks& account = m_books.Of(kind);
            account.cash.balance = opening.Of(kind).cash;
            for (const Holding& holding : opening.Of(kind).holdings) {
                account.positions[holding.security] = {.total = holding.total, .cost = holding.cost};
            }
        }
    }

    void Count(const Order& order) { m_told[order.contract].order = order; }

    void Count(const Deal& deal)
    {
        const auto found = m_told.find(deal.contract);
        if (found == m_told.end()) {
            Say("deal " + deal.number + " belongs to no order");
            return;
        }
        Told& told = found->second;
        const OrderWish& wish = told.order.wish;
        Compare("deal " + deal.number + ", worth", deal.worth, ExpectedWorth(told, deal));
        if (wish.account != deal.account || wish.security != deal.security || wish.side != deal.side) {
            Say("deal " + deal.number + " isn't of its order's kind");
        }
        told.dealt += deal.quantity;
        told.worth += deal.worth;
        told.fees += deal.fees;
        AccountBooks& account = m_books.Of(deal.account);
        if (deal.side == Side::Buy) {
            Bought(account, wish, deal);
        } else {
            Sold(account, wish, deal);
        }
    }

    void Finish()
    {
        for (const auto& [contract, told] : m_told) {
            Check(told);
        }
    }

    void CompareWith(const Books& books, const std::string& place, bool withFrozen)
    {
        for (const AccountKind kind : kAccountKinds) {
            const AccountBooks& expected = m_books.Of(kind);
            const AccountBooks& actual = books.Of(kind);
            const std::string account = place + ", account " + std::to_string(static_cast<int>(kind)) + ", ";
            CompareCash(account, actual.cash, expected.cash, withFrozen);
            for (const auto& [security, position] : expected.positions) {
                const auto found = actual.positions.find(security);
                ComparePosition(account, security,
                                found == actual.positions.end() ? Position() : found->second, position,
                                withFrozen);
            }
            for (const auto& [security, position] : actual.positions) {
                if (!expected.positions.contains(security)) {
                    ComparePosition(account, security, position, {}, withFrozen);
                }
            }
        }
        CompareToday(books, place);
    }

    // Nothing may be overdrawn, whatever adds up.
    void CheckBounds()
    {
        for (const AccountKind kind : kAccountKinds) {
            const Cash& cash = m_books.Of(kind).cash;
            const Money credit = m_opening.Of(kind).creditLine - cash.debt - cash.frozenCredit;
            if (cash.balance < cash.frozen || cash.frozen < 0 || cash.debt < 0 || credit < 0) {
                Say("account " + std::to_string(static_cast<int>(kind)) + " is overdrawn");
            }
            for (const auto& [security, position] : m_books.Of(kind).positions) {
                if (position.total < position.boughtToday + position.frozen || position.cost < 0) {
                    Say(Name(security) + " is sold short");
                }
            }
        }
    }

    [[nodiscard]] const std::string& Differences() const { return m_said; }

private:
    void Say(const std::string& what) { m_said += (m_said.empty() ? "" : "\n") + what; }

    void Compare(const std::string& what, std::int64_t actual, std::int64_t expected)
    {
        if (actual != expected) {
            Say(what + " is " + std::to_string(actual) + ", should be " + std::to_string(expected));
        }
    }

    [[nodiscard]] std::string Name(std::size_t security) const
    {
        const Security& listed = m_listing.securities.at(security);
        return listed.code + '@' + std::to_string(listed.market);
    }

    [[nodiscard]] Money WorthAt(std::size_t security, Price price, Quantity quantity) const
    {
        const Wide exact = static_cast<Wide>(price) * quantity;
        return m_listing.securities.at(security).kind == SecurityKind::Connect
                   ? HalfUp(exact * m_opening.hongKongRate, 10'000'000)
                   : HalfUp(exact, 10);
    }

    [[nodiscard]] Money ExpectedWorth(const Told& told, const Deal& deal) const
    {
        const Price limit = told.order.wish.price;
        const Money plain = WorthAt(deal.security, deal.price, deal.quantity);
        const Money most = WorthAt(deal.security, limit, told.dealt + deal.quantity) -
                           WorthAt(deal.security, limit, told.dealt);
        return deal.side == Side::Buy && most < plain ? most : plain;
    }

    [[nodiscard]] Money FeesOn(const OrderWish& wish, Money worth) const
    {
        if (worth <= 0) {
            return 0;
        }
        const Rates& rates = m_opening.RatesFor(m_listing.securities.at(wish.security).kind);
        const bool buys = wish.side == Side::Buy;
        const Money atRate = HalfUp(static_cast<Wide>(worth) * rates.commission, 1'000'000);
        const Money commission = atRate < rates.minimumCommission ? rates.minimumCommission : atRate;
        const Money duty = HalfUp(
            static_cast<Wide>(worth) * (buys ? rates.stampDutyOnBuy : rates.stampDutyOnSale), 1'000'000);
        const Money transfer = HalfUp(static_cast<Wide>(worth) * rates.transferFee, 1'000'000);
        const Money all = commission + duty + transfer;
        return !buys && all > worth ? worth : all;
    }

    void Bought(AccountBooks& account, const OrderWish& wish, const Deal& deal)
    {
        const Money paid = deal.worth + deal.fees;
        if (wish.funding == Funding::Borrowed) {
            account.cash.debt += paid;
        } else {
            account.cash.balance -= paid;
        }
        Position& position = account.positions[deal.security];
        position.total += deal.quantity;
        position.cost += paid;
        if (deal.time.day == m_day && !m_listing.securities.at(deal.security).sameDay) {
            position.boughtToday += deal.quantity;
        }
    }

    void Sold(AccountBooks& account, const OrderWish& wish, const Deal& deal)
    {
        Money got = deal.worth - deal.fees;
        if (wish.funding == Funding::PayBack) {
            const Money back = got < account.cash.debt ? got : account.cash.debt;
            account.cash.debt -= back;
            got -= back;
        }
        account.cash.balance += got;
        account.cash.soldToday += deal.time.day == m_day ? got : 0;
        Position& position = account.positions[deal.security];
        if (position.total < deal.quantity) {
            Say("deal " + deal.number + " sells more than there is");
            return;
        }
        position.cost -=
            static_cast<Money>(static_cast<Wide>(position.cost) * deal.quantity / position.total);
        position.total -= deal.quantity;
        if (position.total == 0) {
            account.positions.erase(deal.security);
        }
    }

    void Check(const Told& told)
    {
        const Order& order = told.order;
        const std::string name = "order " + order.contract;
        Compare(name + ", dealt", order.dealt, told.dealt);
        Compare(name + ", worth", order.dealtWorth, told.worth);
        Compare(name + ", fees", told.fees, FeesOn(order.wish, told.worth));
        if (!IsPossible(order)) {
            Say(name + " has dealt " + std::to_string(order.dealt) + " of " +
                std::to_string(order.wish.quantity) + " in state " +
                std::to_string(static_cast<int>(order.state)));
        }
        if (order.state == OrderState::Sent || order.state == OrderState::PartlyDealt) {
            Freeze(told);
        }
    }

    [[nodiscard]] bool IsPossible(const Order& order) const
    {
        const bool some = order.dealt > 0 && order.dealt < order.wish.quantity;
        switch (order.state) {
            case OrderState::Sent:
                return order.dealt == 0 && order.time.day == m_day;
            case OrderState::PartlyDealt:
                return some && order.time.day == m_day;
            case OrderState::Dealt:
                return order.dealt == order.wish.quantity;
            case OrderState::PartlyCancelled:
                return some;
            case OrderState::Cancelled:
            case OrderState::Refused:
                return order.dealt == 0;
        }
        return false;
    }

    void Freeze(const Told& told)
    {
        const OrderWish& wish = told.order.wish;
        AccountBooks& account = m_books.Of(wish.account);
        if (wish.side == Side::Sell) {
            account.positions[wish.security].frozen += wish.quantity - told.dealt;
            return;
        }
        const Money rest = WorthAt(wish.security, wish.price, wish.quantity) -
                           WorthAt(wish.security, wish.price, told.dealt);
        const Money needed = rest + FeesOn(wish, told.worth + rest) - told.fees;
        if (wish.funding == Funding::Borrowed) {
            account.cash.frozenCredit += needed;
        } else {
            account.cash.frozen += needed;
        }
    }

    void CompareCash(const std::string& account, const Cash& actual, const Cash& expected, bool withFrozen)
    {
        Compare(account + "balance", actual.balance, expected.balance);
        Compare(account + "debt", actual.debt, expected.debt);
        Compare(account + "sold today", actual.soldToday, expected.soldToday);
        if (withFrozen) {
            Compare(account + "frozen", actual.frozen, expected.frozen);
            Compare(account + "frozen credit", actual.frozenCredit, expected.frozenCredit);
        }
    }

    void ComparePosition(const std::string& account, std::size_t security, const Position& actual,
                         const Position& expected, bool withFrozen)
    {
        const std::string name = account + Name(security);
        Compare(name + ", total", actual.total, expected.total);
        Compare(name + ", bought today", actual.boughtToday, expected.boughtToday);
        Compare(name + ", cost", actual.cost, expected.cost);
        if (withFrozen) {
            Compare(name + ", frozen", actual.frozen, expected.frozen);
        }
    }

    // Today's orders, which were read from the file, against the ones given.
    void CompareToday(const Books& books, const std::string& place)
    {
        const auto today = std::count_if(m_told.begin(), m_told.end(), [this](const auto& entry) {
            return entry.second.order.time.day == m_day;
        });
        Compare(place + ", number of orders", static_cast<std::int64_t>(books.orders.size()), today);
        for (const Order& order : books.orders) {
            const auto found = m_told.find(order.contract);
            if (found == m_told.end()) {
                Say(place + ", order " + order.contract + " isn't filed");
                continue;
            }
            const Order& filed = found->second.order;
            const std::string name = place + ", order " + order.contract;
            Compare(name + ", dealt", order.dealt, filed.dealt);
            Compare(name + ", worth", order.dealtWorth, filed.dealtWorth);
            Compare(name + ", state", static_cast<int>(order.state), static_cast<int>(filed.state));
        }
    }

    const Listing& m_listing;
    const Opening& m_opening;
    const int m_day;
    Books m_books;
    std::unordered_map<std::string, Told> m_told;
    std::string m_said;
};

}  // namespace

std::string Audit(const Listing& listing, const Opening& opening, const Books& memory, AccountsFile& file)
{
    Recount recount(listing, opening, memory.day);
    file.ForEachOrder([&recount](const Order& order) { recount.Count(order); });
    file.ForEachDeal([&recount](const Deal& deal) { recount.Count(deal); });
    recount.Finish();
    recount.CheckBounds();
    recount.CompareWith(memory, "memory", true);
    recount.CompareWith(file.ReadBooks(), "file", false);
    return recount.Differences();
}

}  // namespace panelry::desk
