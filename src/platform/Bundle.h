#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// A loadable bundle on disk.
class NSBundle {
public:
    NSBundle() = default;
    NSBundle(const NSBundle&) = delete;
    NSBundle& operator=(const NSBundle&) = delete;
    virtual ~NSBundle();

    /// The loaded bundle of that identifier; null when there is none.
    static NSBundle* bundleWithIdentifier(std::string_view identifier);

    /// The text of `key` in the default strings table of the user's language, with English behind it; `value` where
    /// neither has an entry.
    [[nodiscard]] virtual std::string localizedStringForKey(std::string_view key, std::string_view value) = 0;

    /// The files with the extension `type` in that folder of the bundle's resources, sorted; none where there
    /// is no such folder, or the bundle is no folder at all.
    [[nodiscard]] virtual std::vector<std::string> pathsForResourcesOfTypeInDirectory(std::string_view type,
                                                                                      std::string_view directory);
};

/// Knows the bundles loaded into this process.
class NSBundles {
public:
    NSBundles() = default;
    NSBundles(const NSBundles&) = delete;
    NSBundles& operator=(const NSBundles&) = delete;
    virtual ~NSBundles();

    [[nodiscard]] virtual NSBundle* bundleWithIdentifier(std::string_view identifier) = 0;
};

} // namespace platform
