#include "platform/gtk/gtk_platform.h"

#include <utility>

#include "platform/gtk/hotkeys.h"

namespace norvane {
namespace {

// The identities are names in the clear, of use to an extension that asks for them and nobody else.
constexpr const char* kIdentitiesKey = "NorvaneCredentialIdentities";

}  // namespace

GtkPlatform::GtkPlatform(const std::string& dataDirectory, GlibDispatch& dispatch, Log& log,
                         std::function<void()> quit, std::function<void()> portalAnswered)
    : bundle(log),
      fileManager(dataDirectory),
      keychain(dispatch),
      userDefaults(dataDirectory + "/user-defaults.json", log),
      credentialStore(dataDirectory, dispatch,
                      {.isEnabled = userDefaults.boolForKey(kIdentitiesKey),
                       .supportsIncrementalUpdates = true}),
      graphics(bundle.bundlePath()),
      hotkeys(makeHotkeys(eventTime, dispatch, std::move(portalAnswered))),
      statusBar(eventTime, {{"Show Norvane",
                             [this] {
                               eventTime.set(0);
                               desktop.reopen();
                             }},
                            {"Quit", quit}}),
      appService(bundle.bundlePath() + "/Contents/MacOS/Norvane"),
      updater(dispatch, bundle.infoText("SUFeedURL"), NORVANE_VERSION),
      workspace(bundle.bundleIdentifier()),
      desktop(dispatch, eventTime, std::move(quit)),
      platform{
          .application = application,
          .appService = appService,
          .carbonEvents = *hotkeys,
          .credentialIdentityStore = credentialStore,
          .crypto = crypto,
          .dispatch = dispatch,
          .dynamicLoader = loader,
          .eventSource = eventSource,
          .fileManager = fileManager,
          .flutter = ui,
          .graphics = graphics,
          .keyboardInput = keyboard,
          .keychain = keychain,
          .log = log,
          .mainBundle = bundle,
          .pasteboard = pasteboard,
          .processInfo = desktop,
          .screens = desktop,
          .statusBar = statusBar,
          .updater = updater,
          .userDefaults = userDefaults,
          .windowServer = desktop,
          .workspace = workspace,
      },
      installed(platform) {}

GtkPlatform::~GtkPlatform() { application.releaseAll(); }

}  // namespace norvane
