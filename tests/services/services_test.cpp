#include <fstream>

#include <unistd.h>

#include "support/host_test.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

constexpr const char* kSecureInput = "cn.kestrio.norvane.secure_input";
constexpr const char* kLogin = "cn.kestrio.norvane.launch_at_login";
constexpr const char* kPinyin = "com.example.keylayout.Pinyin";
constexpr const char* kAbc = "com.example.keylayout.ABC";

using ServicesTest = HostTest;

TEST_F(ServicesTest, SecureInputIsCountedAndGivesBackTheLayoutOfItsBeginning) {
  const auto expect = [&](const char* method, int count, const char* layout) {
    EXPECT_EQ(call(kSecureInput, method), "success null");
    EXPECT_EQ(MainFlutterWindow::first()->secureInputRefCount, count);
    EXPECT_EQ(host().keyboard.isSecure(), count > 0);
    EXPECT_EQ(host().keyboard.inputSource(), layout) << method << ", then " << count;
  };
  start();
  for (const char* layout : {kPinyin, kAbc}) {
    expect("enable", 1, kAbc);
    host().keyboard.select(kPinyin);
    expect("enable", 2, kPinyin);
    host().keyboard.select(kAbc);
    expect("disable", 1, kAbc);
    host().keyboard.select(kPinyin);
    expect("disable", 0, layout);
    host().keyboard.select(kAbc);
    host().keyboard.EnableSecureEventInput();
    expect("disable", 0, kAbc);  // one too many still turns it off
  }
  change(R"({"asciiInputSource":null})");
  host().keyboard.select(kPinyin);
  expect("enable", 1, kPinyin);
}

TEST_F(ServicesTest, TheLoginItemIsKeptOnDiskAndItsFailuresAreLogged) {
  start();
  const std::string off = "success {\"supported\":true,\"enabled\":false}";
  call(kLogin, "set", "{\"enabled\":true}");
  start();
  EXPECT_EQ(call(kLogin, "get"), "success {\"supported\":true,\"enabled\":true}");
  EXPECT_EQ(call(kLogin, "set", "{\"enabled\":1}"), off);
  std::filesystem::create_symlink("login-item", directory.path / "login-item");
  EXPECT_EQ(call(kLogin, "get"), off) << "nobody can follow it";
  change(R"({"loginItem":{"status":2}})");
  EXPECT_EQ(call(kLogin, "get"), off) << "requires approval";
  change(R"({"loginItem":{"error":"not allowed"}})");
  EXPECT_EQ(call(kLogin, "set", "{\"enabled\":true}"), "error sm_app_service: not allowed, null");
  EXPECT_EQ(call(kLogin, "set"), "error sm_app_service: not allowed, null");
  EXPECT_EQ(log.take(), (Lines{"[Norvane] launch-at-login register failed: not allowed",
                               "[Norvane] launch-at-login unregister failed: not allowed"}));
}

TEST_F(ServicesTest, EachKindOfInputEndsTheIdleTime) {
  start();
  const auto idle = [&] {
    const std::string reply = call("cn.kestrio.norvane.system_idle", "idleSeconds");
    EXPECT_TRUE(reply.starts_with("success ")) << reply;
    return std::stod(reply.substr(8));
  };
  using Clock = std::chrono::steady_clock;
  for (const CGEventType type : {5u, 1u, 3u, 25u, 10u, 22u, 6u, 7u}) {
    const double before = idle();
    while (idle() <= before) continue;  // the clock moves on
    const auto at = Clock::now();
    host().eventSource.input(type);
    const double after = idle();
    EXPECT_LE(after, std::chrono::duration<double>(Clock::now() - at).count()) << "type " << type;
  }
  const double before = idle();
  host().eventSource.input(11);  // a key released
  EXPECT_GE(idle(), before);
}

TEST_F(ServicesTest, ASyncDirectoryThatCannotBeNamedOrMadeIsNone) {
  start();
  EXPECT_EQ(call("cn.kestrio.norvane.icloud", "containerURL"), "success null");
  const auto utf8 = directory.path.parent_path() / ("norvane-test-" + std::to_string(::getpid()));
  std::filesystem::rename(directory.path, utf8);
  directory.path = utf8;
  start();
  std::filesystem::create_directory(directory.path / "Mobile Documents");
  std::ofstream(directory.path / "Mobile Documents/iCloud.cn.kestrio.norvane") << "in the way";
  EXPECT_EQ(call("cn.kestrio.norvane.icloud", "containerURL"), "success null");
  EXPECT_TRUE(log.take().at(0).starts_with("[Norvane] iCloud createDirectory failed: "));
}

TEST_F(ServicesTest, AWindowOrADelegateThatHasGoneIsAnsweredFor) {
  start();
  const auto engineOwner = MainFlutterWindow::first()->contentViewController();
  const std::weak_ptr<MainFlutterWindow> window = MainFlutterWindow::first();
  application().removeWindow(*MainFlutterWindow::first());
  ASSERT_TRUE(window.expired()) << "kept alive by a handler";
  for (const char* method : {"flutterReady", "unknown"}) {
    EXPECT_EQ(call("norvane/deeplink", method), "success null");
  }
  for (const char* method : {"enable", "disable", "unknown"}) {
    EXPECT_EQ(call(kSecureInput, method), "success null");
  }
  for (const char* method : {"setMode", "unknown"}) {
    EXPECT_EQ(call("cn.kestrio.norvane.window", method), "error no_window: (none), null");
  }
  EXPECT_FALSE(host().keyboard.isSecure());
  const std::string config = "cn.kestrio.norvane.hotkey.config";
  EXPECT_EQ(call(config, "unknown"), "notImplemented");
  application().setDelegate(nullptr);
  for (const char* method : {"setChoice", "unknown"}) {
    EXPECT_EQ(call(config, method), "error no_app_delegate: (none), null");
  }
  host().updater.setObserver([] { FAIL() << "nobody is there to ask for it"; });
  EXPECT_EQ(call("cn.kestrio.norvane.updater", "check"), "success null");
}

}  // namespace
}  // namespace norvane
