#include "touch/Recogniser.h"

#include "touch/Thresholds.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace touch {

Recogniser::Recogniser(Outputs& out, ClickSeries& clicks, Player& player, const FaultHandler& onFault)
    : frames_(out), clicks_(clicks), player_(player), onFault_(onFault) {}

void Recogniser::clear() {
    state_ = HandState::Idle;
    hand_.clear();
    firstLift_.reset();
    isGestureOn_ = false;
    players_.clear();
    lastTapOfTwo_.reset();
    isTapPending_ = false;
    ranUntil_ = Time::min();
}

void Recogniser::see(const Sightings& sightings, Time now) {
    ranUntil_ = std::max(ranUntil_, now);
    bool hasMoved = false;
    for (const Sighting& sighting : sightings.fingers) {
        Finger* const finger = sighting.isNew ? nullptr : hand_.find(sighting.finger);
        if (!finger) continue;
        if (Hand::move(*finger, rules_->mapping.handOf(sighting.place)) && finger->counts()) hasMoved = true;
    }
    if (hasMoved) moved(now);
    for (const std::int64_t number : sightings.lifted) leave(number, now, &Recogniser::lifted);
    for (const std::int64_t number : sightings.mistaken) leave(number, now, &Recogniser::mistaken);
    frames_.end(now);
    bool hasLanded = false;
    for (const Sighting& sighting : sightings.fingers) {
        if (!sighting.isNew) continue;
        Finger* const finger = hand_.land(sighting.finger, rules_->mapping.handOf(sighting.place), now);
        if (!finger) continue;
        landed(*finger, now);
        hasLanded = true;
    }
    if (hasLanded) passWhatNobodyWants(now);
}

void Recogniser::leave(std::int64_t number, Time now, void (Recogniser::*happened)(Finger&, Time)) {
    Finger* const finger = hand_.find(number);
    if (!finger) return;
    finger->liftedAt = now;
    (this->*happened)(*finger, now);
    leaveIfEmpty();
}

/// Runs after everything that landed in a frame, so that it is output in one frame.
void Recogniser::passWhatNobodyWants(Time now) {
    const bool isUnwanted =
        state_ == HandState::Many && !rules_->gestures.wantsAtLeast(static_cast<std::int32_t>(hand_.countingDown()));
    if (isUnwanted || state_ == HandState::Raw) passAll(now);
}

void Recogniser::landed(Finger& finger, Time now) {
    if (!rules_->mapping.isOnPicture(finger.place)) {
        finger.isIgnored = true;
        return;
    }
    switch (state_) {
    case HandState::Idle:
        beginHand(finger, now);
        return;
    case HandState::One:
    case HandState::Many:
        state_ = HandState::Many;
        lastLanding_ = now;
        return;
    case HandState::Raw:
    case HandState::Dragging:
    case HandState::RightPress:
    case HandState::Playing:
    case HandState::Done:
        // The meaning of the hand is fixed until all its fingers are lifted.
        return;
    }
}

void Recogniser::moved(Time now) {
    switch (state_) {
    case HandState::One:
        movedAlone(now);
        return;
    case HandState::Dragging:
        giveMove(hand_.fingers()[presser_], now);
        return;
    case HandState::RightPress: {
        Finger& finger = hand_.fingers()[presser_];
        if (!finger.isAtRest()) giveMove(finger, now);
        return;
    }
    case HandState::Many:
        decide(now, false);
        return;
    case HandState::Playing:
        follow(now);
        return;
    case HandState::Raw:
        for (Finger& finger : hand_.fingers()) {
            if (finger.isDown() && finger.isGiven) addMove(finger);
        }
        frames_.end(now);
        return;
    case HandState::Idle:
        onFault_(Fault::PressedWithoutFinger);
        return;
    case HandState::Done:
        return;
    }
}

