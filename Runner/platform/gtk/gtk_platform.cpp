#include "platform/gtk/gtk_platform.h"

#include <utility>

#include "platform/gtk/hotkeys.h"
#include "platform/linux/version.h"

namespace norvane {
namespace {

// The identities are names in the clear, of use to an extension that asks for them and nobody else.
constexpr const char* kIdentitiesKey = "NorvaneCredentialIdentities";

}  // namespace

GtkPlatform::GtkPlatform(const std::string& dataDirectory, GlibDispatch& mainDispatch,
                         WindowUi& windowUi, const std::function<void()>& quit,
                         std::function<void()> portalAnswered)
    : dispatch(mainDispatch),
      application(quit),
      fileManager(dataDirectory),
      keychain(dispatch),
      userDefaults(dataDirectory + "/user-defaults.json"),
      credentialStore(dataDirectory, dispatch,
                      {.isEnabled = userDefaults.boolForKey(kIdentitiesKey),
                       .supportsIncrementalUpdates = true}),
      ui(windowUi.embedder()),
      graphics(bundle.bundlePath()),
      heldHotkeys(makeHotkeys(eventTime, dispatch, std::move(portalAnswered))),
      hotkeys(*heldHotkeys),
      statusBar(eventTime, {{"Show Norvane",
                             [this] {
                               eventTime.set(0);
                               application.reopen();
                             }},
                            {"Quit", quit}}),
      appService(bundle.bundlePath() + "/Contents/MacOS/Norvane"),
      updater(dispatch, bundle.infoText("SUFeedURL"), kVersion),
      workspace(bundle.bundleIdentifier()),
      desktop(application, dispatch, eventTime, windowUi),
      platform(platformOf(*this)),
      installed(platform) {}

GtkPlatform::~GtkPlatform() { application.releaseAll(); }

}  // namespace norvane
