#include "services/launch_at_login_channel.h"

#include <optional>
#include <string>

#include "platform/log.h"
#include "platform/ns_process_info.h"
#include "platform/platform.h"
#include "platform/sm_app_service.h"

namespace norvane {
namespace {

FlutterMap statusMap(bool supported, bool enabled) {
  return {{"supported", supported}, {"enabled", enabled}};
}

FlutterMap currentStatus() {
  return statusMap(true, platform().appService.status() == SMAppServiceStatus::enabled);
}

bool enabledOf(FlutterValueView arguments) {
  const auto map = arguments.textKeyedMap();
  return map && (*map)["enabled"].boolean().value_or(false);
}

/// The failure of the operation that was asked for, having logged it.
std::optional<ServiceError> setEnabled(bool enabled) {
  SMAppService& service = platform().appService;
  auto error = enabled ? service.registerService() : service.unregisterService();
  if (error) {
    NSLog(std::string("[Norvane] launch-at-login ") + (enabled ? "register" : "unregister") +
          " failed: " + error->description);
  }
  return error;
}

}  // namespace

void handleLaunchAtLogin(const FlutterMethodCall& call, FlutterResult result) {
  if (!platform().processInfo.isOperatingSystemAtLeastVersion({13, 0, 0})) {
    result(statusMap(false, false));
  } else if (call.method() == "get") {
    result(currentStatus());
  } else if (call.method() == "set") {
    if (const auto error = setEnabled(enabledOf(call.arguments()))) {
      result(FlutterError{"sm_app_service", error->localizedDescription, {}});
    } else {
      result(currentStatus());
    }
  } else {
    result(FlutterMethodNotImplemented);
  }
}

}  // namespace norvane
