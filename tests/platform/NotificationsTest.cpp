#include "platform/Notifications.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

class NotificationCenter : public testing::Test {
protected:
    NSNotificationCenter center;
    std::vector<std::string> heard;
    NSObject first;
    NSObject second;

    void observe(const NSObject& observer, std::string name, std::string word) {
        center.addObserver(observer, name, [this, word](const NSNotification&) { heard.push_back(word); });
    }
};

TEST_F(NotificationCenter, TellsObserversOfANameInTheOrderTheyRegistered) {
    observe(second, "a", "second");
    observe(first, "a", "first");
    observe(first, "b", "other");

    center.postNotification({"a", {}});

    EXPECT_THAT(heard, ElementsAre("second", "first"));
}

TEST_F(NotificationCenter, PassesTheUserInformationItself) {
    const auto record = NSMutableDictionary::dictionary();
    bool isSame = false;
    center.addObserver(first, "a", [&](const NSNotification& n) { isSame = n.userInfo.isIdenticalTo(record); });

    center.postNotification({"a", record});

    EXPECT_TRUE(isSame);
}

TEST_F(NotificationCenter, SkipsObserversThatAreGoneOrRemoved) {
    auto gone = std::make_unique<NSObject>();
    observe(*gone, "a", "gone");
    observe(first, "a", "removed");
    gone.reset();
    center.removeObserver(first);

    center.postNotification({"a", {}});

    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(NotificationCenter, SkipsObserversThatGoAndThoseThatComeInTheMiddleOfAPosting) {
    auto gone = std::make_unique<NSObject>();
    center.addObserver(first, "a", [&](const NSNotification&) {
        heard.emplace_back("first");
        gone.reset();
        center.removeObserver(second);
        observe(first, "a", "late");
    });
    observe(*gone, "a", "gone");
    observe(second, "a", "removed");

    center.postNotification({"a", {}});

    EXPECT_THAT(heard, ElementsAre("first"));
}

} // namespace
