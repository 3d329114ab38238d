#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

void run(Bytes const &input)
{
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

void runChanged(Bytes const &seed)
{
    run(seed);
    constexpr std::size_t cuts = 1024;
    for (std::size_t length = 0; length < std::min(seed.size(), cuts); ++length) {
        run(Bytes(seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(length)));
    }
    std::mt19937 random(1);
    for (int i = 0; i < 256 && !seed.empty(); ++i) {
        Bytes changed = seed;
        for (std::uint32_t count = random() % 4 + 1; count-- > 0;) {
            std::uint8_t const values[] = {0x00, 0x01, 0x7F, 0x80, 0xFF, static_cast<std::uint8_t>(random())};
            changed[random() % changed.size()] = values[random() % std::size(values)];
        }
        run(changed);
    }
}

} // namespace

// The stand-in for a fuzzer: the seeds in the folders named, and what can be made of them in a moment.
int main(int count, char **arguments)
{
    int seeds = 0;
    for (int i = 1; i < count; ++i) {
        std::vector<std::filesystem::path> files;
        for (auto const &entry : std::filesystem::directory_iterator(arguments[i])) {
            files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
        for (auto const &path : files) {
            std::ifstream file(path, std::ios::binary);
            runChanged(Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
            ++seeds;
        }
    }
    std::printf("%d seeds\n", seeds);
    return seeds > 0 ? 0 : 1;
}
