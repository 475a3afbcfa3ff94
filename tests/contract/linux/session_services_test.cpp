// The session's keyring and autostart folder.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gio/gdesktopappinfo.h>
#include <libsecret/secret.h>

#include "contract.h"
#include "desktop_worlds.h"

namespace norvane {
namespace {

namespace fs = std::filesystem;
using enum SMAppServiceStatus;

struct RealServices : testing::Test, DesktopServices {};

TEST_F(RealServices, AKeyringThatDoesNotAnswerHoldsNoThreadForLong) {
  const auto signalKeyring = [](const std::string& name) {
    const std::string service =
        "$(gdbus call --session --dest org.freedesktop.DBus --object-path / --method "
        "org.freedesktop"
        ".DBus.GetConnectionUnixProcessID org.freedesktop.secrets | tr -dc '0-9 ' | cut -c3-)";
    return std::system(("kill -" + name + " " + service).c_str());
  };
  const auto ask = [this] { EXPECT_EQ(keychain.SecItemDelete(kAny), errSecInteractionNotAllowed); };
  const auto queue = dispatch.makeSerialQueue();
  ASSERT_EQ(signalKeyring("STOP"), 0);
  const auto begin = GlibDispatch::Clock::now();
  for (int task = 0; task < 3; ++task) queue->async(ask);
  queue->sync([&] {
    EXPECT_LE(dispatch.mainThreadWaitsSince(), begin + std::chrono::seconds(1));
    ask();
  });
  EXPECT_LT(GlibDispatch::Clock::now() - begin, std::chrono::seconds(6));
  EXPECT_EQ(signalKeyring("CONT"), 0);
}

// The next test's: a process of its own, since each keeps the bus that it has found.
TEST_F(RealServices, DISABLED_InAnotherSession) {
  const OSStatus found = std::atoi(std::getenv("FOUND"));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(keychain.SecItemUpdate(kMine, {kSecond, "b"}), found);
  EXPECT_EQ(keychain.SecItemAdd(kOther, {kSecond, "b"}, false), std::atoi(std::getenv("ADDED")));
  EXPECT_EQ(keychain.SecItemDelete(kOther), found);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2)) << "a dialog waits";
}

TEST_F(RealServices, AnItemIsThereForOthersAndALockedOrNewKeyringIsSaidSoAtOnce) {
  keychain.SecItemAdd(kMine, {kSecond, "a"}, false);
  EXPECT_EQ(keychain.SecItemUpdate(kAny, {kFirst, "b"}), errSecSuccess);
  constexpr SecretSchema kSchema = {
      "", SECRET_SCHEMA_DONT_MATCH_NAME, {{"access-group"}, {"accessible"}, {"synchronizable"}}};
  SecretValue* value =
      secret_password_lookup_binary_sync(&kSchema, nullptr, nullptr, "access-group", "TEAM.mine",
                                         "accessible", "b", "synchronizable", "false", nullptr);
  ASSERT_TRUE(value);
  gsize size = 0;
  const char* bytes = secret_value_get(value, &size);
  EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + size), kFirst);
  secret_value_unref(value);

  for (const std::string session :
       {"export FOUND=-25308 ADDED=-25308 XDG_RUNTIME_DIR=$(mktemp -d -p $HOME); dbus-run-session ",
        // There is none yet.
        "export FOUND=-25300 ADDED=-25308 XDG_RUNTIME_DIR=$(mktemp -d -p $HOME); "
        "XDG_DATA_HOME=$XDG_RUNTIME_DIR dbus-run-session "}) {
    const std::string program = fs::read_symlink("/proc/self/exe");
    const std::string options = " --gtest_also_run_disabled_tests --gtest_filter=*InAnotherSession";
    EXPECT_EQ(std::system((session + program + options).c_str()), 0) << session;
  }
}

TEST_F(RealServices, TheSessionStartsTheApplicationWhateverItsPath) {
  const fs::path program = autostart / "a \"b\" `c` $d\\e 'f' ü/run";
  fs::create_directories(program.parent_path());
  std::ofstream(program) << "#!/bin/sh\nexec test $#$1 = 1--at-login\n";
  fs::permissions(program, fs::perms::owner_all);
  EXPECT_FALSE(AutostartEntry(program).registerService());
  const GObjectPtr<GDesktopAppInfo> read(g_desktop_app_info_new_from_filename(entry.c_str()));
  ASSERT_TRUE(read);
  const char* command = g_app_info_get_commandline(G_APP_INFO(read.get()));
  int status = -1;
  EXPECT_TRUE(g_spawn_command_line_sync(command, nullptr, nullptr, &status, nullptr));
  EXPECT_EQ(status, 0) << command;
}

TEST_F(RealServices, TheLoginItemIsWhatItsFileSaysAndRegisteringMendsIt) {
  fs::create_directories(autostart);
  const auto expectAndMend = [&](const std::string& lines, SMAppServiceStatus expected) {
    std::ofstream(entry) << "[Desktop Entry]\nType=Application\n" << lines;
    EXPECT_EQ(loginItem.status(), expected) << lines;
    EXPECT_FALSE(loginItem.registerService());
    EXPECT_EQ(loginItem.status(), enabled) << lines;
  };
  expectAndMend("Exec=norvane\nX-GNOME-Autostart-enabled=true\n", enabled);
  expectAndMend("Exec=norvane\nHidden=true\n", notRegistered);
  expectAndMend("Exec=norvane\nX-GNOME-Autostart-enabled=false\n", requiresApproval);
  expectAndMend("[Other]\nExec=norvane\n", notFound);
  expectAndMend("no key file", notFound);

  for (const char* path : {"/opt/100%/Norvane", "/opt/a=b", "/opt/\xFF", "/opt/a\nb"}) {
    const auto error = AutostartEntry(path).registerService();
    EXPECT_TRUE(error && error->localizedDescription.find("path") != std::string::npos) << path;
  }
  fs::remove_all(autostart);
  std::ofstream(autostart) << "a file where the folder should be";
  EXPECT_TRUE(loginItem.registerService() && loginItem.unregisterService());
}

}  // namespace
}  // namespace norvane
