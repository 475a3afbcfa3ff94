#pragma once

#include "platform/log.h"

namespace norvane {

/// Log records on standard error, one a line, each written whole.
class StderrLog : public Log {
 public:
  void write(std::string_view text) override;
};

}  // namespace norvane
