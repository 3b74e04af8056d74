#include "linux/StandardStreams.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo {

namespace {

/// Whether what is opened after that lies elsewhere, and what was closed still takes and gives nothing.
bool isKeptClosed() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) (void)::close(stream);
    keepPlacesOfClosedStreams();
    const int opened = ::open("/dev/null", O_RDWR);
    char byte = 0;
    return opened > STDERR_FILENO && ::read(STDIN_FILENO, &byte, 1) < 0 && ::write(STDOUT_FILENO, &byte, 1) < 0 &&
           ::write(STDERR_FILENO, &byte, 1) < 0;
}

} // namespace

TEST(StandardStreamsTest, ThatAreClosedStayClosedAndTheirPlacesTaken) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) ::_exit(isKeptClosed() ? 0 : 1);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(StandardStreamsTest, ThatAreOpenStayAsTheyAre) {
    const int flags = ::fcntl(STDOUT_FILENO, F_GETFL);
    keepPlacesOfClosedStreams();
    EXPECT_EQ(::fcntl(STDOUT_FILENO, F_GETFL), flags);
}

} // namespace kelvo
