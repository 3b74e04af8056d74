#include "peers/touchctl/Completion.h"

#include "TDNames.h"
#include "peers/touchctl/CommandLine.h"
#include "peers/touchctl/Displays.h"
#include "peers/touchctl/GestureRows.h"
#include "peers/touchctl/Settings.h"

#include <algorithm>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;

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

Words gestureDeeds(const NSMutableArray& list, const std::string& name) {
    Words deeds{"on", "off"};
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
    return words.size() == 3 ? gestureDeeds(list, words[2]) : Words();
}

Words known(const Words& words) {
    if (words.empty()) return commandNames();
    const std::string& command = words[0];
    const bool changes = command == "set" || command == "gesture" || command == "import";
    if (words.size() == 1) {
        return changes || command == "show" || command == "export" ? displayNames(changes) : Words();
    }
    if (command == "set") return afterSet(words);
    return command == "gesture" ? afterGesture(words) : Words();
}

} // namespace

Words completionsAfter(const Words& words) {
    try {
        return known(words);
    } catch (const Failure&) {
        // Nothing is offered where the command itself would say what is wrong.
        return {};
    }
}

} // namespace kelvo::touchctl
