#include "platform/console/console.h"

#include <algorithm>
#include <exception>
#include <initializer_list>
#include <optional>
#include <utility>

#include <glib.h>
#include <unistd.h>

#include "base/utf8.h"
#include "platform/console/console_values.h"
#include "platform/console/json_members.h"
#include "platform/flutter/standard_method_codec.h"
#include "platform/linux/atomic_file.h"
#include "platform/linux/glib_dispatch.h"

namespace norvane {
namespace {

std::string jsonOf(const JsonValue& value) {
  JsonBuffer buffer;
  JsonWriter writer(buffer);
  value.Accept(writer);
  return buffer.GetString();
}

void beginAnswer(JsonWriter& writer, const std::string& idJson) {
  writer.StartObject();
  if (idJson.empty()) return;
  writer.Key("id");
  // Any JSON value, as the line had it.
  writer.RawValue(idJson.data(), idJson.size(), rapidjson::kObjectType);
}

}  // namespace

struct Console::Source {
  GSource base;
  Console* console;
};

Console::Console(ScriptedUi& ui, GlibDispatch& dispatch, DesktopEvents desktopEvents)
    : ui_(ui),
      dispatch_(dispatch),
      desktopEvents_(std::move(desktopEvents)),
      input_(STDIN_FILENO),
      openCalls_(std::make_shared<char>()) {
  ui_.addObserver(*this);
}

Console::~Console() {
  ui_.removeObserver(*this);
  if (!source_) return;
  g_source_destroy(source_);
  g_source_unref(source_);
}

void Console::start() {
  static GSourceFuncs functions{
      .prepare = [](GSource* source, gint* timeout) -> gboolean {
        *timeout = -1;
        return reinterpret_cast<Source*>(source)->console->ready();
      },
      .check = [](GSource* source) -> gboolean {
        return reinterpret_cast<Source*>(source)->console->ready();
      },
      .dispatch = [](GSource* source, GSourceFunc, gpointer) -> gboolean {
        reinterpret_cast<Source*>(source)->console->turn();
        return G_SOURCE_CONTINUE;
      },
      .finalize = nullptr,
      .closure_callback = nullptr,
      .closure_marshal = nullptr,
  };
  source_ = g_source_new(&functions, sizeof(Source));
  reinterpret_cast<Source*>(source_)->console = this;
  g_source_set_priority(source_, G_PRIORITY_LOW);  // below the main queue
  g_source_attach(source_, nullptr);
}

bool Console::isQuiet() const { return dispatch_.isQuiet() && openCalls_.use_count() == 1; }

// The descriptor is polled only while a line is wanted: one that has been hung up is always ready.
bool Console::ready() {
  if (quitting_) return false;
  const bool wantsInput = !settling_ && !input_.hasLine() && !input_.ended();
  if (wantsInput && !pollTag_) {
    pollTag_ = g_source_add_unix_fd(source_, input_.fd(),
                                    static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR));
  } else if (!wantsInput && pollTag_) {
    g_source_remove_unix_fd(source_, std::exchange(pollTag_, nullptr));
  }
  if (wantsInput) return g_source_query_unix_fd(source_, pollTag_) != 0;
  return (!settling_ && input_.hasLine()) || isQuiet();
}

void Console::turn() {
  if (settling_) {  // and now it is quiet
    settling_ = false;
    printDesktopEvent("settled");
  } else if (input_.hasLine()) {
    takeLine(input_.take());
  } else if (!input_.ended()) {
    input_.read();
  } else {
    quit();
  }
}

void Console::takeLine(Bytes line) {
  std::string idJson;
  try {
    JsonDocument document = parseJson(textOf(line));
    line = {};  // a long one is not kept beside what is made of it
    expectObject(document, "a line");
    if (const JsonValue* id = find(document, "id")) idJson = jsonOf(*id);
    if (find(document, "desktop")) {
      carryOutEvent(document);
    } else {
      sendCall(document, idJson);
    }
  } catch (const std::exception& error) {  // what the line says is wrong, or what it asks for fails
    JsonBuffer answer;
    JsonWriter writer(answer);
    beginAnswer(writer, idJson);
    member(writer, "error", utf8Of(error.what()));
    writer.EndObject();
    print(answer);
  }
}

