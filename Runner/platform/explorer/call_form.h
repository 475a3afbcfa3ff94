#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "platform/console/scripted_ui.h"
#include "platform/explorer/channel_table.h"

struct _GtkWidget;

namespace norvane {

/// One method: what it does, its arguments to edit, and what the host answers. Calls are messages
/// of the standard codec, sent as the UI's program would. Main thread.
class CallForm {
 public:
  /// `ui` outlives the form.
  explicit CallForm(ScriptedUi& ui);

  /// Made once; floating.
  _GtkWidget* widget() { return box_; }
  /// Another method, or none of `channel`'s. What was typed for one is there again when it is.
  void show(const ChannelInfo& channel, const MethodInfo* method);

 private:
  _GtkWidget* buildEditor();
  _GtkWidget* buildReply();
  std::string arguments() const;
  /// Whether the arguments can be sent; says in place what is wrong with them.
  bool check();
  void send();
  void showReply(std::int64_t begin, Bytes message);
  void setStatus(const std::string& text, const char* styleClass);

  ScriptedUi& ui_;
  const ChannelInfo* channel_ = nullptr;
  const MethodInfo* method_ = nullptr;
  std::map<const MethodInfo*, std::string> drafts_;
  std::shared_ptr<const void> shown_;  // what replies are for: gone when another method is shown

  _GtkWidget* box_;
  _GtkWidget* name_;
  _GtkWidget* place_;
  _GtkWidget* about_;
  _GtkWidget* call_;  // all that is about a call of the UI's
  _GtkWidget* editor_;
  _GtkWidget* fault_;
  _GtkWidget* send_;
  _GtkWidget* status_;
  _GtkWidget* reply_;
};

}  // namespace norvane
