#include "platform/explorer/call_form.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include "platform/console/console_values.h"
#include "platform/explorer/message_text.h"
#include "platform/explorer/widgets.h"
#include "platform/flutter/standard_method_codec.h"
#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

/// "line 2, column 5", counted in characters from 1.
std::string placeOf(const std::string& text, std::size_t offset) {
  const std::string before = text.substr(0, offset);
  const auto line = std::ranges::count(before, '\n') + 1;
  const std::size_t start = before.rfind('\n') + 1;  // npos wraps to 0
  const glong column = g_utf8_strlen(before.c_str() + start, -1) + 1;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

/// The call as a message; throws JsonError for arguments that are none.
Bytes messageOf(const std::string& method, const std::string& arguments) {
  if (isBlank(arguments)) return encodeConsoleCall(method, nullptr);
  const JsonDocument document = parseJson(arguments);
  return encodeConsoleCall(method, &document);
}

}  // namespace

CallForm::CallForm(ScriptedUi& ui)
    : ui_(ui),
      box_(gtk_box_new(GTK_ORIENTATION_VERTICAL, 6)),
      name_(makeHeadline("")),
      place_(makeLabel("", "dim-label")),
      about_(makeLabel("")),
      call_(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12)),
      editor_(makeCodeView(/*isEditable=*/true)),
      fault_(makeLabel("", "norvane-error")),
      send_(gtk_button_new_with_mnemonic("_Send")),
      status_(makeLabel("")),
      reply_(makeCodeView(/*isEditable=*/false)) {
  gtk_container_set_border_width(GTK_CONTAINER(box_), 12);
  gtk_box_set_homogeneous(GTK_BOX(call_), TRUE);
  gtk_container_add(GTK_CONTAINER(call_), buildEditor());
  gtk_container_add(GTK_CONTAINER(call_), buildReply());
  gtk_widget_show_all(call_);
  gtk_widget_set_no_show_all(call_, TRUE);  // hidden where the host calls
  for (GtkWidget* const line : {name_, place_, about_}) {
    gtk_container_add(GTK_CONTAINER(box_), line);
  }
  gtk_box_pack_start(GTK_BOX(box_), call_, TRUE, TRUE, 0);
  connect(gtk_text_view_get_buffer(GTK_TEXT_VIEW(editor_)), "changed", this,
          [](GtkTextBuffer*, CallForm* self) { self->check(); });
  connect(send_, "clicked", this, [](GtkButton*, CallForm* self) { self->send(); });
  connect(editor_, "key-press-event", this,
          [](GtkWidget*, GdkEventKey* key, CallForm* self) -> gboolean {
            const bool isReturn = key->keyval == GDK_KEY_Return || key->keyval == GDK_KEY_KP_Enter;
            if (!isReturn || !(key->state & GDK_CONTROL_MASK)) return FALSE;
            self->send();
            return TRUE;
          });
}

GtkWidget* CallForm::buildEditor() {
  GtkWidget* const hint = makeLabel("Ctrl+Enter", "dim-label");
  GtkWidget* const row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
  setClass(send_, "suggested-action");
  gtk_container_add(GTK_CONTAINER(row), send_);
  gtk_container_add(GTK_CONTAINER(row), hint);
  GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  gtk_container_add(GTK_CONTAINER(box), makeLabelFor(editor_, "_Arguments, as JSON"));
  gtk_box_pack_start(GTK_BOX(box), scrolled(editor_), TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(box), fault_);
  gtk_container_add(GTK_CONTAINER(box), row);
  return box;
}

GtkWidget* CallForm::buildReply() {
  GtkWidget* const row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
  gtk_container_add(GTK_CONTAINER(row), makeLabelFor(reply_, "_Reply"));
  gtk_box_pack_end(GTK_BOX(row), status_, FALSE, FALSE, 0);
  GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  gtk_container_add(GTK_CONTAINER(box), row);
  gtk_box_pack_start(GTK_BOX(box), scrolled(reply_), TRUE, TRUE, 0);
  return box;
}

