#include "platform/console/scripted_ui.h"

#include "platform/flutter/flutter_engine.h"
#include "platform/flutter/flutter_view_controller.h"

namespace norvane {

bool ScriptedUi::send(const std::string& engine, const std::string& channel, Bytes message,
                      FlutterBinaryReply::Sink reply) {
  const auto found = engines_.find(engine);
  if (found == engines_.end()) return false;
  const std::uint64_t number = ++sent_;
  for (UiObserver* observer : observers_) observer->sent(number, engine, channel, message);
  auto answer = [this, number, reply = std::move(reply)](Bytes answered) mutable {
    for (UiObserver* observer : observers_) observer->answered(number, answered);
    reply(std::move(answered));
  };
  const auto bound = bound_.find(found->second);
  if (bound == bound_.end() || !bound->second.contains(channel)) {
    answer({});
    return true;
  }
  // Kept for the call: a handler may end its own engine.
  const auto messenger = found->second->binaryMessenger();
  messenger->deliver(channel, std::move(message), std::move(answer));
  return true;
}

void ScriptedUi::run(FlutterEngine& engine, std::string_view entrypoint) {
  engines_[engine.name()] = &engine;
  for (UiObserver* observer : observers_) observer->started(engine.name(), entrypoint);
}

void ScriptedUi::shutDown(FlutterEngine& engine) {
  std::erase_if(engines_, [&](const auto& entry) { return entry.second == &engine; });
}

void ScriptedUi::send(FlutterEngine& engine, std::string_view channel, Bytes message) {
  for (UiObserver* observer : observers_) observer->called(engine.name(), channel, message);
}

void ScriptedUi::channelBound(FlutterEngine& engine, std::string_view channel) {
  bound_[&engine].emplace(channel);
}

void ScriptedUi::channelUnbound(FlutterEngine& engine, std::string_view channel) {
  const auto bound = bound_.find(&engine);
  bound->second.erase(bound->second.find(channel));
  if (bound->second.empty()) bound_.erase(bound);
}

void ScriptedUi::registerPlugin(std::string_view /*plugin*/,
                                const FlutterPluginRegistrar& registrar) {
  for (UiObserver* observer : observers_) {
    observer->pluginRegistered(registrar.engine.name(), registrar.name);
  }
}

}  // namespace norvane
