#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>

/// One gesture of the list: "Name", "Descriptor" (the actions that the gesture can be bound to, in menu order),
/// "SelectedIndex" (the chosen one), "IsEnable" and "MoreGesture" (in the second group of the list). Names and actions
/// are identifiers, and keys of the texts shown.
using GestureRecord = platform::NSMutableDictionary;

/// A new record, switched on and at the first of its actions.
[[nodiscard]] GestureRecord newGestureDictionary(std::string_view name,
                                                 std::initializer_list<platform::Value> descriptor, bool moreGesture);

// Each gives a new list of new records, which the caller may change freely.

[[nodiscard]] platform::NSMutableArray initGesturesInformationForSnowLeopard();
[[nodiscard]] platform::NSMutableArray initGesturesInformationForLion();
[[nodiscard]] platform::NSMutableArray initGesturesInformationForMountainLion();

/// Whether a system version, a binary-coded decimal such as 0x1068, is one of 10.6.
[[nodiscard]] bool isSnowLeopard(std::int32_t systemVersion);

/// The catalogue of a system version; nil below 10.6.
[[nodiscard]] platform::NSMutableArray gestureCatalogueForVersion(std::int32_t systemVersion);
