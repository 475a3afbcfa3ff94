#include "fake_engine.h"

#include <memory>

#include <gtk/gtk.h>

namespace {

using Handler = void (*)(GObject*, const char*, GBytes*, GObject*, gpointer);
struct Binding {
  Handler handler;
  std::shared_ptr<void> data;
};

FakeEngine state;
std::map<GObject*, std::map<std::string, Binding>> bindings;
GObject* current = nullptr;

bool sendToHost(const char* channel, const FakeEngine::Message& message) {
  auto& bound = bindings[current];
  const auto found = bound.find(channel);
  if (found == bound.end()) return false;
  const Binding binding = found->second;
  GObject* handle = G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr));
  g_object_weak_ref(
      handle,
      [](gpointer, GObject* gone) {
        if (!g_object_get_data(gone, "answered")) ++state.unanswered;
      },
      nullptr);
  g_object_set_data(handle, "answered", nullptr);
  GBytes* bytes = message ? g_bytes_new(message->data(), message->size()) : nullptr;
  binding.handler(current, channel, bytes, handle, binding.data.get());
  if (bytes) g_bytes_unref(bytes);
  g_object_unref(handle);
  return true;
}

}  // namespace

extern "C" {

FakeEngine* fake_engine() {
  state.send = sendToHost;
  return &state;
}

GObject* fl_dart_project_new() { return G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr)); }
void fl_dart_project_set_aot_library_path(GObject*, const char*) {}
void fl_dart_project_set_assets_path(GObject*, char*) {}
void fl_dart_project_set_icu_data_path(GObject*, char*) {}
void fl_dart_project_set_dart_entrypoint_arguments(GObject*, char** arguments) {
  state.arguments.clear();
  for (; *arguments; ++arguments) state.arguments.emplace_back(*arguments);
}
GtkWidget* fl_view_new(GObject*) {
  GtkWidget* view = gtk_drawing_area_new();
  gtk_widget_set_can_focus(view, TRUE);
  current = G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr));
  g_object_set_data_full(G_OBJECT(view), "messenger", current, g_object_unref);
  return view;
}
GObject* fl_view_get_engine(GtkWidget* view) { return G_OBJECT(view); }
GObject* fl_engine_get_binary_messenger(GObject* engine) {
  return G_OBJECT(g_object_get_data(engine, "messenger"));
}
void fl_binary_messenger_set_message_handler_on_channel(GObject* messenger, const char* channel,
                                                        Handler handler, gpointer data,
                                                        GDestroyNotify destroy) {
  bindings[messenger].erase(channel);
  if (handler) bindings[messenger][channel] = {handler, {data, destroy}};
}
gboolean fl_binary_messenger_send_response(GObject*, GObject* handle, GBytes* response, GError**) {
  g_object_set_data(handle, "answered", handle);
  gsize size = 0;
  const auto* data =
      response ? static_cast<const char*>(g_bytes_get_data(response, &size)) : nullptr;
  state.answers.push_back(response ? FakeEngine::Message(std::string(data, size)) : std::nullopt);
  return TRUE;
}
void fl_binary_messenger_send_on_channel(GObject* messenger, const char* channel, GBytes* message,
                                         GCancellable*, GAsyncReadyCallback callback,
                                         gpointer data) {
  if (callback && state.startFails) {
    GTask* task = g_task_new(messenger, nullptr, callback, data);
    g_task_return_new_error(task, G_IO_ERROR, G_IO_ERROR_FAILED, "No engine to send to");
    g_object_unref(task);
  }
  if (callback) return;
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_bytes_get_data(message, &size));
  state.arrived.emplace_back(channel, std::string(bytes, size));
}
GBytes* fl_binary_messenger_send_on_channel_finish(GObject*, GAsyncResult* result, GError** error) {
  return static_cast<GBytes*>(g_task_propagate_pointer(G_TASK(result), error));
}
#ifndef LACKS_REGISTRARS
GObject* fl_plugin_registry_get_registrar_for_plugin(GObject*, const char* name) {
  GObject* registrar = G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr));
  g_object_set_data_full(registrar, "name", g_strdup(name), g_free);
  return registrar;
}
#endif

void url_launcher_plugin_register_with_registrar(GObject* registrar) {
  state.plugins.emplace_back(static_cast<char*>(g_object_get_data(registrar, "name")));
}
void biometric_storage_plugin_register_with_registrar(GObject* registrar) {
  url_launcher_plugin_register_with_registrar(registrar);
}
void late_plugin_register_with_registrar(GObject* registrar) {
  url_launcher_plugin_register_with_registrar(registrar);
}
}
