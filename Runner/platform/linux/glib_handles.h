#pragma once

#include <memory>

#include <glib-object.h>

namespace norvane {

/// Frees what a C library has handed out.
template <auto Free>
struct Deleter {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};

template <class T>
using GObjectPtr = std::unique_ptr<T, Deleter<g_object_unref>>;
using GTextPtr = std::unique_ptr<char, Deleter<g_free>>;
using GErrorPtr = std::unique_ptr<GError, Deleter<g_error_free>>;
using GVariantPtr = std::unique_ptr<GVariant, Deleter<g_variant_unref>>;
using GKeyFilePtr = std::unique_ptr<GKeyFile, Deleter<g_key_file_unref>>;

}  // namespace norvane
