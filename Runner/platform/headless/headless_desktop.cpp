#include "platform/headless/headless_desktop.h"

#include <algorithm>
#include <utility>

#include "platform/headless/headless_graphics.h"
#include "platform/linux/process.h"
#include "platform/ns_bundle.h"

namespace norvane {
namespace {

NSRunningApplication described(const Profile::Application& application) {
  const std::string named =
      application.bundleIdentifier.value_or(application.name.value_or("an application"));
  return {.bundleIdentifier = application.bundleIdentifier,
          .localizedName = application.name,
          .icon = application.icon ? HeadlessGraphics::applicationIcon(named) : nullptr};
}

std::optional<Profile::Application> frontOf(const std::vector<Profile::Application>& applications) {
  const auto front = std::ranges::find_if(applications, &Profile::Application::active);
  return front == applications.end() ? std::nullopt : std::optional(*front);
}

bool areSameApplication(const Profile::Application& a, const Profile::Application& b) {
  return a.bundleIdentifier == b.bundleIdentifier && (a.bundleIdentifier || a.name == b.name);
}

bool isVisibleMainWindow(const HeadlessWindow* window) {
  return window->isVisible() && window->owner().canBecomeMainWindow();
}

}  // namespace

HeadlessDesktop::HeadlessDesktop(LiveProfile& profile, Dispatch& dispatch,
                                 NSApplication& application, const NSBundle& bundle)
    : profile_(profile), dispatch_(dispatch), application_(application), bundle_(bundle) {}

HeadlessDesktop::~HeadlessDesktop() = default;

void HeadlessDesktop::launch(MainInterface mainInterface) {
  mainInterface_ = std::move(mainInterface);
  application_.launch(mainInterface_, [this] { makeMainWindowIfAsked(); });
}

void HeadlessDesktop::makeMainWindowIfAsked() {
  if (!profile_.get(&Profile::mainWindow) || std::exchange(mainWindowMade_, true)) return;
  const auto window = application_.loadMainWindow(mainInterface_);
  mainWindow_ = window;
  if (profile_.get(&Profile::mainWindowVisible)) window->orderFront();
}

void HeadlessDesktop::setProfile(const Profile& profile) {
  const auto before = frontOf(profile_.get(&Profile::applications));
  profile_.change([&](Profile& current) { current = profile; });
  const auto after = frontOf(profile.applications);
  if (after && (!before || !areSameApplication(*before, *after))) deactivate();
  if (mainInterface_.makeMainWindow) makeMainWindowIfAsked();
}

bool HeadlessDesktop::closeMainWindow() {
  const auto window = mainWindow_.lock();
  if (!window || !window->isVisible()) return false;
  application_.closeWindow(*window);
  return true;
}

bool HeadlessDesktop::resizeMainWindow(NSRect frame) {
  const auto window = mainWindow_.lock();
  if (!window || !window->isVisible()) return false;
  HeadlessWindow& native = nativeWindow(*window);
  const NSSize least = native.minSize();
  const NSSize most = native.maxSize();
  frame.size = {std::max(least.width, std::min(frame.size.width, most.width)),
                std::max(least.height, std::min(frame.size.height, most.height))};
  native.setFrame(frame, /*animate=*/false);
  dispatch_.mainAsync([weakWindow = mainWindow_] {
    if (const auto moved = weakWindow.lock()) moved->frameDidChange();
  });
  return true;
}

bool HeadlessDesktop::activate(const std::string& bundleIdentifier) {
  bool found = false;
  profile_.change([&](Profile& profile) {
    const auto front = std::ranges::find(profile.applications, bundleIdentifier,
                                         &Profile::Application::bundleIdentifier);
    if (front == profile.applications.end()) return;
    for (Profile::Application& application : profile.applications) application.active = false;
    found = front->active = true;
  });
  if (found) deactivate();
  return found;
}

void HeadlessDesktop::launchApplication(const Profile::Application& application) {
  profile_.change([&](Profile& profile) {
    if (application.active) {
      for (Profile::Application& other : profile.applications) other.active = false;
    }
    profile.applications.push_back(application);
  });
  if (application.active) deactivate();
}

bool HeadlessDesktop::terminateApplication(const std::string& bundleIdentifier) {
  bool found = false;
  profile_.change([&](Profile& profile) {
    const auto ending = std::ranges::find(profile.applications, bundleIdentifier,
                                          &Profile::Application::bundleIdentifier);
    if (ending == profile.applications.end()) return;
    profile.applications.erase(ending);
    found = true;
  });
  return found;
}

void HeadlessDesktop::deactivate() {
  active_ = false;
  application_.setKeyWindow(nullptr);
}

// The active application's main window has the keyboard when no other window of it does.
void HeadlessDesktop::giveKeyBack() {
  if (!active_ || application_.hasKeyWindow()) return;
  const auto next = std::ranges::find_if(windows_, &isVisibleMainWindow);
  if (next != windows_.end()) application_.setKeyWindow(&(*next)->owner());
}

std::optional<std::string> HeadlessDesktop::frontApplication() const {
  const auto front = frontmostApplication();
  return front ? front->bundleIdentifier : std::nullopt;
}

NSRunningApplication HeadlessDesktop::ownApplication() const {
  return {.bundleIdentifier = bundle_.bundleIdentifier(),
          .localizedName = "Norvane",
          .icon = HeadlessGraphics::applicationIcon("Norvane")};
}

HeadlessWindow& HeadlessDesktop::nativeWindow(const NSWindow& window) const {
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
  giveKeyBack();
}

std::optional<NSRect> HeadlessDesktop::mainScreenVisibleFrame() const {
  const auto screens = profile_.get(&Profile::screens);
  if (screens.empty()) return std::nullopt;
  return screens.front().visibleFrame;
}

std::vector<NSRunningApplication> HeadlessDesktop::runningApplications() const {
  std::vector<NSRunningApplication> running;
  for (const auto& application : profile_.get(&Profile::applications)) {
    running.push_back(described(application));
  }
  running.push_back(ownApplication());
  return running;
}

std::optional<NSRunningApplication> HeadlessDesktop::frontmostApplication() const {
  if (active_) return ownApplication();
  const auto front = frontOf(profile_.get(&Profile::applications));
  return front ? std::optional(described(*front)) : std::nullopt;
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

HeadlessWindow::~HeadlessWindow() { std::erase(desktop_.windows_, this); }

void HeadlessWindow::makeKeyAndOrderFront() {
  visible_ = true;
  if (owner_.canBecomeKeyWindow()) desktop_.application_.setKeyWindow(&owner_);
}

void HeadlessWindow::orderOut() {
  visible_ = false;
  if (!desktop_.application_.isKey(owner_)) return;
  desktop_.application_.setKeyWindow(nullptr);
  desktop_.giveKeyBack();
}

void HeadlessWindow::setFrame(const NSRect& frame, bool /*animate*/) { frame_ = frame; }

}  // namespace norvane