void Recogniser::lifted(Finger& finger, Time now) {
    if (finger.isIgnored) return;
    switch (state_) {
    case HandState::One:
        liftedAlone(finger, now);
        return;
    case HandState::Dragging:
        if (!finger.isGiven) return;
        giveRelease(finger, now);
        clicks_.ended(finger.isAtRest());
        state_ = HandState::Done;
        return;
    case HandState::RightPress:
        if (static_cast<std::size_t>(hand_.indexOf(finger)) != presser_) return;
        pressButton(Button::Right, false, now);
        state_ = HandState::Done;
        return;
    case HandState::Many:
        liftedOfMany(now);
        return;
    case HandState::Playing:
        if (std::find(players_.begin(), players_.end(), static_cast<std::size_t>(hand_.indexOf(finger))) !=
            players_.end()) {
            endPlaying(now);
        }
        return;
    case HandState::Raw:
        giveRelease(finger, now);
        if (hand_.counting() == 1) clicks_.ended(finger.isAtRest());
        return;
    case HandState::Idle:
        onFault_(Fault::PressedWithoutFinger);
        return;
    case HandState::Done:
        return;
    }
}

/// A contact that was not a finger has no effect.
void Recogniser::mistaken(Finger& finger, Time now) {
    if (finger.isIgnored || state_ == HandState::Done) return;
    if (state_ == HandState::One || state_ == HandState::Many) {
        takeBackAll(now);
        state_ = HandState::Done;
        return;
    }
    if (state_ == HandState::Raw && canTakeBack()) takeBack(finger);
    lifted(finger, now);
    clicks_.ended(false);
}

void Recogniser::leaveIfEmpty() {
    // In this state, lifted fingers still count for what the hand did.
    if (state_ == HandState::Many && hand_.countingDown() > 0) return;
    if (hand_.countingDown() == 0) {
        state_ = HandState::Idle;
        firstLift_.reset();
    }
    hand_.forgetLifted();
}

// One finger

void Recogniser::beginHand(Finger& finger, Time now) {
    state_ = HandState::One;
    firstLanding_ = lastLanding_ = now;
    firstLift_.reset();
    if (!isHeldBack()) giveAlone(finger, now);
}

/// A finger that cannot be cancelled is output only when it is certain, and so is one that may follow a pending tap of
/// two fingers.
bool Recogniser::isHeldBack() const { return !canTakeBack() || isTapPending_; }

bool Recogniser::hasBeenAlone(const Finger& finger, Time now) { return now > finger.landedAt + thresholds::kAlone; }

Finger& Recogniser::onlyFinger() {
    auto& fingers = hand_.fingers();
    auto* const found = std::find_if(fingers.begin(), fingers.end(),
                                     [](const Finger& finger) { return finger.isDown() && finger.counts(); });
    if (found != fingers.end()) return *found;
    onFault_(Fault::PressedWithoutFinger);
    return fingers.front();
}

void Recogniser::movedAlone(Time now) {
    Finger& finger = onlyFinger();
    if (!finger.isGiven) {
        if (finger.isAtRest()) return;
        giveAlone(finger, now);
        decideForOne(now);
    }
    giveMove(finger, now);
    if (!finger.isAtRest() && hasBeenAlone(finger, now)) decideForOne(now);
}

/// A finger that has been output keeps its meaning: no other finger joins it for a gesture.
void Recogniser::decideForOne(Time now) {
    if (isTouchMode()) {
        if (!canTakeBack() || hasBeenAlone(onlyFinger(), now)) state_ = HandState::Raw;
        return;
    }
    presser_ = static_cast<std::size_t>(hand_.indexOf(onlyFinger()));
    state_ = HandState::Dragging;
}

void Recogniser::liftedAlone(Finger& finger, Time now) {
    if (!finger.isGiven) giveAlone(finger, now);
    giveRelease(finger, now);
    frames_.end(now);
    clicks_.ended(finger.isAtRest());
    lastTapOfTwo_.reset();
    state_ = HandState::Done;
}

void Recogniser::runAlone(Time now) {
    Finger& finger = onlyFinger();
    if (finger.isAtRest() && rules_->longPress && now >= finger.landedAt + *rules_->longPress) {
        pressRight(finger, now);
        return;
    }
    if (!hasBeenAlone(finger, now)) return;
    if (!finger.isGiven && (canTakeBack() || !rules_->longPress)) {
        giveAlone(finger, now);
        if (!canTakeBack()) decideForOne(now);
        giveMove(finger, now);
    }
    if (finger.isGiven && !finger.isAtRest()) decideForOne(now);
}

