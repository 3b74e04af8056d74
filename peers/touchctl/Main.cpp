#include "linux/StandardStreams.h"
#include "peers/touchctl/CommandLine.h"
#include "peers/touchctl/Commands.h"
#include "peers/touchctl/Services.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

namespace {

using kelvo::touchctl::Status;

int fail(Status status, const std::string& reason) {
    std::cerr << "kelvo-touchctl: " << reason << '\n';
    return static_cast<int>(status);
}

/// The location of the bundle relative to the program is the same in the build folder and when installed.
std::string installedPanePath() {
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return (program.parent_path() / ".." / KELVO_PANE_DIRECTORY).string();
}

Status run(const kelvo::touchctl::Words& arguments) {
    const auto invocation = kelvo::touchctl::parseCommandLine(arguments);
    if (invocation.help) {
        std::cout << kelvo::touchctl::helpText(invocation.command);
        return Status::Success;
    }
    if (invocation.version) {
        std::cout << "kelvo-touchctl " KELVO_VERSION "\n";
        return Status::Success;
    }
    kelvo::touchctl::Services services;
    return kelvo::touchctl::perform(invocation, services, installedPanePath());
}

} // namespace

int main(int argc, char* argv[]) {
    kelvo::keepPlacesOfClosedStreams();
    try {
        const Status status = run({argv + std::min(argc, 1), argv + argc});
        if (!std::cout.flush())
            return fail(Status::Failure, "cannot write to standard output; check where it is redirected");
        return static_cast<int>(status);
    } catch (const kelvo::touchctl::Failure& failure) {
        std::cout.flush();
        return fail(failure.status(), failure.what());
    } catch (const std::exception& error) {
        return fail(Status::Failure, error.what());
    }
}
