// Starting programs.
#ifndef ZQ_PLATFORM_PROCESS_H
#define ZQ_PLATFORM_PROCESS_H

#include <string>

namespace zq {
namespace platform {

// Runs `command` with /bin/sh -c. With `wait`, returns its exit status
// (128 + the signal number when a signal ended it); without, the child's
// process id. -1 when it could not be started, with the system's reason in
// `reason`.
int RunShellCommand(const char* command, bool wait, std::string& reason);

// Writes `text` to the standard error handle in one call; errors are ignored.
void WriteStandardError(const std::string& text);

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_PROCESS_H
