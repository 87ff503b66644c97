#pragma once

#include <random>
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

    unsigned Below(unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit - 1)(m_random); }
    std::string Next();

private:
    const std::string& OneOf(const std::vector<std::string>& choices);
    std::string Object();
    std::string Value();
    std::string Damaged(std::string text);

    std::mt19937 m_random;
};

}  // namespace panelry::test
