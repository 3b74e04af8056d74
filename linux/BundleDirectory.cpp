#include "linux/BundleDirectory.h"

#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <dlfcn.h>

namespace kelvo {

namespace {

constexpr char kEnglish[] = "en";

platform::NSMutableDictionary infoAt(const std::string& path) {
    const std::optional<platform::NSData> contents = PosixFileManager().contentsAtPath(path);
    if (!contents) throw std::runtime_error(path + ": cannot be read");
    platform::NSMutableDictionary info = PlistCoder().createFromFileData(*contents).dictionary();
    if (!info) throw std::runtime_error(path + ": is no property list with a dictionary");
    return info;
}

std::string requiredText(const platform::NSMutableDictionary& info, std::string_view key, const std::string& path) {
    std::optional<std::string> text = info.objectForKey(key).string();
    if (!text || text->empty()) throw std::runtime_error(path + ": has no " + std::string(key));
    return *std::move(text);
}

/// Whether a bundle can name that file as its binary: it must be in the bundle's own folder for binaries.
bool isOwnFileName(std::string_view name) {
    return name.find('/') == std::string_view::npos && name.find("..") == std::string_view::npos && name != ".";
}

std::string_view environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// The locale of messages, from the first of the variables that is set.
std::string_view messageLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const std::string_view locale = environmentVariable(name);
        if (!locale.empty()) return locale;
    }
    return "C";
}

/// "de_AT" of "de_AT.UTF-8@euro".
std::string_view withoutCodesetAndModifier(std::string_view locale) {
    return locale.substr(0, locale.find_first_of(".@"));
}

/// Whether this is the C or POSIX locale, whose texts are English.
bool isUntranslated(std::string_view locale) {
    const std::string_view name = withoutCodesetAndModifier(locale);
    return name == "C" || name == "POSIX";
}

/// Chinese is written in two scripts. A region implies the script that it uses, and some locales name the script:
/// zh_Hant_HK.
std::string_view scriptOfChinese(std::string_view region) {
    const bool isTraditional = region == "TW" || region == "HK" || region == "MO" || region.starts_with("Hant");
    return isTraditional ? "Hant" : "Hans";
}

/// Adds the possible folder names for the language of a locale, the most specific first.
void appendLanguagesOfLocale(std::vector<std::string>& languages, std::string_view locale) {
    const std::string_view name = withoutCodesetAndModifier(locale);
    // The name becomes part of a path.
    const bool isName = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    });
    if (!isName) return;
    const std::size_t separator = name.find_first_of("_-");
    const std::string language(name.substr(0, separator));
    const std::string region(separator == std::string_view::npos ? "" : name.substr(separator + 1));
    if (!region.empty()) {
        languages.push_back(language + '-' + region);
        languages.push_back(language + '_' + region);
    }
    if (language == "zh") languages.push_back(std::string("zh-").append(scriptOfChinese(region)));
    languages.push_back(language);
    // Portuguese readers prefer the other dialect to English.
    if (language == "pt") languages.emplace_back("pt_BR");
}

/// The languages of the user in order of preference, with English last.
std::vector<std::string> languagesOfUser() {
    const std::string_view locale = messageLocale();
    // In the C or POSIX locale, LANGUAGE is ignored.
    if (isUntranslated(locale)) return {kEnglish};
    std::string wanted(environmentVariable("LANGUAGE"));
    wanted.append(":").append(locale);
    std::vector<std::string> languages;
    for (std::string_view list = wanted; !list.empty();) {
        const std::string_view name = list.substr(0, list.find(':'));
        if (isUntranslated(name)) break;
        appendLanguagesOfLocale(languages, name);
        list.remove_prefix(std::min(name.size() + 1, list.size()));
    }
    languages.emplace_back(kEnglish);
    return languages;
}

} // namespace

std::unique_ptr<BundleDirectory> BundleDirectory::open(const std::string& path) {
    return std::unique_ptr<BundleDirectory>(new BundleDirectory(path));
}

BundleDirectory::BundleDirectory(const std::string& path)
    : contents_(platform::stringByAppendingPathComponent(path, "Contents")), languages_(languagesOfUser()) {
    const std::string infoPath = contents_ + "/Info.plist";
    const platform::NSMutableDictionary info = infoAt(infoPath);
    identifier_ = requiredText(info, "CFBundleIdentifier", infoPath);
    executable_ = requiredText(info, "CFBundleExecutable", infoPath);
    principalClass_ = requiredText(info, "NSPrincipalClass", infoPath);
    if (!isOwnFileName(executable_)) {
        throw std::runtime_error(infoPath + ": CFBundleExecutable \"" + executable_ + "\" is no file of the bundle");
    }
}

std::string BundleDirectory::localizedStringForKey(std::string_view key, std::string_view value) {
    for (const std::string& language : languages_) {
        if (std::optional<std::string> text = tableOfLanguage(language).textForKey(key)) return *std::move(text);
    }
    return std::string(value);
}

std::vector<std::string> BundleDirectory::pathsForResourcesOfTypeInDirectory(std::string_view type,
                                                                             std::string_view directory) {
    const std::string folder = platform::stringByAppendingPathComponent(contents_ + "/Resources", directory);
    const std::string extension = std::string(".").append(type);
    std::vector<std::string> paths;
    (void)PosixFileManager().visitDirectoryAtPath(folder, [&](std::string_view name) {
        if (name.ends_with(extension)) paths.push_back(platform::stringByAppendingPathComponent(folder, name));
        return true;
    });
    std::sort(paths.begin(), paths.end());
    return paths;
}

platform::NSBundle* BundleDirectory::bundleWithIdentifier(std::string_view identifier) {
    return identifier == identifier_ ? this : nullptr;
}

std::unique_ptr<platform::NSPreferencePane> BundleDirectory::loadPane(platform::Platform& platform) {
    const std::string binary = contents_ + '/' + executable_;
    // The handle is never closed, because objects of the binary's classes and their callbacks may still be alive.
    void* const handle = ::dlopen(binary.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!handle) {
        const char* reason = ::dlerror();
        throw std::runtime_error(binary + ": cannot be loaded: " + (reason ? reason : "for no known reason"));
    }
    const auto entry =
        reinterpret_cast<platform::NSPreferencePaneEntry*>(::dlsym(handle, platform::kNSPreferencePaneEntryName));
    if (!entry) throw std::runtime_error(binary + ": has no " + platform::kNSPreferencePaneEntryName);
    std::unique_ptr<platform::NSPreferencePane> pane;
    if (!entry(platform::kNSPreferencePaneABIVersion, platform, pane) || !pane) {
        throw std::runtime_error(binary + ": made no pane for ABI version " +
                                 std::to_string(platform::kNSPreferencePaneABIVersion));
    }
    return pane;
}

const StringsTable& BundleDirectory::tableOfLanguage(const std::string& language) {
    const auto found = tables_.find(language);
    if (found != tables_.end()) return found->second;
    const std::optional<platform::NSData> contents =
        PosixFileManager().contentsAtPath(contents_ + "/Resources/" + language + ".lproj/Localizable.strings");
    return tables_.emplace(language, contents ? StringsTable(*contents) : StringsTable()).first->second;
}

} // namespace kelvo
