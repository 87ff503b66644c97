// Feeds the files of the given folders to a fuzz target, in the order of their names, and then each of them cut off
// at every length: a target that finds something ends the process. Fails when there is nothing to replay.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

extern "C" {
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
[[gnu::weak]] int LLVMFuzzerInitialize(int* argc, char*** argv);  // not every target has one
}

namespace
{

using Bytes = std::vector<std::uint8_t>;

// Before the target changes the directory.
std::vector<Bytes> Inputs(int folderCount, char* folders[])
{
    std::set<std::filesystem::path> paths;
    for (int i = 0; i < folderCount; ++i) {
        paths.insert(std::filesystem::directory_iterator(folders[i]), {});
    }
    std::vector<Bytes> inputs;
    for (const std::filesystem::path& path : paths) {
        std::ifstream file(path, std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return inputs;
}

// On the heap, exactly as long as the input: a sanitizer sees whoever reads beyond.
void Feed(const Bytes& input, std::size_t size)
{
    const Bytes exact(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(size));
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

}  // namespace

int main(int argc, char* argv[])
{
    constexpr std::size_t kMostCuts = 40;
    const std::vector<Bytes> inputs = Inputs(argc - 1, argv + 1);
    if (inputs.empty() || (LLVMFuzzerInitialize && LLVMFuzzerInitialize(&argc, &argv) != 0)) {
        std::fputs("nothing to replay\n", stderr);
        return 1;
    }
    for (const Bytes& input : inputs) {
        Feed(input, input.size());
        const std::size_t step = input.size() / kMostCuts + 1;
        for (std::size_t size = 0; size < input.size(); size += step) {
            Feed(input, size);
        }
    }
    std::fprintf(stderr, "%zu inputs replayed\n", inputs.size());
    return 0;
}
