#include "linux/SwaySettings.h"

#include "linux/Descriptor.h"
#include "linux/DesktopSettings.h"
#include "linux/PollRunLoop.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

namespace kelvo {

namespace {

using touch::Surroundings;

constexpr std::uint32_t kInputEvent = 0x80000015;

std::string touchpadThatScrolls(const std::string& name, const std::string& state) {
    return R"({"identifier":"1:2:Pad","name":")" + name +
           R"(","vendor":1,"type":"touchpad","libinput":{"send_events":"enabled","natural_scroll":")" + state + "\"}}";
}

std::string message(std::uint32_t kind, const std::string& text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    std::string bytes = "i3-ipc";
    bytes.append(reinterpret_cast<const char*>(&length), sizeof length);
    bytes.append(reinterpret_cast<const char*>(&kind), sizeof kind);
    return bytes + text;
}

TEST(SwayInputs, NameTheTouchpadsThatScrollNaturally) {
    const std::string mouse = R"({"name":"Mouse","type":"pointer","libinput":{"natural_scroll":"enabled"}})";
    const std::string keyboard = R"({"name":"Keyboard","type":"keyboard"})";
    const Surroundings found =
        settingsInSwayInputs("[" + mouse + "," + touchpadThatScrolls("Panel Touchpad", "enabled") + "," + keyboard +
                             "," + touchpadThatScrolls("Other", "disabled") + "]");
    EXPECT_EQ(found.naturalTouchpads, std::vector<std::string>{"Panel Touchpad"});
    EXPECT_FALSE(found.scrollsNaturally);
    EXPECT_FALSE(found.doubleClickInterval);
}

TEST(SwayInputs, ThatAreDamagedOrOtherwiseMadeSayNothing) {
    for (const std::string text :
         {"", "[", "{}", "null", "[1, null, \"touchpad\", []]", R"([{"type":"touchpad","name":"Pad"}])",
          R"([{"type":"touchpad","name":"Pad","libinput":null}])",
          R"([{"type":"touchpad","name":3,"libinput":{"natural_scroll":"enabled"}}])",
          R"([{"type":"touchpad","name":"Pad","libinput":{"natural_scroll":true}}])", "[\"\xFF\"]"}) {
        EXPECT_EQ(settingsInSwayInputs(text), Surroundings()) << text;
    }
}

/// Stands at the socket in sway's place.
class SwaySettingsTest : public testing::Test {
protected:
    SwaySettingsTest() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(std::begin(address.sun_path), sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener.number(), 1), 0);
        settings = openSwaySettings(loop, path, [this] { ++changes; });
        sway = Descriptor(::accept(listener.number(), nullptr, nullptr));
    }

    template <typename Condition>
    void await(const Condition& holds) {
        loop.runUntil(holds, 20.0);
        EXPECT_TRUE(holds());
    }

    void awaitRequests(const std::string& requests) {
        await([&] {
            std::string bytes(1000, '\0');
            const ssize_t count = ::recv(sway.number(), bytes.data(), bytes.size(), MSG_DONTWAIT);
            if (count > 0) heard += bytes.substr(0, static_cast<std::size_t>(count));
            return heard.size() >= requests.size();
        });
        EXPECT_EQ(heard, requests);
        heard.clear();
    }

    void say(const std::string& bytes) {
        ASSERT_EQ(::send(sway.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

    TemporaryDirectory home;
    std::string path = home.path("sway.sock");
    PollRunLoop loop;
    Descriptor listener{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    Descriptor sway;
    std::string heard;
    int changes = 0;
    std::unique_ptr<touch::DesktopWatch> settings;
};

TEST_F(SwaySettingsTest, AreAskedForAndFollowed) {
    ASSERT_TRUE(settings);
    awaitRequests(message(2, R"(["input"])") + message(100, ""));
    say(message(2, R"({"success": true})") + message(100, "[" + touchpadThatScrolls("Pad", "enabled") + "]"));
    await([&] { return changes == 1; });
    EXPECT_EQ(settings->surroundings().naturalTouchpads, std::vector<std::string>{"Pad"});

    say(message(kInputEvent, R"({"change": "libinput_config"})"));
    awaitRequests(message(100, ""));
    say(message(100, "[" + touchpadThatScrolls("Pad", "disabled") + "]"));
    await([&] { return changes == 2; });
    EXPECT_TRUE(settings->surroundings().naturalTouchpads.empty());
}

TEST_F(SwaySettingsTest, ThatComeInPiecesAreReadOnceTheyAreWhole) {
    const std::string answer = message(100, "[" + touchpadThatScrolls("Pad", "enabled") + "]");
    for (std::size_t i = 0; i + 1 < answer.size(); ++i) {
        say(answer.substr(i, 1));
        loop.runUntil([] { return false; }, 0.0);
    }
    EXPECT_EQ(changes, 0);
    say(answer.substr(answer.size() - 1));
    await([&] { return changes == 1; });
}

TEST_F(SwaySettingsTest, ThatAreAsTheyWereAreNoChange) {
    const std::string answer = message(100, "[" + touchpadThatScrolls("Pad", "enabled") + "]");
    const std::string last = message(100, "[" + touchpadThatScrolls("Last", "enabled") + "]");
    say(answer + answer + answer + last);
    await([&] { return settings->surroundings().naturalTouchpads == std::vector<std::string>{"Last"}; });
    EXPECT_EQ(changes, 2);
}

TEST_F(SwaySettingsTest, OfOneThatEndsStayAsTheyWereAndWakeNobodyUp) {
    say(message(100, "[" + touchpadThatScrolls("Pad", "enabled") + "]"));
    await([&] { return changes == 1; });
    sway = Descriptor();
    int turns = 0;
    loop.runUntil([&] { return ++turns > 1000; }, 0.05);
    EXPECT_LT(turns, 1000);
    EXPECT_EQ(settings->surroundings().naturalTouchpads, std::vector<std::string>{"Pad"});
    EXPECT_EQ(changes, 1);
}

TEST_F(SwaySettingsTest, OfSomethingElseThatListensThereAreNone) {
    say("HTTP/1.1 400 Bad Request\r\n\r\n");
    await([&] {
        char byte = 0;
        return ::recv(sway.number(), &byte, 1, MSG_DONTWAIT | MSG_PEEK) >= 0;
    });
    // It is not listened to any more, however much it says.
    say(message(100, "[" + touchpadThatScrolls("Pad", "enabled") + "]"));
    loop.runUntil([] { return false; }, 0.0);
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(settings->surroundings().naturalTouchpads.empty());
}

TEST_F(SwaySettingsTest, AreThoseOfTheSessionThatItsSocketIsNamedIn) {
    const EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "");
    const EnvironmentVariable socket("SWAYSOCK", path);
    EXPECT_TRUE(openDesktopSettings(loop, [] {}));
    const EnvironmentVariable gone("SWAYSOCK", home.path("gone"));
    EXPECT_FALSE(openDesktopSettings(loop, [] {}));
    const EnvironmentVariable tooLong("SWAYSOCK", std::string(200, 'x'));
    EXPECT_FALSE(openDesktopSettings(loop, [] {}));
}

} // namespace

} // namespace kelvo
