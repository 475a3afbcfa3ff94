#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/headless/headless_platform.h"
#include "platform/log.h"
#include "support/faults.h"
#include "support/virtual_dispatch.h"

namespace norvane {

using Lines = std::vector<std::string>;

/// Keeps log records. A fault that the test did not ask for fails it.
class RecordingLog : public Log {
 public:
  ~RecordingLog() override;
  void write(std::string_view text) override { lines_.emplace_back(text); }

  /// What was logged since the last call.
  Lines take() { return std::exchange(lines_, {}); }

 private:
  Lines lines_;
};

/// A directory of its own, removed with all that it holds.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory() { std::filesystem::remove_all(path); }

  std::filesystem::path path;
};

/// A bundle that lies where the test wants it; by default one with the example core library in it.
struct MovedBundle : NSBundle {
  std::string bundlePath() const override { return path; }
  std::optional<std::string> bundleIdentifier() const override { return real->bundleIdentifier(); }
  std::optional<std::string> infoText(const std::string& key) const override {
    return real->infoText(key);
  }
  std::string path;
  NSBundle* real = nullptr;
};

/// One run of the host on the headless desktop, driven as its neighbours drive it: by a UI that
/// speaks in bytes, and by a person at the desk.
class HostTest : public ::testing::Test, public UiObserver {
 protected:
  HostTest();
  ~HostTest() override;

  /// The application starts, with all that its launch has queued.
  void launch();
  /// The application has ended and starts again, on what it left on disk.
  void relaunch(const Profile& profile = {});

  /// Sends a call of the UI; `arguments` is JSON. The reply is found in the transcript.
  void send(const std::string& channel, const std::string& method,
            const std::string& arguments = "null", const std::string& engine = "main");
  /// The same, and the reply once everything has settled: "success VALUE", "error …".
  std::string call(const std::string& channel, const std::string& method,
                   const std::string& arguments = "null");
  /// What reached the UIs since the last call, in order: "CHANNEL METHOD ARGUMENTS" of each call of
  /// the host, "reply …" of each reply, "ENGINE started ENTRYPOINT", "ENGINE plugin NAME".
  Lines takeTranscript() { return std::exchange(transcript_, {}); }

  void started(std::string_view engine, std::string_view entrypoint) override;
  void pluginRegistered(std::string_view engine, std::string_view name) override;
  void called(std::string_view engine, std::string_view channel, Bytes message) override;

  TemporaryDirectory directory;
  RecordingLog log;
  VirtualDispatch dispatch;
  MovedBundle bundle;
  Fault keychainFault;
  Fault cryptoFault;
  bool quitAsked = false;

 private:
  /// What ends with the process.
  struct Process;

  Lines transcript_;
  std::unique_ptr<Process> process_;

 protected:
  HeadlessPlatform& host();
  HeadlessDesktop& desktop() { return host().desktop; }
  NSApplication& application() { return host().application; }
  const JsonUserDefaults& userDefaults() { return host().userDefaults; }
};

}  // namespace norvane
