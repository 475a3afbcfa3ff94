#include "autofill/credential_identities.h"

#include <string>

#include "base/base64.h"

namespace norvane {
namespace {

constexpr MemberNames<4> kLoginMembers{"id", "username", "url", "title"};
constexpr MemberNames<5> kPasskeyMembers{"id", "rp_id", "credential_id", "user_name",
                                         "user_handle"};

}  // namespace

std::vector<ASPasswordCredentialIdentity> passwordIdentitiesOf(const Items& items) {
  using Type = ASCredentialServiceIdentifier::Type;
  std::vector<ASPasswordCredentialIdentity> identities;
  const bool complete = items.visit<kLoginMembers>([&](const auto& texts) {
    const auto& [id, username, url, title] = texts;
    if (!id || !isNotEmpty(username)) return;
    const bool hasUrl = isNotEmpty(url);
    identities.push_back({
        .serviceIdentifier = {.identifier = std::string(hasUrl ? *url : title.value_or("Norvane")),
                              .type = hasUrl ? Type::URL : Type::domain},
        .user = std::string(*username),
        .recordIdentifier = std::string(*id),
    });
  });
  if (!complete) identities.clear();
  return identities;
}

std::vector<ASPasskeyCredentialIdentity> passkeyIdentitiesOf(const Items& items) {
  std::vector<ASPasskeyCredentialIdentity> identities;
  const bool complete = items.visit<kPasskeyMembers>([&](const auto& texts) {
    const auto& [id, rpId, credentialId, userName, userHandle] = texts;
    if (!id || !isNotEmpty(rpId) || !credentialId) return;
    auto credential = decodeBase64(*credentialId);
    if (!credential) return;
    identities.push_back({
        .relyingPartyIdentifier = std::string(*rpId),
        .userName = std::string(isNotEmpty(userName) ? *userName : *rpId),
        .credentialID = *std::move(credential),
        .userHandle = decodeBase64(userHandle.value_or("")).value_or(std::vector<std::uint8_t>{}),
        .recordIdentifier = std::string(*id),
    });
  });
  if (!complete) identities.clear();
  return identities;
}

}  // namespace norvane
