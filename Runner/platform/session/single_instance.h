#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct _GApplication;

namespace norvane {

/// The application's name on the session bus. One process has it; those that start later hand it
/// what they were started for. Without a bus each process is the first. Main thread.
class SingleInstance {
 public:
  explicit SingleInstance(const char* applicationId);
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;

  /// Whether another process had the name.
  bool isSecond() const { return isSecond_; }

  /// Hands `links` to the first instance; without any, asks it to reopen.
  void handOver(const std::vector<std::string>& links);

  /// What others hand over, from now on; called by the main loop, a link at a time. Desktops ask to
  /// quit as `quitRunning` does, by an action of the application's entry.
  void listen(std::function<void(const std::string& link)> onLink, std::function<void()> onReopen,
              std::function<void()> onQuit);

  /// Asks the instance that runs to quit, if there is one; starts none. Returns why it could not be
  /// asked, or nothing.
  static std::optional<std::string> quitRunning(const char* applicationId);

 private:
  struct Signals;

  void claim(const char* applicationId);

  _GApplication* application_ = nullptr;
  bool isSecond_ = false;
  std::function<void(const std::string& link)> onLink_;
  std::function<void()> onReopen_;
  std::function<void()> onQuit_;
};

}  // namespace norvane
