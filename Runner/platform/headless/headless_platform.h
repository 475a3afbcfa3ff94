#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/console/scripted_ui.h"
#include "platform/headless/headless_desktop.h"
#include "platform/headless/headless_graphics.h"
#include "platform/headless/headless_hotkeys.h"
#include "platform/headless/headless_keychain.h"
#include "platform/headless/headless_services.h"
#include "platform/headless/headless_status_bar.h"
#include "platform/headless/live_profile.h"
#include "platform/linux/database_credential_store.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/linux/linux_bundle.h"
#include "platform/linux/linux_file_manager.h"
#include "platform/linux/openssl_crypto.h"
#include "platform/linux/process.h"
#include "platform/ns_application.h"
#include "platform/platform.h"

namespace norvane {

/// The application's bundle with the Info dictionary of the profile.
class HeadlessBundle : public LinuxBundle {
 public:
  explicit HeadlessBundle(const LiveProfile& profile) : profile_(profile) {}
  std::optional<std::string> infoText(const std::string& key) const override;

 private:
  const LiveProfile& profile_;
};

/// Containers that exist as the profile says.
class HeadlessFileManager : public LinuxFileManager {
 public:
  HeadlessFileManager(std::string dataDirectory, const LiveProfile& profile)
      : LinuxFileManager(std::move(dataDirectory)), profile_(profile) {}
  std::optional<std::string> containerURLForSecurityApplicationGroupIdentifier(
      const std::string& group) override;
  std::optional<std::string> URLForUbiquityContainerIdentifier(
      const std::string& identifier) override;

 private:
  const LiveProfile& profile_;
};

/// Real sealing; a random source that fails when the profile says so.
class HeadlessCrypto : public OpenSslCrypto {
 public:
  explicit HeadlessCrypto(const LiveProfile& profile) : profile_(profile) {}
  std::int32_t SecRandomCopyBytes(std::span<std::uint8_t> bytes) override;

 private:
  const LiveProfile& profile_;
};

/// The real store's database, behind a store that answers as the profile says; what it refuses
/// changes nothing.
class HeadlessCredentialStore : public DatabaseCredentialStore {
 public:
  HeadlessCredentialStore(const std::string& dataDirectory, Dispatch& dispatch,
                          const LiveProfile& profile)
      : DatabaseCredentialStore(dataDirectory, dispatch, {}), profile_(profile) {}

 protected:
  ASCredentialIdentityStoreState state() const override;
  void run(Operation operation, Completion completion) override;

 private:
  const LiveProfile& profile_;
};

/// The services of the headless desktop, on one data directory that nobody else uses. Its parts are
/// the control side.
struct HeadlessPlatform {
  HeadlessPlatform(Profile initialProfile, const std::string& dataDirectory, Dispatch& dispatch,
                   std::function<void()> quit);
  /// Lets the application's windows and delegate go, while there is a platform for them.
  ~HeadlessPlatform();

  /// Changes the profile while the host runs.
  void setProfile(const Profile& changed) { desktop.setProfile(changed); }

  LiveProfile profile;
  Dispatch& dispatch;
  NSApplication application;
  LinuxDynamicLoader loader;
  HeadlessBundle bundle;
  HeadlessFileManager fileManager;
  HeadlessCrypto crypto;
  HeadlessKeychain keychain;
  HeadlessCredentialStore credentialStore;
  JsonUserDefaults userDefaults;
  ScriptedUi ui;
  HeadlessGraphics graphics;
  HeadlessHotkeys hotkeys;
  HeadlessStatusBar statusBar;
  HeadlessKeyboard keyboard;
  HeadlessPasteboard pasteboard;
  HeadlessEventSource eventSource;
  HeadlessAppService appService;
  HeadlessUpdater updater;
  HeadlessDesktop desktop;
  NSWorkspace& workspace;
  const Platform platform;
  const ScopedPlatform installed;
};

}  // namespace norvane
