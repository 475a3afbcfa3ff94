#pragma once

#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gio/gio.h>

namespace norvane {

/// Another program of the desktop's on the session bus, with a connection and a thread of its own.
class BusService {
 public:
  struct Object {
    std::string path;
    std::string xml;  ///< what it offers, within <node>
  };
  /// Called on the program's thread; it answers `invocation`.
  using Method = std::function<void(const std::string& name, GVariant* arguments,
                                    GDBusMethodInvocation* invocation)>;

  /// On the bus, by that name, when this returns.
  BusService(const std::string& name, const std::vector<Object>& objects, Method method);
  ~BusService();
  BusService(const BusService&) = delete;

  /// Any thread.
  void emit(const std::string& path, const std::string& interface, const std::string& signal,
            GVariant* arguments);

 private:
  void run(const std::string& name, const std::vector<Object>& objects, std::promise<void>& ready);

  Method method_;
  GDBusConnection* connection_ = nullptr;
  GMainLoop* loop_ = nullptr;
  std::thread thread_;
};

}  // namespace norvane