void Recogniser::pressRight(Finger& finger, Time now) {
    settlePendingTap(now);
    finishPlaying(now);
    takeBackAll(now);
    clicks_.interrupt();
    finger.pressPlace.reset();
    finger.givenPlace = finger.place;
    movePointer(finger.place, now);
    pressButton(Button::Right, true, now);
    presser_ = static_cast<std::size_t>(hand_.indexOf(finger));
    state_ = HandState::RightPress;
}

// Several fingers

/// `isLifting`: the first of them has just been lifted, so this is the last chance to decide.
void Recogniser::decide(Time now, bool isLifting) {
    const Participants taking = participants(isLifting);
    if (taking.ways.empty()) return;
    if (taking.ways.size() == 1) {
        ignoreAllBut(taking, now);
        passAll(now);
        return;
    }
    if (!isLifting && now < lastLanding_ + thresholds::kSettled) return;
    if (!rules_->gestures.wantsFingers(static_cast<std::int32_t>(taking.ways.size()))) {
        passAll(now);
        return;
    }
    const auto found = findShape(taking.span());
    if (!found) return;
    const auto shape = refined(*found, taking.span(), now, isLifting);
    if (!shape) return;
    if (rules_->gestures.wants(shape->shape)) {
        start(*shape, taking, now);
    } else {
        passAll(now);
    }
}

/// Excludes fingers that only rest at an edge while others move.
Recogniser::Participants Recogniser::participants(bool isLifting) const {
    const auto& fingers = hand_.fingers();
    Participants found;
    for (std::size_t i = 0; i < fingers.size(); ++i) {
        if (!fingers[i].counts() || onlyRests(fingers[i], isLifting)) continue;
        found.ways.add(fingers[i].way());
        found.indices.add(i);
    }
    return found;
}

/// It stays at an edge while another moves. If both may belong to one hand, it may only be late, unless this is the
/// last chance to decide.
bool Recogniser::onlyRests(const Finger& finger, bool isLifting) const {
    const Size size = rules_->mapping.handSize();
    const double fromEdge =
        std::min({finger.landing.x, finger.landing.y, size.width - finger.landing.x, size.height - finger.landing.y});
    if (!finger.isAtRest() || !reaches(thresholds::kRestingEdge, fromEdge)) return false;
    const auto& fingers = hand_.fingers();
    return std::any_of(fingers.begin(), fingers.end(), [&](const Finger& other) {
        const bool mayStartLate =
            !isLifting && std::chrono::abs(other.landedAt - finger.landedAt) <= thresholds::kOneHand;
        return other.counts() &&
               !reaches(mayStartLate ? thresholds::kPivotTravel : thresholds::kTapTravel, other.travel);
    });
}

void Recogniser::ignoreAllBut(const Participants& participants, Time now) {
    const auto& taking = participants.indices;
    for (Finger& finger : hand_.fingers()) {
        const auto index = static_cast<std::size_t>(hand_.indexOf(finger));
        if (!finger.counts() || std::find(taking.begin(), taking.end(), index) != taking.end()) continue;
        // A touch that cannot be cancelled goes up when its finger lifts.
        if (finger.isGiven && !canTakeBack()) continue;
        takeBack(finger);
        finger.isIgnored = true;
    }
    frames_.end(now);
}

/// Two fingers that move together may be more than a scroll. None while that is undecided.
std::optional<FoundShape> Recogniser::refined(FoundShape found, std::span<const FingerWay> ways, Time now,
                                              bool isLifting) const {
    const bool isSideways = found.direction == Direction::Left || found.direction == Direction::Right;
    if (found.shape != Shape::ScrollWithTwo || !isSideways) return found;
    const double length = std::abs(motionOf(ways).way.x);
    if (found.direction == Direction::Left && rules_->gestures.wants(Shape::LeftFromRightEdgeWithTwo) &&
        comesFromRightEdge(ways)) {
        if (reaches(length, thresholds::kSwipeTravel))
            return FoundShape{Shape::LeftFromRightEdgeWithTwo, found.direction};
        if (!isLifting) return std::nullopt;
    }
    if (!rules_->gestures.wants(Shape::FlickSidewaysWithTwo) || now > firstLanding_ + thresholds::kLongestFlick) {
        return found;
    }
    if (!isLifting) return now < firstLanding_ + thresholds::kLongestFlick ? std::nullopt : std::optional(found);
    if (reaches(length, thresholds::kFlickTravel)) return FoundShape{Shape::FlickSidewaysWithTwo, found.direction};
    return found;
}

