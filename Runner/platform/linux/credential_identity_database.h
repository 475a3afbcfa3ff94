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
/// first use. One thread at a time; throws std::exception with SQLite's own words.
class CredentialIdentityDatabase {
 public:
  explicit CredentialIdentityDatabase(std::string path);
  ~CredentialIdentityDatabase();

  void replacePasswords(const std::vector<ASPasswordCredentialIdentity>& identities);
  void addPasskeys(const std::vector<ASPasskeyCredentialIdentity>& identities);
  void removeAll();

  // In the order of their registration.
  std::vector<ASPasswordCredentialIdentity> passwords();
  std::vector<ASPasskeyCredentialIdentity> passkeys();

 private:
  SQLite::Database& database();

  std::string path_;
  std::unique_ptr<SQLite::Database> database_;
};

}  // namespace norvane
