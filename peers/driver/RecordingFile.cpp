#include "peers/driver/RecordingFile.h"

#include <filesystem>
#include <stdexcept>

namespace kelvo {

namespace {

std::ofstream newFile(const std::string& path) {
    if (!path.starts_with('/')) throw std::runtime_error("the path of the recording must be absolute");
    std::error_code unknown;
    if (std::filesystem::exists(std::filesystem::symlink_status(path, unknown))) {
        throw std::runtime_error(path + " already exists; choose another file");
    }
    std::ofstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(path + " cannot be written; choose a file in a folder that you can write to");
    return file;
}

} // namespace

RecordingFile::RecordingFile(const std::string& path, const touch::PanelDescription& panel, const std::string& settings)
    : file_(newFile(path)), printer_([this](const std::string& line) { file_ << "# " << line << '\n'; }) {
    file_ << touch::textOf(panel) << "# settings: " << settings << '\n';
}

} // namespace kelvo
