#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/linux/data_directory.h"

namespace norvane {

/// What every program of the host does first, while it has one thread: its standard descriptors are
/// open, it leaves no core file, failed writes do not end it, and its files are the user's alone.
void prepareProcess();

/// Says on standard error, in one line, why the host does not start; gives `status`.
int refuse(int status, const std::string& message);

/// Opens the data directory at `path` and has `makeHost` make the host on it. The exit status,
/// after one line, when either fails.
std::optional<int> openHost(const std::string& path, std::optional<DataDirectory>& directory,
                            const std::function<void(const std::string& path)>& makeHost);

}  // namespace norvane
