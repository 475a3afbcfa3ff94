#include "bus_service.h"

#include <stdexcept>
#include <utility>

#include "platform/gtk/glib_handles.h"

namespace norvane {

BusService::BusService(const std::string& name, const std::vector<Object>& objects, Method method)
    : method_(std::move(method)) {
  std::promise<void> ready;
  thread_ = std::thread([&] { run(name, objects, ready); });
  ready.get_future().get();
}

BusService::~BusService() {
  g_main_loop_quit(loop_);
  thread_.join();
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
  g_main_loop_unref(loop_);
}

void BusService::run(const std::string& name, const std::vector<Object>& objects,
                     std::promise<void>& ready) {
  GMainContext* context = g_main_context_new();
  g_main_context_push_thread_default(context);
  const GTextPtr address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  connection_ = g_dbus_connection_new_for_address_sync(
      address.get(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr);
  static constexpr GDBusInterfaceVTable kMethods{
      .method_call = [](GDBusConnection*, const char*, const char*, const char*,
                        const char* methodName, GVariant* arguments,
                        GDBusMethodInvocation* invocation, gpointer service) {
        static_cast<BusService*>(service)->method_(methodName, arguments, invocation);
      }};
  for (const Object& object : objects) {
    GDBusNodeInfo* node =
        g_dbus_node_info_new_for_xml(("<node>" + object.xml + "</node>").c_str(), nullptr);
    g_dbus_connection_register_object(connection_, object.path.c_str(), node->interfaces[0],
                                      &kMethods, this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
  }
  const GVariantPtr owned(g_dbus_connection_call_sync(
      connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "RequestName", g_variant_new("(su)", name.c_str(), 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
      nullptr, nullptr));
  loop_ = g_main_loop_new(context, FALSE);
  ready.set_value();
  g_main_loop_run(loop_);
  g_main_context_pop_thread_default(context);
  g_main_context_unref(context);
}

void BusService::emit(const std::string& path, const std::string& interface,
                      const std::string& signal, GVariant* arguments) {
  g_dbus_connection_emit_signal(connection_, nullptr, path.c_str(), interface.c_str(),
                                signal.c_str(), arguments, nullptr);
}

}  // namespace norvane
