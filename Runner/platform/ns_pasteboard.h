#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace norvane {

inline constexpr const char* NSPasteboardTypeString = "public.utf8-plain-text";

/// One thing on the pasteboard, in the types that it can be had in, in their order. It may hold a
/// secret: implementations wipe what they keep of it.
class NSPasteboardItem {
 public:
  void setString(std::string_view text, const std::string& type) {
    types_.emplace_back(type, std::string(text));
  }
  const std::vector<std::pair<std::string, std::string>>& types() const { return types_; }

 private:
  std::vector<std::pair<std::string, std::string>> types_;
};

/// The general pasteboard. Main thread.
class NSPasteboard {
 public:
  virtual ~NSPasteboard() = default;
  /// Takes off what this application has put there, and wipes it. What another has put there may
  /// stay until something is written.
  virtual void clearContents() = 0;
  /// Puts `items`, one at least, on the cleared pasteboard, where whoever pastes finds them for as
  /// long as this application runs. A pasteboard with room for one takes of each type the first
  /// item's. False when it could not be written.
  virtual bool writeObjects(std::vector<NSPasteboardItem> items) = 0;
};

}  // namespace norvane
