#pragma once

#include "touch/Units.h"

#include <cstddef>
#include <cstdint>

/// Every number that the understanding of fingers rests on, once: what it decides, why it is what it is, and where it
/// comes from. docs/TOUCH.md shows the same table to readers; a test keeps the two alike. Lengths are millimetres of
/// glass unless the name says otherwise.
namespace touch::thresholds {

using namespace std::chrono_literals;

// Taps and presses

/// Decides: the longest touch of several fingers that is a tap. Why: longer ones are fingers put down to rest. Source:
/// 300 ms is what Android gives the first tap of a double one (ViewConfiguration); libinput's 180 ms is for touchpads.
constexpr Time kLongestTap = 300ms;
/// Decides: how far a finger of a tap may go, and from where on one finger is dragging. Why: a finger rolls while it
/// lifts. Source: ChromiumOS allows a tap 2 mm; Android's touch slop is 8 dp = 1.3 mm, iOS's 10 pt = 1.6 mm.
constexpr double kTapTravel = 2.0;
/// Decides: the longest time between the first and the last finger of one hand to land or to lift. Why: fingers of one
/// hand are not simultaneous. Source: ours, as long as it was settled that a hand may take.
constexpr Time kOneHand = 80ms;
/// Decides: how long a finger that could not be taken back is held while it is alone. Why: as long as another finger of
/// the same hand may follow, giving it out could make a click that nobody made. Source: kOneHand.
constexpr Time kAlone = kOneHand;
/// Decides: how far apart the fingers of a tap of several may be. Why: farther ones are of two hands that type or play.
/// Source: ours, three quarters of the 200 mm between thumb and little finger of a hand that is spread flat.
constexpr double kTapSpan = 150.0;
/// Decides: how near to the first tap of two fingers the second must land. Why: a whole hand is less exact than a
/// finger. Source: Android's double-tap slop, 100 dp.
constexpr double kDoubleTapOfTwoTravel = 15.9;

// Several fingers

/// Decides: how long after the last landing the number of fingers counts as settled. Why: deciding for three when the
/// fourth is on its way is a gesture nobody made. Source: libinput switches its finger count after 100 ms, and so does
/// AOSP's touchpad.
constexpr Time kSettled = 100ms;
/// Decides: how far two fingers go before what they do is scrolling, pinching or turning. Why: resting fingers roll.
/// Source: Android's slop for several fingers, 16 dp; libinput's 1.5 mm is for touchpads.
constexpr double kTwoFingerTravel = 2.5;
/// Decides: how much clearer one meaning of two fingers must be than the next best. Why: fingers that start one after
/// the other look like a rotation at first. Source: 2 is where the other part stays below 27 degrees.
constexpr double kTwoFingerClearness = 2.0;
/// Decides: how far one finger goes while another is still or comes to meet it, until that is a pinch or a rotation, or
/// while another stays at an edge, until that one only rests. Why: of two that move together one often starts late.
/// Source: three times ChromiumOS's 4 mm for a first guess.
constexpr double kPivotTravel = 12.0;
/// Decides: how far a finger may go and still count as still. Source: libinput's first guess, 1 mm.
constexpr double kStill = 1.0;
/// Decides: how far three or four fingers go until that is a swipe, and two from the edge. Why: a swipe acts on the
/// whole desktop. Source: AOSP's gestures on screens are confirmed after 1 cm.
constexpr double kSwipeTravel = 10.0;
/// Decides: how much farther a swipe goes along its direction than across. Why: a diagonal has no direction. Source:
/// 1.2 leaves 10 degrees between neighbours.
constexpr double kSwipeClearness = 1.2;
/// Decides: how much of the mean way each finger of a swipe goes. Why: a finger that rests takes no part. Source: a
/// quarter, measured on recordings, where the slowest finger starts last.
constexpr double kSwipeShare = 0.25;
/// Decides: how far thumb and three fingers come together or apart in the mean. Source: ChromiumOS fixes a pinch at
/// 8 mm.
constexpr double kFourPinchTravel = 8.0;
/// Decides: how much more four fingers come together or apart than they go together, where none of them stays or goes
/// against the others. Source: ours, halfway between alike and twice.
constexpr double kFourPinchClearness = 1.5;
/// Decides: the longest sideways movement of two fingers, from landing to lifting, that is a flick. Why: until then it
/// may be one, so scrolling sideways waits where flicks are wanted. Source: kLongestTap, a tap with a way to go.
constexpr Time kLongestFlick = 300ms;
/// Decides: how far a flick goes. Source: as a swipe.
constexpr double kFlickTravel = kSwipeTravel;
/// Decides: a first step that is longer than this does not count. Why: panels hold a finger where it landed until it
/// has gone some way, and then report that way at once. Source: measured, 2.7 mm on one of two panels.
constexpr double kFirstStep = 1.5;

// Hands that only rest

/// Decides: how near to an edge a contact that stays still is the ball of a thumb or a hand that holds the display.
/// Source: AOSP keeps its back gesture within 40 dp = 6.4 mm of the edge.
constexpr double kRestingEdge = 6.4;
/// Decides: how near to the right edge the first of two fingers lands that come in from there. Source: as wide as a
/// finger, 10 mm.
constexpr double kRightEdge = 10.0;
/// Decides: how much farther from the edge the other one may land. Source: two fingers side by side, 25 mm.
constexpr double kRightEdgeSpread = 25.0;

// Contacts that are none

/// Decides: a contact that goes farther than this, and faster than kFastest, has been mistaken for another. Source:
/// libinput's jump on touchpads, 20 mm.
constexpr double kJump = 20.0;
/// Decides: see kJump; in millimetres a second. Why: the quickest flick on glass is slower. Source: four times
/// Android's fastest fling, 8,000 dp/s = 1.3 m/s.
constexpr double kFastest = 5'000.0;

// Calibration

/// Decides: how long a finger rests on a cross until it counts. Why: what a panel reports of a finger that rests
/// varies, and the mean of half a second does not. Source: ours, some 60 reports of a usual panel.
constexpr Time kCalibrationHold = 600ms;
/// Decides: how far a finger on a cross may go without that time beginning anew. Source: kTapTravel, since it rolls.
constexpr double kCalibrationRest = kTapTravel;
/// Decides: how long nobody touches anything until a calibration is given up. Source: as settled.
constexpr Time kCalibrationPatience = 20s;
/// Decides: how far, of the glass, the points are at least in the mean from the line that they are nearest to. Why: of
/// points on a line nothing follows for the way across it. Source: ours, an eighth of what the crosses have.
constexpr double kCalibrationSpreadShare = 0.05;
/// Decides: how far points may be from where the calibration puts them, in the root of the mean square. Why: where one
/// was touched in the place of another they are off by a good part of the glass. Source: ours, half a finger's width.
constexpr double kCalibrationResidual = 5.0;
/// Decides: how near to the last cross a finger must be to confirm. Source: half a finger's width.
constexpr double kCalibrationHit = 5.0;
/// Decides: how much smaller or larger than the glass, in area, the picture may be. Source: ours, far beyond any frame.
constexpr double kSmallestPictureShare = 0.25;
constexpr double kLargestPictureShare = 4.0;

// What settings are held to

constexpr Time kShortestLongPress = 300ms;
constexpr Time kLongestLongPress = 3s;
constexpr Time kShortestDoubleClick = 100ms;
constexpr Time kLongestDoubleClick = 1s;
constexpr double kSmallestRangeInPoints = 8.0;
constexpr double kLargestRangeInPoints = 128.0;
/// What a desktop counts as a double click where it says nothing of it. Source: GTK and Qt.
constexpr Time kDesktopDoubleClick = 400ms;
constexpr double kDesktopDoubleClickInPoints = 5.0;
/// Decides: how much longer than the desktop's interval a tap waits that must not count. Why: the kernel stamps what is
/// given out when it is written, a little later than it was decided. Source: ours, far above what writing takes.
constexpr Time kDesktopMargin = 10ms;
/// Decides: a panel whose longer side would be shorter or longer than these has a resolution that is wrong, and so
/// none. Source: a watch's display, and four times the longest on sale.
constexpr double kShortestPanel = 20.0;
constexpr double kLongestPanel = 10'000.0;
/// Decides: a contact farther away than this is nowhere. Why: distances to it would be no numbers. Source: far beyond
/// kLongestPanel.
constexpr double kNowhere = 1e6;
/// The length of a panel's longer side where nobody knows it. Source: a small tablet's.
constexpr double kUnknownLength = 200.0;
/// Decides: how much a side of the glass may differ from that of a monitor of the same display. Why: glass reaches past
/// the picture, and monitors say their size in whole centimetres. Source: ours.
constexpr double kLengthShare = 0.05;

// The virtual touchpad

/// The sides of the pad, with room for the farthest scroll from its middle.
constexpr Size kPad{1600.0, 1600.0};
/// How far apart fingers stand that go together. Source: a hand's, and far from what libinput takes for a pinch.
constexpr double kPadFingerGap = 20.0;
/// How far from their middle fingers stand when a pinch begins, and the least and most they come to.
constexpr double kPadPinchRadius = 60.0;
constexpr double kPadLeastRadius = 8.0;
constexpr double kPadMostRadius = 600.0;
/// The time between two frames that nobody's finger asked for. Source: a touchpad's usual 125 Hz.
constexpr Time kPadFrame = 8ms;
/// Decides: the least that is a movement on the pad. Why: what rounding leaves is none. Source: far below a unit of it.
constexpr double kPadNoise = 0.001;
/// How far fingers go in one of those. Why: libinput drops steps of more than 20 mm as jumps.
constexpr double kPadStep = 5.0;

} // namespace touch::thresholds
