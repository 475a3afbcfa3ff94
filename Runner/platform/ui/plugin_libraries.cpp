#include "platform/ui/plugin_libraries.h"

#include <dlfcn.h>

#include "platform/log.h"

namespace norvane {

std::string registeringFunction(std::string_view plugin) {
  constexpr std::string_view kHomeSystem = "MacOS";
  std::string name(plugin);
  if (const auto at = name.find(kHomeSystem); at != std::string::npos) {
    name.erase(at, kHomeSystem.size());
  }
  std::string function;
  for (const char letter : name) {
    const bool isCapital = letter >= 'A' && letter <= 'Z';
    if (isCapital && !function.empty()) function += '_';
    function += isCapital ? static_cast<char>(letter - 'A' + 'a') : letter;
  }
  return function + "_register_with_registrar";
}

PluginLibraries::PluginLibraries(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    if (void* const handle = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL)) {
      handles_.push_back(handle);
    } else {
      NSLog(std::string("[Norvane] a plugin of the UI cannot be opened: ") + ::dlerror());
    }
  }
}

PluginLibraries::Register PluginLibraries::find(std::string_view plugin) const {
  const std::string name = registeringFunction(plugin);
  for (void* const handle : handles_) {
    if (void* const symbol = ::dlsym(handle, name.c_str())) {
      return reinterpret_cast<Register>(symbol);
    }
  }
  return nullptr;
}

}  // namespace norvane
