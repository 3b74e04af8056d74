#include "linux/SwaySettings.h"

#include "linux/Descriptor.h"

#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

namespace kelvo {

namespace {

using touch::Surroundings;

// As sway-ipc(7) has them: each message begins so, in the machine's own order of bytes.
constexpr std::string_view kMagic = "i3-ipc";
constexpr std::size_t kHeader = kMagic.size() + 2 * sizeof(std::uint32_t);
constexpr std::uint32_t kSubscribe = 2;
constexpr std::uint32_t kGetInputs = 100;
constexpr std::uint32_t kInputEvent = 0x80000015;
/// Far more than any list of inputs takes.
constexpr std::uint32_t kLongestMessage = 1U << 20U;

std::string messageOf(std::uint32_t kind, std::string_view text) {
    const std::array numbers{static_cast<std::uint32_t>(text.size()), kind};
    std::string message(kMagic);
    message.append(reinterpret_cast<const char*>(numbers.data()), sizeof numbers);
    return message.append(text);
}

Descriptor connectedTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return {};
    std::ranges::copy(path, std::begin(address.sun_path));
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket || ::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return {};
    }
    return socket;
}

class SwaySettings final : public touch::DesktopWatch {
public:
    SwaySettings(platform::CFRunLoop& loop, Descriptor socket, std::function<void()> changed)
        : changed_(std::move(changed)), socket_(std::move(socket)) {
        watch_ = loop.watch(socket_.number(), [this] { read(); });
        send(kSubscribe, R"(["input"])");
        send(kGetInputs, "");
    }

    [[nodiscard]] const Surroundings& surroundings() const override { return surroundings_; }

private:
    /// So little finds room unless sway has hung for long; then it is not listened to any more.
    void send(std::uint32_t kind, std::string_view text) {
        const std::string message = messageOf(kind, text);
        if (::send(socket_.number(), message.data(), message.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(message.size())) {
            watch_.reset();
        }
    }

    void read() {
        std::array<char, 4096> bytes{};
        const ssize_t count = ::recv(socket_.number(), bytes.data(), bytes.size(), 0);
        if (count > 0) {
            received_.append(bytes.data(), static_cast<std::size_t>(count));
            takeMessages();
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            // What was known stays.
            watch_.reset();
        }
    }

    void takeMessages() {
        while (received_.size() >= kHeader) {
            std::array<std::uint32_t, 2> numbers{};
            std::memcpy(numbers.data(), received_.data() + kMagic.size(), sizeof numbers);
            const auto [length, kind] = numbers;
            if (!received_.starts_with(kMagic) || length > kLongestMessage) {
                watch_.reset();
                return;
            }
            if (received_.size() - kHeader < length) return;
            const std::string text = received_.substr(kHeader, length);
            received_.erase(0, kHeader + length);
            take(kind, text);
        }
    }

    void take(std::uint32_t kind, std::string_view text) {
        if (kind == kInputEvent) send(kGetInputs, "");
        if (kind != kGetInputs) return;
        Surroundings found = settingsInSwayInputs(text);
        if (found == surroundings_) return;
        surroundings_ = std::move(found);
        changed_();
    }

    std::function<void()> changed_;
    Descriptor socket_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    std::string received_;
    Surroundings surroundings_;
};

/// Empty where there is no such text.
std::string textAt(const nlohmann::json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

} // namespace

Surroundings settingsInSwayInputs(std::string_view inputs) {
    Surroundings found;
    const nlohmann::json list = nlohmann::json::parse(inputs, nullptr, false);
    if (!list.is_array()) return found;
    for (const nlohmann::json& input : list) {
        if (!input.is_object() || !input.contains("libinput")) continue;
        const std::string name = textAt(input, "name");
        const bool isNatural = textAt(input["libinput"], "natural_scroll") == "enabled";
        if (textAt(input, "type") == "touchpad" && isNatural && !name.empty()) found.naturalTouchpads.push_back(name);
    }
    return found;
}

std::unique_ptr<touch::DesktopWatch> openSwaySettings(platform::CFRunLoop& loop, const std::string& path,
                                                      std::function<void()> changed) {
    Descriptor socket = connectedTo(path);
    return socket ? std::make_unique<SwaySettings>(loop, std::move(socket), std::move(changed)) : nullptr;
}

} // namespace kelvo
