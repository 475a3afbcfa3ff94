// What the host itself takes between a person's act and the UI's hearing of it: a key press to
// "shown", the first time and later, and a link to "urlOpened".

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

#include "app/main_interface.h"
#include "heap_use.h"
#include "platform/flutter/standard_method_codec.h"
#include "platform/headless/headless_platform.h"
#include "platform/log.h"
#include "support/virtual_dispatch.h"

namespace norvane {
namespace {

constexpr Hotkey kHotkey{42, 256};

/// Logging is the sink's time, not the host's.
struct NoLog : Log {
  void write(std::string_view) override {}
};

struct CountingUi : UiObserver {
  void started(std::string_view, std::string_view) override {}
  void pluginRegistered(std::string_view, std::string_view) override {}
  void called(std::string_view, std::string_view, const Bytes&) override { ++calls; }
  int calls = 0;
};

/// A host that has been launched, in a data directory of its own.
class LaunchedHost {
 public:
  explicit LaunchedHost(bool withIcon = true) {
    // The bench is no bundle: the core library is the built bundle's.
    ::setenv("NORVANE_RUST_LIB_PATH", NORVANE_BUNDLE "/Contents/Frameworks/libffi_bridge.dylib", 1);
    std::string name = (std::filesystem::temp_directory_path() / "norvane-bench-XXXXXX").string();
    directory_ = ::mkdtemp(name.data());
    Profile profile;
    profile.applications.front().icon = withIcon;
    host_.emplace(std::move(profile), directory_, dispatch, [] {});
    host_->ui.addObserver(ui);
    host_->desktop.launch(mainInterface());
    dispatch.settle();
  }
  ~LaunchedHost() {
    host_.reset();
    std::filesystem::remove_all(directory_);
  }

  void press() {
    host_->hotkeys.press(kHotkey);
    dispatch.runMain();
  }
  void becomeReady() {
    host_->ui.send("main", "norvane/deeplink", encodeMethodCall("flutterReady", {}), [](Bytes) {});
  }
  NSApplication& application() { return host_->application; }

  VirtualDispatch dispatch;
  CountingUi ui;

 private:
  NoLog log_;
  const ScopedLog installedLog_{log_};
  std::string directory_;
  std::optional<HeadlessPlatform> host_;
};

/// One pass of `work` an iteration; fails unless it makes the UI hear something.
template <class Prepare, class Work>
void measure(benchmark::State& state, LaunchedHost& host, Prepare prepare, Work work) {
  double allocations = 0;
  for (auto _ : state) {
    state.PauseTiming();
    prepare();
    const int before = host.ui.calls;
    const HeapUse heap;
    state.ResumeTiming();
    work();
    state.PauseTiming();
    allocations += heap.allocations();
    if (host.ui.calls == before) state.SkipWithError("the UI heard nothing");
    state.ResumeTiming();
  }
  state.counters["allocations"] =
      benchmark::Counter(allocations, benchmark::Counter::kAvgIterations);
}

/// With the front application's icon (1), which the desktop paints and the image library scales and
/// encodes, and without (0).
void KeyPressToShown(benchmark::State& state) {
  LaunchedHost host(state.range(0) != 0);
  host.press();  // makes the panel
  measure(
      state, host, [&] { host.press(); }, [&] { host.press(); });
}
BENCHMARK(KeyPressToShown)->Arg(0)->Arg(1);

void FirstKeyPressToShown(benchmark::State& state) {
  double allocations = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto host = std::make_unique<LaunchedHost>();
    const HeapUse heap;
    state.ResumeTiming();
    host->press();
    state.PauseTiming();
    allocations += heap.allocations();
    if (host->ui.calls == 0) state.SkipWithError("the UI heard nothing");
    host.reset();
    state.ResumeTiming();
  }
  state.counters["allocations"] =
      benchmark::Counter(allocations, benchmark::Counter::kAvgIterations);
}
BENCHMARK(FirstKeyPressToShown)->Iterations(50);

void LinkToUrlOpened(benchmark::State& state) {
  LaunchedHost host;
  host.becomeReady();
  const std::string link(static_cast<std::size_t>(state.range(0)), 'a');
  measure(
      state, host, [] {}, [&] { host.application().openURL(link); });
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(LinkToUrlOpened)->Arg(32)->Arg(4 << 20);

}  // namespace
}  // namespace norvane
