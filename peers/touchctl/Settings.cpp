#include "peers/touchctl/Settings.h"

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "peers/touchctl/FileAccess.h"
#include "platform/SystemVersion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;

/// More than all messages together can hold.
constexpr std::size_t kLargestProfile = std::size_t{16} << 20U;

std::string textOf(double number) {
    constexpr double kShownFractions = 100.0;
    return Value(std::round(number * kShownFractions) / kShownFractions).stringValue().value_or("");
}

/// The bounds of the forms of the pane.
struct Bounds {
    double least;
    double most;
    bool isWhole;
    const char* kind;

    [[nodiscard]] bool hold(double number) const {
        return number >= least && number <= most && (!isWhole || std::trunc(number) == number);
    }
    /// "0.1 to 1"
    [[nodiscard]] std::string span() const { return textOf(least) + " to " + textOf(most); }
    /// "a number of seconds from 0.1 to 1"
    [[nodiscard]] std::string text() const { return std::string(kind) + " from " + span(); }
};

/// The slider of the pane shows one second minus the interval, from 0 to 0.9.
constexpr Bounds kInterval{1.0 - 0.9, 1.0, false, "a number of seconds"};
constexpr Bounds kRange{8.0, 128.0, true, "a whole number"};
constexpr Bounds kLongPress{0.3, 3.0, false, "a number of seconds"};
constexpr Bounds kWidth{0.0, 4096.0, false, "a number of pixels"};
constexpr Bounds kHeight{0.0, 2160.0, false, "a number of pixels"};
constexpr Bounds kRotateMode{0.0, 3.0, true, "a whole number of quarter turns"};

constexpr std::int32_t kDegreesOfRow = 90;

// What the command line says.

[[noreturn]] void refuse(const std::string& what, std::string_view right, const std::string& given) {
    throw Failure(Status::Usage, what + " must be " + std::string(right) + ", not \"" + given + "\"");
}

double numberOf(const std::string& text, const std::string& what, const Bounds& bounds) {
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !bounds.hold(number)) {
        refuse(what, bounds.text(), text);
    }
    return number;
}

void checkCount(const Words& words, std::size_t least, std::size_t most, const char* what) {
    if (words.size() < least || words.size() > most) throw Failure(Status::Usage, what);
}

NSMutableDictionary rightClickIn(const NSMutableDictionary& stored) {
    return stored.objectForKey(keys::rightClick).dictionary();
}

/// As shown by the slider of the pane, which clamps its value.
double storedLongPress(const NSMutableDictionary& stored) {
    const double seconds = rightClickIn(stored).objectForKey(keys::rightClickTimeIntelval).doubleValue();
    return seconds >= kLongPress.least ? std::min(seconds, kLongPress.most) : kLongPress.least;
}

Message doubleClickRate(const Words& words, const NSMutableDictionary& /*stored*/) {
    checkCount(words, 1, 1, "double-click-rate takes a number of seconds");
    return {kMessageIDForDoubleClickRate,
            payloads::doubleClickRate(numberOf(words[0], "double-click-rate", kInterval))};
}

Message doubleClickRange(const Words& words, const NSMutableDictionary& /*stored*/) {
    checkCount(words, 1, 1, "double-click-range takes a whole number");
    const auto range = static_cast<std::int32_t>(numberOf(words[0], "double-click-range", kRange));
    return {kMessageIDForDoubleClickRange, payloads::doubleClickRange(range)};
}

Message rightClick(const Words& words, const NSMutableDictionary& stored) {
    checkCount(words, 1, 2, "right-click takes on or off, and optionally the duration of a long press in seconds");
    if (words[0] != "on" && words[0] != "off") refuse("right-click", "on or off", words[0]);
    const double seconds =
        words.size() > 1 ? numberOf(words[1], "the long press", kLongPress) : storedLongPress(stored);
    return {kMessageIDForRightClick, payloads::rightClick(words[0] == "on", seconds)};
}

