#pragma once

#include "touch/ClickSeries.h"
#include "touch/ContactFilter.h"
#include "touch/Fault.h"
#include "touch/FrameWriter.h"
#include "touch/Hand.h"
#include "touch/Player.h"
#include "touch/Rules.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace touch {

/// What the fingers on the glass are to the recogniser. docs/TOUCH.md draws how one state leads to the next.
enum class HandState : std::uint8_t {
    /// No finger.
    Idle,
    /// One finger; another may still join it.
    One,
    /// One finger has the pointer's left button down.
    Dragging,
    /// One finger has the right button down.
    RightPress,
    /// Several fingers, and what they mean is open.
    Many,
    /// Several fingers do a gesture, which fingers on the virtual touchpad follow.
    Playing,
    /// All fingers pass as touches.
    Raw,
    /// What was to be done has been done; the glass has yet to be left.
    Done,
};

/// Tells what fingers mean and gives it out. It has two entries, what is seen and what is due, each with its time; both
/// are exact, so the same fingers at the same times always come to the same.
class Recogniser {
public:
    Recogniser(Outputs& out, ClickSeries& clicks, Player& player, const FaultHandler& onFault);

    /// Only while idle: what is in force counts until the last finger has been lifted.
    void setRules(const Rules* rules) { rules_ = rules; }
    [[nodiscard]] bool isIdle() const { return state_ == HandState::Idle; }

    /// What is due by then must have been run before.
    void see(const Sightings& sightings, Time now);
    [[nodiscard]] std::optional<Time> deadline() const;
    void run(Time now);

    /// A tap of two that waits for its double gets none.
    void settlePendingTap(Time now);
    /// Forgets every finger; whoever owns what is down lifts it.
    void clear();

private:
    struct Participants {
        FixedList<FingerWay, kMostContacts> ways;
        FixedList<std::size_t, kMostContacts> indices;
        [[nodiscard]] std::span<const FingerWay> span() const { return {ways.begin(), ways.end()}; }
    };
    struct TapOfTwo {
        Point place;
        Time landedAt{0};
    };

    // What happens to fingers
    void landed(Finger& finger, Time now);
    void moved(Time now);
    void lifted(Finger& finger, Time now);
    void mistaken(Finger& finger, Time now);
    void leave(std::int64_t number, Time now, void (Recogniser::*happened)(Finger&, Time));
    void leaveIfEmpty();
    void passWhatNobodyWants(Time now);

    // One finger
    void beginHand(Finger& finger, Time now);
    [[nodiscard]] Finger& onlyFinger();
    [[nodiscard]] bool isHeldBack() const;
    [[nodiscard]] static bool hasBeenAlone(const Finger& finger, Time now);
    [[nodiscard]] bool isTouchMode() const { return rules_->fingerMode == FingerMode::Touch; }
    [[nodiscard]] bool canTakeBack() const { return isTouchMode() && rules_->takesTouchesBack; }
    void movedAlone(Time now);
    void liftedAlone(Finger& finger, Time now);
    void runAlone(Time now);
    void decideForOne(Time now);
    void pressRight(Finger& finger, Time now);

    // Several fingers
    void decide(Time now, bool isLifting);
    [[nodiscard]] Participants participants(bool isLifting) const;
    [[nodiscard]] bool onlyRests(const Finger& finger, bool isLifting) const;
    void ignoreAllBut(const Participants& participants, Time now);
    [[nodiscard]] std::optional<FoundShape> refined(FoundShape found, std::span<const FingerWay> ways, Time now,
                                                    bool isLifting) const;
    [[nodiscard]] bool comesFromRightEdge(std::span<const FingerWay> ways) const;
    void start(FoundShape found, const Participants& participants, Time now);
    void liftedOfMany(Time now);
    [[nodiscard]] bool canBeTap(Time now) const;
    [[nodiscard]] bool areAllAtRest() const;
    [[nodiscard]] bool areTapsBesideRest() const;
    [[nodiscard]] bool areKeys() const;
    void giveUpOrPass(Time now);
    void runMany(Time now);

    // Taps of several
    void tap(Time now);
    void tapOfTwo(Time now);
    [[nodiscard]] bool areOfOneHand() const;
    [[nodiscard]] Point middleOfLandings() const;

    // Gestures
    void doAtOnce(Shape shape, Point place, Time now);
    void perform(const Action& action, const FoundShape& found, Gesture gesture, Point place, Time now);
    void follow(Time now);
    void endPlaying(Time now);
    void finishPlaying(Time now);
    void endGestureIfPlayed(Time now);
    void announce(Output::Kind kind, Time now);

    // Giving out
    void passAll(Time now);
    void giveAlone(Finger& finger, Time now);
    void giveMove(Finger& finger, Time now);
    void addMove(Finger& finger);
    void giveRelease(Finger& finger, Time now);
    void takeBackAll(Time now);
    void takeBack(Finger& finger);
    void movePointer(Point hand, Time now);
    void pressButton(Button button, bool isDown, Time now);

    FrameWriter frames_;
    ClickSeries& clicks_;
    Player& player_;
    const FaultHandler& onFault_;
    const Rules* rules_ = nullptr;

    HandState state_ = HandState::Idle;
    Hand hand_;
    Time firstLanding_{0};
    Time lastLanding_{0};
    std::optional<Time> firstLift_;
    /// What was due by then has been looked at.
    Time ranUntil_ = Time::min();
    std::size_t presser_ = 0;

    /// The gesture that is on.
    bool isGestureOn_ = false;
    Gesture gesture_ = Gesture::Scroll;
    FoundShape shape_;
    FixedList<std::size_t, kMostContacts> players_;
    double lastAngle_ = 0.0;

    std::optional<TapOfTwo> lastTapOfTwo_;
    /// The last tap of two means something, unless a second one follows.
    bool isTapPending_ = false;
};

} // namespace touch
