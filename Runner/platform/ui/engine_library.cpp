#include "platform/ui/engine_library.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include <dlfcn.h>
#include <elf.h>

namespace norvane {
namespace {

/// What an ELF file says of the machine that it is for; empty when it is none.
std::string machineOf(const std::string& path) {
  std::array<char, offsetof(Elf64_Ehdr, e_version)> header{};
  std::ifstream file(path, std::ios::binary);
  if (!file.read(header.data(), header.size())) return {};
  const std::string_view start(header.data(), header.size());
  if (!start.starts_with(ELFMAG)) return {};
  return std::string(start.substr(EI_CLASS, 2)) + std::string(start.substr(18, 2));
}

}  // namespace

EngineLibrary::EngineLibrary(const std::string& path) {
  const auto refuse = [&](const std::string& reason) {
    throw std::runtime_error(path + ": " + reason);
  };
  // The loader calls such a file one that does not exist.
  const std::string machine = machineOf(path);
  if (!machine.empty() && machine != machineOf("/proc/self/exe"))
    refuse("is for another processor");
  void* const handle = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (!handle) throw std::runtime_error(::dlerror());  // which begins with the path
  const auto find = [&](auto& function, const char* name, bool isNeeded = true) {
    void* const symbol = ::dlsym(handle, name);
    if (!symbol && isNeeded) {
      ::dlclose(handle);
      refuse(std::string("lacks ") + name);
    }
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(symbol);
  };
  find(dart_project_new, "fl_dart_project_new");
  find(dart_project_set_aot_library_path, "fl_dart_project_set_aot_library_path");
  find(dart_project_set_assets_path, "fl_dart_project_set_assets_path");
  find(dart_project_set_icu_data_path, "fl_dart_project_set_icu_data_path");
  find(dart_project_set_dart_entrypoint_arguments, "fl_dart_project_set_dart_entrypoint_arguments");
  find(view_new, "fl_view_new");
  find(view_get_engine, "fl_view_get_engine");
  find(engine_get_binary_messenger, "fl_engine_get_binary_messenger");
  find(messenger_set_handler, "fl_binary_messenger_set_message_handler_on_channel");
  find(messenger_send_response, "fl_binary_messenger_send_response");
  find(messenger_send, "fl_binary_messenger_send_on_channel");
  find(messenger_send_finish, "fl_binary_messenger_send_on_channel_finish");
  find(registrar_for_plugin, "fl_plugin_registry_get_registrar_for_plugin");
  find(view_set_background_color, "fl_view_set_background_color", /*isNeeded=*/false);
}

}  // namespace norvane