Message longPress(const Words& words, const NSMutableDictionary& stored) {
    checkCount(words, 1, 1, "long-press takes a number of seconds");
    const bool isEnabled = rightClickIn(stored).objectForKey(keys::rightClickIsEnable).boolValue();
    return {kMessageIDForRightClick, payloads::rightClick(isEnabled, numberOf(words[0], "long-press", kLongPress))};
}

Message rotation(const Words& words, const NSMutableDictionary& /*stored*/) {
    checkCount(words, 1, 1, "rotation takes a number of degrees");
    for (std::int32_t row = 0; row <= static_cast<std::int32_t>(kRotateMode.most); ++row) {
        if (words[0] == std::to_string(row * kDegreesOfRow))
            return {kMessageIDForRotateMode, payloads::rotateMode(row)};
    }
    refuse("rotation", "0, 90, 180 or 270 degrees", words[0]);
}

Message calibration(const Words& words, const NSMutableDictionary& /*stored*/) {
    constexpr char kWhat[] = "calibration takes \"auto\" alone, or \"manual\" with the width and the height in pixels";
    checkCount(words, 1, 3, kWhat);
    if (words[0] != "auto" && words[0] != "manual") refuse("calibration", "auto or manual", words[0]);
    if (words[0] == "auto") {
        checkCount(words, 1, 1, kWhat);
        return {kMessageIDForCalibration, payloads::automaticCalibration()};
    }
    checkCount(words, 3, 3, kWhat);
    const auto width = static_cast<float>(numberOf(words[1], "the width", kWidth));
    const auto height = static_cast<float>(numberOf(words[2], "the height", kHeight));
    return {kMessageIDForCalibration, payloads::manualCalibration(width, height)};
}

Words fingerCommand(const Words& words) {
    checkCount(words, 3, 3, "finger takes touch or pointer");
    if (words[2] != "touch" && words[2] != "pointer") refuse("finger", "touch or pointer", words[2]);
    return {"finger", words[0], words[2]};
}

Message gestureMessage(const NSMutableArray& list) {
    gSettings = list;
    return {kMessageIDForGestureArray, payloads::gestureArray()};
}

// Values from a file. Each check throws an error that describes the valid values.

using Fault = std::runtime_error;

double numberIn(const Value& value, const std::string& key, const Bounds& bounds) {
    const bool isNumber = value.kind() == Value::Kind::Integer || value.kind() == Value::Kind::UnsignedInteger ||
                          value.kind() == Value::Kind::Real;
    if (!isNumber || !bounds.hold(value.doubleValue())) throw Fault(key + " must be " + bounds.text());
    return value.doubleValue();
}

bool booleanIn(const Value& value, const std::string& key) {
    if (value.kind() != Value::Kind::Boolean) throw Fault(key + " must be true or false");
    return value.boolValue();
}

NSMutableDictionary dictionaryIn(const Value& value, const std::string& key) {
    if (!value.dictionary()) throw Fault(key + " must be a dictionary");
    return value.dictionary();
}

Message rateMessage(const NSMutableDictionary& profile) {
    return {
        kMessageIDForDoubleClickRate,
        payloads::doubleClickRate(numberIn(profile.objectForKey(keys::doubleClickRate), "DoubleClickRate", kInterval))};
}

/// The pane sends a real from its text field, otherwise an integer, so a file can contain either.
Message rangeMessage(const NSMutableDictionary& profile) {
    const double range = numberIn(profile.objectForKey(keys::doubleClickRange), "DoubleClickRange", kRange);
    return {kMessageIDForDoubleClickRange, payloads::doubleClickRange(static_cast<std::int32_t>(range))};
}

Message rightClickMessage(const NSMutableDictionary& profile) {
    const auto inner = dictionaryIn(profile.objectForKey(keys::rightClick), "RightClick");
    const bool isEnabled = booleanIn(inner.objectForKey(keys::rightClickIsEnable), "RightClickIsEnable in RightClick");
    const double seconds =
        numberIn(inner.objectForKey(keys::rightClickTimeIntelval), "RightClickTimeIntelval in RightClick", kLongPress);
    return {kMessageIDForRightClick, payloads::rightClick(isEnabled, seconds)};
}

