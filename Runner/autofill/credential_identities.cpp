#include "autofill/credential_identities.h"

#include <array>
#include <string>

#include "base/base64.h"

namespace norvane {

std::vector<ASPasswordCredentialIdentity> passwordIdentitiesOf(const Items& items) {
  constexpr std::array<std::string_view, 4> kMembers{"id", "username", "url", "title"};
  using Type = ASCredentialServiceIdentifier::Type;
  std::vector<ASPasswordCredentialIdentity> identities;
  for (const FlutterValueView item : items) {
    const auto [id, username, url, title] = textMembers(item, kMembers);
    if (!id || !isNotEmpty(username)) continue;
    const bool hasUrl = isNotEmpty(url);
    identities.push_back({
        .serviceIdentifier = {.identifier = std::string(hasUrl ? *url : title.value_or("Norvane")),
                              .type = hasUrl ? Type::URL : Type::domain},
        .user = std::string(*username),
        .recordIdentifier = std::string(*id),
    });
  }
  return identities;
}

std::vector<ASPasskeyCredentialIdentity> passkeyIdentitiesOf(const Items& items) {
  constexpr std::array<std::string_view, 5> kMembers{"id", "rp_id", "credential_id", "user_name",
                                                     "user_handle"};
  std::vector<ASPasskeyCredentialIdentity> identities;
  for (const FlutterValueView item : items) {
    const auto [id, rpId, credentialId, userName, userHandle] = textMembers(item, kMembers);
    if (!id || !isNotEmpty(rpId) || !credentialId) continue;
    auto credential = decodeBase64(*credentialId);
    if (!credential) continue;
    identities.push_back({
        .relyingPartyIdentifier = std::string(*rpId),
        .userName = std::string(isNotEmpty(userName) ? *userName : *rpId),
        .credentialID = *std::move(credential),
        .userHandle = decodeBase64(userHandle.value_or("")).value_or(std::vector<std::uint8_t>{}),
        .recordIdentifier = std::string(*id),
    });
  }
  return identities;
}

}  // namespace norvane
