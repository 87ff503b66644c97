#include "contract/random_texts.h"

namespace panelry::test
{

namespace
{

constexpr std::size_t kHuge = 1U << 20U;
constexpr unsigned kDeepest = 400'000;

using Texts = std::vector<std::string>;
const Texts kStray{"", "quit ", "Quit", "\"quit\"", "[]", "{}", "{\"operate\":\"quit\"}", "\xff\xfe"};
const Texts kVerbs{"clicked", "show", "hide", "notify", "dance"};
const Texts kKeys{"bussiness",        "cmd",          "always_display",
                  "need_display",     "need_wrapper", "need_create_new",
                  "ignord_lock_hide", "init_param"};
const Texts kValues{"\"1\"",
                    "\"0\"",
                    "\"\"",
                    "\"-1\"",
                    "\"99999999999\"",
                    "\"7x\"",
                    "\"字\"",
                    "\"1\"",
                    "\"1\"",
                    "null",
                    "true",
                    "5",
                    "1e400",
                    "{\"a\":{\"b\":1}}",
                    "[1,[2]]",
                    "{}",
                    "\"\\ud800\"",
                    "\"\\u0000\""};

}  // namespace

std::string RandomTexts::Next()
{
    switch (Below(8)) {
        case 0:
            return Below(2) == 0 ? OneOf(kStray) : Value();
        case 1:
        case 2:
            return Damaged(Object());
        default:
            return Object();
    }
}

const std::string& RandomTexts::OneOf(const std::vector<std::string>& choices)
{
    return choices[Below(static_cast<unsigned>(choices.size()))];
}

std::string RandomTexts::Object()
{
    std::string text = "{\"operate\":" + (Below(20) == 0 ? Value() : '"' + OneOf(kVerbs) + '"');
    for (const std::string& key : kKeys) {
        if (Below(2) == 0) {
            text += ",\"" + key + "\":" + Value();
        }
    }
    return text + "}";
}

std::string RandomTexts::Value()
{
    switch (Below(400)) {
        case 0: {
            const unsigned depth = 1 + Below(Below(4) == 0 ? kDeepest : 1000);
            return std::string(depth, '[') + std::string(depth, ']');
        }
        case 1:
            return '"' + std::string(kHuge, 'x') + '"';
        default:
            return OneOf(kValues);
    }
}

std::string RandomTexts::Damaged(std::string text)
{
    for (unsigned wounds = 1 + Below(3); wounds > 0 && !text.empty(); --wounds) {
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
