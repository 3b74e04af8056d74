#include "peers/driver/RecordingPlayer.h"

#include "TDUtilities.h"
#include "peers/driver/DisplayNames.h"
#include "peers/driver/OutputPrinter.h"
#include "peers/driver/TouchSettings.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"
#include "touch/Recording.h"
#include "touch/TouchDisplay.h"

#include <stdexcept>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

using platform::NSFileManager;
using platform::NSMutableDictionary;

constexpr std::string_view kDescriptionEnding = ".desc";

std::string contentsOf(const std::string& path) {
    const auto contents = NSFileManager::defaultManager().contentsAtPath(path);
    if (!contents) throw std::runtime_error(path + " cannot be read; choose a recording that you can read");
    return {contents->begin(), contents->end()};
}

/// The file next to a recording that describes its panel: the one with the longest matching beginning of its name.
std::optional<std::string> descriptionBeside(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    std::string longest;
    const bool isRead = NSFileManager::defaultManager().visitDirectoryAtPath(folder, [&](std::string_view file) {
        const bool isDescription = file.ends_with(kDescriptionEnding) &&
                                   name.starts_with(file.substr(0, file.size() - kDescriptionEnding.size()));
        if (isDescription && file.size() > longest.size()) longest = file;
        return true;
    });
    if (!isRead || longest.empty()) return std::nullopt;
    return folder + (slash == std::string::npos ? "/" : "") + longest;
}

/// Errors include the name of the file.
touch::Recording readIn(const std::string& path, std::string_view events, std::string_view description) {
    try {
        return touch::readRecording(events, description);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
}

touch::Recording recordingAt(const std::string& path) {
    const std::string events = contentsOf(path);
    std::string description;
    if (!touch::hasDescription(events)) {
        const auto beside = descriptionBeside(path);
        if (!beside) {
            throw std::runtime_error(path + " does not describe its panel; put the description in a file NAME.desc "
                                            "next to it, where NAME is the beginning of its file name");
        }
        description = contentsOf(*beside);
        (void)readIn(*beside, description, {});
    }
    auto recording = readIn(path, events, description);
    if (recording.events.empty()) throw std::runtime_error(path + " contains no events; choose a recording");
    return recording;
}

/// The name of the requested display.
std::string nameFor(const RecordingChoice& choice, const std::string& recorded) {
    if (!choice.display) return cleanedDisplayName(recorded);
    checkDisplayName(*choice.display);
    return *choice.display;
}

/// The settings of that display, if it has any.
NSMutableDictionary settingsFor(const RecordingChoice& choice, const std::string& name) {
    const std::string path = getSettingsFilePath(name);
    if (!NSFileManager::defaultManager().fileExistsAtPath(path)) {
        if (choice.display)
            throw std::runtime_error("there are no settings of \"" + name + "\"; connect it once to create them");
        return {};
    }
    auto settings = NSMutableDictionary::dictionaryWithContentsOfFile(path);
    if (!settings) throw std::runtime_error("the settings file " + path + " cannot be read; repair or remove it");
    return settings;
}

void sayFault(touch::Fault fault) { throw std::logic_error("this must not happen: " + std::string(nameOf(fault))); }

} // namespace

RecordingChoice recordingChoiceIn(const std::vector<std::string>& words) {
    RecordingChoice choice;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "--display" && i + 1 < words.size()) {
            choice.display = words[++i];
        } else if (words[i] == "--pointer") {
            choice.isPointer = true;
        } else if (words[i] == "--keep-touches") {
            choice.keepsTouches = true;
        } else if (choice.path.empty() && !words[i].empty() && !words[i].starts_with("--")) {
            choice.path = words[i];
        } else {
            throw std::runtime_error(
                R"("touch" takes a FILE, --display NAME, --pointer and --keep-touches; see --help)");
        }
    }
    if (choice.path.empty()) throw std::runtime_error("\"touch\" takes a FILE with recorded fingers; see --help");
    return choice;
}

void playRecording(const RecordingChoice& choice, const std::function<void(const std::string&)>& printLine) {
    const touch::Recording recording = recordingAt(choice.path);
    const std::string name = nameFor(choice, recording.name);
    const NSMutableDictionary stored = settingsFor(choice, name);
    touch::Settings settings = touchSettingsOf(name, stored, settingsContextOfDriver());
    if (choice.isPointer) settings.fingerMode = touch::FingerMode::Pointer;
    touch::Desktop desktop;
    desktop.takesTouchesBack = !choice.keepsTouches;
    desktop.nativePixels = nativePixelsOf(stored);

    const touch::Glass glass(recording.x, recording.y);
    OutputPrinter printer(printLine);
    touch::TouchDisplay display(glass.size(), printer, sayFault);
    display.setSettings(settings);
    display.setDesktop(desktop);
    recording.play(glass, [&](const touch::Frame& frame) { display.frame(frame); });
    while (const auto deadline = display.deadline()) display.timeout(*deadline);
    // As if the display was unplugged with fingers on it.
    display.setEnabled(false, touch::Time(0));
}

} // namespace kelvo
