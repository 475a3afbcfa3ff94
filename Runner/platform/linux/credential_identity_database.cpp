#include "platform/linux/credential_identity_database.h"

#include <filesystem>
#include <utility>

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

#include "platform/log.h"

namespace norvane {
namespace {

using Type = ASCredentialServiceIdentifier::Type;

constexpr const char* kSchema = R"(
  CREATE TABLE IF NOT EXISTS password (
    position INTEGER PRIMARY KEY, record TEXT NOT NULL, user TEXT NOT NULL,
    service TEXT NOT NULL, is_url INTEGER NOT NULL);
  CREATE TABLE IF NOT EXISTS passkey (
    position INTEGER PRIMARY KEY, record TEXT NOT NULL, relying_party TEXT NOT NULL,
    user_name TEXT NOT NULL, credential BLOB NOT NULL, user_handle BLOB NOT NULL))";

constexpr int kBusyTimeout = 2000;                                  // milliseconds
constexpr const char* kParts[] = {"-wal", "-shm", "-journal", ""};  // of a database's path

std::vector<std::uint8_t> blob(const SQLite::Column& column) {
  const auto* bytes = static_cast<const std::uint8_t*>(column.getBlob());
  return {bytes, bytes + column.getBytes()};
}

// A null pointer would be bound as NULL; no bytes are still a value.
void bindBlob(SQLite::Statement& statement, int index, const std::vector<std::uint8_t>& bytes) {
  statement.bind(index, bytes.empty() ? "" : static_cast<const void*>(bytes.data()),
                 static_cast<int>(bytes.size()));
}

}  // namespace

CredentialIdentityDatabase::CredentialIdentityDatabase(std::string path) : path_(std::move(path)) {}

CredentialIdentityDatabase::~CredentialIdentityDatabase() = default;

SQLite::Database& CredentialIdentityDatabase::database() {
  int moved = 0;  // or removed
  if (database_) {
    sqlite3_file_control(database_->getHandle(), nullptr, SQLITE_FCNTL_HAS_MOVED, &moved);
  }
  if (!database_ || moved != 0) {
    database_.reset();
    auto opened = std::make_unique<SQLite::Database>(
        path_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, kBusyTimeout);
    opened->exec(kSchema);
    database_ = std::move(opened);
  }
  return *database_;
}

template <class Use>
auto CredentialIdentityDatabase::use(Use function) {
  try {
    return function(database());
  } catch (const SQLite::Exception& failure) {
    const int code = failure.getErrorCode();
    if (code != SQLITE_NOTADB && code != SQLITE_CORRUPT) throw;
    setAside(failure.what());
  }
  return function(database());
}

template <class Change>
void CredentialIdentityDatabase::change(Change function) {
  use([&](SQLite::Database& database) {
    database.exec("PRAGMA journal_mode = WAL");  // readers and writers do not wait for each other
    SQLite::Transaction transaction(database);
    function(database);
    transaction.commit();
    // What was removed goes from the log too; where somebody still reads it, with a later change.
    database.setBusyTimeout(0);
    database.tryExec("PRAGMA wal_checkpoint(TRUNCATE)");
    database.setBusyTimeout(kBusyTimeout);
  });
}

void CredentialIdentityDatabase::setAside(const std::string& why) {
  database_.reset();
  const std::string damaged = damagedPath();
  for (const char* part : kParts) {
    std::filesystem::remove(damaged + part);
    if (std::filesystem::exists(path_ + part)) {
      std::filesystem::rename(path_ + part, damaged + part);
    }
  }
  NSLog("[Norvane] credential identities set aside as " + damaged + ": " + why);
}

void CredentialIdentityDatabase::replacePasswords(
    const std::vector<ASPasswordCredentialIdentity>& identities) {
  change([&](SQLite::Database& database) {
    database.exec("DELETE FROM password");
    SQLite::Statement insert(database,
                             "INSERT INTO password (record, user, service, is_url) "
                             "VALUES (?, ?, ?, ?)");
    for (const auto& identity : identities) {
      insert.bind(1, identity.recordIdentifier);
      insert.bind(2, identity.user);
      insert.bind(3, identity.serviceIdentifier.identifier);
      insert.bind(4, identity.serviceIdentifier.type == Type::URL);
      insert.exec();
      insert.reset();
    }
  });
}

void CredentialIdentityDatabase::addPasskeys(
    const std::vector<ASPasskeyCredentialIdentity>& identities) {
  change([&](SQLite::Database& database) {
    SQLite::Statement insert(
        database,
        "INSERT INTO passkey (record, relying_party, user_name, credential, user_handle) "
        "VALUES (?, ?, ?, ?, ?)");
    for (const auto& identity : identities) {
      insert.bind(1, identity.recordIdentifier);
      insert.bind(2, identity.relyingPartyIdentifier);
      insert.bind(3, identity.userName);
      bindBlob(insert, 4, identity.credentialID);
      bindBlob(insert, 5, identity.userHandle);
      insert.exec();
      insert.reset();
    }
  });
}

void CredentialIdentityDatabase::removeAll() {
  change([](SQLite::Database& database) {
    database.exec("DELETE FROM password");
    database.exec("DELETE FROM passkey");
  });
  for (const char* part : kParts) std::filesystem::remove(damagedPath() + part);
}

std::vector<ASPasswordCredentialIdentity> CredentialIdentityDatabase::passwords() {
  return use([](SQLite::Database& database) {
    std::vector<ASPasswordCredentialIdentity> identities;
    SQLite::Statement select(
        database, "SELECT record, user, service, is_url FROM password ORDER BY position");
    while (select.executeStep()) {
      identities.push_back({
          .serviceIdentifier = {.identifier = select.getColumn(2).getString(),
                                .type = select.getColumn(3).getInt() ? Type::URL : Type::domain},
          .user = select.getColumn(1).getString(),
          .recordIdentifier = select.getColumn(0).getString(),
      });
    }
    return identities;
  });
}

std::vector<ASPasskeyCredentialIdentity> CredentialIdentityDatabase::passkeys() {
  return use([](SQLite::Database& database) {
    std::vector<ASPasskeyCredentialIdentity> identities;
    SQLite::Statement select(database,
                             "SELECT record, relying_party, user_name, credential, user_handle "
                             "FROM passkey ORDER BY position");
    while (select.executeStep()) {
      identities.push_back({
          .relyingPartyIdentifier = select.getColumn(1).getString(),
          .userName = select.getColumn(2).getString(),
          .credentialID = blob(select.getColumn(3)),
          .userHandle = blob(select.getColumn(4)),
          .recordIdentifier = select.getColumn(0).getString(),
      });
    }
    return identities;
  });
}

}  // namespace norvane