bool Recogniser::comesFromRightEdge(std::span<const FingerWay> ways) const {
    const double edge = rules_->mapping.handSize().width;
    const auto [left, right] = std::minmax_element(
        ways.begin(), ways.end(), [](const FingerWay& a, const FingerWay& b) { return a.from.x < b.from.x; });
    return reaches(thresholds::kRightEdge, edge - right->from.x) &&
           reaches(thresholds::kRightEdge + thresholds::kRightEdgeSpread, edge - left->from.x);
}

void Recogniser::start(FoundShape found, const Participants& participants, Time now) {
    settlePendingTap(now);
    finishPlaying(now);
    takeBackAll(now);
    clicks_.interrupt();
    ignoreAllBut(participants, now);
    shape_ = found;
    gesture_ = *rules_->gestures.gestureOf(found.shape);
    players_ = participants.indices;
    lastAngle_ = 0.0;
    const Action& action = rules_->actions.actionFor(gesture_, found.direction);
    const Point place = middleOfOrigins(participants.span());
    announce(Output::Kind::GestureBegin, now);
    if (action.kind != Action::Kind::Fingers) {
        perform(action, found, gesture_, place, now);
        announce(Output::Kind::GestureEnd, now);
        state_ = HandState::Done;
        return;
    }
    movePointer(place, now);
    player_.begin(found.shape, action.fingers > 0 ? action.fingers : fingersOf(found.shape), now);
    state_ = HandState::Playing;
    follow(now);
}

void Recogniser::liftedOfMany(Time now) {
    if (!firstLift_) {
        firstLift_ = now;
        decide(now, true);
        if (state_ == HandState::Playing) endPlaying(now);
        if (state_ != HandState::Many) return;
    }
    if (!canBeTap(now)) {
        giveUpOrPass(now);
    } else if (hand_.countingDown() == 0) {
        tap(now);
    }
}

bool Recogniser::canBeTap(Time now) const {
    const auto& fingers = hand_.fingers();
    return std::all_of(fingers.begin(), fingers.end(), [&](const Finger& finger) {
        if (!finger.counts()) return true;
        const Time end = finger.liftedAt.value_or(now);
        return finger.isAtRest() && finger.landedAt - firstLanding_ <= thresholds::kOneHand &&
               end - finger.landedAt <= thresholds::kLongestTap &&
               (!firstLift_ || end - *firstLift_ <= thresholds::kOneHand);
    });
}

bool Recogniser::areAllAtRest() const {
    const auto& fingers = hand_.fingers();
    return std::all_of(fingers.begin(), fingers.end(),
                       [](const Finger& each) { return !each.counts() || each.isAtRest(); });
}

/// The lifted fingers have tapped, while the others only rest.
bool Recogniser::areTapsBesideRest() const {
    const auto& fingers = hand_.fingers();
    const bool areLiftedTaps = std::all_of(fingers.begin(), fingers.end(), [](const Finger& each) {
        return !each.counts() || !each.liftedAt || *each.liftedAt - each.landedAt <= thresholds::kLongestTap;
    });
    return areAllAtRest() && areLiftedTaps;
}

/// Fingers that arrived one by one and stay where they are press on-screen keys or play a game.
bool Recogniser::areKeys() const { return areAllAtRest() && lastLanding_ - firstLanding_ > thresholds::kOneHand; }

void Recogniser::giveUpOrPass(Time now) {
    if (areTapsBesideRest() || areKeys()) {
        passAll(now);
        return;
    }
    settlePendingTap(now);
    takeBackAll(now);
    clicks_.interrupt();
    state_ = HandState::Done;
}

