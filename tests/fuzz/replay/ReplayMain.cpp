#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

/// Feeds inputs of random bytes, the same for the same seed.
int replayRandom(long count, unsigned seed) {
    constexpr std::size_t max_size = 4000;
    std::mt19937 random(seed);
    for (long i = 0; i < count; ++i) {
        std::vector<std::uint8_t> bytes(random() % max_size);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("%ld random inputs\n", count);
    return count == 0 ? 1 : 0;
}

} // namespace

/// Feeds every file of the folders named on the command line to a fuzzer's entry point, so that what fuzzing once found
/// stays found by compilers without a fuzzer too. Each input lies in a block of its exact size. With `--random COUNT
/// SEED` the inputs are random.
int main(int argc, char** argv) {
    if (argc == 4 && std::string_view(argv[1]) == "--random")
        return replayRandom(std::atol(argv[2]), static_cast<unsigned>(std::atol(argv[3])));
    std::size_t count = 0;
    // A fuzzer may change the working directory.
    std::vector<std::filesystem::path> folders;
    for (int i = 1; i < argc; ++i)
        folders.push_back(std::filesystem::absolute(argv[i]));
    for (const std::filesystem::path& folder : folders) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (!entry.is_regular_file()) continue;
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> read{std::istreambuf_iterator<char>(file), {}};
            const std::vector<std::uint8_t> bytes(read.begin(), read.end());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count == 0 ? 1 : 0;
}
