// Runs a target once for each file named, or in each folder named: the way to run a corpus, or what was found, without
// the fuzzer. Where the target has a mutator of its own, what that makes of the file is run, too.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" [[gnu::weak]] std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                                             unsigned seed);

/// Stands in for the fuzzer's own.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t /*maxSize*/) {
    for (std::size_t i = 0; i < size; i += 7) data[i] ^= 1U;
    return size;
}

namespace {

namespace fs = std::filesystem;

/// What a mutator may add.
constexpr std::size_t kRoom = 4096;

std::vector<fs::path> filesAt(const fs::path& place) {
    if (!fs::is_directory(place)) return {place};
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(place)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void run(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + file.string());
    std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    // Said before, so that it stands in front of what goes wrong.
    std::cout << file.filename().string() << std::endl;
    auto* data = reinterpret_cast<std::uint8_t*>(bytes.data());
    (void)LLVMFuzzerTestOneInput(data, bytes.size());
    if (!LLVMFuzzerCustomMutator) return;
    const std::size_t size = bytes.size();
    bytes.resize(2 * size + kRoom);
    data = reinterpret_cast<std::uint8_t*>(bytes.data());
    bytes.resize(LLVMFuzzerCustomMutator(data, size, bytes.size(), static_cast<unsigned>(size)));
    (void)LLVMFuzzerTestOneInput(data, bytes.size());
}

} // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (const char* place : std::vector<const char*>(argv + 1, argv + argc)) {
        for (const fs::path& file : filesAt(place)) {
            run(file);
            ++count;
        }
    }
    std::cout << count << " files\n";
    return count > 0 ? 0 : 1;
}