void Recogniser::runMany(Time now) {
    decide(now, false);
    if (state_ != HandState::Many) return;
    if (isTapPending_ && now >= firstLanding_ + thresholds::kLongestTap) settlePendingTap(now);
    if (firstLift_ && !canBeTap(now)) {
        giveUpOrPass(now);
        leaveIfEmpty();
        return;
    }
    if (areKeys() && now >= lastLanding_ + thresholds::kLongestTap) passAll(now);
}

// Taps of several

void Recogniser::tap(Time now) {
    if (!areOfOneHand()) {
        passAll(now);
        return;
    }
    switch (hand_.counting()) {
    case 2:
        tapOfTwo(now);
        return;
    case 3:
        if (rules_->gestures.wants(Shape::TapWithThree)) {
            doAtOnce(Shape::TapWithThree, middleOfLandings(), now);
            return;
        }
        break;
    default:
        break;
    }
    passAll(now);
}

void Recogniser::tapOfTwo(Time now) {
    const TapOfTwo current{middleOfLandings(), firstLanding_};
    const bool isSecond = lastTapOfTwo_ && current.landedAt - lastTapOfTwo_->landedAt <= rules_->doubleClickRate &&
                          reaches(thresholds::kDoubleTapOfTwoTravel, distance(current.place, lastTapOfTwo_->place));
    if (isSecond && rules_->gestures.wants(Shape::DoubleTapWithTwo)) {
        isTapPending_ = false;
        lastTapOfTwo_.reset();
        doAtOnce(Shape::DoubleTapWithTwo, current.place, now);
        return;
    }
    settlePendingTap(now);
    if (!rules_->gestures.wants(Shape::TapWithTwo)) {
        passAll(now);
    } else if (rules_->gestures.wants(Shape::DoubleTapWithTwo)) {
        takeBackAll(now);
        clicks_.interrupt();
        isTapPending_ = true;
    } else {
        doAtOnce(Shape::TapWithTwo, current.place, now);
    }
    lastTapOfTwo_ = current;
}

/// No second tap of two followed, so the first has its own meaning, and no later tap counts as its second.
void Recogniser::settlePendingTap(Time now) {
    if (!std::exchange(isTapPending_, false)) return;
    const TapOfTwo first = *std::exchange(lastTapOfTwo_, std::nullopt);
    doAtOnce(Shape::TapWithTwo, first.place, now);
}

bool Recogniser::areOfOneHand() const {
    const auto& fingers = hand_.fingers();
    return std::none_of(fingers.begin(), fingers.end(), [&](const Finger& one) {
        return one.counts() && std::any_of(fingers.begin(), fingers.end(), [&](const Finger& other) {
                   return other.counts() && !reaches(thresholds::kTapSpan, distance(one.landing, other.landing));
               });
    });
}

Point Recogniser::middleOfLandings() const {
    Point sum;
    for (const Finger& finger : hand_.fingers()) {
        if (finger.counts()) sum = sum + finger.landing;
    }
    return sum * (1.0 / static_cast<double>(std::max<std::size_t>(hand_.counting(), 1)));
}

// Gestures

/// A gesture that is complete as soon as it is recognised.
void Recogniser::doAtOnce(Shape shape, Point place, Time now) {
    settlePendingTap(now);
    finishPlaying(now);
    takeBackAll(now);
    clicks_.interrupt();
    shape_ = {shape};
    const auto gesture = rules_->gestures.gestureOf(shape);
    if (!gesture) return;
    gesture_ = *gesture;
    announce(Output::Kind::GestureBegin, now);
    perform(rules_->actions.actionFor(gesture_, Direction::None), shape_, gesture_, place, now);
    announce(Output::Kind::GestureEnd, now);
}

void Recogniser::perform(const Action& action, const FoundShape& found, Gesture gesture, Point place, Time now) {
    switch (action.kind) {
    case Action::Kind::RightClick:
        movePointer(place, now);
        pressButton(Button::Right, true, now);
        pressButton(Button::Right, false, now);
        return;
    case Action::Kind::Chord:
        for (const std::int32_t key : action.keys) {
            frames_.giveAlone({.kind = Output::Kind::KeyDown, .number = key}, now);
        }
        for (std::size_t i = action.keys.size(); i > 0; --i) {
            frames_.giveAlone({.kind = Output::Kind::KeyUp, .number = action.keys[i - 1]}, now);
        }
        return;
    case Action::Kind::Call:
        frames_.giveAlone(
            {.kind = Output::Kind::Call, .gesture = gesture, .shape = found.shape, .direction = found.direction}, now);
        return;
    case Action::Kind::Fingers:
    case Action::Kind::Nothing:
        // If all fingers have been lifted, there is nothing to follow.
        return;
    }
}