void Console::sendCall(const JsonValue& line, const std::string& idJson) {
  constexpr std::string_view kMembers[] = {"id", "engine", "channel", "method", "arguments"};
  expectOnly(line, kMembers);
  const JsonValue* engineName = find(line, "engine");
  const std::string engine = engineName ? expectText(*engineName, "\"engine\"") : "main";
  const std::string channel = expectText(require(line, "channel"), "\"channel\"");
  const std::string method = expectText(require(line, "method"), "\"method\"");
  Bytes message = encodeConsoleCall(method, find(line, "arguments"));
  const bool sent = ui_.send(
      engine, channel, std::move(message),
      [this, idJson, open = openCalls_](Bytes reply) { printReply(idJson, std::move(reply)); });
  if (!sent) throw JsonError("no engine \"" + engine + "\" is running");
}

void Console::carryOutEvent(JsonDocument& line) {
  const std::string event = expectText(line["desktop"], "\"desktop\"");
  line.RemoveMember("desktop");
  // The console's own, on whatever desktop.
  if (event == "settle" || event == "quit") {
    constexpr std::string_view kMembers[] = {"id"};
    expectOnly(line, kMembers);
    if (event == "settle") settling_ = true;
    if (event == "quit") quit();
    return;
  }
  JsonBuffer answer;
  JsonWriter writer(answer);
  desktopEvents_(event, line, writer);
  if (answer.GetSize() > 0) print(answer);
}

void Console::printDesktopEvent(std::string_view event) {
  JsonBuffer line;
  JsonWriter writer(line);
  writer.StartObject();
  member(writer, "desktop", event);
  writer.EndObject();
  print(line);
}

void Console::quit() {
  quitting_ = true;
  dispatch_.quit();
}

void Console::started(std::string_view engine, std::string_view entrypoint) {
  JsonBuffer line;
  JsonWriter writer(line);
  writer.StartObject();
  member(writer, "engine", engine);
  member(writer, "started", entrypoint);
  writer.EndObject();
  print(line);
}

void Console::pluginRegistered(std::string_view engine, std::string_view name) {
  JsonBuffer line;
  JsonWriter writer(line);
  writer.StartObject();
  member(writer, "engine", engine);
  member(writer, "plugin", name);
  writer.EndObject();
  print(line);
}

void Console::called(std::string_view engine, std::string_view channel, const Bytes& message) {
  const auto call = decodeMethodCall(message);
  JsonBuffer line;
  JsonWriter writer(line);
  writer.StartObject();
  member(writer, "engine", engine);
  member(writer, "channel", channel);
  if (call) {
    member(writer, "call", call->method());
    writer.Key("arguments");
    writeConsoleValue(writer, call->arguments());
  } else {
    member(writer, "error", "the host sent an undecodable call");
  }
  writer.EndObject();
  print(line);
}

void Console::printReply(const std::string& idJson, Bytes message) {
  const auto reply = decodeEnvelope(std::move(message));
  JsonBuffer line;
  JsonWriter writer(line);
  beginAnswer(writer, idJson);
  if (!reply) {
    member(writer, "error", "the host sent an undecodable reply");
  } else if (reply->kind == FlutterReply::Kind::success) {
    member(writer, "reply", "success");
    writer.Key("value");
    writeConsoleValue(writer, reply->value);
  } else if (reply->kind == FlutterReply::Kind::error) {
    member(writer, "reply", "error");
    member(writer, "code", reply->errorCode);
    member(writer, "message", reply->errorMessage);
    writer.Key("details");
    writeConsoleValue(writer, reply->errorDetails);
  } else {
    member(writer, "reply", "notImplemented");
  }
  writer.EndObject();
  print(line);
}

void Console::print(const JsonBuffer& line) {
  std::string text(line.GetString(), line.GetSize());
  text += '\n';
  if (!writeAll(STDOUT_FILENO, text)) return;
  // Nobody listens any more.
  quit();
}

}  // namespace norvane
