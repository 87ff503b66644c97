#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

/// What all benchmarks share: rounds in which ours and a yardstick take turns, and rows of the table of
/// results.
///
/// Machines drift by a factor of two from second to second. So no two averages are compared: each round
/// measures both sides one right after the other, and what counts is the median of the rounds' ratios, with
/// the quartiles beside it.
namespace panelry::bench
{

using Clock = std::chrono::steady_clock;

/// Seconds from `start` to `end`.
double Seconds(Clock::time_point start, Clock::time_point end = Clock::now());

/// The value below which the share `part` (0 to 1) of the values lies. Not for an empty list.
double Quantile(std::vector<double> values, double part);

/// Calls `ours` and `yardstick` in turn, with the order changing from round to round, and hands the two
/// results to `keep`. One more round goes before, whose results are dropped.
template <class Ours, class Yardstick, class Keep>
void Interleave(int rounds, Ours ours, Yardstick yardstick, Keep keep)
{
    for (int round = -1; round < rounds; ++round) {
        auto first = round % 2 == 0 ? ours() : yardstick();
        auto second = round % 2 == 0 ? yardstick() : ours();
        if (round % 2 != 0) {
            std::swap(first, second);
        }
        if (round >= 0) {
            keep(first, second);
        }
    }
}

/// One figure of the table, collected round by round.
class Figure
{
public:
    /// `unit` names what both sides are measured in, `bound` is the most that is wanted; 0 means no bound.
    Figure(std::string name, std::string unit, double bound);

    /// One round: the ratio of ours to the yardstick is what counts.
    void AddRatio(double ours, double yardstick);
    /// One round: the difference `value` of several measurements counts, in the unit of this figure.
    void AddDifference(double ours, double yardstick, double value);

    /// Writes the figure as a row of the table to standard output.
    void Print() const;

private:
    void Add(double ours, double yardstick, double value);

    std::string m_name;
    std::string m_unit;
    double m_bound;
    bool m_isRatio = true;
    std::vector<double> m_ours;
    std::vector<double> m_yardstick;
    std::vector<double> m_values;
};

/// Ends the program with a message unless `holds`: what was measured isn't what should have been.
void Check(bool holds, const std::string& what);

}  // namespace panelry::bench