void Recogniser::follow(Time now) {
    FixedList<FingerWay, kMostContacts> ways;
    for (const std::size_t index : players_) ways.add(hand_.fingers()[index].way());
    const Motion all = motionOf({ways.begin(), ways.end()});
    lastAngle_ += std::remainder(all.angle - lastAngle_, 2.0 * std::numbers::pi);
    Motion motion;
    switch (shape_.shape) {
    case Shape::PinchWithTwo:
    case Shape::FourTogether:
    case Shape::FourApart:
        motion.scale = all.scale;
        break;
    case Shape::RotateWithTwo:
        motion.angle = lastAngle_;
        break;
    case Shape::ScrollWithTwo:
    case Shape::FlickSidewaysWithTwo:
    case Shape::LeftFromRightEdgeWithTwo:
        motion.way = all.way * (gesture_ == Gesture::Scroll ? rules_->scrollSign : 1.0);
        break;
    case Shape::SidewaysWithThree:
    case Shape::UpWithThree:
    case Shape::DownWithThree:
    case Shape::SidewaysWithFour:
    case Shape::UpWithFour:
    case Shape::DownWithFour:
        motion.way = all.way;
        break;
    case Shape::TapWithTwo:
    case Shape::DoubleTapWithTwo:
    case Shape::TapWithThree:
        onFault_(Fault::UnwantedGesture);
        break;
    }
    player_.follow(motion, now);
}

/// The rest of the hand may follow, but a gesture ends when its first finger leaves.
void Recogniser::endPlaying(Time now) {
    player_.end(now);
    endGestureIfPlayed(now);
    state_ = HandState::Done;
}

/// Something else begins while the fingers on the touchpad would still be moving.
void Recogniser::finishPlaying(Time now) {
    player_.finish(now);
    endGestureIfPlayed(now);
}

void Recogniser::endGestureIfPlayed(Time now) {
    if (isGestureOn_ && !player_.isPlaying()) announce(Output::Kind::GestureEnd, now);
}

void Recogniser::announce(Output::Kind kind, Time now) {
    isGestureOn_ = kind == Output::Kind::GestureBegin;
    frames_.giveAlone({.kind = kind, .gesture = gesture_, .shape = shape_.shape, .direction = shape_.direction}, now);
}

// Giving out

/// From now on, all fingers pass as touches, starting with those that were held back and their movement so far.
void Recogniser::passAll(Time now) {
    settlePendingTap(now);
    if (hand_.counting() > 1) clicks_.interrupt();
    for (Finger& finger : hand_.fingers()) {
        if (!finger.counts() || finger.isGiven) continue;
        finger.isGiven = true;
        finger.givenPlace = finger.landing;
        frames_.add({.kind = Output::Kind::TouchDown,
                     .number = hand_.indexOf(finger),
                     .at = rules_->mapping.touchOf(finger.landing)});
    }
    frames_.end(now);
    for (Finger& finger : hand_.fingers()) {
        if (finger.counts()) addMove(finger);
    }
    frames_.end(now);
    for (Finger& finger : hand_.fingers()) {
        if (finger.counts() && finger.liftedAt) giveRelease(finger, now);
    }
    frames_.end(now);
    state_ = HandState::Raw;
}

/// A single finger goes down, at the position of the series of taps that it belongs to.
void Recogniser::giveAlone(Finger& finger, Time now) {
    settlePendingTap(now);
    const Point place = clicks_.place(finger.landedAt, finger.landing, now);
    finger.isGiven = true;
    if (place != finger.landing) finger.pressPlace = place;
    finger.givenPlace = place;
    if (isTouchMode()) {
        frames_.giveAlone(
            {.kind = Output::Kind::TouchDown, .number = hand_.indexOf(finger), .at = rules_->mapping.touchOf(place)},
            now);
        return;
    }
    finishPlaying(now);
    movePointer(place, now);
    pressButton(Button::Left, true, now);
}

