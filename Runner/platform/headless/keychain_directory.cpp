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
#include <unistd.h>

#include "platform/linux/atomic_file.h"
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

bool matches(const KeychainQuery& query, const KeychainQuery& name) {
  return query.service == name.service && query.account == name.account &&
         (!query.accessGroup || query.accessGroup == name.accessGroup);
}

}  // namespace

KeychainDirectory::KeychainDirectory(const std::string& dataDirectory)
    : path_(dataDirectory + "/keychain") {}

std::string KeychainDirectory::pathOf(const Item& item) const {
  // Any text may name an item; its file's name is a digest of it.
  std::string name = item.name.service + '\0' + item.name.account + '\0';
  if (item.name.accessGroup) name += *item.name.accessGroup + '\0';
  const std::unique_ptr<char, decltype(&g_free)> digest(
      g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(name.data()),
                                  name.size()),
      g_free);
  return path_ + '/' + digest.get();
}

std::vector<KeychainDirectory::Item> KeychainDirectory::find(const KeychainQuery* query) const {
  std::vector<Item> items;
  if (!std::filesystem::exists(path_)) return items;
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    if (entry.path().filename().string().starts_with('.')) continue;  // a write under way
    Item item = parse(readFile(entry.path().string()));
    if (!query || matches(*query, item.name)) items.push_back(std::move(item));
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
  writeFileAtomically(pathOf(item), std::as_bytes(std::span(content)));
}

void KeychainDirectory::remove(const Item& item) {
  const std::string path = pathOf(item);
  if (::unlink(path.c_str()) != 0) {
    throw std::system_error(errno, std::generic_category(), path);
  }
}

}  // namespace norvane
