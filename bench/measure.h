#pragma once

#include <chrono>
#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace norvane {

template <class Work>
double secondsOf(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The memory that this process has beyond what it had when the meter was made.
class MemoryUse {
 public:
  MemoryUse() {
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins anew
    before_ = kilobytes("VmRSS:");
  }
  double peakMegabytes() const { return (kilobytes("VmHWM:") - before_) / 1024; }
  double megabytes() const { return (kilobytes("VmRSS:") - before_) / 1024; }

 private:
  static double kilobytes(std::string_view name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with(name)) return std::stod(line.substr(name.size()));
    }
    throw std::runtime_error("the process does not say how much memory it has");
  }

  double before_;
};

}  // namespace norvane
