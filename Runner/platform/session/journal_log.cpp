#include "platform/session/journal_log.h"

#include <iterator>
#include <string>

#include <glib.h>
#include <unistd.h>

#include "platform/linux/atomic_file.h"
#include "platform/linux/log_line.h"

namespace norvane {

void JournalLog::write(std::string_view text) {
  std::string line = escapedLogLine(text);
  const GLogField fields[] = {{"MESSAGE", line.data(), static_cast<gssize>(line.size())},
                              {"PRIORITY", "6", -1},  // informational
                              {"SYSLOG_IDENTIFIER", "norvane", -1}};
  const bool kept = g_log_writer_journald(G_LOG_LEVEL_INFO, fields, std::size(fields), nullptr) ==
                    G_LOG_WRITER_HANDLED;
  if (kept && g_log_writer_is_journald(STDERR_FILENO)) return;  // where it would stand twice
  // Nothing can be done about a log that cannot be written.
  (void)writeAll(STDERR_FILENO, line += '\n');
}

}  // namespace norvane
