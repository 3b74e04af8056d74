#pragma once

namespace kelvo {

/// Takes the places of the standard streams that are closed, so that nothing else is opened there: else what somebody
/// prints would go into a file or to the bus. What is read from them or written to them fails as it would without. A
/// program's first step.
void keepPlacesOfClosedStreams();

} // namespace kelvo
