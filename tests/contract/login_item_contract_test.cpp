// Launch at login: what the host relies on, of the simulated service and of the autostart folder.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gio/gdesktopappinfo.h>
#include <gtest/gtest.h>

#include "platform/gtk/autostart_entry.h"
#include "platform/gtk/glib_handles.h"
#include "platform/headless/headless_services.h"
#include "real_desktop.h"

namespace norvane {
namespace {

namespace fs = std::filesystem;
using enum SMAppServiceStatus;

std::string read(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct SimulatedLoginItem {
  const fs::path directory = GTextPtr(g_dir_make_tmp(nullptr, nullptr)).get();
  LiveProfile profile{Profile()};
  HeadlessAppService service{directory, profile};
  ~SimulatedLoginItem() { fs::remove_all(directory); }
};

struct AutostartFolder {
  const fs::path directory = fs::path(g_get_user_config_dir()) / "autostart";
  const fs::path file = directory / "cn.kestrio.norvane.desktop";
  AutostartEntry service{"/opt/Norvane.app/Norvane"};
  AutostartFolder() { fs::remove_all(directory); }
  ~AutostartFolder() { fs::remove_all(directory); }
};

template <class World>
class LoginItemContract : public testing::Test, public World {};
using Worlds = testing::Types<SimulatedLoginItem, AutostartFolder>;
TYPED_TEST_SUITE(LoginItemContract, Worlds);

TYPED_TEST(LoginItemContract, EachStateCanBeAskedForTwice) {
  SMAppService& item = this->service;
  EXPECT_EQ(item.status(), notRegistered);
  EXPECT_FALSE(item.unregisterService());
  for (int i = 0; i < 2; ++i) {
    EXPECT_FALSE(item.registerService());
    EXPECT_EQ(item.status(), enabled);
  }
  for (int i = 0; i < 2; ++i) {
    EXPECT_FALSE(item.unregisterService());
    EXPECT_EQ(item.status(), notRegistered);
  }
}

class AutostartEntryTest : public testing::Test, public AutostartFolder {};

TEST_F(AutostartEntryTest, TheSessionStartsTheApplicationWhateverItsPath) {
  const fs::path strange = directory.parent_path() / "a \"b\" `c` $d\\e 'f' ü/run";
  const fs::path told = directory.parent_path() / "told";
  fs::create_directories(strange.parent_path());
  std::ofstream(strange) << "#!/bin/sh\necho \"$#$1\" >'" << told.string() << "'\n";
  fs::permissions(strange, fs::perms::owner_all);
  EXPECT_FALSE(AutostartEntry(strange).registerService());

  const GObjectPtr<GDesktopAppInfo> entry(g_desktop_app_info_new_from_filename(file.c_str()));
  ASSERT_TRUE(entry);
  EXPECT_STREQ(g_app_info_get_name(G_APP_INFO(entry.get())), "Norvane");
  // Its events wake the loop when the program has told.
  const GObjectPtr<GFile> toldFile(g_file_new_for_path(told.c_str()));
  const GObjectPtr<GFileMonitor> monitor(
      g_file_monitor_file(toldFile.get(), G_FILE_MONITOR_NONE, nullptr, nullptr));
  EXPECT_TRUE(g_app_info_launch(G_APP_INFO(entry.get()), nullptr, nullptr, nullptr));
  EXPECT_TRUE(await([&] { return read(told) == "1--at-login\n"; }));
  fs::remove_all(strange.parent_path());
  fs::remove(told);
}

TEST_F(AutostartEntryTest, TheStatusIsWhatTheFileSaysAndRegisteringMendsIt) {
  const auto statusOf = [&](const std::string& content) {
    fs::create_directories(directory);
    std::ofstream(file) << content;
    return service.status();
  };
  const std::string entry = "[Desktop Entry]\nType=Application\nName=Norvane\n";
  EXPECT_EQ(statusOf(entry + "Exec=norvane\n"), enabled);
  EXPECT_EQ(statusOf(entry + "Exec=norvane\nHidden=true\n"), notRegistered);
  EXPECT_EQ(statusOf(entry), notFound);
  EXPECT_EQ(statusOf("[Other]\nExec=norvane\n"), notFound);
  EXPECT_EQ(statusOf("no key file"), notFound);
  EXPECT_FALSE(service.registerService());
  EXPECT_EQ(service.status(), enabled);
  EXPECT_EQ(statusOf(entry + "Exec=norvane\nX-GNOME-Autostart-enabled=false\nHidden=false\n"
                             "X-Delay=5\n"),
            requiresApproval);
  EXPECT_FALSE(service.registerService());
  EXPECT_EQ(service.status(), enabled);
  EXPECT_NE(read(file).find("X-Delay=5\n"), std::string::npos);
}

TEST_F(AutostartEntryTest, WhatCannotBeWrittenIsExplained) {
  for (const char* path : {"/opt/100%/Norvane", "/opt/a=b", "/opt/\xFF", "/opt/a\nb"}) {
    const auto error = AutostartEntry(path).registerService();
    ASSERT_TRUE(error) << path;
    EXPECT_NE(error->localizedDescription.find("path"), std::string::npos);
  }
  EXPECT_FALSE(fs::exists(file));

  std::ofstream(directory) << "a file where the folder should be";
  for (const auto& error : {service.registerService(), service.unregisterService()}) {
    ASSERT_TRUE(error);
    EXPECT_NE(error->description.find(error->localizedDescription), std::string::npos);
  }
}

}  // namespace
}  // namespace norvane
