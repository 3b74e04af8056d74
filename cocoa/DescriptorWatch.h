#pragma once

#include "platform/RunLoop.h"

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>

namespace kelvo {

/// Calls `ready` from the current run loop, in `modes`, when a descriptor can be read. This is all that stands on an
/// interface of GNUstep's alone; a system with message ports of its own does not need it.
[[nodiscard]] std::unique_ptr<platform::CFFileDescriptor> watchDescriptor(int descriptor, NSArray* modes,
                                                                          std::function<void()> ready);

} // namespace kelvo