std::string CallForm::arguments() const {
  GtkTextBuffer* const buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(editor_));
  GtkTextIter begin, end;
  gtk_text_buffer_get_bounds(buffer, &begin, &end);
  const GTextPtr text(gtk_text_buffer_get_text(buffer, &begin, &end, TRUE));
  return text.get();
}

void CallForm::show(const ChannelInfo& channel, const MethodInfo* method) {
  if (channel_ == &channel && method_ == method) return;  // with its reply, or waiting for it
  if (method_) drafts_[method_] = arguments();
  channel_ = &channel;
  method_ = method;
  shown_ = std::make_shared<char>();
  const std::string name(shortName(channel.name));
  gtk_label_set_text(GTK_LABEL(name_), method ? method->name.c_str() : name.c_str());
  gtk_label_set_text(
      GTK_LABEL(place_),
      (channel.name + ", of the engine " + channel.engine +
       (method && method->isHosts ? "; called by the host, as the traffic shows" : ""))
          .c_str());
  gtk_label_set_text(GTK_LABEL(about_), method ? method->about.c_str() : channel.about.c_str());
  gtk_widget_set_visible(call_, method && !method->isHosts);
  if (!method) return;
  const auto draft = drafts_.find(method);
  ::norvane::setText(editor_, (draft == drafts_.end() ? method->example : draft->second).c_str());
  ::norvane::setText(reply_, "");
  setStatus("", nullptr);
  check();
}

bool CallForm::check() {
  std::string fault;
  const std::string text = arguments();
  try {
    messageOf("", text);
  } catch (const JsonSyntaxError& error) {
    fault = placeOf(text, error.offset) + ": " + error.reason;
  } catch (const JsonError& error) {
    fault = error.what();
  }
  gtk_label_set_text(GTK_LABEL(fault_), fault.c_str());
  gtk_widget_set_visible(fault_, !fault.empty());
  gtk_widget_set_sensitive(send_, fault.empty());
  return fault.empty();
}

void CallForm::send() {
  if (!method_ || method_->isHosts || !check()) return;
  setStatus("waiting", "dim-label");
  ::norvane::setText(reply_, "");
  shown_ = std::make_shared<char>();
  const std::int64_t begin = g_get_monotonic_time();
  const bool isSent =
      ui_.send(channel_->engine, channel_->name, messageOf(method_->name, arguments()),
               [this, begin, shown = std::weak_ptr<const void>(shown_)](Bytes message) {
                 if (!shown.expired()) showReply(begin, std::move(message));
               });
  if (isSent) return;
  setStatus("not sent", "norvane-error");
  ::norvane::setText(reply_, ("The engine " + channel_->engine +
                              " does not run yet: call Quick Access up, by its hotkey or the "
                              "status item.")
                                 .c_str());
}

void CallForm::showReply(std::int64_t begin, Bytes message) {
  const double milliseconds = static_cast<double>(g_get_monotonic_time() - begin) / 1000;
  const auto reply = decodeEnvelope(std::move(message));
  const bool isSuccess = reply && reply->kind == FlutterReply::Kind::success;
  char time[32];
  std::snprintf(time, sizeof time, ", %.1f ms", milliseconds);
  setStatus((reply ? kindOf(*reply) : "undecodable") + time,
            isSuccess ? "norvane-success" : "norvane-error");
  ::norvane::setText(reply_, reply ? contentOf(*reply).c_str() : "");
}

void CallForm::setStatus(const std::string& text, const char* styleClass) {
  GtkStyleContext* const style = gtk_widget_get_style_context(status_);
  for (const char* other : {"norvane-success", "norvane-error", "dim-label"}) {
    gtk_style_context_remove_class(style, other);
  }
  if (styleClass) gtk_style_context_add_class(style, styleClass);
  gtk_label_set_text(GTK_LABEL(status_), text.c_str());
}

}  // namespace norvane
