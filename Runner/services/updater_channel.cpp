#include "services/updater_channel.h"

#include "app/app_delegate.h"

namespace norvane {

void handleUpdater(const FlutterMethodCall& call, FlutterResult result) {
  if (call.method() != "check") {
    result(FlutterMethodNotImplemented);
    return;
  }
  if (const auto delegate = AppDelegate::current()) delegate->updaterController->checkForUpdates();
  result(nullptr);
}

}  // namespace norvane
