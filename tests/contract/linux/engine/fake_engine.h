// A library with the C API of the UI toolkit's, which misbehaves on demand.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What the library does, and what became of it. The functions of one engine run on whichever view
/// was made last.
struct FakeEngine {
  using Message = std::optional<std::string>;

  bool startFails = false;
  std::vector<std::string> arguments;                        ///< of the view made last
  std::vector<std::pair<std::string, std::string>> arrived;  ///< channel and bytes
  std::vector<Message> answers;                              ///< nothing for an empty one
  int unanswered = 0;                                        ///< handles let go without an answer
  std::vector<std::string> plugins;                          ///< that registered themselves

  /// Sends as the UI program; false when the channel has no handler.
  bool (*send)(const char* channel, const Message& message) = nullptr;
};

extern "C" FakeEngine* fake_engine();
