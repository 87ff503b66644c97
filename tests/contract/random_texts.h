#pragma once

#include <random>
#include <string>

namespace panelry::test
{

/// A text that a host should never send, or only just may: valid operate messages and push data, values of
/// the wrong type at any key, cut and damaged texts, texts nested deep, texts of a mebibyte. Never one of the
/// bare words that end the panels, and never a "cmd" of three digits, which the modules of the tests obey.
class RandomTexts
{
public:
    explicit RandomTexts(unsigned seed) : m_random(seed) {}

    unsigned Below(unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit - 1)(m_random); }
    std::string Next();

private:
    template <std::size_t n>
    const char* OneOf(const char* const (&choices)[n])
    {
        return choices[Below(n)];
    }
    std::string Object();
    std::string Value();
    std::string Deep();
    std::string Damaged(std::string text);

    std::mt19937 m_random;
};

}  // namespace panelry::test
