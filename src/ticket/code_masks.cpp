#include "ticket/code_masks.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <regex>
#include <vector>

#include "ticket/expression_cache.h"

namespace panelry::ticket
{

// The repeated entries do no harm; the list is kept as it was agreed.
const char kThreeDecimalMasks[] =
    "50*;201*;202*;203*;204*;15*;16*;51*;58*;03*;18:9*;19*;184*;42*;180*;56*;706080;35:10*;11*;12*;13*;149*;"
    "009*;01*;02*;09*;101*;102*;103*;104*;105*;106*;107*;108*;109*;12*;13*;14*;15*;16*;17*;18*;19*;81*;821*;";

namespace
{

constexpr bool IsDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

constexpr bool IsPlain(char letter)
{
    return IsDigit(letter) || (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
}

bool ArePlain(std::string_view letters)
{
    return std::all_of(letters.begin(), letters.end(), IsPlain);
}

void RefuseEndless(std::string_view mask)
{
    if (mask.size() > kMostMaskLetters) {
        throw std::regex_error(std::regex_constants::error_complexity);
    }
}

// Takes the part up to the next ";" off `list`.
std::string_view NextEntry(std::string_view& list)
{
    const std::size_t end = list.find(';');
    const std::string_view entry = list.substr(0, end);
    list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    return entry;
}

enum class Letter : unsigned char { Plain, Star, End, Special };

// What a letter is to a mask list.
constexpr std::array<Letter, 256> LettersOfMasks()
{
    std::array<Letter, 256> kinds{};
    for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
        kinds[byte] = IsPlain(static_cast<char>(byte)) ? Letter::Plain : Letter::Special;
    }
    kinds['*'] = Letter::Star;
    kinds[';'] = Letter::End;
    return kinds;
}

constexpr std::array<Letter, 256> kKinds = LettersOfMasks();

Letter KindOf(char letter)
{
    return kKinds[static_cast<unsigned char>(letter)];
}

// How far one mask was read, letter by letter, as if it were its own expression: its letters but for the
// stars, then a digit. At its end `place` stands on the ";" or behind the list.
struct PlainMatch {
    std::size_t place = 0;
    bool hit = false;
    bool special = false;  // it is an expression of another kind
};

PlainMatch MatchPlain(std::string_view masks, std::size_t place, std::string_view code)
{
    std::size_t matched = 0;
    Letter kind = Letter::End;
    for (; place < masks.size(); ++place) {
        kind = KindOf(masks[place]);
        if (kind == Letter::Plain && matched < code.size() && code[matched] == masks[place]) {
            ++matched;
        } else if (kind != Letter::Star) {
            break;
        }
    }
    if (place == masks.size() || kind == Letter::End) {
        return {place, matched < code.size() && IsDigit(code[matched]), false};
    }
    while (place < masks.size() && KindOf(masks[place]) < Letter::End) {
        ++place;
    }
    return {place, false, place < masks.size() && masks[place] != ';'};
}

bool MatchExpression(std::string_view mask, std::string_view code)
{
    RefuseEndless(mask);
    std::string pattern("^");
    std::copy_if(mask.begin(), mask.end(), std::back_inserter(pattern),
                 [](char letter) { return letter != '*'; });
    // One digit says as much as several, without a step of the engine for each of them.
    pattern += "\\d";
    const std::string_view head = code.substr(0, kMostCodeLetters);
    return std::regex_search(head.begin(), head.end(), *CompiledExpression(pattern));
}

// What a "." of an expression doesn't stand for.
bool HasLineEnd(std::string_view letters)
{
    return letters.find_first_of("\r\n") != std::string_view::npos;
}

bool MatchPlainParts(std::string_view code, std::string_view before, std::string_view behind)
{
    return code.size() >= before.size() + behind.size() && code.starts_with(before) &&
           code.ends_with(behind) &&
           !HasLineEnd(code.substr(before.size(), code.size() - before.size() - behind.size()));
}

bool MatchFullExpression(std::string_view code, std::string_view mask, std::size_t star)
{
    RefuseEndless(mask);
    if (code.size() > kMostCodeLetters) {
        return false;
    }
    std::string pattern(mask);
    if (star != std::string_view::npos) {
        pattern.insert(star, 1, '.');
    }
    return std::regex_match(code.begin(), code.end(), *CompiledExpression(pattern));
}

// All entries are digits, with a star behind them or not.
struct Entry {
    std::string_view market;  // empty: any
    std::string_view digits;
    bool more = false;  // may follow

    bool Fits(std::string_view code, std::string_view ofMarket) const
    {
        return code.starts_with(digits) && (more || code.size() == digits.size()) &&
               (market.empty() || market == ofMarket);
    }
};

Entry ReadEntry(std::string_view text)
{
    Entry entry;
    if (const std::size_t colon = text.find(':'); colon != std::string_view::npos) {
        entry.market = text.substr(0, colon);
        text.remove_prefix(colon + 1);
    }
    entry.digits = text.substr(0, text.find('*'));
    entry.more = entry.digits.size() < text.size();
    return entry;
}

std::vector<Entry> ThreeDecimalEntries()
{
    std::vector<Entry> entries;
    for (std::string_view list = kThreeDecimalMasks; !list.empty();) {
        entries.push_back(ReadEntry(NextEntry(list)));
    }
    return entries;
}

}  // namespace

// A ";" at the end leaves no mask behind it; any other leaves one, if only an empty one.
bool MatchesMaskList(std::string_view masks, std::string_view code)
{
    for (std::size_t begin = 0; begin < masks.size();) {
        const PlainMatch match = MatchPlain(masks, begin, code);
        std::size_t end = match.place;
        bool hit = match.hit;
        if (match.special) {
            end = std::min(masks.find(';', begin), masks.size());
            hit = MatchExpression(masks.substr(begin, end - begin), code);
        }
        if (hit) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

bool MatchesFullMask(std::string_view code, std::string_view mask)
{
    const std::size_t star = mask.find('*');
    const std::string_view before = mask.substr(0, star);
    const std::string_view behind =
        star == std::string_view::npos ? std::string_view() : mask.substr(star + 1);
    if (!ArePlain(before) || !ArePlain(behind)) {
        return MatchFullExpression(code, mask, star);
    }
    return star == std::string_view::npos ? code == mask : MatchPlainParts(code, before, behind);
}

bool IsThreeDecimalCode(std::string_view code, std::string_view market)
{
    static const std::vector<Entry>& entries = *new std::vector<Entry>(ThreeDecimalEntries());
    const auto fits = [&](const Entry& entry) { return entry.Fits(code, market); };
    // A star stands for no line end: what no code has, and no entry takes.
    return std::any_of(entries.begin(), entries.end(), fits) && !HasLineEnd(code);
}

}  // namespace panelry::ticket
