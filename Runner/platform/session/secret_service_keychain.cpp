#include "platform/session/secret_service_keychain.h"

#include <algorithm>
#include <chrono>

#include <glib.h>

#include "platform/session/secret_service_session.h"

namespace norvane {
namespace {

using Clock = GlibDispatch::Clock;
constexpr auto kLimit = std::chrono::seconds(2);
constexpr auto kLeftAlone = std::chrono::seconds(5);

}  // namespace

OSStatus SecretServiceKeychain::answer(const KeychainQuery& query,
                                       const std::function<OSStatus(SecretServiceSession&)>& call) {
  // D-Bus carries no other texts.
  for (const std::string* text :
       {&query.service, &query.account, query.accessGroup ? &*query.accessGroup : &query.account}) {
    if (!g_utf8_validate_len(text->data(), text->size(), nullptr)) return errSecIO;
  }
  const std::lock_guard lock(mutex_);  // nobody has it beyond a deadline
  const auto begin = Clock::now();
  const auto deadline = std::min(begin, dispatch_.mainThreadWaitsSince()) + kLimit;
  if (begin >= deadline || begin < leftAloneUntil_) return errSecInteractionNotAllowed;
  try {
    SecretServiceSession session(deadline);
    session.open();
    return call(session);
  } catch (const SecretServiceSession::Failure& failure) {
    // One that was given less time may just be slow.
    if (Clock::now() >= begin + kLimit) leftAloneUntil_ = Clock::now() + kLeftAlone;
    return failure.status;
  }
}

OSStatus SecretServiceKeychain::SecItemUpdate(const KeychainQuery& query,
                                              const KeychainAttributes& attributes) {
  return answer(query, [&](SecretServiceSession& session) {
    const auto items = session.find(query);
    for (const auto& item : items) session.update(item, attributes);
    return items.empty() ? errSecItemNotFound : errSecSuccess;
  });
}

OSStatus SecretServiceKeychain::SecItemAdd(const KeychainQuery& item,
                                           const KeychainAttributes& attributes,
                                           bool synchronizable) {
  return answer(item, [&](SecretServiceSession& session) {
    if (!session.find(item).empty()) return errSecDuplicateItem;
    session.add(item, attributes, synchronizable);
    return errSecSuccess;
  });
}

OSStatus SecretServiceKeychain::SecItemDelete(const KeychainQuery& query) {
  return answer(query, [&](SecretServiceSession& session) {
    const auto items = session.find(query);
    for (const auto& item : items) session.remove(item);
    return items.empty() ? errSecItemNotFound : errSecSuccess;
  });
}

}  // namespace norvane
