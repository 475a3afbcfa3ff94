#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/headless/headless_ui.h"
#include "platform/headless/line_input.h"
#include "platform/linux/json.h"

struct _GSource;

namespace norvane {

class GlibDispatch;
struct HeadlessPlatform;

/// The console protocol of docs/console.md: standard input and output stand in for the UI programs
/// and for the person at the desk. Each line is a turn of its own on the main thread, taken when
/// the main queue is empty, so that the same lines always meet the same state. Main thread.
class Console : public UiObserver {
 public:
  Console(HeadlessPlatform& host, GlibDispatch& dispatch);
  ~Console() override;

  /// Begins to take lines.
  void start();

  void started(std::string_view engine, std::string_view entrypoint) override;
  void pluginRegistered(std::string_view engine, std::string_view name) override;
  void called(std::string_view engine, std::string_view channel, Bytes message) override;

 private:
  struct Source;

  bool ready();
  void turn();
  bool isQuiet() const;
  void takeLine(const std::string& line);
  void sendCall(const JsonValue& line, const std::string& idJson);
  void carryOutEvent(JsonDocument& line);
  void printReply(const std::string& idJson, Bytes message);
  void printState();
  void print(const JsonBuffer& line);
  void quit();

  HeadlessPlatform& host_;
  GlibDispatch& dispatch_;
  LineInput input_;
  bool settling_ = false;
  bool quitting_ = false;
  std::shared_ptr<void> openCalls_;  // one more owner for each call that is not answered
  _GSource* source_ = nullptr;
  void* pollTag_ = nullptr;
};

}  // namespace norvane
