#include "platform/explorer/channel_table.h"

#include <algorithm>

#include <gio/gio.h>

#include "platform/explorer/message_text.h"
#include "platform/linux/json.h"

/// Of channels.json and explorer.css, as GLib's compiler writes it; its header knows no C++.
extern "C" GResource* explorer_get_resource();

namespace norvane {
namespace {

MethodInfo methodOf(const JsonValue& row) {
  MethodInfo method;
  method.name = expectText(require(row, "name"), "name");
  method.about = expectText(require(row, "about"), "about");
  if (const JsonValue* example = find(row, "example")) method.example = jsonForPeople(*example);
  method.isHosts = expectText(require(row, "by"), "by") == "host";
  method.isSecret = find(row, "isSecret") != nullptr;
  return method;
}

std::vector<ChannelInfo> readTable() {
  gsize size = 0;
  GBytes* bytes =
      g_resource_lookup_data(explorer_get_resource(), "/cn/kestrio/norvane/explorer/channels.json",
                             G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr);
  const auto* text = static_cast<const char*>(g_bytes_get_data(bytes, &size));
  const JsonDocument rows = parseJson({text, size});
  std::vector<ChannelInfo> table;
  for (const JsonValue& row : rows.GetArray()) {
    ChannelInfo& channel = table.emplace_back();
    channel.name = expectText(require(row, "channel"), "channel");
    channel.engine = expectText(require(row, "engine"), "engine");
    channel.about = expectText(require(row, "about"), "about");
    for (const JsonValue& method : require(row, "methods").GetArray()) {
      channel.methods.push_back(methodOf(method));
    }
  }
  g_bytes_unref(bytes);
  return table;
}

}  // namespace

const std::vector<ChannelInfo>& channelTable() {
  static const std::vector<ChannelInfo> table = readTable();
  return table;
}

const MethodInfo* methodInfo(std::string_view channel, std::string_view method) {
  for (const ChannelInfo& row : channelTable()) {
    if (row.name != channel) continue;
    const auto found = std::ranges::find(row.methods, method, &MethodInfo::name);
    if (found != row.methods.end()) return &*found;
  }
  return nullptr;
}

std::string_view shortName(std::string_view channel) {
  constexpr std::string_view kPrefix = "cn.kestrio.norvane.";
  return channel.starts_with(kPrefix) ? channel.substr(kPrefix.size()) : channel;
}

}  // namespace norvane
