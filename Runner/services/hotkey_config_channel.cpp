#include "services/hotkey_config_channel.h"

#include <memory>
#include <string>

#include "app/app_delegate.h"
#include "platform/ns_application.h"
#include "platform/platform.h"
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
FlutterMap statusOf(const AppDelegate& delegate) {
  const auto& label = delegate.currentRegisteredLabel;
  return {{"registered", label.value_or("")},
          {"degraded",
           delegate.currentHotkeyChoice == "auto" && label && *label != firstHotkeyLabel()}};
}

}  // namespace

void handleHotkeyConfig(const FlutterMethodCall& call, FlutterResult result) {
  const auto delegate = AppDelegate::current();
  if (!delegate) {
    result(FlutterError{"no_app_delegate", {}, {}});
    return;
  }
  if (call.method() == "setChoice") {
    delegate->setHotkeyChoice(codeOf(call.arguments()));
  } else if (call.method() != "currentLabel") {
    result(FlutterMethodNotImplemented);
    return;
  }
  result(statusOf(*delegate));
}

}  // namespace norvane
