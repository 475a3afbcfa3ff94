#pragma once

#include <optional>
#include <string>

#include "platform/dynamic_loader.h"

namespace norvane {

class LinuxDynamicLoader : public DynamicLoader {
 public:
  bool dlopen(const std::string& path) override;
  std::optional<std::string> dlerror() override;

 private:
  std::optional<std::string> refusal_;  ///< the last failure, where the system's loader has no part
};

/// The value of an environment variable.
std::optional<std::string> environmentVariable(const std::string& name);

/// Opens /dev/null as each of standard input, output and error that is closed: a file of the host's
/// must never come to stand in their place.
void ensureStandardDescriptors();

/// Leaves no core file behind: it would hold the vault's secrets.
void disableCoreDumps();

/// Leaves it to a write to say that it has failed, where a signal would end the process: its reader
/// has gone away, or the file would outgrow its limit.
void surviveFailedWrites();

/// Keeps processes of the same user from reading this one's memory or attaching to it.
void forbidDebuggers();

}  // namespace norvane
