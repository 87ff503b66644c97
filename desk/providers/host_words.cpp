#include "desk/providers/host_words.h"

#include <iconv.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <stdexcept>

#include "desk/exchange/market_time.h"

namespace panelry::desk
{

namespace
{

using std::chrono::sys_days;
using std::chrono::year_month_day;

// A number of whole digits; -1 for anything else.
int Digits(const std::string& text, std::size_t from, std::size_t count)
{
    int number = 0;
    const char* const begin = text.data() + from;
    const auto [end, error] = std::from_chars(begin, begin + count, number);
    return error == std::errc() && end == begin + count ? number : -1;
}

year_month_day ReadDate(const std::string& date)
{
    if (date.size() != 8 ||
        !std::all_of(date.begin(), date.end(), [](char one) { return one >= '0' && one <= '9'; })) {
        return {};
    }
    return {std::chrono::year(Digits(date, 0, 4)),
            std::chrono::month(static_cast<unsigned>(Digits(date, 4, 2))),
            std::chrono::day(static_cast<unsigned>(Digits(date, 6, 2)))};
}

struct Converter {
    Converter()
    {
        if (handle == iconv_t(-1)) {  // NOLINT(performance-no-int-to-ptr): iconv's own way of failing
            throw std::runtime_error("this system can't convert to GB18030");
        }
    }
    ~Converter() { iconv_close(handle); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    iconv_t handle = iconv_open("GB18030//IGNORE", "UTF-8");
};

}  // namespace

std::string ToHostText(const std::string& utf8)
{
    thread_local const Converter converter;
    std::string bytes(utf8.size() * 4 + 4, '\0');
    std::string source = utf8;
    char* from = source.data();
    char* to = bytes.data();
    std::size_t fromLeft = source.size();
    std::size_t toLeft = bytes.size();
    iconv(converter.handle, &from, &fromLeft, &to, &toLeft);
    bytes.resize(bytes.size() - toLeft);
    return bytes;
}

std::string MarketName(std::uint8_t market)
{
    switch (market & 0xF0) {
        case 16:
            return "上海";
        case 32:
            return "深圳";
        case 64:
            return "港股通";
        default:
            return std::to_string(market);
    }
}

std::string OperationName(AccountKind account, Side side, Funding funding)
{
    if (account != AccountKind::Margin) {
        return side == Side::Buy ? "买入" : "卖出";
    }
    if (side == Side::Buy) {
        return funding == Funding::Borrowed ? "融资买入" : "担保品买入";
    }
    return funding == Funding::PayBack ? "卖券还款" : "担保品卖出";
}

std::string StateName(OrderState state)
{
    switch (state) {
        case OrderState::Sent:
            return "已报";
        case OrderState::PartlyDealt:
            return "部成";
        case OrderState::Dealt:
            return "已成";
        case OrderState::Cancelled:
            return "已撤";
        case OrderState::PartlyCancelled:
            return "部撤";
        case OrderState::Refused:
            return "废单";
    }
    return {};
}

std::string AccountName(AccountKind account)
{
    switch (account) {
        case AccountKind::Normal:
            return "normal";
        case AccountKind::Margin:
            return "margin";
        case AccountKind::Connect:
            return "connect";
    }
    return {};
}

std::optional<int> DayOf(const std::string& date)
{
    const year_month_day asked = ReadDate(date);
    if (!asked.ok()) {
        return std::nullopt;
    }
    const year_month_day first = ReadDate(CompactDate(1));
    return static_cast<int>((sys_days(asked) - sys_days(first)).count()) + 1;
}

std::string CompactDate(int day)
{
    std::string date = DateText(day);
    std::erase(date, '-');
    return date;
}

}  // namespace panelry::desk
