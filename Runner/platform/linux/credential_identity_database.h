#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/credential_identity_store.h"

namespace SQLite {
class Database;
}

namespace norvane {

/// The registered identities in an SQLite database, each change one transaction. Opened at the
/// first use. Others may read it at any moment: they wait for nothing, and nothing waits for them.
/// One that is found damaged is renamed to its path + ".damaged", with a log record, and begun
/// anew. One thread at a time; throws std::exception with SQLite's own words.
class CredentialIdentityDatabase {
 public:
  explicit CredentialIdentityDatabase(std::string path);
  ~CredentialIdentityDatabase();

  void replacePasswords(const std::vector<ASPasswordCredentialIdentity>& identities);
  void addPasskeys(const std::vector<ASPasskeyCredentialIdentity>& identities);
  /// Also what was set aside.
  void removeAll();

  // In the order of their registration.
  std::vector<ASPasswordCredentialIdentity> passwords();
  std::vector<ASPasskeyCredentialIdentity> passkeys();

 private:
  SQLite::Database& database();
  template <class Use>
  auto use(Use function);
  template <class Change>
  void change(Change function);
  void setAside(const std::string& why);
  std::string damagedPath() const { return path_ + ".damaged"; }

  std::string path_;
  std::unique_ptr<SQLite::Database> database_;
};

}  // namespace norvane
