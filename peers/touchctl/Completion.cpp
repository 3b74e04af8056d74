#include "peers/touchctl/Completion.h"

#include "TDNames.h"
#include "peers/touchctl/Actions.h"
#include "peers/touchctl/CommandLine.h"
#include "peers/touchctl/Displays.h"
#include "peers/touchctl/GestureRows.h"
#include "peers/touchctl/Settings.h"

#include <algorithm>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;

/// Shells put this before the words when an option is being typed.
constexpr std::string_view kAsksForOptions = "--options";

Words commandNames() {
    Words names;
    for (const Command& command : commands()) {
        if (!command.summary.empty()) names.emplace_back(command.name);
    }
    return names;
}

Words displayNames(bool connectedOnly) {
    Words names;
    for (const Display& display : knownDisplays()) {
        if (display.isConnected || !connectedOnly) names.push_back(display.name);
    }
    return names;
}

Words keyNames() {
    Words names;
    for (const Key& key : settingKeys()) names.emplace_back(key.name);
    return names;
}

Words gestureNames(const NSMutableArray& list) {
    Words names;
    for (std::size_t i = 0; i < list.count(); ++i) {
        names.push_back(list.objectAtIndex(i).dictionary().objectForKey(keys::name).string().value_or(""));
    }
    return names;
}

Words gestureActions(const NSMutableArray& list, const std::string& name) {
    Words deeds;
    for (std::size_t i = 0; i < list.count(); ++i) {
        const NSMutableDictionary record = list.objectAtIndex(i).dictionary();
        if (!record.objectForKey(keys::name).isEqual(name)) continue;
        const NSMutableArray actions = record.objectForKey(keys::descriptor).array();
        for (std::size_t k = 0; k < actions.count(); ++k)
            deeds.push_back(actions.objectAtIndex(k).string().value_or(""));
    }
    return deeds;
}

Words afterSet(const Words& words) {
    if (words.size() == 2) return keyNames();
    if (words.size() > 3) return {};
    const std::vector<std::string_view>& choices = settingKey(words[2]).choices;
    return {choices.begin(), choices.end()};
}

Words afterGesture(const Words& words) {
    const NSMutableArray list = gestureListOf(settingsOf(words[1]));
    if (words.size() == 2) return gestureNames(list);
    Words deeds = gestureActions(list, words[2]);
    if (words.size() == 3) deeds.insert(deeds.begin(), {"on", "off"});
    return words.size() == 3 || (words.size() == 4 && (words[3] == "on" || words[3] == "off")) ? deeds : Words();
}

Words optionsOf(const Words& words) {
    const Command* command = words.empty() ? nullptr : commandNamed(words[0]);
    Words options{std::string(kHelpOption)};
    if (!command) options.emplace_back("--version");
    if (command) options.insert(options.begin(), command->options.begin(), command->options.end());
    return options;
}

Words wordsAfter(const Words& words) {
    const std::string& command = words[0];
    const bool needsConnection = command == "set" || command == "gesture" || command == "import" || command == "record";
    if (command == "driver") return words.size() == 1 ? Words{"on", "off"} : Words();
    if (command == "actions") return completionsOfActions(Words(words.begin() + 1, words.end()));
    if (words.size() == 1) {
        const bool takesDisplay = needsConnection || command == "show" || command == "get" || command == "export";
        return takesDisplay ? displayNames(needsConnection) : Words();
    }
    if (command == "set") return afterSet(words);
    if (command == "get") return words.size() == 2 ? namesOfValues() : Words();
    return command == "gesture" ? afterGesture(words) : Words();
}

/// The words of a command line without the options. The first one is the command.
Words withoutOptions(const Words& words) {
    const Words options = optionsOf(words);
    Words plain;
    bool takesOptions = true;
    for (const std::string& word : words) {
        if (takesOptions && word == "--") {
            takesOptions = false;
        } else if (!takesOptions || std::ranges::find(options, word) == options.end()) {
            plain.push_back(word);
        }
    }
    return plain;
}

Words known(const Words& words) {
    const Words plain = withoutOptions(words);
    if (plain.empty()) return commandNames();
    const Command* command = commandNamed(plain[0]);
    if (!command || command->summary.empty()) return {};
    // If no word can follow, only options can.
    return plain.size() > command->most ? optionsOf(plain) : wordsAfter(plain);
}

} // namespace

Words completionsAfter(const Words& words) {
    try {
        const bool asksForOptions = !words.empty() && words[0] == kAsksForOptions;
        return asksForOptions ? optionsOf(Words(words.begin() + 1, words.end())) : known(words);
    } catch (const Failure&) {
        // Offers nothing if the command itself would report an error.
        return {};
    }
}

} // namespace kelvo::touchctl
