#include "desk/accounts/books.h"

#include <charconv>

namespace panelry::desk
{

namespace
{

constexpr std::int64_t kBeforeFirstContract = 10'000'000;
constexpr std::int64_t kBeforeFirstDeal = 50'000'000;

}  // namespace

std::string ContractText(std::int64_t number)
{
    return std::to_string(kBeforeFirstContract + number);
}

std::int64_t ContractNumber(const std::string& contract)
{
    std::int64_t number = 0;
    const char* const end = contract.data() + contract.size();
    const auto [stop, error] = std::from_chars(contract.data(), end, number);
    return error == std::errc() && stop == end && number > kBeforeFirstContract
               ? number - kBeforeFirstContract
               : 0;
}

std::string DealText(std::int64_t number)
{
    return std::to_string(kBeforeFirstDeal + number);
}

}  // namespace panelry::desk
