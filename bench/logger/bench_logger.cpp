// What a line costs its caller, how many lines a second reach their file, processor time and memory: our
// logger against two of other make and a bare loop.
//
//     bench_logger [--lines N] [--paced N] [--rounds N] [--producers N,N...] [--directory DIR]
//
// Every run is a process of its own, the loggers take turns, and what counts are ratios within a round.
// What reading the clock costs is taken off the percentiles; "cpu" includes it, the same for all.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <thread>

#include "loggers.h"
#include "support/rounds.h"

using panelry::bench::BenchedLogger;
using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;
using panelry::bench::Seconds;

namespace
{

namespace fs = std::filesystem;

struct Options {
    std::uint32_t lines = 1'000'000;
    std::uint32_t pacedLines = 5'000;
    int rounds = 9;
    std::vector<unsigned> producers = {1, 2, 4};
    std::string directory = fs::temp_directory_path().string();
};

struct Load {
    std::uint32_t lines;
    unsigned producers;
    int pauseMicros;  // between two lines of a producer
};

struct Result {
    double medianNs;
    double p99Ns;
    double p999Ns;
    double linesASecond;
    double cpuNsALine;
    double peakMegabytes;  // above what the process had before
};

double CpuSeconds()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double PeakMegabytes()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

double NthNs(std::vector<std::uint32_t>& costs, double part)
{
    const auto place =
        costs.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(costs.size() - 1));
    std::nth_element(costs.begin(), place, costs.end());
    return *place;
}

// What two readings of the clock with nothing between them take.
double TimerNs()
{
    std::vector<std::uint32_t> costs(10'000);
    for (std::uint32_t& cost : costs) {
        const Clock::time_point start = Clock::now();
        cost = static_cast<std::uint32_t>(std::chrono::nanoseconds(Clock::now() - start).count());
    }
    std::sort(costs.begin(), costs.end());
    const auto undisturbed = static_cast<std::ptrdiff_t>(costs.size() * 9 / 10);
    return std::accumulate(costs.begin(), costs.begin() + undisturbed, 0.0) /
           static_cast<double>(undisturbed);
}

// Writes this producer's share of the lines, notes what each call cost.
void Produce(const BenchedLogger& logger, const Load& load, unsigned producer, std::uint32_t* costs)
{
    for (std::uint32_t number = producer; number < load.lines; number += load.producers) {
        const Clock::time_point start = Clock::now();
        logger.write(number);
        const auto cost = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
        costs[number] = static_cast<std::uint32_t>(std::min<std::int64_t>(cost, UINT32_MAX));
        if (load.pauseMicros > 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(load.pauseMicros));
        }
    }
}

std::uint64_t LinesOfTheBenchmark(const fs::path& directory)
{
    std::uint64_t lines = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        if (entry.is_symlink()) {
            continue;
        }
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            lines += line.find("of account 8802345671") != std::string::npos ? 1 : 0;
        }
    }
    return lines;
}

Result Measure(const BenchedLogger& logger, const Load& load, const std::string& directory)
{
    std::vector<std::uint32_t> costs(load.lines, 1);  // written to: its memory is there before we start
    logger.start(directory, load.lines);
    const double peakBefore = PeakMegabytes();
    const double cpuBefore = CpuSeconds();
    const Clock::time_point start = Clock::now();
    {
        std::vector<std::thread> producers;
        for (unsigned producer = 0; producer < load.producers; ++producer) {
            producers.emplace_back(Produce, std::cref(logger), std::cref(load), producer, costs.data());
        }
        for (std::thread& producer : producers) {
            producer.join();
        }
    }
    logger.finish();
    Result result = {};
    result.linesASecond = load.lines / Seconds(start);
    result.cpuNsALine = (CpuSeconds() - cpuBefore) * 1e9 / load.lines;
    result.peakMegabytes = PeakMegabytes() - peakBefore;
    const double timer = TimerNs();
    result.medianNs = NthNs(costs, 0.5) - timer;
    result.p99Ns = NthNs(costs, 0.99) - timer;
    result.p999Ns = NthNs(costs, 0.999) - timer;
    Check(!logger.leavesFiles || LinesOfTheBenchmark(directory) == load.lines, logger.name + " lost lines");
    return result;
}

