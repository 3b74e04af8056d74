#pragma once

namespace kelvo {

/// Lets assistive technology know what the widgets of the pane's own kinds are to the user, which the toolkit takes for
/// mere rectangles. Once is enough, and again does no harm.
void describeOwnWidgets();

} // namespace kelvo
