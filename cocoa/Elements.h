#pragma once

#import <Foundation/Foundation.h>

#include <vector>

namespace kelvo {

/// The elements of an array that are all `T`, for a loop: not every compiler of this language knows its own.
template <typename T>
[[nodiscard]] std::vector<T*> elementsOf(NSArray* array) {
    std::vector<T*> elements;
    for (NSUInteger i = 0; i < [array count]; ++i) elements.push_back([array objectAtIndex:i]);
    return elements;
}

} // namespace kelvo
