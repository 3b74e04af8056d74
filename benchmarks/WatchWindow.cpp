// Starts a program and watches its window from outside, in the same way for every program. Prints one line of JSON:
// the seconds from the start of the process to its window being mapped and to the last change of the window's picture,
// the memory it then holds, and, with --idle, how often it wakes up while nobody touches it.

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xdamage.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// A picture that stays the same for so long is the whole one.
constexpr milliseconds kQuiet{1000};
/// Nothing to compare takes as long as this to show itself.
constexpr std::chrono::seconds kPatience{40};
/// What is smaller is a helper that nobody sees.
constexpr int kSmallestWindow = 100;

struct DisplayCloser {
    void operator()(Display* display) const { XCloseDisplay(display); }
};
using DisplayHandle = std::unique_ptr<Display, DisplayCloser>;

struct ImageDestroyer {
    void operator()(XImage* image) const { XDestroyImage(image); }
};

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

/// A program that ends with this object.
class Program {
public:
    explicit Program(char* const command[]) : start_(Clock::now()) {
        if (posix_spawnp(&id_, command[0], nullptr, nullptr, command, environ) != 0) {
            throw std::runtime_error(std::string(command[0]) + " cannot be started");
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() {
        (void)kill(id_, SIGKILL);
        (void)waitpid(id_, nullptr, 0);
    }

    [[nodiscard]] double age() const { return secondsSince(start_); }
    [[nodiscard]] std::string processFolder() const { return "/proc/" + std::to_string(id_); }

private:
    Clock::time_point start_;
    pid_t id_ = 0;
};

std::uint64_t numberBehind(const std::string& path, const std::string& name) {
    std::ifstream file(path);
    for (std::string word; file >> word;) {
        std::uint64_t number = 0;
        if (word == name && file >> number) return number;
    }
    throw std::runtime_error(path + " has no " + name);
}

/// How often each thread of a process has gone to sleep by itself, which is how often something woke it, or will.
std::map<std::string, std::uint64_t> voluntarySwitches(const Program& program) {
    std::map<std::string, std::uint64_t> switches;
    for (const auto& thread : std::filesystem::directory_iterator(program.processFolder() + "/task")) {
        switches[thread.path().filename()] = numberBehind(thread.path() / "status", "voluntary_ctxt_switches:");
    }
    return switches;
}

class Screen {
public:
    Screen() : display_(XOpenDisplay(nullptr)) {
        if (!display_ || !XDamageQueryExtension(display_.get(), &damageEvents_, &damageErrors_)) {
            throw std::runtime_error("there is no display with the damage extension");
        }
        // A window may go at any moment; what is asked of it then fails.
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
        XSelectInput(display_.get(), DefaultRootWindow(display_.get()), SubstructureNotifyMask);
        XSync(display_.get(), False);
    }

    /// The next event; none when `deadline` comes first.
    std::optional<XEvent> nextEvent(Clock::time_point deadline) {
        while (XPending(display_.get()) == 0) {
            const auto wait = std::chrono::ceil<milliseconds>(deadline - Clock::now());
            if (wait.count() <= 0) return std::nullopt;
            pollfd connection{ConnectionNumber(display_.get()), POLLIN, 0};
            (void)poll(&connection, 1, static_cast<int>(wait.count()));
        }
        XEvent event;
        XNextEvent(display_.get(), &event);
        return event;
    }

    [[nodiscard]] bool isMainWindow(const XMapEvent& event) const {
        XWindowAttributes attributes;
        return !event.override_redirect && XGetWindowAttributes(display_.get(), event.window, &attributes) != 0 &&
               attributes.width >= kSmallestWindow && attributes.height >= kSmallestWindow;
    }

    void watchDamage(Window window) { damage_ = XDamageCreate(display_.get(), window, XDamageReportNonEmpty); }

    /// Whether the event tells of damage, which is then repaired so that the next one is told.
    bool takeDamage(const XEvent& event) {
        if (event.type != damageEvents_ + XDamageNotify) return false;
        XDamageSubtract(display_.get(), damage_, None, None);
        return true;
    }

    [[nodiscard]] std::vector<char> picture(Window window) const {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(display_.get(), window, &attributes) == 0) return {};
        const std::unique_ptr<XImage, ImageDestroyer> image(
            XGetImage(display_.get(), window, 0, 0, static_cast<unsigned>(attributes.width),
                      static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap));
        if (!image) return {};
        const auto size = static_cast<std::size_t>(image->bytes_per_line) * static_cast<std::size_t>(image->height);
        return {image->data, image->data + size};
    }

private:
    DisplayHandle display_;
    int damageEvents_ = 0;
    int damageErrors_ = 0;
    Damage damage_ = None;
};

/// The program's window, as soon as it is mapped.
Window mappedWindow(Screen& screen) {
    const auto deadline = Clock::now() + kPatience;
    while (const auto event = screen.nextEvent(deadline)) {
        if (event->type == MapNotify && screen.isMainWindow(event->xmap)) return event->xmap.window;
    }
    throw std::runtime_error("no window came");
}

/// The program's age when its window had become what it stays.
double ageWhenPainted(Screen& screen, Window window, const Program& program) {
    screen.watchDamage(window);
    std::vector<char> shown = screen.picture(window);
    double painted = program.age();
    for (auto quietFrom = Clock::now(); const auto event = screen.nextEvent(quietFrom + kQuiet);) {
        const double age = program.age();
        if (age > std::chrono::duration<double>(kPatience).count()) {
            throw std::runtime_error("the picture never settles");
        }
        if (!screen.takeDamage(*event)) continue;
        std::vector<char> picture = screen.picture(window);
        if (picture == shown) continue;
        shown = std::move(picture);
        painted = age;
        quietFrom = Clock::now();
    }
    return painted;
}

std::uint64_t wakeUps(const Program& program, int seconds) {
    // Whatever a program still does behind its first picture has its time.
    std::this_thread::sleep_for(std::chrono::seconds(4));
    auto before = voluntarySwitches(program);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const auto after = voluntarySwitches(program);
    std::uint64_t count = 0;
    for (const auto& [thread, switches] : after) count += switches - before[thread];
    // A thread that has ended woke up for it.
    for (const auto& [thread, switches] : before) count += after.contains(thread) ? 0 : 1;
    return count;
}

void watch(char* const command[], int idleSeconds) {
    Screen screen;
    const Program program(command);
    const Window window = mappedWindow(screen);
    const double mapped = program.age();
    const double painted = ageWhenPainted(screen, window, program);
    const std::uint64_t memory = numberBehind(program.processFolder() + "/smaps_rollup", "Pss:");
    std::cout << "{\"mapped\": " << mapped << ", \"painted\": " << painted << ", \"memory\": " << memory;
    if (idleSeconds > 0) std::cout << ", \"wakeups\": " << wakeUps(program, idleSeconds);
    std::cout << "}" << std::endl;
}

} // namespace

int main(int argc, char* argv[]) {
    int idleSeconds = 0;
    int command = 1;
    if (argc > 2 && std::strcmp(argv[1], "--idle") == 0) {
        idleSeconds = static_cast<int>(std::strtol(argv[2], nullptr, 10));
        command = 3;
    }
    if (command >= argc) {
        std::cerr << "Usage: kelvo-bench-watch-window [--idle SECONDS] PROGRAM [ARGUMENT]...\n";
        return 2;
    }
    try {
        watch(argv + command, idleSeconds);
    } catch (const std::exception& error) {
        std::cerr << "kelvo-bench-watch-window: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
