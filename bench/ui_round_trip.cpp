// A call of a real UI program and its answer: Dart, handler, Dart. The program asks a plugin about
// the window, one question after another, whenever it hears that the window has moved; the plugin
// is played here, by the host's messenger and codec or by the library's own method channel. For
// ui_bench.py. Usage: ui_round_trip UI_BUNDLE_DIRECTORY host|library

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <gtk/gtk.h>

#include "platform/flutter/flutter_method_channel.h"
#include "platform/flutter/flutter_view_controller.h"
#include "platform/gtk/gtk_platform.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/stderr_log.h"
#include "platform/ui/library_ui.h"

using namespace norvane;

namespace {

constexpr const char* kChannel = "window_manager";
constexpr std::size_t kRounds = 1000;
constexpr std::size_t kWarmUp = 100;
constexpr unsigned kSilence = 20;              // milliseconds after which the program asks no more
constexpr std::int64_t kLongest = 60'000'000;  // microseconds

/// From an answer to the question that follows it: there and back.
class Rounds {
 public:
  /// `move` has the program ask once more.
  explicit Rounds(std::function<void()> move) : move_(std::move(move)) {
    g_timeout_add(
        kSilence, [](gpointer self) { return static_cast<Rounds*>(self)->look(); }, this);
  }

  void asked() {
    if (answeredAt_) micros_.push_back(g_get_monotonic_time() - answeredAt_);
  }
  void answers() { answeredAt_ = g_get_monotonic_time(); }

 private:
  gboolean look() {
    const std::int64_t now = g_get_monotonic_time();
    if (now - begin_ > kLongest) finish();
    if (answeredAt_ && now - answeredAt_ < kSilence * 1000) return G_SOURCE_CONTINUE;
    if (micros_.size() >= kWarmUp + kRounds) finish();
    answeredAt_ = 0;
    move_();
    return G_SOURCE_CONTINUE;
  }

  /// The process ends here: the library has threads that cannot be ended.
  [[noreturn]] void finish() {
    const bool isWhole = micros_.size() >= kWarmUp + kRounds;
    if (isWhole) {
      const auto begin = micros_.begin() + kWarmUp;
      const auto middle = begin + kRounds / 2;
      std::nth_element(begin, middle, begin + kRounds);
      std::printf("%lld\n", static_cast<long long>(*middle));
    }
    std::fflush(stdout);
    std::_Exit(isWhole ? 0 : 1);
  }

  const std::function<void()> move_;
  const std::int64_t begin_ = g_get_monotonic_time();
  std::int64_t answeredAt_ = 0;
  std::vector<std::int64_t> micros_;
};

[[noreturn]] void measureHost(const std::string& bundle, const std::string& home) {
  GlibDispatch dispatch;
  StderrLog log;
  const ScopedLog installedLog(log);
  LibraryUi ui(UiBundle(bundle), {home + "/a", home + "/b", home + "/c"}, {});
  GtkPlatform host(home, dispatch, ui, [] {});
  const auto controller = std::make_shared<FlutterViewController>();
  FlutterMethodChannel channel(kChannel, controller->engine().binaryMessenger());
  Rounds rounds([&] { channel.invokeMethod("onEvent", FlutterMap{{"eventName", "moved"}}); });
  channel.setMethodCallHandler([&](const FlutterMethodCall& call, FlutterResult result) {
    rounds.asked();
    FlutterValue answer;
    if (call.method() == "getBounds") {
      answer = FlutterMap{{"x", 1.0}, {"y", 2.0}, {"width", 600.0}, {"height", 400.0}};
    } else if (call.method() == "getOpacity") {
      answer = 1.0;
    } else if (call.method().starts_with("is")) {
      answer = false;
    }
    rounds.answers();
    result(answer);
  });
  const auto window = host.application.makeWindow<NSWindow>(
      NSRect{{0, 0}, {600, 400}}, NSWindowStyleMaskTitled | NSWindowStyleMaskResizable);
  window->setContentViewController(controller);
  window->makeKeyAndOrderFront();
  dispatch.run();
  std::_Exit(1);
}

/// What only this side uses of the library.
struct LibraryChannels {
  using Handler = void (*)(void* channel, void* call, gpointer data);

