#include "linux/StandardStreams.h"

#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace kelvo {

void keepPlacesOfClosedStreams() {
    // Opening a file uses the first free descriptor.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const bool isClosed = ::fcntl(stream, F_GETFD) < 0;
        if (isClosed) (void)::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

} // namespace kelvo
