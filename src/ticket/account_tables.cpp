#include "ticket/account_tables.h"

#include "ticket/field_map.h"

namespace panelry::ticket
{

namespace
{

constexpr int kLowByte = 0xFF;

const std::string& kRanges = Key("scdm_range");
const std::string& kOrdinaryTable = Key("account_table");
const std::string& kMarginTable = Key("rzrq_account_table");

}  // namespace

AccountTables ReadAccountTables(TradeObserver& tradeSide)
{
    AccountTables tables;
    for (const std::string* name : {&kOrdinaryTable, &kMarginTable}) {
        if (std::shared_ptr<HostTable> table = tradeSide.GetTable(*name)) {
            tables.push_back(std::move(table));
        }
    }
    return tables;
}

AccountSearch BeginAccountSearch(TradeObserver* tradeSide, int kind)
{
    AccountSearch search;
    const std::shared_ptr<StringMap> ranges = tradeSide ? tradeSide->GetStringMap(kRanges) : nullptr;
    if (!ranges) {
        return search;
    }
    const std::string name = std::to_string(kind);
    search.range = {FieldOf(*ranges, name + "_begin"), FieldOf(*ranges, name + "_end")};
    search.tables = ReadAccountTables(*tradeSide);
    return search;
}

int MarketClass(const std::string& market)
{
    const int number = RowMarket(market);
    return number == 18 || number == 34 || number == 38 ? number : number & kFamilyMask;
}

int RowMarket(std::string_view market)
{
    return static_cast<int>(TextToUnsignedOrThrow(market) & kLowByte);
}

}  // namespace panelry::ticket
