#include "fuzz/PlistMutator.h"

#include "TDNames.h"
#include "linux/PlistCoder.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace fuzzing {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;

namespace {

constexpr std::array kKeys = {keys::autoCalibration,
                              keys::currentDeviceType,
                              keys::descriptor,
                              keys::doubleClickRange,
                              keys::doubleClickRate,
                              keys::driverEnable,
                              keys::driverVersion,
                              keys::fingerMode,
                              keys::gestureArray,
                              keys::isConnected,
                              keys::isEnable,
                              keys::isShowStatuMenu,
                              keys::manualCalibration,
                              keys::moreGesture,
                              keys::name,
                              keys::OSDHeight,
                              keys::OSDWidth,
                              keys::rightClick,
                              keys::rightClickIsEnable,
                              keys::rightClickTimeIntelval,
                              keys::rotateMode,
                              keys::selectDeviceName,
                              keys::selectedMenuItem,
                              keys::selectedIndex,
                              keys::verboseLog,
                              systemKeys::appExpose,
                              systemKeys::launchpad,
                              systemKeys::missionControl,
                              systemKeys::showDesktop,
                              systemKeys::swipeNavigateWithScrolls};

/// The names that rules hang on, two displays, and texts of every other kind.
constexpr std::array<std::string_view, 22> kTexts = {gestures::appExpose,
                                                     gestures::fullScreenApps,
                                                     gestures::launchpad,
                                                     gestures::missionControl,
                                                     gestures::showDesktop,
                                                     gestures::swipeBetweenPages,
                                                     gestures::swipeLeftOrRightWithThreeFingers,
                                                     gestures::swipeWithThreeFingers,
                                                     gestures::swipeWithTwoOrThreeFingers,
                                                     "SwipeDownWithThreeFingers",
                                                     "SwipeUpWithFourFingers",
                                                     "SmartZoom",
                                                     "A",
                                                     "B",
                                                     "",
                                                     "YES",
                                                     "-12.5",
                                                     "../../x",
                                                     "%@%n",
                                                     "0.8.0.3",
                                                     "\u5b57",
                                                     "a rather long text, longer than any that is stored in place"};

constexpr std::array<std::int64_t, 12> kIntegers = {0,
                                                    1,
                                                    2,
                                                    3,
                                                    -1,
                                                    32,
                                                    4097,
                                                    256,
                                                    std::int64_t{1} << 31U,
                                                    -(std::int64_t{1} << 31U) - 1,
                                                    std::numeric_limits<std::int64_t>::max(),
                                                    std::numeric_limits<std::int64_t>::min()};

constexpr std::array kReals = {0.0,
                               -0.0,
                               0.5,
                               1.5,
                               1920.0,
                               -2.5,
                               1e19,
                               1e300,
                               std::numeric_limits<double>::denorm_min(),
                               std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()};

/// How deep a value that is made anew can be.
constexpr std::size_t kDepth = 3;

std::size_t nodesOf(const Value& value) {
    std::size_t count = 1;
    const auto array = value.array();
    for (const Value& each : array.objects()) count += nodesOf(each);
    const auto dictionary = value.dictionary();
    for (const auto& [key, each] : dictionary.entries()) count += nodesOf(each);
    return count;
}

/// Goes through a tree to the place that is to change and makes the tree anew with that change.
class Mutation {
public:
    explicit Mutation(unsigned seed) : random_(seed) {}

    [[nodiscard]] std::size_t below(std::size_t count) { return random_() % count; }

    [[nodiscard]] Value changed(const Value& root) {
        place_ = below(nodesOf(root));
        return copied(root);
    }

private:
    template <typename Choices>
    const auto& oneOf(const Choices& choices) {
        return choices[below(std::size(choices))];
    }

    Value copied(const Value& value) {
        if (place_-- == 0) return changedHere(value);
        if (const auto array = value.array()) {
            NSMutableArray copy = NSMutableArray::arrayWithObjects();
            for (const Value& each : array.objects()) copy.addObject(copied(each));
            return copy;
        }
        if (const auto dictionary = value.dictionary()) {
            NSMutableDictionary copy = NSMutableDictionary::dictionary();
            for (const auto& [key, each] : dictionary.entries()) copy.setObjectForKey(copied(each), key);
            return copy;
        }
        return value;
    }

    Value changedHere(const Value& value) {
        if (below(4) != 0) {
            if (value.array()) return changedArray(value.array());
            if (value.dictionary()) return changedDictionary(value.dictionary());
        }
        return anyValue(kDepth);
    }

