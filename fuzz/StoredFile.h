#pragma once

#include "fuzz/Require.h"
#include "support/FakePlatform.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace fuzzing {

/// A file of any bytes, and what the pane has to leave of it.
class StoredFile {
public:
    StoredFile(support::FakePlatform& platform, std::string path, std::span<const std::uint8_t> bytes)
        : platform_(platform), path_(std::move(path)), bytes_(bytes.begin(), bytes.end()) {
        platform_.files.files[path_] = bytes_;
    }

    /// What the file held before anything was written; nil where that could not be read.
    [[nodiscard]] platform::NSMutableDictionary contents() const {
        return platform_.propertyLists.createFromFileData(bytes_).dictionary();
    }

    void requireUntouched() const { require(platform_.files.files[path_] == bytes_, "the file is left as it is"); }

    /// Ends the run unless a damaged file is as it was, and any other holds what it held but for the keys `changed`.
    void requireKept(std::initializer_list<std::string_view> changed) const {
        const platform::NSMutableDictionary before = contents();
        if (!before) {
            requireUntouched();
            return;
        }
        const platform::NSMutableDictionary after = platform_.plist(path_);
        require(static_cast<bool>(after), "a file that could be read still can");
        for (const std::string& key : before.allKeys()) {
            if (std::find(changed.begin(), changed.end(), key) != changed.end()) continue;
            require(isKept(before.objectForKey(key), after.objectForKey(key)), "a merge keeps the other keys");
        }
    }

private:
    /// Compared as they are written, since a number that is none is not equal to itself.
    [[nodiscard]] bool isKept(const platform::Value& before, const platform::Value& after) const {
        return platform_.propertyLists.createXMLData(before) == platform_.propertyLists.createXMLData(after);
    }

    support::FakePlatform& platform_;
    std::string path_;
    platform::NSData bytes_;
};

} // namespace fuzzing
