#pragma once

#include <string>

#include <gtk/gtk.h>

// What the host uses of the UI toolkit's Linux library (its public C API), whose headers no package
// has. Opaque; GObjects all.
using FlDartProject = struct _FlDartProject;
using FlView = struct _FlView;
using FlEngine = struct _FlEngine;
using FlBinaryMessenger = struct _FlBinaryMessenger;
using FlBinaryMessengerResponseHandle = struct _FlBinaryMessengerResponseHandle;
using FlPluginRegistry = struct _FlPluginRegistry;
using FlPluginRegistrar = struct _FlPluginRegistrar;

namespace norvane {

/// `message` may be null. Main thread.
using FlMessageHandler = void (*)(FlBinaryMessenger* messenger, const gchar* channel,
                                  GBytes* message, FlBinaryMessengerResponseHandle* handle,
                                  gpointer data);

/// The UI toolkit's run-time library, opened from a UI bundle. Its functions are the main thread's
/// unless one says otherwise. Stays loaded: nothing of the toolkit can be unloaded.
class EngineLibrary {
 public:
  /// Throws std::runtime_error, with the path and the reason, for a file that cannot be opened, is
  /// for another processor or lacks a function.
  explicit EngineLibrary(const std::string& path);

  /// Owned by the caller, as is what the other functions with "new" in their names return.
  FlDartProject* (*dart_project_new)() = nullptr;
  void (*dart_project_set_aot_library_path)(FlDartProject*, const gchar* path) = nullptr;
  void (*dart_project_set_assets_path)(FlDartProject*, gchar* path) = nullptr;
  void (*dart_project_set_icu_data_path)(FlDartProject*, gchar* path) = nullptr;
  /// `arguments` ends with null and is copied.
  void (*dart_project_set_dart_entrypoint_arguments)(FlDartProject*, char** arguments) = nullptr;
  /// A floating widget with an engine of its own, which starts when the view is realized in a
  /// window.
  FlView* (*view_new)(FlDartProject*) = nullptr;
  FlEngine* (*view_get_engine)(FlView*) = nullptr;                         ///< borrowed
  FlBinaryMessenger* (*engine_get_binary_messenger)(FlEngine*) = nullptr;  ///< borrowed
  /// Null takes the handler away, at which `destroy` is called.
  void (*messenger_set_handler)(FlBinaryMessenger*, const gchar* channel, FlMessageHandler handler,
                                gpointer data, GDestroyNotify destroy) = nullptr;
  /// Any thread. Null answers "not implemented".
  gboolean (*messenger_send_response)(FlBinaryMessenger*, FlBinaryMessengerResponseHandle*,
                                      GBytes* response, GError**) = nullptr;
  /// Without a callback nobody waits for an answer.
  void (*messenger_send)(FlBinaryMessenger*, const gchar* channel, GBytes* message, GCancellable*,
                         GAsyncReadyCallback, gpointer data) = nullptr;
  GBytes* (*messenger_send_finish)(FlBinaryMessenger*, GAsyncResult*, GError**) = nullptr;
  /// A new reference. The view is the registry.
  FlPluginRegistrar* (*registrar_for_plugin)(FlPluginRegistry*, const gchar* name) = nullptr;

  /// Null in older libraries.
  void (*view_set_background_color)(FlView*, const GdkRGBA*) = nullptr;
};

}  // namespace norvane
