#include "platform/headless/headless_desktop.h"

#include <algorithm>
#include <utility>

#include "platform/linux/process.h"
#include "platform/platform.h"

namespace norvane {
namespace {

constexpr const char* kBundleIdentifier = "cn.kestrio.norvane";

}  // namespace

HeadlessDesktop::HeadlessDesktop(LiveProfile& profile, Dispatch& dispatch,
                                 std::function<void()> quit)
    : profile_(profile), dispatch_(dispatch), quit_(std::move(quit)) {}

HeadlessDesktop::~HeadlessDesktop() = default;

void HeadlessDesktop::launch(MainInterface mainInterface) {
  mainInterface_ = std::move(mainInterface);
  NSApplication& application = platform().application;
  application.setDelegate(mainInterface_.makeDelegate());
  makeMainWindowIfAsked();
  application.delegate()->applicationDidFinishLaunching();
}

void HeadlessDesktop::makeMainWindowIfAsked() {
  if (!profile_.get(&Profile::mainWindow) || std::exchange(mainWindowMade_, true)) return;
  const auto window = mainInterface_.makeMainWindow();
  mainWindow_ = window;
  window->awakeFromNib();
  if (profile_.get(&Profile::mainWindowVisible)) window->orderFront();
}

void HeadlessDesktop::setProfile(const Profile& profile) {
  profile_.change([&](Profile& current) { current = profile; });
  if (active_ && std::ranges::any_of(profile.applications, &Profile::Application::active)) {
    active_ = false;
    keyWindow_ = nullptr;
  }
  if (mainInterface_.makeMainWindow) makeMainWindowIfAsked();
}

void HeadlessDesktop::openURL(const std::optional<std::string>& url) {
  NSAppleEventDescriptor event;
  if (url) event.setParamDescriptor(NSAppleEventDescriptor(*url), keyDirectObject);
  platform().application.appleEventManager().dispatchEvent(kInternetEventClass, kAEGetURL, event);
}

bool HeadlessDesktop::closeMainWindow() {
  const auto window = mainWindow_.lock();
  if (!window || !window->isVisible()) return false;
  window->close();
  dispatch_.mainAsync([this] { quitIfLastWindowClosed(); });
  return true;
}

void HeadlessDesktop::quitIfLastWindowClosed() {
  if (hasVisibleWindows()) return;
  if (platform().application.delegate()->applicationShouldTerminateAfterLastWindowClosed()) quit_();
}

void HeadlessDesktop::reopen() {
  activateIgnoringOtherApps();
  platform().application.delegate()->applicationShouldHandleReopen(hasVisibleWindows());
}

bool HeadlessDesktop::hasVisibleWindows() const {
  return std::ranges::any_of(windows_, &HeadlessWindow::isVisible);
}

std::optional<std::string> HeadlessDesktop::frontApplication() const {
  if (active_) return kBundleIdentifier;
  const auto applications = profile_.get(&Profile::applications);
  const auto front = std::ranges::find_if(applications, &Profile::Application::active);
  return front == applications.end() ? std::nullopt : front->bundleIdentifier;
}

bool HeadlessDesktop::isKey(const NSWindow& window) const {
  return keyWindow_ && &keyWindow_->owner() == &window;
}

const HeadlessWindow& HeadlessDesktop::nativeWindow(const NSWindow& window) const {
  return **std::ranges::find_if(
      windows_, [&](const HeadlessWindow* native) { return &native->owner() == &window; });
}

std::unique_ptr<NativeWindow> HeadlessDesktop::makeWindow(NSWindow& window,
                                                          const NSRect& contentRect,
                                                          NSWindowStyleMask styleMask) {
  return std::make_unique<HeadlessWindow>(*this, window, contentRect, styleMask);
}

void HeadlessDesktop::activateIgnoringOtherApps() {
  active_ = true;
  profile_.change([](Profile& profile) {
    for (Profile::Application& application : profile.applications) application.active = false;
  });
}

std::optional<NSRect> HeadlessDesktop::mainScreenVisibleFrame() const {
  const auto screens = profile_.get(&Profile::screens);
  if (screens.empty()) return std::nullopt;
  return screens.front().visibleFrame;
}

std::optional<std::string> HeadlessDesktop::environment(const std::string& name) const {
  return environmentVariable(name);
}

NSOperatingSystemVersion HeadlessDesktop::operatingSystemVersion() const {
  return profile_.get(&Profile::osVersion);
}

HeadlessWindow::HeadlessWindow(HeadlessDesktop& desktop, NSWindow& owner, const NSRect& frame,
                               NSWindowStyleMask styleMask)
    : desktop_(desktop), owner_(owner), frame_(frame), styleMask_(styleMask) {
  desktop_.windows_.push_back(this);
}

HeadlessWindow::~HeadlessWindow() {
  if (desktop_.keyWindow_ == this) desktop_.keyWindow_ = nullptr;
  std::erase(desktop_.windows_, this);
}

void HeadlessWindow::makeKeyAndOrderFront() {
  visible_ = true;
  desktop_.keyWindow_ = this;
}

void HeadlessWindow::orderOut() {
  visible_ = false;
  if (desktop_.keyWindow_ == this) desktop_.keyWindow_ = nullptr;
}

void HeadlessWindow::setFrame(const NSRect& frame, bool /*animate*/) { frame_ = frame; }

}  // namespace norvane