// In a process of its own: its peak memory and its threads are nobody else's.
Result MeasureApart(const BenchedLogger& logger, const Load& load, const std::string& parent)
{
    const fs::path directory = fs::path(parent) / ("bench_logger." + std::to_string(::getpid()));
    fs::create_directories(directory);
    int ends[2];
    Check(::pipe(ends) == 0, "no pipe");
    std::fflush(stdout);
    const pid_t child = ::fork();
    Check(child >= 0, "no process");
    if (child == 0) {
        const Result result = Measure(logger, load, directory.string() + "/");
        const bool sent = ::write(ends[1], &result, sizeof result) == sizeof result;
        ::_exit(sent ? 0 : 1);
    }
    ::close(ends[1]);
    Result result = {};
    const bool received = ::read(ends[0], &result, sizeof result) == sizeof result;
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    fs::remove_all(directory);
    Check(received && status == 0, logger.name + " failed");
    return result;
}

struct Bounds {
    double median;
    double p99;
    double cost;  // of lines a second, as time a line
    double cpu;
    double megabytes;
};

// The figures of our logger against one other. The bounds hold against the asynchronous logger alone.
std::vector<Figure> Rows(const std::string& prefix, const std::string& other, const Bounds& bounds)
{
    const auto row = [&](const std::string& what, double bound) {
        return Figure(prefix + what + ", against " + other, "ns", bound);
    };
    return {row("caller's median", bounds.median), row("caller's p99", bounds.p99), row("caller's p99.9", 0),
            row("a line until written", bounds.cost), row("processor time a line", bounds.cpu)};
}

void AddRatios(std::vector<Figure>& rows, const Result& ours, const Result& other)
{
    rows[0].AddRatio(ours.medianNs, other.medianNs);
    rows[1].AddRatio(ours.p99Ns, other.p99Ns);
    rows[2].AddRatio(ours.p999Ns, other.p999Ns);
    rows[3].AddRatio(1e9 / ours.linesASecond, 1e9 / other.linesASecond);
    rows[4].AddRatio(ours.cpuNsALine, other.cpuNsALine);
}

void Compare(const std::string& prefix, const Load& load, const Bounds& bounds, const Options& options)
{
    const std::vector<BenchedLogger> others = {panelry::bench::SpdlogAsync(), panelry::bench::GlogSync(),
                                               panelry::bench::BareLoop()};
    std::vector<std::vector<Figure>> figures;
    for (const BenchedLogger& other : others) {
        const bool bounded = figures.empty();
        figures.push_back(Rows(prefix, other.name, bounded ? bounds : Bounds{}));
    }
    Figure memory(prefix + "peak memory, beside spdlog's", "MB", bounds.megabytes);
    for (int round = 0; round < options.rounds; ++round) {
        const Result ours = MeasureApart(panelry::bench::OurLogger(), load, options.directory);
        for (std::size_t i = 0; i < others.size(); ++i) {
            const Result other = MeasureApart(others[i], load, options.directory);
            AddRatios(figures[i], ours, other);
            if (i == 0) {
                memory.AddDifference(ours.peakMegabytes, other.peakMegabytes, ours.peakMegabytes);
            }
        }
    }
    for (const std::vector<Figure>& rows : figures) {
        for (const Figure& row : rows) {
            row.Print();
        }
    }
    memory.Print();
}

template <class Number>
Number ParsedNumber(std::string_view text)
{
    Number number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    Check(parsed.ec == std::errc() && parsed.ptr == text.data() + text.size() && number > 0,
          "not a number: " + std::string(text));
    return number;
}

std::vector<unsigned> ParsedList(std::string_view text)
{
    std::vector<unsigned> numbers;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(','), text.size());
        numbers.push_back(ParsedNumber<unsigned>(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return numbers;
}

Options ParsedOptions(int argc, char* argv[])
{
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const std::string_view value = argv[i + 1];
        if (name == "--lines") {
            options.lines = ParsedNumber<std::uint32_t>(value);
        } else if (name == "--paced") {
            options.pacedLines = ParsedNumber<std::uint32_t>(value);
        } else if (name == "--rounds") {
            options.rounds = ParsedNumber<int>(value);
        } else if (name == "--producers") {
            options.producers = ParsedList(value);
        } else {
            Check(name == "--directory", "unknown option " + name);
            options.directory = value;
        }
    }
    Check(argc % 2 == 1, "an option lacks its value");
    return options;
}

}  // namespace

int main(int argc, char* argv[])
{
    const Options options = ParsedOptions(argc, argv);
    for (const unsigned producers : options.producers) {
        const bool many = producers >= 4;
        Compare("Log, " + std::to_string(producers) + (producers == 1 ? " thread, " : " threads, "),
                {options.lines, producers, 0}, {0.75, many ? 0.1 : 0.3, many ? 1.0 / 3 : 0.5, 0.5, 40},
                options);
    }
    Compare("Log, every 100 us, ", {options.pacedLines, 1, 100}, {0.1, 0, 0, 0, 0}, options);
    return 0;
}
