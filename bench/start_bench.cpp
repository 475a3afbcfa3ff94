// What the start of the host costs, against an empty process of the same minute, and what it does
// while nobody asks for anything.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/atomic_file.h"
#include "platform/linux/file_descriptor.h"

namespace norvane {
namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

struct TemporaryDirectory {
  TemporaryDirectory() : path("/tmp/norvane-bench-XXXXXX") {
    if (!::mkdtemp(path.data())) throw std::runtime_error("no temporary directory");
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path); }
  std::string path;
};

std::pair<FileDescriptor, FileDescriptor> makePipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// A process with pipes at its standard streams. The end of its input ends it.
class Child {
 public:
  explicit Child(std::vector<std::string> arguments) {
    auto [inputEnd, input] = makePipe();
    auto [output, outputEnd] = makePipe();
    auto [log, logEnd] = makePipe();
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, inputEnd.get(), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, outputEnd.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, logEnd.get(), STDERR_FILENO);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const int failure = ::posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("cannot start " + arguments[0]);
    input_ = std::move(input);
    output_ = std::move(output);
    log_ = std::move(log);
  }
  ~Child() { wait(); }
  Child(const Child&) = delete;

  void writeInput(std::string_view line) { (void)writeAll(input_.get(), line); }
  void awaitLog(std::string_view text) { await(log_.get(), text); }
  void awaitOutput(std::string_view text) { await(output_.get(), text); }
  std::string procDirectory() const { return "/proc/" + std::to_string(pid_); }

  void wait() {
    if (pid_ == 0) return;
    input_ = FileDescriptor();
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = 0;
  }

 private:
  static void await(int fd, std::string_view text) {
    std::string seen;
    char buffer[4096];
    while (seen.find(text) == std::string::npos) {
      const ssize_t got = ::read(fd, buffer, sizeof buffer);
      if (got <= 0) throw std::runtime_error("never seen: " + std::string(text));
      seen.append(buffer, static_cast<std::size_t>(got));
    }
  }

  pid_t pid_ = 0;
  FileDescriptor input_;
  FileDescriptor output_;
  FileDescriptor log_;
};

/// The number behind `name` in a status file of /proc.
double statusNumber(const std::string& path, std::string_view name) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(name)) return std::stod(line.substr(name.size()));
  }
  return 0;
}

struct Activity {
  double threads = 0;
  double switches = 0;
  double nanoseconds = 0;  // on a processor
};

Activity activityOf(const Child& child) {
  Activity sum;
  for (const auto& task : std::filesystem::directory_iterator(child.procDirectory() + "/task")) {
    ++sum.threads;
    sum.switches += statusNumber(task.path() / "status", "voluntary_ctxt_switches:");
    std::ifstream schedule(task.path() / "schedstat");
    double running = 0;
    schedule >> running;
    sum.nanoseconds += running;
  }
  return sum;
}

std::vector<std::string> hostOn(const TemporaryDirectory& directory) {
  return {NORVANE_EXECUTABLE, "--platform", "headless", "--data-dir", directory.path};
}

constexpr std::string_view kReady = "channels registered";

/// Until the host has bound its channels, alternating with empty processes.
void start(benchmark::State& state) {
  const TemporaryDirectory directory;
  std::vector<double> empties;
  std::vector<double> ratios;
  std::vector<double> residents;
  const auto startEmpty = [&] {
    const auto begin = Clock::now();
    Child({EMPTY_PROCESS}).wait();
    return secondsSince(begin);
  };
  const auto startHost = [&] {
    const auto begin = Clock::now();
    Child host(hostOn(directory));
    host.awaitLog(kReady);
    const double taken = secondsSince(begin);
    residents.push_back(statusNumber(host.procDirectory() + "/status", "VmRSS:") / 1024);
    return taken;
  };
  startEmpty();  // reads the files of both into the page cache
  startHost();
  for (auto _ : state) {
    empties.push_back(startEmpty());
    const double taken = startHost();
    ratios.push_back(taken / empties.back());
    state.SetIterationTime(taken);
  }
  state.counters["empty_ms"] = median(std::move(empties)) * 1000;
  state.counters["x_empty"] = median(std::move(ratios));
  state.counters["resident_MB"] = median(std::move(residents));
}
BENCHMARK(start)->Iterations(60)->UseManualTime()->Unit(benchmark::kMillisecond);

void idle(benchmark::State& state) {
  const TemporaryDirectory directory;
  Child host(hostOn(directory));
  host.awaitLog(kReady);
  host.writeInput("{\"desktop\":\"settle\"}\n");
  host.awaitOutput("settled");
  std::this_thread::sleep_for(std::chrono::seconds(1));  // its way back to sleep is not idling
  for (auto _ : state) {
    const Activity before = activityOf(host);
    std::this_thread::sleep_for(std::chrono::seconds(30));
    const Activity after = activityOf(host);
    state.counters["threads"] = after.threads;
    state.counters["voluntary_switches"] = after.switches - before.switches;
    state.counters["processor_ms"] = (after.nanoseconds - before.nanoseconds) / 1e6;
    state.counters["resident_MB"] = statusNumber(host.procDirectory() + "/status", "VmRSS:") / 1024;
  }
}
BENCHMARK(idle)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace
}  // namespace norvane
