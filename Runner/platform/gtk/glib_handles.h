#pragma once

#include <memory>

#include <glib-object.h>

namespace norvane {

/// Owners of what GLib's libraries hand out.
template <auto Free>
struct GlibDeleter {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};

template <class T>
using GObjectPtr = std::unique_ptr<T, GlibDeleter<g_object_unref>>;
using GTextPtr = std::unique_ptr<char, GlibDeleter<g_free>>;
using GErrorPtr = std::unique_ptr<GError, GlibDeleter<g_error_free>>;
using GVariantPtr = std::unique_ptr<GVariant, GlibDeleter<g_variant_unref>>;
using GKeyFilePtr = std::unique_ptr<GKeyFile, GlibDeleter<g_key_file_unref>>;

}  // namespace norvane
