// UI programs on a library that has the C API of the UI toolkit's and misbehaves on demand. The
// real one runs in tests/e2e.

#include "platform/ui/library_ui.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <dlfcn.h>

#include "desktop_worlds.h"
#include "engine/fake_engine.h"
#include "platform/flutter/flutter_method_channel.h"
#include "platform/flutter/flutter_view_controller.h"
#include "window/plugin_registrant.h"

namespace norvane {
namespace {

namespace fs = std::filesystem;

constexpr const char* kChannel = "test/channel";

std::string textOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }
Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

class LibraryUiTest : public testing::Test {
 protected:
  LibraryUiTest() {
    fs::create_directories(bundle / "lib");
    fs::create_directories(bundle / "data/flutter_assets");
    for (const char* file : {"lib/libapp.so", "data/icudtl.dat"}) std::ofstream(bundle / file);
    place(NORVANE_FAKE_ENGINE);
    fs::create_symlink("libflutter_linux_gtk.so", bundle / "lib/libone_plugin.so");
  }
  ~LibraryUiTest() override {
    window.reset();
    host.reset();
    fs::remove_all(root);
  }

  void place(const char* library) {
    fs::remove(bundle / "lib/libflutter_linux_gtk.so");  // it may be mapped
    fs::copy_file(library, bundle / "lib/libflutter_linux_gtk.so");
  }
  void start() {
    host.reset();
    ui.emplace(UiBundle(bundle), std::vector<std::string>{"more"},
               std::vector<std::string>{"LatePlugin"});
    host.emplace(root, dispatch, *ui, [] {});
  }
  /// A window with an engine that runs at "qaMain"; not shown.
  std::shared_ptr<FlutterEngine> open() {
    auto engine = std::make_shared<FlutterEngine>("test");
    engine->runWithEntrypoint("qaMain");
    window = host->application.makeWindow<NSWindow>(NSRect{{0, 0}, {300, 200}}, kOrdinary);
    window->setContentViewController(std::make_shared<FlutterViewController>(engine));
    return engine;
  }
  void close() {
    host->application.removeWindow(*window);
    window.reset();
  }
  /// Of the library that `start` opened.
  FakeEngine& fake() {
    void* handle = ::dlopen((bundle / "lib/libflutter_linux_gtk.so").c_str(), RTLD_NOW);
    return *reinterpret_cast<decltype(&fake_engine)>(::dlsym(handle, "fake_engine"))();
  }

