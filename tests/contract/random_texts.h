#pragma once

#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace panelry::test
{

/// A text that a host should never send, or only just may: operate messages and push data with values of the
/// right and the wrong types, nested deep, a mebibyte long, cut and damaged. Never one of the bare words that
/// end the panels, and never a "cmd" of three digits, which the modules of the tests obey.
class RandomTexts
{
public:
    explicit RandomTexts(unsigned seed) : m_random(seed) {}

    unsigned Below(std::size_t limit)
    {
        return std::uniform_int_distribution<unsigned>(0, static_cast<unsigned>(limit) - 1)(m_random);
    }

    std::string Next()
    {
        const unsigned kind = Below(8);
        if (kind == 0) {
            return Below(2) == 0 ? OneOf(m_stray) : Value();
        }
        return kind < 3 ? Damaged(Object()) : Object();
    }

private:
    using Texts = std::vector<std::string>;

    static Texts Words(const char* text)
    {
        std::istringstream words(text);
        return {std::istream_iterator<std::string>(words), {}};
    }

    const std::string& OneOf(const Texts& choices) { return choices[Below(choices.size())]; }

    std::string Object()
    {
        std::string text = "{\"operate\":" + (Below(20) == 0 ? Value() : '"' + OneOf(m_verbs) + '"');
        for (const std::string& key : m_keys) {
            text += Below(2) == 0 ? ",\"" + key + "\":" + Value() : "";
        }
        return text + "}";
    }

    std::string Value()
    {
        const unsigned kind = Below(400);
        if (kind == 0) {
            const unsigned depth = 1 + Below(Below(4) == 0 ? 400'000 : 1000);
            return std::string(depth, '[') + std::string(depth, ']');
        }
        return kind == 1 ? '"' + std::string(1U << 20U, 'x') + '"' : OneOf(m_values);
    }

    std::string Damaged(std::string text)
    {
        for (unsigned wounds = 1 + Below(3); wounds > 0 && !text.empty(); --wounds) {
            const std::size_t place = Below(text.size());
            const unsigned kind = Below(3);
            if (kind == 2) {
                text[place] = static_cast<char>(1 + Below(255));
            } else {
                text.erase(place, kind == 0 ? text.size() : 1 + Below(5));
            }
        }
        return text;
    }

    const Texts m_stray{"", "quit ", "Quit", "\"quit\"", "[]", "{}", "{\"operate\":\"quit\"}", "\xff\xfe"};
    const Texts m_verbs = Words("clicked show hide notify dance");
    const Texts m_keys = Words(
        "bussiness cmd always_display need_display need_wrapper need_create_new ignord_lock_hide init_param");
    const Texts m_values =
        Words(R"("1" "0" "" "-1" "99999999999" "7x" "字" "1" "1" null true 5 1e400 {"a":{"b":1}} [1,[2]] {})"
              R"( "\ud800" "\u0000")");
    std::mt19937 m_random;
};

}  // namespace panelry::test
