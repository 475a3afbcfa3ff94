#pragma once

#include <map>

#include "platform/headless/keychain_directory.h"
#include "support/host_test.h"
#include "support/open_envelope.h"

namespace norvane {

inline constexpr const char* kAutoFill = "cn.kestrio.norvane.autofill";

/// One of the two sealed files, and the call that writes it.
struct Sealed {
  std::string method;
  std::string errorCode;
  std::string account;
  std::string file;
};
inline const Sealed kSnapshot{"syncVaultSnapshot", "autofill_sync_snapshot_failed", "session-key",
                              "snapshot.enc"};
inline const Sealed kPasskeys{"syncPasskeyIndex", "passkey_sync_failed", "passkey-session-key",
                              "passkey_index.enc"};

/// The AutoFill extension: finds keys and files on its own. Any thread, beside the host.
class Extension {
 public:
  explicit Extension(const std::filesystem::path& dataDirectory);

  std::filesystem::path pathOf(const Sealed& sealed) const { return support_ / sealed.file; }
  std::optional<Bytes> key(const Sealed& sealed) const;
  std::optional<std::string> file(const Sealed& sealed) const;
  /// The entries as JSON with sorted members, or "none", "only a key", "only a file", "misfit".
  std::string read(const Sealed& sealed) const;
  /// Files that a write has left behind.
  std::vector<std::string> leftovers() const;

 private:
  std::filesystem::path root_;
  std::filesystem::path support_;
  KeychainDirectory keychain_;
};

/// A login and a passkey at once, as arguments.
inline std::string itemNamed(const std::string& id) {
  return R"({"items":[{"id":")" + id +
         R"(","username":"u","password":"p","rp_id":"r","credential_id":"AA==",)"
         R"("private_key":"k","algorithm":"a"}]})";
}

/// What the extension reads of it.
inline std::string entryNamed(const Sealed& sealed, const std::string& id) {
  if (sealed.file == kSnapshot.file) {
    return R"([{"id":")" + id + R"(","password":"p","title":"","url":"","username":"u"}])";
  }
  return R"([{"algorithm":"a","credential_id":"AA==","id":")" + id +
         R"(","private_key":"k","rp_id":"r","user_handle":"","user_name":""}])";
}

inline std::string written(const Sealed& sealed, int count) {
  const std::string number = std::to_string(count);
  return "success {\"written\":" + number +
         (sealed.file == kSnapshot.file ? ",\"encrypted\":true}" : "}");
}

inline std::string failure(const Sealed& sealed, const std::string& message) {
  return "error " + sealed.errorCode + ": " + message + ", null";
}

/// A running host, its AutoFill channel and the extension beside it.
class AutoFillTest : public HostTest {
 protected:
  AutoFillTest() : extension(directory.path) { start(); }

  std::string autoFill(const std::string& method, const std::string& arguments = "null") {
    return call(kAutoFill, method, arguments);
  }
  /// The next sync works, whatever was before.
  void expectHealthySync(const Sealed& sealed, const std::string& id = "healthy") {
    EXPECT_EQ(autoFill(sealed.method, itemNamed(id)), written(sealed, 1));
    EXPECT_EQ(extension.read(sealed), entryNamed(sealed, id));
  }
  /// The registered identities, one text each: the passwords, then the passkeys.
  Lines registered() {
    Lines lines;
    const auto add = [&](std::initializer_list<std::string> members) {
      std::string line;
      for (const std::string& member : members) line += (line.empty() ? "" : "|") + member;
      lines.push_back(line);
    };
    host().credentialStore.inspect([&](CredentialIdentityDatabase& database) {
      for (const auto& it : database.passwords()) {
        const bool isUrl = it.serviceIdentifier.type == ASCredentialServiceIdentifier::Type::URL;
        add({isUrl ? "URL" : "domain", it.serviceIdentifier.identifier, it.user,
             it.recordIdentifier});
      }
      for (const auto& it : database.passkeys()) {
        add({"passkey",
             it.relyingPartyIdentifier,
             it.userName,
             {it.credentialID.begin(), it.credentialID.end()},
             {it.userHandle.begin(), it.userHandle.end()},
             it.recordIdentifier});
      }
    });
    return lines;
  }

  Extension extension;
};

}  // namespace norvane
