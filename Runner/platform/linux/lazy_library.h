#pragma once

#include <dlfcn.h>

namespace norvane {

/// A shared library that is loaded when it is first needed, because loading it would take a large
/// part of the start, and few runs of the host need it then. Its functions keep the types of its
/// own headers. Stays loaded.
class LazyLibrary {
 public:
  explicit LazyLibrary(const char* name) : handle_(::dlopen(name, RTLD_NOW | RTLD_LOCAL)) {}

  /// False when the library or its function cannot be had.
  template <class Function>
  bool find(Function*& function, const char* name) const {
    function = handle_ ? reinterpret_cast<Function*>(::dlsym(handle_, name)) : nullptr;
    return function != nullptr;
  }

 private:
  void* handle_;
};

}  // namespace norvane
