#include "services/updater_channel.h"

#include "services/app_services.h"

namespace norvane {

void handleUpdater(const FlutterMethodCall& call, FlutterResult result) {
  if (call.method() != "check") {
    result(FlutterMethodNotImplemented);
    return;
  }
  if (const auto services = AppServices::current()) services->checkForUpdates();
  result(nullptr);
}

}  // namespace norvane