  void* (*codecNew)();
  void* (*channelNew)(FlBinaryMessenger*, const char* name, void* codec);
  void (*setHandler)(void* channel, Handler, gpointer data, GDestroyNotify);
  void (*invoke)(void* channel, const char* method, void* arguments, GCancellable*,
                 GAsyncReadyCallback, gpointer);
  const char* (*nameOf)(void* call);
  gboolean (*respond)(void* call, void* value, GError**);
  void* (*boolean)(bool);
  void* (*number)(double);
  void* (*text)(const char*);
  void* (*null)();
  void* (*map)();
  void (*setTake)(void* map, const char* key, void* value);
  void (*unref)(void* value);

  explicit LibraryChannels(void* library) {
    const auto find = [&](auto& function, const char* name) {
      function =
          reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name));
      if (!function) std::_Exit(1);
    };
    find(codecNew, "fl_standard_method_codec_new");
    find(channelNew, "fl_method_channel_new");
    find(setHandler, "fl_method_channel_set_method_call_handler");
    find(invoke, "fl_method_channel_invoke_method");
    find(nameOf, "fl_method_call_get_name");
    find(respond, "fl_method_call_respond_success");
    find(boolean, "fl_value_new_bool");
    find(number, "fl_value_new_float");
    find(text, "fl_value_new_string");
    find(null, "fl_value_new_null");
    find(map, "fl_value_new_map");
    find(setTake, "fl_value_set_string_take");
    find(unref, "fl_value_unref");
  }
};

[[noreturn]] void measureLibrary(const std::string& directory, const std::string& home) {
  const UiBundle bundle(directory);
  const EngineLibrary library(bundle.library());
  const LibraryChannels channels(::dlopen(bundle.library().c_str(), RTLD_NOW | RTLD_NOLOAD));
  std::string paths[] = {home + "/a", home + "/b", home + "/c"};
  char* arguments[] = {paths[0].data(), paths[1].data(), paths[2].data(), nullptr};
  FlDartProject* const project = library.dart_project_new();
  library.dart_project_set_aot_library_path(project, bundle.program().c_str());
  library.dart_project_set_assets_path(project, bundle.assets().data());
  library.dart_project_set_icu_data_path(project, bundle.localeData().data());
  library.dart_project_set_dart_entrypoint_arguments(project, arguments);
  FlView* const view = library.view_new(project);
  void* const channel =
      channels.channelNew(library.engine_get_binary_messenger(library.view_get_engine(view)),
                          kChannel, channels.codecNew());
  Rounds rounds([&] {
    void* const event = channels.map();
    channels.setTake(event, "eventName", channels.text("moved"));
    channels.invoke(channel, "onEvent", event, nullptr, nullptr, nullptr);
    channels.unref(event);
  });
  struct Player {
    const LibraryChannels& channels;
    Rounds& rounds;
  } player{channels, rounds};
  channels.setHandler(
      channel,
      [](void*, void* call, gpointer data) {
        const auto& [use, times] = *static_cast<Player*>(data);
        times.asked();
        const char* const method = use.nameOf(call);
        void* answer = nullptr;
        if (std::strcmp(method, "getBounds") == 0) {
          answer = use.map();
          use.setTake(answer, "x", use.number(1));
          use.setTake(answer, "y", use.number(2));
          use.setTake(answer, "width", use.number(600));
          use.setTake(answer, "height", use.number(400));
        } else if (std::strcmp(method, "getOpacity") == 0) {
          answer = use.number(1);
        } else {
          answer = std::strncmp(method, "is", 2) == 0 ? use.boolean(false) : use.null();
        }
        times.answers();
        use.respond(call, answer, nullptr);
        use.unref(answer);
      },
      &player, nullptr);
  GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_default_size(GTK_WINDOW(window), 600, 400);
  gtk_container_add(GTK_CONTAINER(window), reinterpret_cast<GtkWidget*>(view));
  gtk_widget_show_all(window);
  gtk_main();
  std::_Exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || !gtk_init_check(nullptr, nullptr)) return 64;
  const std::string home = std::filesystem::temp_directory_path() / "norvane-round-trip";
  std::filesystem::create_directories(home);
  if (std::strcmp(argv[2], "host") == 0) measureHost(argv[1], home);
  measureLibrary(argv[1], home);
}
