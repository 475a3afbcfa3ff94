#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/secure_memory.h"
#include "platform/keychain.h"

namespace norvane {

/// Keychain items in a directory, one file of mode 0600 each. Throws std::system_error, and
/// JsonError for a file that is no item.
class KeychainDirectory {
 public:
  struct Item {
    KeychainQuery name;
    std::string accessible;
    bool synchronizable = false;
    Bytes value;
  };

  /// The keychain of a data directory.
  explicit KeychainDirectory(const std::string& dataDirectory);

  const std::string& path() const { return path_; }
  /// The items that `query` names; all without one. In the order of service, account and group.
  std::vector<Item> find(const KeychainQuery* query) const;
  /// Adds the item, in place of the one with its name.
  void store(const Item& item);
  /// Removes the items that `query` names, unread, and for good when it returns; false when there
  /// is none.
  bool remove(const KeychainQuery& query);

 private:
  std::string pathOf(const KeychainQuery& item) const;

  std::string path_;
};

}  // namespace norvane
