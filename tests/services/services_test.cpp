#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>

#include "support/host_test.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

constexpr const char* kSecureInput = "cn.kestrio.norvane.secure_input";
constexpr const char* kClipboard = "cn.kestrio.norvane.secure_clipboard";
constexpr const char* kLogin = "cn.kestrio.norvane.launch_at_login";
constexpr const char* kPinyin = "com.example.keylayout.Pinyin";
constexpr const char* kAbc = "com.example.keylayout.ABC";

class ServicesTest : public HostTest {
 protected:
  void start(const Profile& profile = {}) {
    relaunch(profile);
    log.take();
  }
};

TEST_F(ServicesTest, RandomSecureInputSequencesMatchACounter) {
  const char* given = std::getenv("NORVANE_TEST_SEED");
  const auto seed = given ? std::strtoul(given, nullptr, 10) : std::random_device{}();
  std::cout << "seed " << seed << std::endl;
  std::mt19937 random(seed);
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
  EXPECT_EQ(call(kSecureInput, "Enable"), "notImplemented");

  host().keyboard.EnableSecureEventInput();
  while (MainFlutterWindow::first()->secureInputRefCount > 0) call(kSecureInput, "disable");
  host().keyboard.EnableSecureEventInput();
  call(kSecureInput, "disable");
  EXPECT_FALSE(host().keyboard.isSecure()) << "a disable too many still turns it off";
}

TEST_F(ServicesTest, TheClipboardHoldsOneMarkedItemOrWhatItHeld) {
  start();
  host().pasteboard.copy("before");
  for (const char* arguments :
       {"null", "[]", "{}", "{\"text\":5}", "{\"text\":null}", "\"text\""}) {
    EXPECT_EQ(call(kClipboard, "setConcealed", arguments), "error bad_args: expect {text}, null")
        << arguments;
  }
  EXPECT_EQ(call(kClipboard, "set", "{\"text\":\"x\"}"), "notImplemented");
  EXPECT_EQ(host().pasteboard.items().at(0).types().at(0).second, "before");

  for (const std::string text : {"", "p\xc3\xa4ss"}) {
    EXPECT_EQ(call(kClipboard, "setConcealed", "{\"text\":\"" + text + "\"}"), "success null");
    const auto& items = host().pasteboard.items();
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].types(), (std::vector<std::pair<std::string, std::string>>{
                                    {"public.utf8-plain-text", text},
                                    {"org.nspasteboard.ConcealedType", ""},
                                    {"org.nspasteboard.TransientType", ""}}));
  }
}

TEST_F(ServicesTest, LaunchAtLogin) {
  start();
  const std::string off = "success {\"supported\":true,\"enabled\":false}";
  const std::string on = "success {\"supported\":true,\"enabled\":true}";
  EXPECT_EQ(call(kLogin, "get"), off);
  EXPECT_EQ(call(kLogin, "set", "{\"enabled\":true}"), on);
  start();
  EXPECT_EQ(call(kLogin, "get"), on) << "kept on disk";
  for (const char* arguments : {"{\"enabled\":\"true\"}", "{\"enabled\":1}", "null"}) {
    EXPECT_EQ(call(kLogin, "set", arguments), off) << arguments;
    call(kLogin, "set", "{\"enabled\":true}");
  }
  EXPECT_EQ(call(kLogin, "unknown"), "notImplemented");

  Profile profile;
  profile.loginItem = {.status = 2, .error = {}};
  desktop().setProfile(profile);
  EXPECT_EQ(call(kLogin, "get"), off) << "requires approval";
  profile.loginItem = {.status = {}, .error = "not allowed"};
  desktop().setProfile(profile);
  EXPECT_EQ(call(kLogin, "set", "{\"enabled\":true}"), "error sm_app_service: not allowed, null");
  EXPECT_EQ(call(kLogin, "set"), "error sm_app_service: not allowed, null");
  EXPECT_EQ(log.take(), (Lines{"[Norvane] launch-at-login register failed: not allowed",
                               "[Norvane] launch-at-login unregister failed: not allowed"}));

  profile.osVersion = {12, 9, 9};
  desktop().setProfile(profile);
  for (const char* method : {"get", "set", "unknown"}) {
    EXPECT_EQ(call(kLogin, method, "{\"enabled\":true}"),
              "success {\"supported\":false,\"enabled\":false}");
  }
}

TEST_F(ServicesTest, UpdaterIdleTimeAndSyncDirectory) {
  start();
  int checks = 0;
  host().updater.setObserver([&] { ++checks; });
  EXPECT_EQ(call("cn.kestrio.norvane.updater", "check"), "success null");
  EXPECT_EQ(call("cn.kestrio.norvane.updater", "Check"), "notImplemented");
  EXPECT_EQ(checks, 1);
  application().setDelegate(nullptr);
  EXPECT_EQ(call("cn.kestrio.norvane.updater", "check"), "success null");
  EXPECT_EQ(checks, 1);

  const auto idle = [&] {
    const std::string reply = call("cn.kestrio.norvane.system_idle", "idleSeconds");
    EXPECT_TRUE(reply.starts_with("success ")) << reply;
    return std::stod(reply.substr(8));
  };
  const auto began = std::chrono::steady_clock::now();
  double before = idle();
  for (const CGEventType type : {5u, 1u, 3u, 25u, 10u, 22u, 6u, 7u}) {
    while (idle() <= before) continue;  // the clock moves on
    before = idle();
    host().eventSource.input(type);
    EXPECT_LT(idle(), before) << "type " << type;
    before = idle();
  }
  host().eventSource.input(11);  // a key released
  EXPECT_GE(idle(), before);
  EXPECT_LE(idle(),
            std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
  EXPECT_EQ(call("cn.kestrio.norvane.system_idle", "seconds"), "notImplemented");

  constexpr const char* kIcloud = "cn.kestrio.norvane.icloud";
  const auto container = directory.path / "Mobile Documents/iCloud.cn.kestrio.norvane";
  const std::string path = (container / "Documents/sync").string();
  EXPECT_EQ(call(kIcloud, "containerURL", "[1]"), "success \"" + path + "\"");
  EXPECT_EQ(call(kIcloud, "containerURL"), "success \"" + path + "\"");
  EXPECT_TRUE(std::filesystem::is_directory(path));
  std::filesystem::remove_all(container);
  std::ofstream(container) << "in the way";
  EXPECT_EQ(call(kIcloud, "containerURL"), "success null");
  const Lines lines = log.take();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].starts_with("[Norvane] iCloud createDirectory failed: ")) << lines[0];
  Profile profile;
  profile.icloud = false;
  desktop().setProfile(profile);
  EXPECT_EQ(call(kIcloud, "containerURL"), "success null");
  EXPECT_EQ(call(kIcloud, "path"), "notImplemented");
  EXPECT_EQ(log.take(), Lines{});
}

TEST_F(ServicesTest, AWindowThatHasGoneIsAnsweredFor) {
  start();
  const auto engineOwner = MainFlutterWindow::first()->contentViewController();
  application().removeWindow(*MainFlutterWindow::first());
  for (const char* method : {"enable", "disable", "unknown"}) {
    EXPECT_EQ(call(kSecureInput, method), "success null");
  }
  for (const char* method : {"setMode", "unknown"}) {
    EXPECT_EQ(call("cn.kestrio.norvane.window", method), "error no_window: (none), null");
  }
  EXPECT_FALSE(host().keyboard.isSecure());
}

}  // namespace
}  // namespace norvane
