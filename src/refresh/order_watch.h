#pragma once

#include <string>

/// One open order as the quotes see it. Orders of one stock with the same direction and price are one.
struct OrderWatch {
    std::string key;        ///< the stock, see panelry::MarketCodeKey()
    std::string direction;  ///< "B" or "S"
    float price = 0;        ///< the limit in yuan, as near as a float comes: see OpenOrders::Test()
    bool isMargin = false;
};
