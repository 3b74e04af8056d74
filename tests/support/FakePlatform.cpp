#include "support/FakePlatform.h"

#include "KelvoTouchDisplayPref.h"
#include "TDNames.h"

#include <algorithm>

namespace support {

std::string MemoryFileManager::textOf(const std::string& path) const {
    const auto file = files.find(path);
    return file == files.end() ? "" : std::string(file->second.begin(), file->second.end());
}

void MemoryFileManager::setText(const std::string& path, std::string_view text) {
    files[path] = platform::NSData(text.begin(), text.end());
}

bool MemoryFileManager::fileExistsAtPath(const std::string& path) {
    return files.contains(path) ||
           std::find(createdFolders.begin(), createdFolders.end(), path) != createdFolders.end();
}

void MemoryFileManager::createDirectoryAtPath(const std::string& path) {
    if (!isReadOnly) createdFolders.push_back(path);
}

std::optional<platform::NSData> MemoryFileManager::contentsAtPath(const std::string& path) {
    const auto file = files.find(path);
    return file == files.end() ? std::nullopt : std::optional(file->second);
}

bool MemoryFileManager::writeAtomically(const std::string& path, std::span<const std::uint8_t> contents) {
    if (isDiskFull) return false;
    ++writes;
    files[path] = platform::NSData(contents.begin(), contents.end());
    return true;
}

std::string MemoryBundle::localizedStringForKey(std::string_view key, std::string_view value) {
    const auto entry = strings.find(key);
    return entry == strings.end() ? std::string(value) : entry->second;
}

platform::NSBundle* MemoryBundle::bundleWithIdentifier(std::string_view identifier) {
    return isLoaded && identifier == kPaneBundleIdentifier ? this : nullptr;
}

FakePlatform::FakePlatform() {
    platform::usePlatform(&platform_);
    sharedPaneState::reset();
}

FakePlatform::~FakePlatform() {
    sharedPaneState::reset();
    platform::usePlatform(nullptr);
}

platform::NSMutableDictionary FakePlatform::plist(const std::string& path) {
    return platform::NSMutableDictionary::dictionaryWithContentsOfFile(path);
}

void FakePlatform::setPlist(const std::string& path, const platform::NSMutableDictionary& contents) {
    files.files[path] = propertyLists.createXMLData(contents).value();
}

platform::NSMutableDictionary dictionaryOf(std::initializer_list<platform::NSMutableDictionary::ObjectAndKey> pairs) {
    return platform::NSMutableDictionary::dictionaryWithObjectsAndKeys(pairs);
}

platform::NSMutableArray arrayOf(std::initializer_list<platform::Value> values) {
    return platform::NSMutableArray::arrayWithObjects(values);
}

} // namespace support
