#pragma once

#include "platform/log.h"

namespace norvane {

/// Log records in the system's journal, as those of "norvane", and on standard error unless that
/// goes there as well.
class JournalLog : public Log {
 public:
  void write(std::string_view text) override;
};

}  // namespace norvane
