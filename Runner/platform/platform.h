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
class Log;
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
  Log& log;
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
