#include "support/rounds.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace panelry::bench
{

namespace
{

// Three digits that count, in whatever locale the toolkit has set.
std::string Text(double value)
{
    const double size = std::abs(value);
    const int decimals = size < 10 ? 2 : size < 100 ? 1 : 0;
    char digits[400];
    const auto result =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    return std::string(digits, result.ptr);
}

}  // namespace

double Seconds(Clock::time_point start, Clock::time_point end)
{
    return std::chrono::duration<double>(end - start).count();
}

double Quantile(std::vector<double> values, double part)
{
    const auto place = static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1) + 0.5);
    std::nth_element(values.begin(), values.begin() + place, values.end());
    return values[static_cast<std::size_t>(place)];
}

Figure::Figure(std::string name, std::string unit, double bound)
    : m_name(std::move(name)), m_unit(std::move(unit)), m_bound(bound)
{
}

void Figure::AddRatio(double ours, double yardstick)
{
    Add(ours, yardstick, ours / yardstick);
}

void Figure::AddDifference(double ours, double yardstick, double value)
{
    m_isRatio = false;
    Add(ours, yardstick, value);
}

void Figure::Add(double ours, double yardstick, double value)
{
    m_ours.push_back(ours);
    m_yardstick.push_back(yardstick);
    m_values.push_back(value);
}

void Figure::Print() const
{
    const double median = Quantile(m_values, 0.5);
    const std::string spread = Text(Quantile(m_values, 0.25)) + " to " + Text(Quantile(m_values, 0.75)) +
                               (m_isRatio ? "" : " " + m_unit);
    const std::string value = Text(median) + (m_isRatio ? "" : " " + m_unit);
    const std::string wanted = m_bound > 0 ? "<= " + Text(m_bound) : "";
    const char* const verdict = m_bound <= 0 ? "" : median <= m_bound ? "ok" : "over";
    std::printf("| %-56s | %9s | %9s | %-11s | %-9s | %-18s | %6zu | %-7s | %-4s |\n", m_name.c_str(),
                Text(Quantile(m_ours, 0.5)).c_str(), Text(Quantile(m_yardstick, 0.5)).c_str(), m_unit.c_str(),
                value.c_str(), spread.c_str(), m_values.size(), wanted.c_str(), verdict);
    std::fflush(stdout);
}

void Check(bool holds, const std::string& what)
{
    if (!holds) {
        std::fprintf(stderr, "Benchmark failed: %s\n", what.c_str());
        std::_Exit(1);  // other threads may be anywhere
    }
}

}  // namespace panelry::bench
