#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/gtk/gtk_desktop.h"
#include "platform/gtk/gtk_graphics.h"
#include "platform/gtk/gtk_pasteboard.h"
#include "platform/gtk/gtk_status_bar.h"
#include "platform/gtk/gtk_updater.h"
#include "platform/linux/database_credential_store.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/linux/linux_file_manager.h"
#include "platform/linux/openssl_crypto.h"
#include "platform/linux/process.h"
#include "platform/ns_application.h"
#include "platform/platform.h"
#include "platform/session/autostart_entry.h"
#include "platform/session/desktop_bundle.h"
#include "platform/session/secret_service_keychain.h"
#include "platform/ui/window_ui.h"
#include "platform/x11/event_time.h"
#include "platform/x11/idle_time.h"
#include "platform/x11/x11_keyboard.h"
#include "platform/x11/x11_workspace.h"

namespace norvane {

/// The services of the real desktop, on one data directory that nobody else uses. Made once the
/// toolkit runs. `windowUi` outlives it; `portalAnswered` as in makeHotkeys.
struct GtkPlatform {
  GtkPlatform(const std::string& dataDirectory, GlibDispatch& dispatch, WindowUi& windowUi,
              const std::function<void()>& quit, std::function<void()> portalAnswered = {});
  /// Lets the application's windows and delegate go, while there is a platform for them.
  ~GtkPlatform();

  GlibDispatch& dispatch;
  NSApplication application;
  EventTime eventTime;
  LinuxDynamicLoader loader;
  DesktopBundle bundle;
  LinuxFileManager fileManager;
  OpenSslCrypto crypto;
  SecretServiceKeychain keychain;
  JsonUserDefaults userDefaults;
  DatabaseCredentialStore credentialStore;
  FlutterEmbedder& ui;
  GtkGraphics graphics;
  const std::unique_ptr<CarbonEventManager> heldHotkeys;
  CarbonEventManager& hotkeys;
  GtkStatusBar statusBar;
  X11Keyboard keyboard;
  GtkPasteboard pasteboard;
  IdleTime eventSource;
  AutostartEntry appService;
  GtkUpdater updater;
  X11Workspace workspace;
  GtkDesktop desktop;
  const Platform platform;
  const ScopedPlatform installed;
};

}  // namespace norvane
