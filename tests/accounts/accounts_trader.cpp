// Trades at random on the accounts of a file and says what was done, a line an event, until it is killed:
// accounts_trader FILE SEED

#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "accounts/random_trader.h"

namespace
{

using namespace panelry;

int Trade(const char* file, std::uint64_t seed)
{
    const auto listing = test::MadeListing();
    desk::Brokerage broker(listing, test::MadeOpening(1'000'000'000), {file});
    test::RandomTrader trader(broker, *listing, seed);
    for (;;) {
        const test::RandomTrader::Event event = trader.Step();
        const std::string line = std::string(1, event.kind) + ' ' + std::to_string(broker.Day()) + ' ' +
                                 (event.contract.empty() ? "-" : event.contract) + ' ' +
                                 std::to_string(event.dealt) + (event.open ? " 1\n" : " 0\n");
        // Past every buffer of this process: what is written was said.
        if (write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
            return 1;
        }
    }
}

}  // namespace

int main(int argc, char* argv[])
{
    try {
        return argc == 3 ? Trade(argv[1], std::strtoull(argv[2], nullptr, 10)) : 2;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