  std::string root = [] {
    std::string path = "/tmp/norvane-ui-XXXXXX";
    return std::string(::mkdtemp(path.data()));
  }();
  const fs::path bundle = fs::path(root) / "ui";
  GlibDispatch dispatch;
  CountingLog log;
  const ScopedLog installedLog{log};
  std::optional<LibraryUi> ui;
  std::optional<GtkPlatform> host;
  std::shared_ptr<NSWindow> window;
};

TEST_F(LibraryUiTest, BytesPassBothWaysAsTheyAreAndWaitInOrderUntilTheWindowIsShown) {
  start();
  const auto engine = open();
  const auto messenger = engine->binaryMessenger();
  FakeEngine& library = fake();
  EXPECT_EQ(library.arguments, (std::vector<std::string>{"--entrypoint=qaMain", "more"}));
  RegisterGeneratedPlugins(*window->contentViewController());
  messenger->setMessageHandler(kChannel, [&](Bytes message, FlutterBinaryReply reply) {
    messenger->setMessageHandler(kChannel, {});  // in mid-call
    reply.send(std::move(message));
  });
  messenger->send("a", bytesOf("1"));
  messenger->send("b", bytesOf(std::string("2\0\xFF", 3)));
  EXPECT_TRUE(library.arrived.empty());
  window->makeKeyAndOrderFront();
  messenger->send("a", bytesOf("3"));
  const decltype(library.arrived) expected{
      {"a", "1"}, {"b", std::string("2\0\xFF", 3)}, {"a", "3"}};
  EXPECT_EQ(library.arrived, expected);
  EXPECT_EQ(library.plugins, (std::vector<std::string>{"BiometricStorageMacOSPlugin",
                                                       "UrlLauncherPlugin", "LatePlugin"}));

  const std::string large(64 << 20, 'x');
  EXPECT_TRUE(library.send(kChannel, large));
  EXPECT_EQ(library.answers.at(0), large);
  EXPECT_FALSE(library.send(kChannel, "the library answers what nobody bound"));
  close();
}

TEST_F(LibraryUiTest, EveryMessageIsAnsweredOnceAlsoByNobodyAndAfterTheEngineHasGone) {
  start();
  auto engine = open();
  window->makeKeyAndOrderFront();
  FakeEngine& library = fake();
  std::vector<FlutterBinaryReply> kept;
  std::string heard = "nothing";
  engine->binaryMessenger()->setMessageHandler(kChannel, [&](Bytes message, FlutterBinaryReply r) {
    heard = textOf(message);
    if (heard == "keep") kept.push_back(std::move(r));
    if (heard == "drop") r.drop();
    if (heard.empty()) r.send(bytesOf("empty"));
  });
  const auto ask = [&](const FakeEngine::Message& message) {
    library.answers.clear();
    EXPECT_TRUE(library.send(kChannel, message));
    return library.answers;
  };
  EXPECT_EQ(ask(std::nullopt), (std::vector<FakeEngine::Message>{"empty"}));
  EXPECT_EQ(ask("drop"), (std::vector<FakeEngine::Message>{std::nullopt}));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(ask("keep"), std::vector<FakeEngine::Message>{});
  kept.front().send(bytesOf("late"));
  EXPECT_EQ(library.answers, (std::vector<FakeEngine::Message>{"late"}));
  library.answers.clear();
  close();
  engine.reset();
  kept.back().send(bytesOf("to nobody"));
  kept.clear();
  EXPECT_EQ(library.answers, (std::vector<FakeEngine::Message>{std::nullopt}));
  EXPECT_EQ(library.unanswered, 0);
}

TEST_F(LibraryUiTest, OfTooManyMessagesThatWaitTheOldestGoWithOneLine) {
  start();
  const auto engine = open();
  for (int i = 0; i < 1010; ++i) engine->binaryMessenger()->send("n", bytesOf(std::to_string(i)));
  const int before = log.records;
  engine->binaryMessenger()->send("large", Bytes((16 << 20) - 8));
  EXPECT_EQ(log.records, before);
  EXPECT_NE(log.last.find("oldest"), std::string::npos);
  window->makeKeyAndOrderFront();
  const auto& arrived = fake().arrived;
  ASSERT_EQ(arrived.size(), 3U);
  EXPECT_EQ(arrived[0].second, "1008");
  close();
}

std::string shownText(GtkWidget* widget) {
  std::string text = GTK_IS_LABEL(widget) ? gtk_label_get_text(GTK_LABEL(widget)) : "";
  const auto append = [](GtkWidget* child, gpointer all) {
    *static_cast<std::string*>(all) += shownText(child);
  };
  if (GTK_IS_CONTAINER(widget)) gtk_container_foreach(GTK_CONTAINER(widget), append, &text);
  return text;
}

TEST_F(LibraryUiTest, WhatCannotRunIsSaidInOneLineAndInTheWindow) {
  const auto expectRefusal = [&](const std::string& reason) {
    start();
    const int before = log.records;
    const auto engine = open();
    engine->binaryMessenger()->setMessageHandler(kChannel, [](Bytes, FlutterBinaryReply) {});
    engine->binaryMessenger()->send(kChannel, {});
    window->makeKeyAndOrderFront();
    open();
    EXPECT_EQ(log.records, before + 1) << reason;
    EXPECT_NE(log.last.find(reason), std::string::npos) << log.last;
    EXPECT_NE(shownText(GTK_WIDGET(DesktopWindows::shownWindow())).find(reason), std::string::npos);
    close();
  };
  const fs::path library = bundle / "lib/libflutter_linux_gtk.so";
  place(NORVANE_FAKE_ENGINE_WITHOUT_REGISTRARS);
  expectRefusal(library.string() + ": lacks fl_plugin_registry_get_registrar_for_plugin");
  place(NORVANE_FAKE_ENGINE);
  std::fstream(library, std::ios::in | std::ios::out).seekp(18).put('\x77').put('\x77');
  expectRefusal(library.string() + ": is for another processor");
  fs::remove(library);
  std::ofstream(library) << "text";
  expectRefusal(library.string() + ": ");
  fs::remove(bundle / "data/icudtl.dat");
  expectRefusal("icudtl.dat is missing");
  fs::remove_all(bundle);
  expectRefusal("there is none in " + bundle.string());
}

TEST_F(LibraryUiTest, AnEngineThatDoesNotStartIsLogged) {
  start();
  const auto engine = open();
  fake().startFails = true;
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(await(
      [&] { return log.last.find("\"test\" does not run: No engine") != std::string::npos; }));
  close();
}

// A real program on the real library. It asks a plugin for the window before it draws, and again
// whenever it hears from it: the plugin is played here.
TEST(RealUiTest, DartsCallsReachAHandlerOfOursAndOursReachDart) {
  const fs::path bundle = NORVANE_UI_BUNDLE;
  if (!fs::exists(bundle)) GTEST_SKIP() << "no UI bundle to be had";
  ::setenv("FLUTTER_LINUX_RENDERER", "software", 1);
  const std::string home = std::getenv("HOME");
  GlibDispatch dispatch;
  CountingLog log;
  const ScopedLog installedLog{log};
  LibraryUi ui(UiBundle(bundle), {home + "/a", home + "/b", home + "/c"}, {});
  GtkPlatform host(home, dispatch, ui, [] {});
  const auto controller = std::make_shared<FlutterViewController>();
  FlutterMethodChannel channel("window_manager", controller->engine().binaryMessenger());
  std::set<std::string, std::less<>> called;
  channel.setMethodCallHandler([&](const FlutterMethodCall& call, FlutterResult result) {
    called.emplace(call.method());
    if (call.method() == "getBounds") {
      result(FlutterMap{{"x", 1.0}, {"y", 2.0}, {"width", 600.0}, {"height", 400.0}});
    } else if (call.method() == "getOpacity") {
      result(1.0);
    } else {
      result(call.method().starts_with("is") ? FlutterValue(false) : FlutterValue(nullptr));
    }
  });
  const auto window = host.application.makeWindow<NSWindow>(NSRect{{0, 0}, {600, 400}}, kOrdinary);
  window->setContentViewController(controller);
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(await([&] { return called.contains("getBounds"); }));
  GtkWidget* const shown = GTK_WIDGET(DesktopWindows::shownWindow());
  bool isPainted = false;  // to look at other times would keep the toolkit from painting
  const auto painted = +[](GdkFrameClock*, bool* flag) { *flag = true; };
  g_signal_connect(gtk_widget_get_frame_clock(shown), "after-paint", G_CALLBACK(painted),
                   &isPainted);
  const auto move = [&] { channel.invokeMethod("onEvent", FlutterMap{{"eventName", "moved"}}); };
  called.clear();
  EXPECT_TRUE(await([&] {
    if (std::exchange(isPainted, false)) move();  // until the program listens
    return called.contains("getBounds");
  }));
  g_signal_handlers_disconnect_by_data(gtk_widget_get_frame_clock(shown), &isPainted);
  EXPECT_EQ(log.records, 0) << log.last;
  // As the host does: the library has threads that cannot be ended.
  EXPECT_TRUE(ui.processEnds());
  std::fflush(nullptr);
  std::_Exit(HasFailure() ? 1 : 0);
}

}  // namespace
}  // namespace norvane
