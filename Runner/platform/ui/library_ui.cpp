#include "platform/ui/library_ui.h"

#include <stdexcept>
#include <utility>

#include "base/utf8.h"
#include "platform/flutter/flutter_view_controller.h"
#include "platform/log.h"
#include "platform/ui/renderer.h"

namespace norvane {
namespace {

constexpr std::string_view kMainEntrypoint = "main";

}  // namespace

LibraryUi::LibraryUi(UiBundle bundle, std::vector<std::string> arguments,
                     std::vector<std::string> plugins)
    : bundle_(std::move(bundle)),
      arguments_(std::move(arguments)),
      latePlugins_(std::move(plugins)) {}

LibraryEngine& LibraryUi::of(FlutterEngine& engine) {
  return engines_.try_emplace(&engine, engine).first->second;
}

_GtkWidget* LibraryUi::makeView(FlutterViewController& controller) {
  return of(controller.engine()).makeFrame(controller.hasClearBackground());
}

void LibraryUi::open() {
  if (library_ || !failure_.empty()) return;
  try {
    const auto missing = bundle_.missing();
    if (!bundle_.exists()) throw std::runtime_error("there is none in " + bundle_.directory());
    if (!missing.empty()) throw std::runtime_error(missing.front() + " is missing");
    chooseRenderer();
    library_ = std::make_shared<const EngineLibrary>(bundle_.library());
    plugins_.emplace(bundle_.pluginLibraries());
  } catch (const std::exception& error) {
    failure_ = "The user interface cannot run: " + utf8Of(error.what());
    NSLog("[Norvane] the user interface cannot run: " + std::string(error.what()));
  }
}

void LibraryUi::run(FlutterEngine& engine, std::string_view entrypoint) {
  open();
  LibraryEngine& started = of(engine);
  if (!library_) {
    started.fail(failure_);
    return;
  }
  std::vector<std::string> arguments;
  if (entrypoint != kMainEntrypoint) arguments.push_back("--entrypoint=" + std::string(entrypoint));
  arguments.insert(arguments.end(), arguments_.begin(), arguments_.end());
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  const GObjectPtr<FlDartProject> project(library_->dart_project_new());
  library_->dart_project_set_aot_library_path(project.get(), bundle_.program().c_str());
  library_->dart_project_set_assets_path(project.get(), bundle_.assets().data());
  library_->dart_project_set_icu_data_path(project.get(), bundle_.localeData().data());
  library_->dart_project_set_dart_entrypoint_arguments(project.get(), pointers.data());
  started.start(library_, *plugins_, project.get(), latePlugins_);
}

void LibraryUi::whenDrawn(std::function<void()> drawn) {
  // The launch runs the main one alone.
  if (engines_.empty()) return drawn();
  engines_.begin()->second.whenDrawn(std::move(drawn));
}

// An engine that draws while its view is destroyed makes the library abort (g_mutex_clear of a
// locked mutex): so none is ended with the process.
bool LibraryUi::processEnds() {
  for (auto& [engine, running] : engines_) running.leaveRunning();
  return library_ != nullptr;
}

void LibraryUi::shutDown(FlutterEngine& engine) { engines_.erase(&engine); }

void LibraryUi::send(FlutterEngine& engine, std::string_view channel, Bytes message) {
  of(engine).send(channel, std::move(message));
}

void LibraryUi::channelBound(FlutterEngine& engine, std::string_view channel) {
  of(engine).bind(channel);
}

void LibraryUi::channelUnbound(FlutterEngine& engine, std::string_view channel) {
  const auto found = engines_.find(&engine);
  found->second.unbind(channel);
  if (found->second.isUnused()) engines_.erase(found);  // an engine that never ran has no other end
}

void LibraryUi::registerPlugin(std::string_view plugin, const FlutterPluginRegistrar& registrar) {
  of(registrar.engine).registerPlugin(std::string(plugin));
}

}  // namespace norvane
