#include "services/hotkey_config_channel.h"

#include <memory>
#include <string>

#include "services/app_services.h"
#include "services/hotkey_candidates.h"

namespace norvane {
namespace {

std::string codeOf(FlutterValueView arguments) {
  if (const auto map = arguments.textKeyedMap()) {
    if (const auto code = (*map)["code"].text()) return std::string(*code);
  }
  return "auto";
}

/// "degraded" tells that the automatic choice did not get its first combination.
FlutterMap statusOf(const AppServices& services) {
  const auto label = services.registeredHotkeyLabel();
  return {{"registered", label.value_or("")},
          {"degraded", services.hotkeyChoice() == "auto" && label && *label != firstHotkeyLabel()}};
}

}  // namespace

void handleHotkeyConfig(const FlutterMethodCall& call, FlutterResult result) {
  const auto services = AppServices::current();
  if (!services) {
    result(FlutterError{"no_app_delegate", {}, {}});
    return;
  }
  if (call.method() == "setChoice") {
    services->setHotkeyChoice(codeOf(call.arguments()));
  } else if (call.method() != "currentLabel") {
    result(FlutterMethodNotImplemented);
    return;
  }
  result(statusOf(*services));
}

}  // namespace norvane
