#pragma once

namespace kelvo {

/// Where the environment variable KELVO_CONTROL_PLACES names a file, keeps in it where on the screen the controls of
/// the application can be seen: one line "x y width height CLASS TEXT" each, the origin at the screen's top left, those
/// of a window after its own, and last whether the application is active. It lets whoever drives the application by a
/// pointer find them, as accessibility does in other toolkits.
void logControlPlaces();

} // namespace kelvo
