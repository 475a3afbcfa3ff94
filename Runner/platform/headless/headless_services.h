#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/cg_event_source.h"
#include "platform/headless/live_profile.h"
#include "platform/keyboard_input.h"
#include "platform/ns_pasteboard.h"
#include "platform/sm_app_service.h"
#include "platform/updater_controller.h"

// The small services of the headless desktop, each with its control side. Main thread.

namespace norvane {

/// A keyboard with the input sources of the profile.
class HeadlessKeyboard : public KeyboardInput {
 public:
  explicit HeadlessKeyboard(const LiveProfile& profile);

  // The control side
  bool isSecure() const { return isSecure_; }
  /// The identifier of the current input source; nothing where there is none.
  std::optional<std::string> inputSource() const;
  /// False when there is no such input source.
  bool select(const std::string& identifier);

  void EnableSecureEventInput() override { isSecure_ = true; }
  void DisableSecureEventInput() override { isSecure_ = false; }
  std::shared_ptr<TISInputSource> TISCopyCurrentKeyboardInputSource() override;
  std::shared_ptr<TISInputSource> TISCopyCurrentASCIICapableKeyboardInputSource() override;
  void TISSelectInputSource(const TISInputSource& source) override;

 private:
  const LiveProfile& profile_;
  std::optional<std::string> current_;
  bool isSecure_ = false;
};

class HeadlessPasteboard : public NSPasteboard {
 public:
  // The control side
  const std::vector<NSPasteboardItem>& items() const { return items_; }
  /// Another application copies a text.
  void copy(const std::string& text);

  void clearContents() override { items_.clear(); }
  bool writeObjects(std::vector<NSPasteboardItem> items) override;

 private:
  std::vector<NSPasteboardItem> items_;
};

/// Input events, as the control side says that they happen.
class HeadlessEventSource : public CGEventSource {
 public:
  /// One input event happens now.
  void input(CGEventType type) { last_[type] = Clock::now(); }

  double secondsSinceLastEventType(CGEventType type) const override;

 private:
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start_ = Clock::now();
  std::map<CGEventType, Clock::time_point> last_;
};

/// The login item, kept in a file; the profile may say otherwise.
class HeadlessAppService : public SMAppService {
 public:
  HeadlessAppService(const std::string& dataDirectory, const LiveProfile& profile);

  SMAppServiceStatus status() const override;
  std::optional<ServiceError> registerService() override;
  std::optional<ServiceError> unregisterService() override;

 private:
  std::optional<ServiceError> keep(SMAppServiceStatus status);

  std::string path_;
  const LiveProfile& profile_;
};

/// An updater whose checks are only heard of.
class HeadlessUpdater : public UpdaterFramework {
 public:
  /// The control side: called at each check.
  void setObserver(std::function<void()> observer) { observer_ = std::move(observer); }

  std::unique_ptr<SPUStandardUpdaterController> makeUpdaterController(
      bool startingUpdater) override;

 private:
  std::function<void()> observer_;
};

}  // namespace norvane
