#include "qt/KnownFont.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <thread>

namespace {

/// Outlives the toolkit's globals and, in its turn, waits until their threads are gone: the toolkit counts a thread as
/// ended a little before it has let go of its data, and the leak check at the end of the process would find that data
/// without an owner.
class LastOfTheThreads {
public:
    LastOfTheThreads() = default;
    LastOfTheThreads(const LastOfTheThreads&) = delete;
    LastOfTheThreads& operator=(const LastOfTheThreads&) = delete;
    ~LastOfTheThreads() {
        using namespace std::chrono_literals;
        const auto givenUp = std::chrono::steady_clock::now() + 10s;
        while (threads() > 1 && std::chrono::steady_clock::now() < givenUp) std::this_thread::sleep_for(1ms);
    }

private:
    static auto threads() -> std::iter_difference_t<std::filesystem::directory_iterator> {
        std::error_code unreadable;
        return std::distance(std::filesystem::directory_iterator("/proc/self/task", unreadable),
                             std::filesystem::directory_iterator());
    }
};

} // namespace

int main(int argc, char* argv[]) {
    static const LastOfTheThreads lastOfTheThreads;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    if (!kelvo::hasFont(kelvo::kWideFont)) {
        std::cerr << "These tests measure in " << kelvo::kWideFont << ", which is not installed.\n";
        return 1;
    }
    const kelvo::FontInUse font(kelvo::kWideFont);
    return RUN_ALL_TESTS();
}
