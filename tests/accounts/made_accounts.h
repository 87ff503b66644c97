#pragma once

#include <memory>

#include "desk/accounts/brokerage.h"

/// A small market and accounts for the tests of the broker.
namespace panelry::test
{

enum Made : std::size_t {
    kBank,          ///< 600000@17
    kStar,          ///< 688981@22: at least 200, in steps of one
    kFund,          ///< 510300@20: three decimals
    kBond,          ///< 019666@23: sold on the day it is bought
    kConnect,       ///< 00700@64, in Hong Kong dollars
    kSubscription,  ///< 730001@17
    kIndex,         ///< 000001@16
    kForeign,       ///< 900901@18, a B share
    kOther,         ///< 000001@33
    kMadeCount
};

inline constexpr desk::AccountKind kAccounts[] = {desk::AccountKind::Normal, desk::AccountKind::Margin,
                                                  desk::AccountKind::Connect};

std::shared_ptr<const desk::Listing> MadeListing();

/// Each account begins with `cash`; the normal one with 1000 kBank for 9,000.00 and 500 kBond for 50,000.00.
/// The margin account may borrow 50,000.00. A Hong Kong dollar costs 0.92 yuan.
desk::Opening MadeOpening(desk::Money cash = 10'000'000);

}  // namespace panelry::test