void Recogniser::giveMove(Finger& finger, Time now) {
    if (isTouchMode() && state_ != HandState::RightPress) {
        addMove(finger);
        frames_.end(now);
        return;
    }
    if (finger.placeToGive() == finger.givenPlace) return;
    finger.givenPlace = finger.placeToGive();
    movePointer(finger.givenPlace, now);
}

void Recogniser::addMove(Finger& finger) {
    if (!finger.isGiven) return;
    const Point place = finger.placeToGive();
    if (place == finger.givenPlace) return;
    finger.givenPlace = place;
    frames_.add(
        {.kind = Output::Kind::TouchMove, .number = hand_.indexOf(finger), .at = rules_->mapping.touchOf(place)});
}

/// Lifts a touch in the current frame.
void Recogniser::giveRelease(Finger& finger, Time now) {
    if (!finger.isGiven) return;
    finger.isGiven = false;
    if (state_ == HandState::Dragging || (state_ == HandState::One && !isTouchMode())) {
        pressButton(Button::Left, false, now);
        return;
    }
    frames_.add({.kind = Output::Kind::TouchUp, .number = hand_.indexOf(finger)});
}

void Recogniser::takeBackAll(Time now) {
    for (Finger& finger : hand_.fingers()) takeBack(finger);
    frames_.end(now);
}

/// In the current frame.
void Recogniser::takeBack(Finger& finger) {
    if (!finger.isGiven) return;
    finger.isGiven = false;
    clicks_.takenBack();
    frames_.add({.kind = Output::Kind::TouchCancel, .number = hand_.indexOf(finger)});
}

void Recogniser::movePointer(Point hand, Time now) {
    frames_.giveAlone({.kind = Output::Kind::PointerMove, .at = rules_->mapping.pointerOf(hand)}, now);
}

void Recogniser::pressButton(Button button, bool isDown, Time now) {
    frames_.giveAlone(
        {.kind = isDown ? Output::Kind::ButtonDown : Output::Kind::ButtonUp, .number = button == Button::Left ? 0 : 1},
        now);
}

// What is due

std::optional<Time> Recogniser::deadline() const {
    std::optional<Time> next;
    const auto consider = [&](Time moment) {
        if (moment > ranUntil_ && (!next || moment < *next)) next = moment;
    };
    switch (state_) {
    case HandState::Idle:
        // Even if it has already passed: there is nothing left to wait for.
        if (isTapPending_) return std::max(lastTapOfTwo_->landedAt + rules_->doubleClickRate, ranUntil_);
        break;
    case HandState::One:
        // Another finger may still follow at the very end of this time.
        consider(firstLanding_ + thresholds::kAlone + Time(1));
        if (rules_->longPress) consider(firstLanding_ + *rules_->longPress);
        break;
    case HandState::Many:
        consider(lastLanding_ + thresholds::kSettled);
        consider(firstLanding_ + thresholds::kLongestFlick);
        consider(firstLanding_ + thresholds::kLongestTap);
        consider(lastLanding_ + thresholds::kLongestTap);
        // A tap is still valid at the very end of its time.
        if (firstLift_) consider(*firstLift_ + thresholds::kOneHand + Time(1));
        break;
    case HandState::Dragging:
    case HandState::RightPress:
    case HandState::Playing:
    case HandState::Raw:
    case HandState::Done:
        break;
    }
    if (const auto played = player_.deadline()) {
        if (!next || *played < *next) next = played;
    }
    return next;
}

void Recogniser::run(Time now) {
    if (player_.run(now)) endGestureIfPlayed(now);
    ranUntil_ = std::max(ranUntil_, now);
    switch (state_) {
    case HandState::Idle:
        if (isTapPending_ && now >= lastTapOfTwo_->landedAt + rules_->doubleClickRate) settlePendingTap(now);
        return;
    case HandState::One:
        runAlone(now);
        return;
    case HandState::Many:
        runMany(now);
        return;
    case HandState::Dragging:
    case HandState::RightPress:
    case HandState::Playing:
    case HandState::Raw:
    case HandState::Done:
        return;
    }
}

} // namespace touch
