#include "support/FakePlatform.h"

#include "KelvoTouchDisplayPref.h"
#include "TDNames.h"

#include <algorithm>
#include <utility>

namespace support {

namespace {

std::string withoutTrailingSlash(std::string path) {
    if (path.ends_with('/')) path.pop_back();
    return path;
}

} // namespace

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

bool MemoryFileManager::visitDirectoryAtPath(const std::string& path,
                                             const std::function<bool(std::string_view name)>& visit) {
    const auto listing = listings.find(withoutTrailingSlash(path));
    if (listing == listings.end()) return false;
    (void)std::all_of(listing->second.begin(), listing->second.end(), visit);
    return true;
}

std::optional<platform::NSDate> MemoryFileManager::modificationDateAtPath(const std::string& path) {
    const auto date = modificationDates.find(path);
    return date == modificationDates.end() ? std::nullopt : std::optional(date->second);
}

std::optional<platform::NSData> MemoryFileManager::contentsAtPath(const std::string& path) {
    const auto file = files.find(path);
    return file == files.end() ? std::nullopt : std::optional(file->second);
}

bool MemoryFileManager::writeAtomically(const std::string& path, std::span<const std::uint8_t> contents) {
    if (isDiskFull) return false;
    ++writes;
    files[path] = platform::NSData(contents.begin(), contents.end());
    if (duringWrite) duringWrite(path);
    return true;
}

bool MemoryFileManager::createAtomically(const std::string& path, std::span<const std::uint8_t> contents) {
    if (const auto other = std::exchange(beforeCreation, {})) other();
    return !fileExistsAtPath(path) && writeAtomically(path, contents);
}

std::string MemoryBundle::localizedStringForKey(std::string_view key, std::string_view value) {
    const auto entry = strings.find(key);
    return entry == strings.end() ? std::string(value) : entry->second;
}

platform::NSBundle* MemoryBundle::bundleWithIdentifier(std::string_view identifier) {
    return isLoaded && identifier == kPaneBundleIdentifier ? this : nullptr;
}

void RecordedApplication::endSheet(std::size_t index, std::int32_t returnCode) {
    const Ending ending = std::exchange(endings_.at(index), {});
    if (ending.didEnd && !ending.delegate.expired()) ending.didEnd(returnCode);
}

void RecordedApplication::beginInformationalAlertSheet(const platform::NSAlertSheet& sheet,
                                                       const platform::NSObject& delegate,
                                                       std::function<void(std::int32_t returnCode)> didEnd) {
    sheets.push_back(sheet);
    endings_.push_back({delegate.weakReference(), std::move(didEnd)});
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
