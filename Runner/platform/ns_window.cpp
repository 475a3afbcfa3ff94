#include "platform/ns_window.h"

#include <optional>
#include <utility>

#include "platform/flutter/flutter_view_controller.h"
#include "platform/frame_record.h"
#include "platform/ns_application.h"
#include "platform/ns_user_defaults.h"
#include "platform/platform.h"

namespace norvane {
namespace {

std::string frameKey(const std::string& autosaveName) { return "NSWindow Frame " + autosaveName; }

}  // namespace

NSWindow::NSWindow(const NSRect& contentRect, NSWindowStyleMask styleMask)
    : native_(platform().windowServer.makeWindow(*this, contentRect, styleMask)),
      styleMask_(styleMask) {}

NSWindow::~NSWindow() = default;

void NSWindow::setContentViewController(std::shared_ptr<FlutterViewController> controller) {
  contentViewController_ = std::move(controller);
  contentViewController_->loadView();
}

void NSWindow::close() {
  if (const auto delegate = delegate_.lock()) delegate->windowWillClose(*this);
  native_->orderOut();
  if (releasedWhenClosed_) platform().application.removeWindow(*this);
}

void NSWindow::setFrame(const NSRect& frame, bool /*display*/, bool animate) {
  native_->setFrame(frame, animate);
  frameDidChange();
}

void NSWindow::setFrameOrigin(const NSPoint& origin) {
  setFrame({origin, frame().size}, /*display=*/true, /*animate=*/false);
}

void NSWindow::setContentSize(const NSSize& size) {
  setFrame({frame().origin, size}, /*display=*/true, /*animate=*/false);
}

void NSWindow::didResignKey() {
  if (const auto delegate = delegate_.lock()) delegate->windowDidResignKey(*this);
}

void NSWindow::setStyleMask(NSWindowStyleMask styleMask) {
  styleMask_ = styleMask;
  native_->setStyleMask(styleMask);
}

void NSWindow::setFrameAutosaveName(const std::string& name) {
  frameAutosaveName_ = name;
  if (!name.empty()) setFrameUsingName(name);
}

void NSWindow::setFrameUsingName(const std::string& name) {
  const auto record = platform().userDefaults.stringForKey(frameKey(name));
  const auto kept = record ? parseFrameRecord(*record) : std::nullopt;
  if (kept) native_->restoreFrame(*kept);
}

void NSWindow::frameDidChange() {
  if (frameAutosaveName_.empty()) return;
  platform().userDefaults.setString(frameRecord(frame()), frameKey(frameAutosaveName_));
}

}  // namespace norvane
