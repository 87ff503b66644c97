#include "desk/demo_security.h"

#include <iconv.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace panelry::desk
{

namespace
{

using Json = nlohmann::json;

constexpr int kLevels = 5;

std::string Value(const Json& entry, const char* name)
{
    return entry.value(name, std::string());
}

DemoSecurity ReadSecurity(const Json& entry)
{
    DemoSecurity security;
    security.code = entry.at("code").get<std::string>();
    security.market = entry.at("market").get<std::uint8_t>();
    security.name = entry.at("name").get<std::string>();
    security.limitPercent = entry.value("limit", security.limitPercent);
    security.holding = Value(entry, "holding");
    std::string close = entry.at("close").get<std::string>();
    const std::size_t point = close.find('.');
    security.decimals = point == std::string::npos ? 0 : static_cast<int>(close.size() - point) - 1;
    std::erase(close, '.');
    security.close = security.last = security.open = std::stoll(close);
    return security;
}

DemoAccountRow ReadAccount(const Json& entry)
{
    return {Value(entry, "market_code"), Value(entry, "market"), Value(entry, "account"),
            Value(entry, "codes"),       Value(entry, "board"),  Value(entry, "chinext"),
            Value(entry, "order_types")};
}

}  // namespace

std::string DemoSecurity::Text(std::int64_t ticks) const
{
    const auto behind = static_cast<std::size_t>(decimals);
    std::string digits = std::to_string(ticks);
    if (digits.size() <= behind) {
        digits.insert(0, behind + 1 - digits.size(), '0');
    }
    return behind == 0 ? digits : digits.insert(digits.size() - behind, ".");
}

void DemoSecurity::AddBook(StringMap& fields) const
{
    for (int level = 1; level <= kLevels; ++level) {
        const std::string number = std::to_string(level);
        const std::int64_t amount = (last * 7 + level * 131) % 900 * 100 + 100;
        fields["buy_" + number + "_price"] = Text(last - level);
        fields["buy_" + number + "_amount"] = std::to_string(amount);
        fields["sell_" + number + "_price"] = Text(last + level);
        fields["sell_" + number + "_amount"] = std::to_string(amount + 300);
    }
}

DemoMarketFile ReadDemoMarket(const std::filesystem::path& file)
{
    try {
        std::ifstream stream(file);
        const Json document = Json::parse(stream);
        DemoMarketFile market;
        market.cash = Value(document, "cash");
        for (const Json& entry : document.at("accounts")) {
            market.accounts.push_back(ReadAccount(entry));
        }
        for (const Json& entry : document.at("securities")) {
            market.securities.push_back(ReadSecurity(entry));
        }
        return market;
    } catch (const std::exception& error) {
        throw std::runtime_error(file.string() + " is no market: " + error.what());
    }
}

std::string DemoMarketName(std::uint8_t market)
{
    switch (market & 0xF0) {
        case 16:
            return "上海";
        case 32:
            return "深圳";
        default:
            return std::to_string(market);
    }
}

std::string ToHostText(const std::string& utf8)
{
    void* const converter = iconv_open("GB18030//IGNORE", "UTF-8");
    if (converter == iconv_t(-1)) {  // NOLINT(performance-no-int-to-ptr): iconv's own way of failing
        throw std::runtime_error("this system can't convert to GB18030");
    }
    std::string bytes(utf8.size() * 4 + 4, '\0');
    std::string source = utf8;
    char* from = source.data();
    char* to = bytes.data();
    std::size_t fromLeft = source.size();
    std::size_t toLeft = bytes.size();
    iconv(converter, &from, &fromLeft, &to, &toLeft);
    iconv_close(converter);
    bytes.resize(bytes.size() - toLeft);
    return bytes;
}

}  // namespace panelry::desk
