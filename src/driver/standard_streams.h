// The standard streams that a run starts with.
#ifndef DRIVER_STANDARD_STREAMS_H_
#define DRIVER_STANDARD_STREAMS_H_

namespace wakerly {

/// Opens those of standard input, output and error that are closed on /dev/null: a file that is
/// opened later must not get their numbers, and with them what a library prints. Call it before
/// anything opens a file.
void OpenClosedStreams();

}  // namespace wakerly

#endif  // DRIVER_STANDARD_STREAMS_H_
