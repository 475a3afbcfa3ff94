#pragma once

namespace norvane {

class ASCredentialIdentityStore;
class CarbonEventManager;
class CGEventSource;
class Crypto;
class Dispatch;
class DynamicLoader;
class FlutterEmbedder;
class KeyboardInput;
class Keychain;
class NSApplication;
class NSBundle;
class NSFileManager;
class Graphics;
class NSPasteboard;
class NSProcessInfo;
class Screens;
class NSStatusBar;
class NSUserDefaults;
class NSWorkspace;
class SMAppService;
class UpdaterFramework;
class WindowServer;

/// Everything that the host reaches of the operating system and the UI engine.
struct Platform {
  NSApplication& application;
  SMAppService& appService;
  CarbonEventManager& carbonEvents;
  ASCredentialIdentityStore& credentialIdentityStore;
  Crypto& crypto;
  Dispatch& dispatch;
  DynamicLoader& dynamicLoader;
  CGEventSource& eventSource;
  NSFileManager& fileManager;
  FlutterEmbedder& flutter;
  Graphics& graphics;
  KeyboardInput& keyboardInput;
  Keychain& keychain;
  NSBundle& mainBundle;
  NSPasteboard& pasteboard;
  NSProcessInfo& processInfo;
  Screens& screens;
  NSStatusBar& statusBar;
  UpdaterFramework& updater;
  NSUserDefaults& userDefaults;
  WindowServer& windowServer;
  NSWorkspace& workspace;
};

/// The platform that a desktop's services are: its members have the names that stand here.
template <class Services>
Platform platformOf(Services& services) {
  return {
      .application = services.application,
      .appService = services.appService,
      .carbonEvents = services.hotkeys,
      .credentialIdentityStore = services.credentialStore,
      .crypto = services.crypto,
      .dispatch = services.dispatch,
      .dynamicLoader = services.loader,
      .eventSource = services.eventSource,
      .fileManager = services.fileManager,
      .flutter = services.ui,
      .graphics = services.graphics,
      .keyboardInput = services.keyboard,
      .keychain = services.keychain,
      .mainBundle = services.bundle,
      .pasteboard = services.pasteboard,
      .processInfo = services.desktop,
      .screens = services.desktop,
      .statusBar = services.statusBar,
      .updater = services.updater,
      .userDefaults = services.userDefaults,
      .windowServer = services.desktop,
      .workspace = services.workspace,
  };
}

/// The platform of this process; std::logic_error when none is installed.
const Platform& platform();

/// Installs a platform for the life of this object, then the one before it again. `main` makes one
/// before anything else; a test makes its own.
class ScopedPlatform {
 public:
  explicit ScopedPlatform(const Platform& platform);
  ~ScopedPlatform();
  ScopedPlatform(const ScopedPlatform&) = delete;
  ScopedPlatform& operator=(const ScopedPlatform&) = delete;

 private:
  const Platform* previous_;
};

}  // namespace norvane