/// New settings files contain false for the unrotated state.
Message rotationMessage(const NSMutableDictionary& profile) {
    const Value mode = profile.objectForKey(keys::rotateMode);
    const bool isNew = mode.kind() == Value::Kind::Boolean && !mode.boolValue();
    return {kMessageIDForRotateMode,
            payloads::rotateMode(isNew ? 0 : static_cast<std::int32_t>(numberIn(mode, "RotateMode", kRotateMode)))};
}

/// As in the pane, a calibration that is not marked as automatic is manual.
Message calibrationMessage(const NSMutableDictionary& profile) {
    const Value isAutomatic = profile.objectForKey(keys::autoCalibration);
    if (isAutomatic && booleanIn(isAutomatic, "AutoCalibration")) {
        return {kMessageIDForCalibration, payloads::automaticCalibration()};
    }
    const auto resolution = dictionaryIn(profile.objectForKey(keys::manualCalibration), "ManualCalibration");
    const double width = numberIn(resolution.objectForKey(keys::OSDWidth), "OSDWidth in ManualCalibration", kWidth);
    const double height = numberIn(resolution.objectForKey(keys::OSDHeight), "OSDHeight in ManualCalibration", kHeight);
    return {kMessageIDForCalibration,
            payloads::manualCalibration(static_cast<float>(width), static_cast<float>(height))};
}

void checkRecord(const Value& element, const std::string& place) {
    const auto record = dictionaryIn(element, place);
    if (record.objectForKey(keys::name).string().value_or("").empty())
        throw Fault("Name in " + place + " must be a string");
    const NSMutableArray actions = record.objectForKey(keys::descriptor).array();
    if (actions.count() == 0) throw Fault("Descriptor in " + place + " must be a list of actions");
    for (std::size_t i = 0; i < actions.count(); ++i) {
        if (!actions.objectAtIndex(i).string()) throw Fault("Descriptor in " + place + " must contain only strings");
    }
    const Value index = record.objectForKey(keys::selectedIndex);
    if (index.kind() != Value::Kind::Integer || index.longLongValue() < 0 ||
        static_cast<std::uint64_t>(index.longLongValue()) >= actions.count()) {
        throw Fault("SelectedIndex in " + place + " must be the index of an action, from 0 to " +
                    std::to_string(actions.count() - 1));
    }
    (void)booleanIn(record.objectForKey(keys::isEnable), "IsEnable in " + place);
    (void)booleanIn(record.objectForKey(keys::moreGesture), "MoreGesture in " + place);
}

Message gesturesMessage(const NSMutableDictionary& profile) {
    const NSMutableArray list = profile.objectForKey(keys::gestureArray).array();
    if (!list) throw Fault("GestureArray must be a list of gesture records");
    for (std::size_t i = 0; i < list.count(); ++i) {
        checkRecord(list.objectAtIndex(i), "gesture " + std::to_string(i + 1) + " of GestureArray");
    }
    return gestureMessage(list);
}

/// The keys of a message, any of which triggers it, and the message.
struct ProfilePart {
    std::array<std::string_view, 2> fileKeys;
    Message (*messageOf)(const NSMutableDictionary& profile) = nullptr;

    [[nodiscard]] bool isIn(const NSMutableDictionary& profile) const {
        return std::any_of(fileKeys.begin(), fileKeys.end(),
                           [&](std::string_view key) { return !key.empty() && profile.objectForKey(key); });
    }
    [[nodiscard]] bool has(std::string_view key) const {
        return !key.empty() && std::find(fileKeys.begin(), fileKeys.end(), key) != fileKeys.end();
    }
};

constexpr std::array kProfileParts{
    ProfilePart{{keys::doubleClickRate}, rateMessage},
    ProfilePart{{keys::doubleClickRange}, rangeMessage},
    ProfilePart{{keys::rightClick}, rightClickMessage},
    ProfilePart{{keys::rotateMode}, rotationMessage},
    ProfilePart{{keys::autoCalibration, keys::manualCalibration}, calibrationMessage},
    ProfilePart{{keys::gestureArray}, gesturesMessage},
};

