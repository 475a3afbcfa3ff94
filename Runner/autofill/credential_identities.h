#pragma once

#include <vector>

#include "autofill/items.h"
#include "platform/credential_identity_store.h"

namespace norvane {

// Items as identities for the system's credential store. An item that lacks what its identity needs
// makes none. Secrets are never read.

std::vector<ASPasswordCredentialIdentity> passwordIdentitiesOf(const Items& items);
std::vector<ASPasskeyCredentialIdentity> passkeyIdentitiesOf(const Items& items);

}  // namespace norvane
