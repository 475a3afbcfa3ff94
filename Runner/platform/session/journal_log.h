#pragma once

#include "platform/log.h"

namespace norvane {

/// Log records in the system's journal, as those of "norvane"; on standard error too when that is a
/// terminal, and instead when there is no journal.
class JournalLog : public Log {
 public:
  void write(std::string_view text) override;
};

}  // namespace norvane