bool isProfileKey(std::string_view key) {
    return std::any_of(kProfileParts.begin(), kProfileParts.end(),
                       [&](const ProfilePart& part) { return part.has(key); });
}

/// Keys in a settings file that only the driver writes.
bool isDriversOwn(std::string_view key) {
    return key == keys::driverVersion || key == keys::fingerMode || key == keys::nativeWidth ||
           key == keys::nativeHeight;
}

Message messageOfPart(const ProfilePart& part, const NSMutableDictionary& profile) {
    try {
        return part.messageOf(profile);
    } catch (const Fault& fault) {
        throw Failure(Status::Failure, fault.what());
    }
}

Message gesturesOfWords(const Words& words, const NSMutableDictionary& /*stored*/) {
    checkCount(words, 1, 1, "gestures takes \"default\" or a file with a gesture list");
    if (words[0] == "default") {
        const NSMutableArray list = gestureCatalogueForVersion(platform::Gestalt(platform::gestaltSystemVersion));
        if (!list) throw Failure(Status::Failure, "this system version has no gestures; check KELVO_SYSTEM_VERSION");
        return gestureMessage(list);
    }
    const NSMutableDictionary profile = profileIn(words[0]);
    if (!kProfileParts.back().isIn(profile)) throw Failure(Status::Failure, words[0] + " contains no GestureArray");
    return messageOfPart(kProfileParts.back(), profile);
}

// What is shown.

/// None for types that count as missing.
std::optional<double> shownNumber(const Value& value) {
    return value.hasNumber() ? std::optional(value.doubleValue()) : std::nullopt;
}

Shown shownWithin(const Bounds& bounds, const Value& value) {
    const std::optional<double> number = shownNumber(value);
    if (!number) return {};
    if (!bounds.hold(*number)) return {Shown::State::Unfit, ""};
    return {Shown::State::Fit, Value(*number).stringValue().value_or("")};
}

Shown shownSwitch(const NSMutableDictionary& stored) {
    const Value isOn = rightClickIn(stored).objectForKey(keys::rightClickIsEnable);
    if (!isOn.stringValue()) return {};
    return {Shown::State::Fit, isOn.boolValue() ? "on" : "off"};
}

Shown shownRotation(const NSMutableDictionary& stored) {
    Shown shown = shownWithin(kRotateMode, stored.objectForKey(keys::rotateMode));
    if (shown.state == Shown::State::Fit) {
        shown.words = std::to_string(stored.objectForKey(keys::rotateMode).intValue() * kDegreesOfRow);
    }
    return shown;
}

Shown shownCalibration(const NSMutableDictionary& stored) {
    if (stored.objectForKey(keys::autoCalibration).boolValue()) return {Shown::State::Fit, "auto"};
    const auto resolution = stored.objectForKey(keys::manualCalibration).dictionary();
    const Shown width = shownWithin(kWidth, resolution.objectForKey(keys::OSDWidth));
    const Shown height = shownWithin(kHeight, resolution.objectForKey(keys::OSDHeight));
    const Shown::State state = std::min(width.state, height.state);
    return {state, state == Shown::State::Fit ? "manual " + width.words + " " + height.words : ""};
}

Shown shownFinger(const NSMutableDictionary& stored) {
    const Value mode = stored.objectForKey(keys::fingerMode);
    if (!mode) return {};
    if (!mode.isEqual("touch") && !mode.isEqual("pointer")) return {Shown::State::Unfit, ""};
    return {Shown::State::Fit, *mode.text()};
}

} // namespace

std::string Shown::text() const {
    switch (state) {
    case State::NotSet:
        return "(not set)";
    case State::Unfit:
        return "(invalid)";
    case State::Fit:
        break;
    }
    return words;
}

