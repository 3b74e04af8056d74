#pragma once

#include "peers/touchctl/Failure.h"
#include "platform/PropertyList.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::touchctl {

/// One message to the driver, for the current device.
struct Message {
    std::int32_t id = 0;
    platform::NSMutableDictionary payload;
};

/// What a settings file holds of a setting.
struct Shown {
    enum class State { NotSet, Unfit, Fit };

    State state = State::NotSet;
    /// The words that "set" takes for what fits.
    std::string words;

    /// The words, or in parentheses why there are none.
    [[nodiscard]] std::string text() const;
};

/// One setting as the command line has it.
struct Key {
    std::string_view name;
    /// What follows the name, for the help, and what each word may be, for completion.
    std::string_view synopsis;
    std::string meaning;
    std::vector<std::string_view> choices;
    /// The message for these words. `stored` is the device's settings file, for what the words leave as it is. Words
    /// that are out of bounds are a Failure that names the bounds.
    std::function<Message(const Words& words, const platform::NSMutableDictionary& stored)> messageOf;
    /// The setting as it is stored, read as the pane reads it; null for one that is no single value.
    std::function<Shown(const platform::NSMutableDictionary& stored)> shown;
    /// For what no message says, in place of one: the driver's command for the words of "set", which begin with the
    /// display and the key. Words that do not fit are a Failure.
    std::function<Words(const Words& words)> driverCommand = {};
};

/// What else of a display is shown, and cannot be set.
constexpr std::string_view kDriverVersionKey = "driver-version";

/// Every setting, in the order in which they are shown.
[[nodiscard]] const std::vector<Key>& settingKeys();
/// The names of what has one value, to be printed alone.
[[nodiscard]] Words namesOfValues();
/// The setting of that name; a Failure names those there are.
[[nodiscard]] const Key& settingKey(std::string_view name);

/// A device's settings as they lie in a file of their own: those keys of the settings file that the pane can send.
/// Everything in `settings` that does not fit is a Failure.
[[nodiscard]] platform::NSMutableDictionary profileOf(const platform::NSMutableDictionary& settings);
/// The messages that bring a device to a profile, in the order in which they are sent. A key that there is not, a value
/// of the wrong kind or out of bounds, and a profile of nothing are a Failure that says what would be right. What
/// the driver alone writes, which a copied settings file has too, is left out.
[[nodiscard]] std::vector<Message> messagesOfProfile(const platform::NSMutableDictionary& profile);
/// What is wrong with the values of a settings file, each named by its key; empty when all is well.
[[nodiscard]] std::vector<std::string> faultsIn(const platform::NSMutableDictionary& settings);

/// What a property-list file of at most 16 MiB holds; "-" is standard input. A file that cannot be read or is no
/// dictionary is a Failure.
[[nodiscard]] platform::NSMutableDictionary profileIn(const std::string& path);

} // namespace kelvo::touchctl
