#include "platform/linux/stderr_log.h"

#include <unistd.h>

#include "platform/linux/atomic_file.h"
#include "platform/linux/log_line.h"

namespace norvane {

void StderrLog::write(std::string_view text) {
  // Nothing can be done about a log that cannot be written.
  (void)writeAll(STDERR_FILENO, escapedLogLine(text) + '\n');
}

}  // namespace norvane
