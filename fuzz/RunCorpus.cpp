// Runs a target once for each file named, or in each folder named: the way to run a corpus, or what was found, without
// the fuzzer.

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

namespace {

namespace fs = std::filesystem;

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
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    // Said before, so that it stands in front of what goes wrong.
    std::cout << file.filename().string() << std::endl;
    (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
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
