#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace norvane {

/// Four characters, the first in the most significant byte, as the home system spells its codes.
constexpr std::uint32_t fourCharacterCode(const char (&code)[5]) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(code[i]);
  return value;
}

inline constexpr std::uint32_t kInternetEventClass = fourCharacterCode("GURL");
inline constexpr std::uint32_t kAEGetURL = fourCharacterCode("GURL");
inline constexpr std::uint32_t keyDirectObject = fourCharacterCode("----");

/// An event of the system, or one of its parameters.
class NSAppleEventDescriptor {
 public:
  NSAppleEventDescriptor() = default;
  /// A text parameter. What is not UTF-8, or holds NUL, is no text.
  explicit NSAppleEventDescriptor(std::string text);

  const std::optional<std::string>& stringValue() const { return text_; }
  /// Null when the event has no such parameter. The event owns it.
  const NSAppleEventDescriptor* paramDescriptorForKeyword(std::uint32_t keyword) const;
  void setParamDescriptor(NSAppleEventDescriptor descriptor, std::uint32_t keyword);

 private:
  std::optional<std::string> text_;
  std::map<std::uint32_t, NSAppleEventDescriptor> parameters_;
};

/// Hands events of the system to the application. Main thread.
class NSAppleEventManager {
 public:
  using Handler =
      std::function<void(const NSAppleEventDescriptor& event, NSAppleEventDescriptor& reply)>;

  void setEventHandler(Handler handler, std::uint32_t eventClass, std::uint32_t eventID);

  /// The system's side: gives `event` to its handler; an event without one is ignored.
  void dispatchEvent(std::uint32_t eventClass, std::uint32_t eventID,
                     const NSAppleEventDescriptor& event);

 private:
  std::map<std::pair<std::uint32_t, std::uint32_t>, Handler> handlers_;
};

}  // namespace norvane
