#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

/// A new, empty folder of a test's own, which is removed with all that is in it.
class TemporaryDirectory {
public:
    TemporaryDirectory() : path_((std::filesystem::temp_directory_path() / "kelvo-test-XXXXXX").string()) {
        if (!::mkdtemp(path_.data())) throw std::runtime_error("no temporary folder: " + path_);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::string& path() const { return path_; }
    /// The path of something in the folder.
    [[nodiscard]] std::string path(std::string_view name) const { return path_ + '/' + std::string(name); }

    /// Writes a file, the folders to it included, and gives its path.
    std::string write(std::string_view name, std::string_view contents) const {
        std::string file = path(name);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream stream(file, std::ios::binary);
        stream.write(contents.data(), static_cast<std::streamsize>(contents.size()));
        if (!stream.flush()) throw std::runtime_error("cannot write " + file);
        return file;
    }

    /// The contents of a file; empty when it cannot be read.
    [[nodiscard]] std::string read(std::string_view name) const {
        std::ifstream stream(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    std::string path_;
};
