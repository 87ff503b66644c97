#include "ticket/duplicate_codes.h"

#include <charconv>
#include <utility>

#include "base/host_text.h"
#include "ticket/data_deal_base.h"
#include "ticket/ticket_keys.h"

namespace panelry::ticket
{

namespace
{

constexpr std::string_view kNeverInPart = "\r\n'=&,";
constexpr std::string_view kNeverInWord = "\r\n'=&, ";
constexpr int kLeastChoices = 2;
constexpr std::size_t kLeastTexts = 4;  // of a row of code matches

std::string_view Run(std::string_view text, std::string_view never)
{
    return text.substr(0, text.find_first_of(never));
}

// Takes a part and the comma behind it off the front.
bool TakePart(std::string_view& text, std::string_view never, std::string_view& part)
{
    part = Run(text, never);
    if (part.empty() || part.size() == text.size() || text[part.size()] != ',') {
        return false;
    }
    text.remove_prefix(part.size() + 1);
    return true;
}

bool TakeChoice(std::string_view text, CodeChoice& choice)
{
    if (!TakePart(text, kNeverInWord, choice.market) || !TakePart(text, kNeverInPart, choice.code) ||
        !TakePart(text, kNeverInWord, choice.marketName)) {
        return false;
    }
    choice.stockName = Run(text, kNeverInPart);
    return !choice.stockName.empty();
}

void WriteChoice(const CodeChoice& choice, const std::string& number, StringMap& ticket)
{
    ticket["duplicatecode_market" + number] = std::to_string(HexTextToInt(choice.market));
    ticket["duplicatecode_stockcode" + number] = choice.code;
    ticket["duplicatecode_marketname" + number] = HostTextToUtf8(choice.marketName);
    ticket["duplicatecode_stockname" + number] = HostTextToUtf8(choice.stockName);
}

// The number behind the "s" of a key, if it is written the way the host counts: from 1, no leading zero.
std::optional<int> ChoiceNumber(std::string_view name)
{
    name.remove_prefix(1);
    int number = 0;
    const auto result = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool whole = result.ec == std::errc() && result.ptr == name.data() + name.size();
    return whole && !name.starts_with('0') && number > 0 ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<CodeChoice> FindCodeChoice(std::string_view text)
{
    // Within one word a later start fits no better than the first, so each word is tried once.
    while (!text.empty()) {
        CodeChoice choice;
        if (TakeChoice(text, choice)) {
            return choice;
        }
        text.remove_prefix(std::min(Run(text, kNeverInWord).size() + 1, text.size()));
    }
    return std::nullopt;
}

}  // namespace panelry::ticket

bool DataDealBase::ResolveDuplicateCodes(std::shared_ptr<StockInfoAnswer> answer, StringMap& ticket)
{
    using namespace panelry::ticket;
    if (!answer || !answer->reply) {
        return false;
    }
    const StringMap& choices = answer->reply->local;
    const int count = panelry::TextToInt(panelry::FieldOf(choices, "dup"));
    if (count < kLeastChoices) {
        return false;
    }
    ticket["duplicatecode_count"] = panelry::IntText(count);
    // Over the keys that are there: the host's count may be anything.
    for (auto entry = choices.lower_bound("s"); entry != choices.end() && entry->first.starts_with('s');
         ++entry) {
        const std::optional<int> number = ChoiceNumber(entry->first);
        if (!number || *number > count) {
            continue;
        }
        if (const std::optional<CodeChoice> choice = FindCodeChoice(entry->second)) {
            WriteChoice(*choice, panelry::IntText(*number - 1), ticket);
        }
    }
    return true;
}

void DataDealBase::ListCodeCandidates(const std::string& code, std::vector<StringMap>& out)
{
    const std::shared_ptr<QuoteObserver> quoteSide = m_quoteSide.lock();
    if (!quoteSide) {
        return;
    }
    std::vector<MarketCode> asked{{0, code}};
    std::vector<std::vector<std::string>> rows;
    quoteSide->ListCodeMatches(asked, rows);
    for (const std::vector<std::string>& row : rows) {
        if (row.size() < panelry::ticket::kLeastTexts) {
            continue;
        }
        const std::string& stock = row[0];
        StringMap candidate{{"market", std::to_string(static_cast<unsigned char>(stock.at(0)))},
                            {"stockcode", stock.substr(1)},
                            {"stockname", row[1]},
                            {"marketname", row[2]}};
        if (!row[1].empty()) {
            out.push_back(std::move(candidate));
        }
    }
}
