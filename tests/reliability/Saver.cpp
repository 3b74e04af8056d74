#include "TDUtilities.h"
#include "linux/PollRunLoop.h"
#include "peers/PeerPlatform.h"

#include <cstdint>
#include <iostream>
#include <string>

namespace {

/// Of a size that differs from save to save, from less than a page to many.
std::string filling(std::int64_t number) { return std::string(static_cast<std::size_t>(number * 7919 % 60'000), 'x'); }

} // namespace

/// Saves in a loop, by the product's own functions, until it is killed: saver PATH. A file that is whole has the same
/// number at both ends and a text of the length that belongs to it. Says so when the first save is done.
int main(int argc, char* argv[]) {
    if (argc != 2) return 2;
    const std::string path = argv[1];
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services("saver", runLoop);
    auto number =
        platform::NSMutableDictionary::dictionaryWithContentsOfFile(path).objectForKey("Begin").longLongValue();
    while (true) {
        ++number;
        const auto items = platform::NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{number, "Begin"}, {filling(number), "Filling"}, {number, "End"}});
        if (!saveSettingItemsToPlist(items, path)) return 1;
        std::cout << '.' << std::flush;
    }
}
