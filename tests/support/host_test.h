#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <random>
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

/// Keeps log records. A fault that the test did not ask for fails it. Any thread.
class RecordingLog : public Log {
 public:
  ~RecordingLog() override;
  void write(std::string_view text) override {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(text);
  }

  /// What was logged since the last call.
  Lines take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  std::mutex mutex_;
  Lines lines_;
};

/// Another sequence at each run, or that of NORVANE_TEST_SEED; the seed is printed.
std::mt19937 seededRandom();

/// What a reply says: "success VALUE", "error CODE: MESSAGE, DETAILS" or "notImplemented".
std::string describeReply(Bytes message);

/// The call of a UI; `arguments` is JSON.
Bytes uiCall(const std::string& method, const std::string& arguments = "null");

/// A directory of its own, in memory where there is room for one, removed with all that it holds;
/// its path is not UTF-8.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory() { std::filesystem::remove_all(path); }

  std::filesystem::path path;
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
  /// The same; what the launch has logged and told the UIs is taken.
  void start(const Profile& profile = {});
  /// Members of the profile, as JSON, change while the host runs.
  void change(const std::string& members);

  /// Sends a call of the UI; `arguments` is JSON. The reply is found in the transcript.
  void send(const std::string& channel, const std::string& method,
            const std::string& arguments = "null", const std::string& engine = "main");
  /// The same, and the reply once everything has settled; "(none)" where none came.
  std::string call(const std::string& channel, const std::string& method,
                   const std::string& arguments = "null") {
    return deliver(channel, uiCall(method, arguments));
  }
  std::string deliver(const std::string& channel, Bytes message);
  /// What reached the UIs since the last call, in order: "CHANNEL METHOD ARGUMENTS" of each call of
  /// the host, "reply …" of each reply, "ENGINE started ENTRYPOINT", "ENGINE plugin NAME".
  Lines takeTranscript() { return std::exchange(transcript_, {}); }

  void started(std::string_view engine, std::string_view entrypoint) override;
  void pluginRegistered(std::string_view engine, std::string_view name) override;
  void called(std::string_view engine, std::string_view channel, const Bytes& message) override;

  TemporaryDirectory directory;
  RecordingLog log;
  const ScopedLog installedLog{log};
  VirtualDispatch dispatch;
  Fault keychainFault;
  Lines keychainCalls;  ///< "OPERATION ACCOUNT"
  Fault cryptoFault;
  HeldCredentialStore::Held credentialStore;

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
