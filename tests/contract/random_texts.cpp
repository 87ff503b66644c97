#include "contract/random_texts.h"

namespace panelry::test
{

namespace
{

constexpr std::size_t kHuge = 1U << 20U;
constexpr unsigned kDeepest = 400'000;

std::string Repeated(const char* part, std::size_t times)
{
    std::string text;
    text.reserve(times * std::char_traits<char>::length(part));
    while (times-- > 0) {
        text += part;
    }
    return text;
}

}  // namespace

std::string RandomTexts::Next()
{
    static const char* const stray[] = {
        "", "quit ", "Quit", "\"quit\"", "null", "[]", "{}", "{\"operate\":\"quit\"}", "\xff\xfe"};
    switch (Below(400)) {
        case 0:
            return "{\"operate\":\"notify\",\"cmd\":\"5\",\"bussiness\":\"" + std::string(kHuge, 'x') + "\"}";
        case 1:
            return "{\"init_param\":[" + Repeated("0,", kHuge / 2) + "0]}";
        case 2:
            return std::string(kHuge, static_cast<char>(1 + Below(255)));
        default:
            break;
    }
    switch (Below(8)) {
        case 0:
            return OneOf(stray);
        case 1:
            return Below(4) == 0 ? Deep() : Object();
        case 2:
        case 3:
            return Damaged(Object());
        default:
            return Object();
    }
}

std::string RandomTexts::Object()
{
    static const char* const verbs[] = {"clicked", "show", "hide", "notify", "notify", "dance"};
    static const char* const keys[] = {"bussiness",        "cmd",          "always_display",
                                       "need_display",     "need_wrapper", "need_create_new",
                                       "ignord_lock_hide", "init_param"};
    static const char* const strings[] = {"\"1\"",           "\"0\"",  "\"\"",  "\"-1\"",
                                          "\"99999999999\"", "\"7x\"", "\"字\""};
    std::string text = std::string("{\"operate\":\"") + OneOf(verbs) + "\"";
    for (const char* key : keys) {
        if (Below(2) == 0) {
            text += std::string(",\"") + key + "\":" + (Below(5) == 0 ? Value() : OneOf(strings));
        }
    }
    return text + "}";
}

std::string RandomTexts::Value()
{
    static const char* const values[] = {
        "null",        "true",       "5", "-1", "1e400", "[]", "[1,[2]]", "{}", "{\"a\":{\"b\":\"c\"}}",
        "\"\\ud800\"", "\"\\u0000\""};
    return OneOf(values);
}

// Closed or left open, as the whole text or under a key that is kept and printed.
std::string RandomTexts::Deep()
{
    const unsigned depth = 1 + Below(Below(4) == 0 ? kDeepest : 1000);
    const bool objects = Below(2) == 0;
    std::string nest = Repeated(objects ? "{\"a\":" : "[", depth) + "1";
    if (Below(2) == 0) {
        nest += Repeated(objects ? "}" : "]", depth);
    }
    return Below(3) == 0 ? nest : "{\"operate\":\"notify\",\"init_param\":" + nest + "}";
}

std::string RandomTexts::Damaged(std::string text)
{
    const unsigned wounds = 1 + Below(3);
    for (unsigned i = 0; i < wounds && !text.empty(); ++i) {
        const std::size_t place = Below(static_cast<unsigned>(text.size()));
        switch (Below(3)) {
            case 0:
                text.resize(place);
                break;
            case 1:
                text.erase(place, 1 + Below(5));
                break;
            default:
                text[place] = static_cast<char>(1 + Below(255));
        }
    }
    return text;
}

}  // namespace panelry::test