    NSMutableArray changedArray(const NSMutableArray& array) {
        std::vector<Value> values(array.objects().begin(), array.objects().end());
        const auto place = static_cast<std::ptrdiff_t>(values.empty() ? 0 : below(values.size()));
        switch (values.empty() ? 0 : below(4)) {
        case 0:
            values.insert(values.begin() + place, anyValue(kDepth));
            break;
        case 1:
            values.erase(values.begin() + place);
            break;
        case 2:
            values.push_back(values[static_cast<std::size_t>(place)]);
            break;
        default:
            std::swap(values.front(), values[static_cast<std::size_t>(place)]);
            break;
        }
        NSMutableArray copy = NSMutableArray::arrayWithObjects();
        for (Value& value : values) copy.addObject(std::move(value));
        return copy;
    }

    NSMutableDictionary changedDictionary(const NSMutableDictionary& dictionary) {
        const std::size_t entries = dictionary.count();
        const std::size_t place = entries == 0 ? 0 : below(entries);
        const std::size_t act = entries == 0 ? 0 : below(4);
        NSMutableDictionary copy = NSMutableDictionary::dictionary();
        for (std::size_t i = 0; i < entries; ++i) {
            const auto& [key, value] = dictionary.entries()[i];
            const bool isDropped = act == 1 && i == place;
            const bool isRenamed = act == 2 && i == place;
            if (!isDropped) copy.setObjectForKey(value, isRenamed ? oneOf(kKeys) : std::string_view(key));
        }
        if (act == 0 || act == 3) copy.setObjectForKey(anyValue(kDepth), oneOf(kKeys));
        return copy;
    }

    Value anyValue(std::size_t depth) {
        switch (below(depth == 0 ? 6 : 9)) {
        case 0:
        case 1:
            return below(2) == 0;
        case 2:
            return oneOf(kIntegers);
        case 3:
            return oneOf(kReals);
        case 4:
            return oneOf(kTexts);
        case 5:
            return below(2) == 0 ? Value(platform::NSData{0, 255}) : Value(platform::NSDate{oneOf(kReals)});
        case 6:
            return anyArray(depth - 1);
        case 7:
            return anyDictionary(depth - 1);
        default:
            return anyRecord();
        }
    }

    NSMutableArray anyArray(std::size_t depth) {
        NSMutableArray array = NSMutableArray::arrayWithObjects();
        for (std::size_t i = below(4); i > 0; --i) array.addObject(anyValue(depth));
        return array;
    }

    NSMutableDictionary anyDictionary(std::size_t depth) {
        NSMutableDictionary dictionary = NSMutableDictionary::dictionary();
        for (std::size_t i = below(4); i > 0; --i) dictionary.setObjectForKey(anyValue(depth), oneOf(kKeys));
        return dictionary;
    }

    /// What a gesture's record may be.
    NSMutableDictionary anyRecord() {
        NSMutableArray actions = NSMutableArray::arrayWithObjects();
        for (std::size_t i = below(4); i > 0; --i) actions.addObject(oneOf(kTexts));
        return NSMutableDictionary::dictionaryWithObjectsAndKeys({{oneOf(kTexts), keys::name},
                                                                  {actions, keys::descriptor},
                                                                  {below(2) == 0, keys::isEnable},
                                                                  {oneOf(kIntegers), keys::selectedIndex},
                                                                  {actions.count() > 1, keys::moreGesture}});
    }

    std::minstd_rand random_;
    std::size_t place_ = 0;
};

} // namespace

std::size_t mutatePlist(std::uint8_t* data, std::size_t size, std::size_t maxSize, std::size_t headSize,
                        unsigned seed) {
    Mutation mutation(seed);
    // What stands in front is changed with what is read alone, and now and then any bytes are.
    if (size <= headSize || mutation.below(5) == 0) return LLVMFuzzerMutate(data, size, maxSize);
    if (headSize > 0 && mutation.below(4) == 0) {
        (void)LLVMFuzzerMutate(data, headSize, headSize);
        return size;
    }
    kelvo::PlistCoder coder;
    const std::span<const std::uint8_t> tail(data + headSize, size - headSize);
    const Value root = coder.createFromFileData(tail);
    const auto changed = root ? coder.createXMLData(mutation.changed(root)) : std::nullopt;
    if (!changed || changed->size() > maxSize - headSize) return LLVMFuzzerMutate(data, size, maxSize);
    std::copy(changed->begin(), changed->end(), data + headSize);
    return headSize + changed->size();
}

} // namespace fuzzing
