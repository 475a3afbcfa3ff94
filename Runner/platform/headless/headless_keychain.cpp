#include "platform/headless/headless_keychain.h"

#include <exception>
#include <new>

#include "platform/linux/atomic_file.h"

namespace norvane {

HeadlessKeychain::HeadlessKeychain(const std::string& dataDirectory, const LiveProfile& profile)
    : profile_(profile), directory_(dataDirectory) {
  sweepTemporaryFiles(directory_.path());
}

std::vector<KeychainDirectory::Item> HeadlessKeychain::items() const {
  const std::lock_guard lock(mutex_);
  return directory_.find(nullptr);
}

OSStatus HeadlessKeychain::answer(std::optional<OSStatus> forced,
                                  const std::function<OSStatus()>& call) {
  if (forced) return *forced;
  const std::lock_guard lock(mutex_);
  try {
    return call();
  } catch (const std::bad_alloc&) {
    throw;  // no failure of the keychain's
  } catch (const std::exception&) {
    return errSecIO;
  }
}

OSStatus HeadlessKeychain::SecItemUpdate(const KeychainQuery& query,
                                         const KeychainAttributes& attributes) {
  return answer(profile_.get(&Profile::keychain).update, [&] {
    auto items = directory_.find(&query);
    for (auto& item : items) {
      item.value.assign(attributes.valueData.begin(), attributes.valueData.end());
      item.accessible = attributes.accessible;
      directory_.store(item);
    }
    return items.empty() ? errSecItemNotFound : errSecSuccess;
  });
}

OSStatus HeadlessKeychain::SecItemAdd(const KeychainQuery& item,
                                      const KeychainAttributes& attributes, bool synchronizable) {
  return answer(profile_.get(&Profile::keychain).add, [&] {
    if (!directory_.find(&item).empty()) return errSecDuplicateItem;
    directory_.store({.name = item,
                      .accessible = attributes.accessible,
                      .synchronizable = synchronizable,
                      .value = {attributes.valueData.begin(), attributes.valueData.end()}});
    return errSecSuccess;
  });
}

OSStatus HeadlessKeychain::SecItemDelete(const KeychainQuery& query) {
  return answer(profile_.get(&Profile::keychain).remove,
                [&] { return directory_.remove(query) ? errSecSuccess : errSecItemNotFound; });
}

}  // namespace norvane
