#include "platform/headless/headless_services.h"

#include <algorithm>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>

#include "base/utf8.h"
#include "platform/linux/atomic_file.h"

namespace norvane {
namespace {

class HeadlessInputSource : public TISInputSource {
 public:
  explicit HeadlessInputSource(std::string sourceIdentifier)
      : identifier(std::move(sourceIdentifier)) {}
  const std::string identifier;
};

std::shared_ptr<TISInputSource> sourceNamed(const std::optional<std::string>& identifier) {
  return identifier ? std::make_shared<HeadlessInputSource>(*identifier) : nullptr;
}

}  // namespace

HeadlessKeyboard::HeadlessKeyboard(const LiveProfile& profile) : profile_(profile) {
  const auto sources = profile_.get(&Profile::inputSources);
  if (!sources.empty()) current_ = sources.front();
}

std::optional<std::string> HeadlessKeyboard::inputSource() const { return current_; }

bool HeadlessKeyboard::select(const std::string& identifier) {
  const auto sources = profile_.get(&Profile::inputSources);
  if (std::ranges::find(sources, identifier) == sources.end()) return false;
  current_ = identifier;
  return true;
}

std::shared_ptr<TISInputSource> HeadlessKeyboard::TISCopyCurrentKeyboardInputSource() {
  return sourceNamed(current_);
}

std::shared_ptr<TISInputSource> HeadlessKeyboard::TISCopyCurrentASCIICapableKeyboardInputSource() {
  return sourceNamed(profile_.get(&Profile::asciiInputSource));
}

void HeadlessKeyboard::TISSelectInputSource(const TISInputSource& source) {
  current_ = dynamic_cast<const HeadlessInputSource&>(source).identifier;
}

void HeadlessPasteboard::copy(const std::string& text) {
  NSPasteboardItem item;
  item.setString(text, NSPasteboardTypeString);
  items_.clear();
  items_.push_back(std::move(item));
}

bool HeadlessPasteboard::writeObjects(std::vector<NSPasteboardItem> items) {
  // Beside what is there, so that a host that forgets to clear is seen to.
  for (NSPasteboardItem& item : items) items_.push_back(std::move(item));
  return true;
}

double HeadlessEventSource::secondsSinceLastEventType(CGEventType type) const {
  const auto found = last_.find(type);
  const auto since = found == last_.end() ? start_ : found->second;
  return std::chrono::duration<double>(Clock::now() - since).count();
}

HeadlessAppService::HeadlessAppService(const std::string& dataDirectory, const LiveProfile& profile)
    : path_(dataDirectory + "/login-item"), profile_(profile) {}

SMAppServiceStatus HeadlessAppService::status() const {
  if (const auto forced = profile_.get(&Profile::loginItem).status) {
    return static_cast<SMAppServiceStatus>(*forced);
  }
  std::error_code unreadable;
  if (std::filesystem::exists(path_, unreadable)) return SMAppServiceStatus::enabled;
  return unreadable ? SMAppServiceStatus::notFound : SMAppServiceStatus::notRegistered;
}

std::optional<ServiceError> HeadlessAppService::registerService() {
  return keep(SMAppServiceStatus::enabled);
}

std::optional<ServiceError> HeadlessAppService::unregisterService() {
  return keep(SMAppServiceStatus::notRegistered);
}

std::optional<ServiceError> HeadlessAppService::keep(SMAppServiceStatus status) {
  if (const auto error = profile_.get(&Profile::loginItem).error) {
    return ServiceError{.localizedDescription = *error, .description = *error};
  }
  try {
    if (status == SMAppServiceStatus::enabled) {
      writeFileAtomically(path_, {});
    } else {
      std::filesystem::remove(path_);
    }
  } catch (const std::system_error& error) {
    return ServiceError{.localizedDescription = utf8Of(error.code().message()),
                        .description = error.what()};
  }
  return std::nullopt;
}

std::unique_ptr<SPUStandardUpdaterController> HeadlessUpdater::makeUpdaterController(
    bool /*startingUpdater*/) {
  class Controller : public SPUStandardUpdaterController {
   public:
    explicit Controller(const HeadlessUpdater& updater) : updater_(updater) {}
    void checkForUpdates() override {
      if (updater_.observer_) updater_.observer_();
    }

   private:
    const HeadlessUpdater& updater_;
  };
  return std::make_unique<Controller>(*this);
}

}  // namespace norvane
