#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/console/line_input.h"
#include "platform/console/scripted_ui.h"
#include "platform/linux/json.h"

struct _GSource;

namespace norvane {

class GlibDispatch;

/// The console protocol of docs/console.md: standard input and output stand in for the UI programs
/// and, where the desktop is simulated, for the person at the desk. Each line is a turn of its own
/// on the main thread, taken when the main queue is empty, so that the same lines always meet the
/// same state. Main thread.
class Console : public UiObserver {
 public:
  /// Carries out a desktop event that is not the console's own; `arguments` are the line's other
  /// members, and what is written to `answer` is printed. Throws JsonError, with nothing changed,
  /// for an event that does not exist or cannot happen now.
  using DesktopEvents =
      std::function<void(const std::string& event, JsonDocument& arguments, JsonWriter& answer)>;

  Console(ScriptedUi& ui, GlibDispatch& dispatch, DesktopEvents desktopEvents);
  ~Console() override;

  /// Begins to take lines.
  void start();
  /// Prints that `event` has happened on the desktop.
  void printDesktopEvent(std::string_view event);

  void started(std::string_view engine, std::string_view entrypoint) override;
  void pluginRegistered(std::string_view engine, std::string_view name) override;
  void called(std::string_view engine, std::string_view channel, const Bytes& message) override;

 private:
  struct Source;

  bool ready();
  void turn();
  bool isQuiet() const;
  void takeLine(Bytes line);
  void sendCall(const JsonValue& line, const std::string& idJson);
  void carryOutEvent(JsonDocument& line);
  void printReply(const std::string& idJson, Bytes message);
  void print(const JsonBuffer& line);
  void quit();

  ScriptedUi& ui_;
  GlibDispatch& dispatch_;
  const DesktopEvents desktopEvents_;
  LineInput input_;
  bool settling_ = false;
  bool quitting_ = false;
  std::shared_ptr<void> openCalls_;  // one more owner for each call that is not answered
  _GSource* source_ = nullptr;
  void* pollTag_ = nullptr;
};

}  // namespace norvane
