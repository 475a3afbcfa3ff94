#include "platform/flutter/flutter_engine.h"

#include <utility>

#include "platform/flutter/flutter_embedder.h"
#include "platform/flutter/flutter_view_controller.h"
#include "platform/platform.h"

namespace norvane {
namespace {

constexpr const char* kMainEngineName = "main";
constexpr const char* kMainEntrypoint = "main";

}  // namespace

FlutterEngine::FlutterEngine(std::string name)
    : name_(std::move(name)),
      messenger_(std::make_shared<FlutterBinaryMessenger>(
          [this](std::string_view channel, Bytes message) {
            platform().flutter.send(*this, channel, std::move(message));
          },
          [this](std::string_view channel, bool isBound) {
            FlutterEmbedder& embedder = platform().flutter;
            if (isBound) {
              embedder.channelBound(*this, channel);
            } else {
              embedder.channelUnbound(*this, channel);
            }
          })) {}

FlutterEngine::~FlutterEngine() {
  messenger_->engineEnded();
  if (running_) platform().flutter.shutDown(*this);
}

bool FlutterEngine::runWithEntrypoint(std::string_view entrypoint) {
  if (std::exchange(running_, true)) return false;
  platform().flutter.run(*this, entrypoint);
  return true;
}

FlutterViewController::FlutterViewController()
    : engine_(std::make_shared<FlutterEngine>(kMainEngineName)) {}

FlutterViewController::FlutterViewController(std::shared_ptr<FlutterEngine> engine)
    : engine_(std::move(engine)) {}

FlutterPluginRegistrar FlutterViewController::registrarForPlugin(const std::string& name) {
  return {name, *engine_};
}

void FlutterViewController::loadView() { engine_->runWithEntrypoint(kMainEntrypoint); }

}  // namespace norvane
