#include "driver/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace wakerly {

void OpenClosedStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    // open(2) gives the lowest number that is free: this one.
    if (fcntl(stream, F_GETFD) == -1 && open("/dev/null", O_RDWR) == -1) return;
  }
}

}  // namespace wakerly
