#include "tests/touch/Script.h"
#include "touch/Glass.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

// What holds for any fingers at all. The sequences are made by chance, from a seed that ./test keeps the same;
// RC_PARAMS="max_success=100000" with another seed looks farther.

namespace {

using touch::Frame;
using touch::Output;
using touch::Point;
using touch::Time;
using touching::Stage;

/// One thing that one finger does.
struct Step {
    int pause = 0;
    int finger = 0;
    int act = 0;
    int x = 0;
    int y = 0;
};

void showValue(const Step& step, std::ostream& out) {
    out << "{" << step.pause << ", " << step.finger << ", " << step.act << ", " << step.x << ", " << step.y << "}";
}
[[maybe_unused]] std::ostream& operator<<(std::ostream& out, const Step& step) {
    showValue(step, out);
    return out;
}

/// Places are multiples of this, so that no distance is exactly a threshold and no rounding decides.
constexpr double kGrid = 0.7;
constexpr int kColumns = 214;
constexpr int kRows = 114;

rc::Gen<Step> anyStep() {
    return rc::gen::construct<Step>(rc::gen::element(0, 1, 8, 8, 8, 16, 40, 81, 110, 260, 320, 700),
                                    rc::gen::inRange(0, 6), rc::gen::weightedElement<int>({{3, 0}, {2, 1}, {6, 2}}),
                                    rc::gen::inRange(0, kColumns), rc::gen::inRange(0, kRows));
}

/// The frames of a sequence: fingers land anywhere away from the edges, and move a little or far.
std::vector<Frame> framesOf(const std::vector<Step>& steps) {
    constexpr double kFirst = 25.2;
    std::map<int, std::array<int, 2>> down;
    std::map<int, std::int32_t> ids;
    std::int32_t nextId = 1;
    std::vector<Frame> frames;
    Time now{0};
    const auto add = [&] {
        Frame frame{.time = now, .contacts = {}};
        for (const auto& [finger, place] : down) {
            frame.contacts.add({ids[finger], {kFirst + kGrid * place[0], kFirst + kGrid * place[1]}, false});
        }
        frames.push_back(frame);
    };
    for (const Step& step : steps) {
        now += std::chrono::milliseconds(step.pause);
        const auto found = down.find(step.finger);
        if (step.act == 0 && found == down.end()) {
            down[step.finger] = {step.x, step.y};
            ids[step.finger] = nextId++;
        } else if (step.act == 1 && found != down.end()) {
            down.erase(found);
        } else if (step.act == 2 && found != down.end()) {
            // All fingers that are down go, each by a little more than the one before, which is what hands do.
            for (auto& [finger, place] : down) {
                place[0] = std::clamp(place[0] + step.x % 13 - 6, 0, kColumns);
                place[1] = std::clamp(place[1] + step.y % 13 - 6, 0, kRows);
                if (finger == step.finger) break;
            }
        } else {
            continue;
        }
        add();
    }
    down.clear();
    now += std::chrono::milliseconds(8);
    add();
    return frames;
}

struct Given {
    Time time{0};
    Output output;
};

class Collector final : public touch::Outputs {
public:
    void give(const Output& output, Time now) override { given.push_back({now, output}); }
    std::vector<Given> given;
};

std::vector<Given> outputsOf(const Stage& stage, const std::vector<Frame>& frames) {
    Collector collector;
    touch::TouchDisplay display(stage.glass, collector,
                                [](touch::Fault fault) { RC_FAIL(std::string(nameOf(fault))); });
    display.setSettings(stage.settings);
    display.setDesktop(stage.desktop);
    for (const Frame& frame : frames) display.frame(frame);
    while (display.deadline()) display.timeout(*display.deadline());
    // A last look at an empty glass, at which nothing may be down.
    display.frame({.time = frames.empty() ? Time(0) : frames.back().time + std::chrono::seconds(10), .contacts = {}});
    return collector.given;
}

Stage anyStage() {
    Stage stage;
    const int catalogue = *rc::gen::inRange(0, 3);
    if (catalogue == 1) stage.settings.gestures = touching::lionGestures();
    if (catalogue == 2) stage.settings.gestures = touching::snowLeopardGestures();
    for (auto& record : stage.settings.gestures) {
        record.isEnabled = *rc::gen::weightedElement<bool>({{3, true}, {1, false}});
        record.selectedIndex = *rc::gen::inRange<std::int64_t>(0, static_cast<std::int64_t>(record.descriptor.size()));
    }
    stage.settings.fingerMode = *rc::gen::element(touch::FingerMode::Touch, touch::FingerMode::Pointer);
    stage.desktop.takesTouchesBack = *rc::gen::arbitrary<bool>();
    stage.desktop.scrollsNaturally = *rc::gen::arbitrary<bool>();
    if (*rc::gen::arbitrary<bool>()) stage.settings.longPress = std::chrono::milliseconds(*rc::gen::inRange(200, 1000));
    stage.settings.doubleClickRate = std::chrono::milliseconds(*rc::gen::inRange(50, 1100));
    stage.settings.doubleClickRange = *rc::gen::inRange(0, 140);
    return stage;
}

std::vector<Step> anySteps() { return *rc::gen::container<std::vector<Step>>(anyStep()); }

/// Two lists of outputs, where `alike` compares what may differ.
template <typename Alike>
void requireAlike(const std::vector<Given>& one, const std::vector<Given>& other, Alike alike) {
    RC_ASSERT(one.size() == other.size());
    for (std::size_t i = 0; i < one.size(); ++i) {
        RC_ASSERT(one[i].time == other[i].time);
        RC_ASSERT(one[i].output.kind == other[i].output.kind);
        RC_ASSERT(alike(one[i].output, other[i].output));
    }
}

bool isNear(double a, double b) { return std::abs(a - b) < 1e-6; }
bool areNear(Point a, Point b) { return isNear(a.x, b.x) && isNear(a.y, b.y); }

// The judge and the guard stand in the display itself, and every fault ends the property.
RC_GTEST_PROP(AnyFingers, BreakNoRuleOfTheOutputAndLeaveNothingDown, ()) {
    static_cast<void>(outputsOf(anyStage(), framesOf(anySteps())));
}

RC_GTEST_PROP(AnyFingers, GiveOutNoGestureThatIsOff, ()) {
    const Stage stage = anyStage();
    for (const Given& each : outputsOf(stage, framesOf(anySteps()))) {
        if (each.output.kind != Output::Kind::GestureBegin) continue;
        const auto name = nameOf(each.output.gesture);
        const auto& records = stage.settings.gestures;
        const bool isListed = std::any_of(records.begin(), records.end(),
                                          [&](const touch::GestureRecord& record) { return record.name == name; });
        const bool isOn = std::any_of(records.begin(), records.end(), [&](const touch::GestureRecord& record) {
            return record.name == name && record.isEnabled;
        });
        RC_ASSERT(isOn || (name == "Scroll" && !isListed));
    }
}

std::vector<Frame> seenBy(const touch::Glass& glass, int unitsToAMillimetre, std::vector<Frame> frames) {
    const auto inUnits = [&](double place) {
        return static_cast<std::int32_t>(std::lround(place * unitsToAMillimetre));
    };
    for (Frame& frame : frames) {
        for (touch::Contact& contact : frame.contacts) {
            contact.place = glass.placeOf(inUnits(contact.place.x), inUnits(contact.place.y));
        }
    }
    return frames;
}

RC_GTEST_PROP(AnyFingers, MeanTheSameOnAPanelOfAnotherSizeAndResolution, ()) {
    const Stage stage = anyStage();
    Stage larger = stage;
    larger.glass = {400, 240};
    // Seen by panels of 10 and of 40 units to a millimetre, whose units the places are multiples of.
    const auto frames = framesOf(anySteps());
    const auto coarse = seenBy(touch::Glass({0, 2000, 10}, {0, 1200, 10}), 10, frames);
    const auto fine = seenBy(touch::Glass({0, 16000, 40}, {0, 9600, 40}), 40, frames);
    requireAlike(outputsOf(stage, coarse), outputsOf(larger, fine), [&](const Output& one, const Output& other) {
        const bool isOnScreen =
            roadOf(one.kind) == touch::Road::TouchScreen || roadOf(one.kind) == touch::Road::Pointer;
        const Point first = isOnScreen ? Point{one.at.x * 200, one.at.y * 120} : one.at;
        const Point second = isOnScreen ? Point{other.at.x * 400, other.at.y * 240} : other.at;
        return one.number == other.number && one.gesture == other.gesture && one.direction == other.direction &&
               areNear(first, second);
    });
}

touch::Direction mirrored(touch::Direction direction) {
    if (direction == touch::Direction::Left) return touch::Direction::Right;
    if (direction == touch::Direction::Right) return touch::Direction::Left;
    return direction;
}

bool isMirroredOnScreen(const Output& one, const Output& other) {
    // What only goes up or down has no place.
    const bool hasNone = one.at == Point{} && other.at == Point{};
    return hasNone || (isNear(one.at.x, 1.0 - other.at.x) && isNear(one.at.y, other.at.y));
}

/// The pad's fingers stand as ever; what they do is mirrored.
bool isMirroredOnPad(touch::Shape shape, const Output& one, const Output& other) {
    const auto pad = touch::thresholds::kPad;
    if (one.kind != Output::Kind::PadMove) return areNear(one.at, other.at);
    switch (shape) {
    case touch::Shape::PinchWithTwo:
    case touch::Shape::FourTogether:
    case touch::Shape::FourApart:
        return areNear(one.at, other.at);
    case touch::Shape::RotateWithTwo:
        return isNear(one.at.x, other.at.x) && isNear(one.at.y, pad.height - other.at.y);
    default: {
        const double besideMiddle = one.number - (fingersOf(shape) - 1) / 2.0;
        const double home = pad.width / 2.0 + besideMiddle * touch::thresholds::kPadFingerGap;
        return isNear(one.at.x - home, home - other.at.x) && isNear(one.at.y, other.at.y);
    }
    }
}

RC_GTEST_PROP(AnyFingers, MirroredAreTheMirroredGesture, ()) {
    Stage stage = anyStage();
    // Only the right edge has a gesture.
    std::erase_if(stage.settings.gestures, [](const auto& record) { return record.name == "NotificationCenter"; });
    const auto frames = framesOf(anySteps());
    auto otherWay = frames;
    for (Frame& frame : otherWay) {
        for (touch::Contact& contact : frame.contacts) contact.place.x = 200.0 - contact.place.x;
    }
    touch::Shape shape = touch::Shape::ScrollWithTwo;
    requireAlike(outputsOf(stage, frames), outputsOf(stage, otherWay), [&](const Output& one, const Output& other) {
        switch (roadOf(one.kind)) {
        case touch::Road::TouchScreen:
        case touch::Road::Pointer:
            return one.number == other.number && isMirroredOnScreen(one, other);
        case touch::Road::Listener:
            shape = one.shape;
            return one.gesture == other.gesture && one.shape == other.shape &&
                   one.direction == mirrored(other.direction);
        case touch::Road::Touchpad:
            return one.number == other.number && isMirroredOnPad(shape, one, other);
        case touch::Road::Keyboard: {
            // Pages turn by the arrow keys: 105 to the left, 106 to the right.
            const bool isArrow = one.number == 105 || one.number == 106;
            return isArrow ? one.number + other.number == 105 + 106 : one.number == other.number;
        }
        }
        return false;
    });
}

RC_GTEST_PROP(AnyFingers, MeanTheSameInFramesThatAreSplit, ()) {
    const Stage stage = anyStage();
    const auto frames = framesOf(anySteps());
    std::vector<Frame> split;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        split.push_back(frames[i]);
        if (i + 1 == frames.size()) break;
        const auto pause = frames[i + 1].time - frames[i].time;
        const auto count = *rc::gen::inRange(0, 3);
        for (int part = 1; part <= count; ++part) {
            Frame copy = frames[i];
            copy.time += pause * part / (count + 1);
            split.push_back(copy);
        }
    }
    requireAlike(outputsOf(stage, frames), outputsOf(stage, split),
                 [](const Output& one, const Output& other) { return one == other; });
}

} // namespace
