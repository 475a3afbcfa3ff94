#include "platform/ns_window.h"

#include <array>
#include <charconv>
#include <locale>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

#include "platform/flutter/flutter_view_controller.h"
#include "platform/ns_application.h"
#include "platform/ns_user_defaults.h"
#include "platform/platform.h"

namespace norvane {
namespace {

std::string frameKey(const std::string& autosaveName) { return "NSWindow Frame " + autosaveName; }

/// A frame as the user defaults keep it: x, y, width and height in points, in decimal, separated by
/// blanks.
std::string frameRecord(const NSRect& frame) {
  std::string record;
  for (const double value : {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height}) {
    std::array<char, 32> digits;  // the shortest form of a double takes at most 24
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    if (!record.empty()) record += ' ';
    record.append(digits.data(), end);
  }
  return record;
}

/// Reads also the home system's own records, which go on with the screen's frame and end in a
/// blank. Nothing when `record` is anything else than four or eight numbers, width and height
/// positive.
std::optional<NSRect> parseFrameRecord(const std::string& record) {
  std::istringstream in(record);  // not every standard library has from_chars for these
  in.imbue(std::locale::classic());
  in >> std::noskipws;
  std::vector<double> values;
  do {
    if (!(in >> values.emplace_back())) return std::nullopt;
  } while (in.get() == ' ' && in.peek() != std::istringstream::traits_type::eof());
  if (!in.eof() || (values.size() != 4 && values.size() != 8)) return std::nullopt;
  const NSRect frame{{values[0], values[1]}, {values[2], values[3]}};
  if (frame.size.width <= 0 || frame.size.height <= 0) return std::nullopt;
  return frame;
}

}  // namespace

NSWindow::NSWindow(const NSRect& contentRect, NSWindowStyleMask styleMask)
    : native_(platform().windowServer.makeWindow(*this, contentRect, styleMask)),
      styleMask_(styleMask) {}

NSWindow::~NSWindow() = default;

void NSWindow::setContentViewController(std::shared_ptr<FlutterViewController> controller) {
  native_->showView(*controller);
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
