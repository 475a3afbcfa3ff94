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

  /// While it is on, no other process can read the keystrokes, as far as the system can keep them:
  /// some only while a window of this application has the keyboard, and those take it up again by
  /// themselves. On again changes nothing.
  virtual void EnableSecureEventInput() = 0;
  /// Not counted: one "off" ends it at once; off again changes nothing.
  virtual void DisableSecureEventInput() = 0;

  /// Null when the system cannot tell.
  virtual std::shared_ptr<TISInputSource> TISCopyCurrentKeyboardInputSource() = 0;
  /// Null when there is none; of several, the system's choice.
  virtual std::shared_ptr<TISInputSource> TISCopyCurrentASCIICapableKeyboardInputSource() = 0;
  /// Types with `source`, one that this object gave, until somebody chooses another. A failure
  /// is not told.
  virtual void TISSelectInputSource(const TISInputSource& source) = 0;
};

}  // namespace norvane
