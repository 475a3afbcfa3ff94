#include <fstream>
#include <random>

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

TEST_F(ServicesTest, RandomSecureInputSequencesMatchACounter) {
  std::mt19937 random = seededRandom();
  for (int sequence = 0; sequence < 100; ++sequence) {
    Profile profile;
    const bool hasAscii = random() % 2;
    if (!hasAscii) profile.asciiInputSource.reset();
    start(profile);
    int count = 0;
    std::string current = kPinyin;
    std::string saved;
    for (int step = 0; step < 30; ++step) {
      switch (random() % 3) {
        case 0:
          EXPECT_EQ(call(kSecureInput, "enable"), "success null");
          if (count++ == 0) {
            saved = current;
            if (hasAscii) current = kAbc;
          }
          break;
        case 1:
          EXPECT_EQ(call(kSecureInput, "disable"), "success null");
          if (count == 1) current = saved;
          count = std::max(count - 1, 0);
          break;
        default:
          current = random() % 2 ? kPinyin : kAbc;
          host().keyboard.select(current);
      }
      ASSERT_EQ(host().keyboard.isSecure(), count > 0);
      ASSERT_EQ(host().keyboard.inputSource(), current);
      ASSERT_EQ(MainFlutterWindow::first()->secureInputRefCount, count);
    }
  }
  host().keyboard.EnableSecureEventInput();
  while (MainFlutterWindow::first()->secureInputRefCount > 0) call(kSecureInput, "disable");
  host().keyboard.EnableSecureEventInput();
  call(kSecureInput, "disable");
  EXPECT_FALSE(host().keyboard.isSecure()) << "a disable too many still turns it off";
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
  const Lines lines = log.take();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].starts_with("[Norvane] iCloud createDirectory failed: ")) << lines[0];
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
  application().setDelegate(nullptr);
  host().updater.setObserver([] { FAIL() << "nobody is there to ask for it"; });
  EXPECT_EQ(call("cn.kestrio.norvane.updater", "check"), "success null");
}

}  // namespace
}  // namespace norvane
