#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "desk/accounts/account.h"

namespace panelry::desk
{

/// What a deal costs beside its worth. Rates are in millionths of the worth, rounded to the fen over all
/// deals of an order so far (its commission is at least `minimumCommission`); a deal is charged what it adds
/// to that.
struct Rates {
    std::int64_t commission = 0;
    Money minimumCommission = 0;
    std::int64_t stampDutyOnSale = 0;
    std::int64_t stampDutyOnBuy = 0;  ///< Stock Connect taxes both sides
    std::int64_t transferFee = 0;
};

/// One shareholder account of a customer: a row of the host's account tables.
struct Shareholder {
    AccountKind account = AccountKind::Normal;
    std::string number;       ///< 股东帐户
    std::string market;       ///< 交易市场: "16", "32", or the number of another market
    std::string marketCode;   ///< 市场代码
    std::string masks;        ///< 关键代码: codes that it trades
    std::string starMask;     ///< 功能说明 of a row of market 16
    std::string chiNextMask;  ///< in column 2214 of a row of market 32
    std::string orderTypes;   ///< 市价委托
    bool isMain = true;       ///< 是否主帐号
};

/// With what the accounts begin, and what trading costs: the small file that docs/desk.md describes.
struct Opening {
    struct Account {
        std::string number;  ///< funds account
        Money cash = 0;
        Money creditLine = 0;           ///< margin only
        std::vector<Holding> holdings;  ///< all sellable
    };
    Account normal, margin, connect;
    std::vector<Shareholder> shareholders;
    Rates stock, fund, bond, connectRates;
    std::int64_t hongKongRate = 1'000'000;  ///< yuan for a Hong Kong dollar, in millionths

    [[nodiscard]] const Account& Of(AccountKind kind) const;
    /// Nothing is charged on kinds that aren't dealt (subscription, index).
    [[nodiscard]] const Rates& RatesFor(SecurityKind kind) const;
    /// The worth of a deal in the account's currency: Stock Connect is dealt in Hong Kong dollars and paid in
    /// yuan.
    [[nodiscard]] Money AccountWorth(const Security& security, Price price, Quantity quantity) const;
};

/// Throws std::runtime_error with the file's name and the reason; a holding of a security that `listing`
/// doesn't have is one.
Opening ReadOpening(const std::filesystem::path& file, const Listing& listing);

/// The same from a text; `source` stands in messages where the file's name would.
Opening ParseOpening(const std::string& text, const std::string& source, const Listing& listing);
/// The text that ParseOpening() reads back.
std::string OpeningText(const Opening& opening, const Listing& listing);

}  // namespace panelry::desk