const std::vector<Key>& settingKeys() {
    static const std::vector<Key> settings{
        {"double-click-rate",
         "SECONDS",
         "the longest time between two clicks, " + kInterval.span(),
         {},
         doubleClickRate,
         [](const auto& stored) { return shownWithin(kInterval, stored.objectForKey(keys::doubleClickRate)); }},
        {"double-click-range",
         "NUMBER",
         "the size of the area for both clicks, a whole number, " + kRange.span(),
         {},
         doubleClickRange,
         [](const auto& stored) { return shownWithin(kRange, stored.objectForKey(keys::doubleClickRange)); }},
        {"right-click",
         "on|off [SECONDS]",
         "long press to right-click, and its duration, " + kLongPress.span(),
         {"on", "off"},
         rightClick,
         shownSwitch},
        {"long-press",
         "SECONDS",
         "the duration of a long press, " + kLongPress.span(),
         {},
         longPress,
         [](const auto& stored) {
             return shownWithin(kLongPress, rightClickIn(stored).objectForKey(keys::rightClickTimeIntelval));
         }},
        {"rotation",
         "0|90|180|270",
         "the rotation of touch input in degrees",
         {"0", "90", "180", "270"},
         rotation,
         shownRotation},
        {"calibration",
         "auto | manual WIDTH HEIGHT",
         "automatic, or for a picture size in pixels, up to " + textOf(kWidth.most) + " by " + textOf(kHeight.most),
         {"auto", "manual"},
         calibration,
         shownCalibration},
        {"finger",
         "touch|pointer",
         "whether one finger acts as a touch or moves the pointer",
         {"touch", "pointer"},
         nullptr,
         shownFinger,
         fingerCommand},
        {"gestures",
         "default|FILE",
         "the gesture list: the default one, or that of a property list",
         {"default"},
         gesturesOfWords,
         nullptr},
    };
    return settings;
}

Words namesOfValues() {
    Words names;
    for (const Key& key : settingKeys()) {
        if (key.shown) names.emplace_back(key.name);
    }
    names.emplace_back(kDriverVersionKey);
    return names;
}

const Key& settingKey(std::string_view name) {
    std::string names;
    for (const Key& key : settingKeys()) {
        if (key.name == name) return key;
        names.append(names.empty() ? "" : ", ").append(key.name);
    }
    throw Failure(Status::Usage, "unknown key \"" + std::string(name) + "\"; the keys are " + names);
}

NSMutableDictionary profileOf(const NSMutableDictionary& settings) {
    auto profile = NSMutableDictionary::dictionary();
    for (const std::string& key : settings.allKeys()) {
        if (isProfileKey(key)) profile.setObjectForKey(settings.objectForKey(key), key);
    }
    (void)messagesOfProfile(profile);
    return profile;
}

std::vector<Message> messagesOfProfile(const NSMutableDictionary& profile) {
    for (const std::string& key : profile.allKeys()) {
        if (isProfileKey(key) || isDriversOwn(key)) continue;
        std::string known;
        for (const ProfilePart& part : kProfileParts) {
            for (const std::string_view each : part.fileKeys) {
                if (!each.empty()) known.append(known.empty() ? "" : ", ").append(each);
            }
        }
        throw Failure(Status::Failure,
                      std::string("unknown setting \"").append(key).append("\"; the settings are ") + known);
    }
    std::vector<Message> messages;
    for (const ProfilePart& part : kProfileParts) {
        if (part.isIn(profile)) messages.push_back(messageOfPart(part, profile));
    }
    if (messages.empty()) throw Failure(Status::Failure, "it contains no settings");
    return messages;
}

std::vector<std::string> faultsIn(const NSMutableDictionary& settings) {
    std::vector<std::string> faults;
    for (const ProfilePart& part : kProfileParts) {
        if (!part.isIn(settings)) continue;
        try {
            (void)part.messageOf(settings);
        } catch (const Fault& fault) {
            faults.emplace_back(fault.what());
        }
    }
    return faults;
}

NSMutableDictionary profileIn(const std::string& path) {
    const platform::NSData contents = contentsOfInput(path, kLargestProfile);
    auto profile = platform::PropertyLists::current().createFromFileData(contents).dictionary();
    if (!profile) {
        throw Failure(Status::Failure, (path == "-" ? "standard input" : path) +
                                           " is not a property list of settings; create one with \"export\"");
    }
    return profile;
}

} // namespace kelvo::touchctl
