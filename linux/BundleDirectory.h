#pragma once

#include "linux/StringsTable.h"
#include "platform/Bundle.h"
#include "platform/NSPreferencePane.h"
#include "platform/Platform.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// A bundle that is a folder on disk, and the one bundle that a host of a single pane knows of.
///
///     <path>/Contents/Info.plist
///     <path>/Contents/<executable>
///     <path>/Contents/Resources/<language>.lproj/Localizable.strings
///     <path>/Contents/Resources/<directory>/<any>.<type>
class BundleDirectory final : public platform::NSBundle, public platform::NSBundles {
public:
    /// Reads the bundle's Info.plist and the user's languages. A std::runtime_error names the file and what is wrong
    /// with it.
    [[nodiscard]] static std::unique_ptr<BundleDirectory> open(const std::string& path);

    [[nodiscard]] const std::string& identifier() const { return identifier_; }
    [[nodiscard]] const std::string& principalClass() const { return principalClass_; }

    /// Looks through the user's languages in turn: those of LANGUAGE, then that of LC_ALL, LC_MESSAGES or LANG, then
    /// English.
    [[nodiscard]] std::string localizedStringForKey(std::string_view key, std::string_view value) override;
    [[nodiscard]] std::vector<std::string> pathsForResourcesOfTypeInDirectory(std::string_view type,
                                                                              std::string_view directory) override;
    /// This bundle, if that is its identifier.
    [[nodiscard]] platform::NSBundle* bundleWithIdentifier(std::string_view identifier) override;

    /// Loads the bundle's binary and makes its pane, which works on `platform`. The binary stays loaded for as long as
    /// the process lives. A std::runtime_error names the file and the reason.
    [[nodiscard]] std::unique_ptr<platform::NSPreferencePane> loadPane(platform::Platform& platform);

private:
    explicit BundleDirectory(const std::string& path);

    const StringsTable& tableOfLanguage(const std::string& language);

    std::string contents_;
    std::string identifier_;
    std::string executable_;
    std::string principalClass_;
    std::vector<std::string> languages_;
    /// The tables that were asked for so far; an empty one for a language without.
    std::map<std::string, StringsTable> tables_;
};

} // namespace kelvo
