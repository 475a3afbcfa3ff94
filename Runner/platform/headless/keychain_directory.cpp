#include "platform/headless/keychain_directory.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <span>
#include <system_error>
#include <tuple>
#include <utility>

#include <glib.h>
#include <sys/stat.h>

#include "platform/linux/atomic_file.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/json.h"

namespace norvane {
namespace {

// A file is one line of JSON, the item's attributes, and behind it the raw value.
KeychainDirectory::Item parse(const Bytes& content) {
  const auto lineEnd = std::ranges::find(content, '\n');
  const JsonDocument attributes =
      parseJson(textOf(content).substr(0, static_cast<std::size_t>(lineEnd - content.begin())));
  expectObject(attributes, "an item");
  const auto member = [&](const char* name) -> const JsonValue& {
    const auto found = attributes.FindMember(name);
    if (found == attributes.MemberEnd()) throw JsonError(std::string("no ") + name);
    return found->value;
  };
  KeychainDirectory::Item item;
  item.name.service = expectText(member("service"), "service");
  item.name.account = expectText(member("account"), "account");
  if (const JsonValue& group = member("accessGroup"); !group.IsNull()) {
    item.name.accessGroup = expectText(group, "accessGroup");
  }
  item.accessible = expectText(member("accessible"), "accessible");
  item.synchronizable = expectBoolean(member("synchronizable"), "synchronizable");
  if (lineEnd != content.end()) item.value.assign(lineEnd + 1, content.end());
  return item;
}

/// The item in the file at `path`; nothing when there is no file.
std::optional<KeychainDirectory::Item> read(const std::string& path) {
  try {
    return parse(readFile(path));
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::no_such_file_or_directory) return std::nullopt;
    throw;
  }
}

Bytes serialise(const KeychainDirectory::Item& item) {
  JsonBuffer line;
  JsonWriter writer(line);
  writer.StartObject();
  writer.Key("service");
  writeText(writer, item.name.service);
  writer.Key("account");
  writeText(writer, item.name.account);
  writer.Key("accessGroup");
  if (item.name.accessGroup) {
    writeText(writer, *item.name.accessGroup);
  } else {
    writer.Null();
  }
  writer.Key("accessible");
  writeText(writer, item.accessible);
  writer.Key("synchronizable");
  writer.Bool(item.synchronizable);
  writer.EndObject();

  Bytes content(line.GetString(), line.GetString() + line.GetSize());
  content.push_back('\n');
  content.insert(content.end(), item.value.begin(), item.value.end());
  return content;
}

/// Whether a query without a group names the item.
bool matches(const KeychainQuery& query, const KeychainQuery& name) {
  return query.service == name.service && query.account == name.account;
}

}  // namespace

KeychainDirectory::KeychainDirectory(const std::string& dataDirectory)
    : path_(dataDirectory + "/keychain") {}

std::string KeychainDirectory::pathOf(const KeychainQuery& item) const {
  // Any text may name an item; its file's name is a digest of it.
  std::string name = item.service + '\0' + item.account + '\0';
  if (item.accessGroup) name += *item.accessGroup + '\0';
  const GTextPtr digest(g_compute_checksum_for_data(
      G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(name.data()), name.size()));
  return path_ + '/' + digest.get();
}

std::vector<KeychainDirectory::Item> KeychainDirectory::find(const KeychainQuery* query) const {
  std::vector<Item> items;
  // Another process may be writing: a listing can miss an item that is being replaced, and holds
  // some that are gone by the time they are read.
  if (query && query->accessGroup) {
    if (auto item = read(pathOf(*query))) items.push_back(*std::move(item));
    return items;
  }
  if (!std::filesystem::exists(path_)) return items;
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    if (entry.path().filename().string().starts_with('.')) continue;  // a write under way
    auto item = read(entry.path().string());
    if (item && (!query || matches(*query, item->name))) items.push_back(*std::move(item));
  }
  std::ranges::sort(items, {}, [](const Item& item) {
    return std::tie(item.name.service, item.name.account, item.name.accessGroup);
  });
  return items;
}

void KeychainDirectory::store(const Item& item) {
  if (::mkdir(path_.c_str(), 0700) != 0 && errno != EEXIST) {
    throw std::system_error(errno, std::generic_category(), path_);
  }
  const Bytes content = serialise(item);
  writeFileAtomically(pathOf(item.name), std::as_bytes(std::span(content)));
}

bool KeychainDirectory::remove(const KeychainQuery& query) {
  std::vector<std::string> paths;
  if (query.accessGroup) {
    paths.push_back(pathOf(query));  // also one that can no longer be read
  } else {
    for (const Item& item : find(&query)) paths.push_back(pathOf(item.name));
  }
  bool removed = false;
  for (const std::string& path : paths) removed = removeForGood(path) || removed;
  return removed;
}

}  // namespace norvane
