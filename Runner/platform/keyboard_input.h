#pragma once

#include <memory>

namespace norvane {

/// A keyboard input source of the system's; held for as long as the object lives.
class TISInputSource {
 public:
  virtual ~TISInputSource() = default;
};

/// Secure keyboard entry and the keyboard's input sources. Main thread.
class KeyboardInput {
 public:
  virtual ~KeyboardInput() = default;

  /// While it is on, no other process can read the keystrokes. Not counted: one "off" ends it.
  virtual void EnableSecureEventInput() = 0;
  virtual void DisableSecureEventInput() = 0;

  /// Null when the system cannot tell.
  virtual std::shared_ptr<TISInputSource> TISCopyCurrentKeyboardInputSource() = 0;
  /// Null when there is none.
  virtual std::shared_ptr<TISInputSource> TISCopyCurrentASCIICapableKeyboardInputSource() = 0;
  virtual void TISSelectInputSource(const TISInputSource& source) = 0;
};

}  // namespace norvane
