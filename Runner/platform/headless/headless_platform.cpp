#include "platform/headless/headless_platform.h"

#include <utility>

#include "base/utf8.h"

namespace norvane {

ASCredentialIdentityStoreState HeadlessCredentialStore::state() const {
  const auto store = profile_.get(&Profile::credentialStore);
  return {store.isEnabled, store.supportsIncrementalUpdates};
}

void HeadlessCredentialStore::run(Operation operation, Completion completion) {
  const auto store = profile_.get(&Profile::credentialStore);
  if (store.error || !store.success) return completion(false, store.error);
  DatabaseCredentialStore::run(std::move(operation), std::move(completion));
}

std::optional<std::string> HeadlessBundle::infoText(const std::string& key) const {
  if (key != "AppIdentifierPrefix") return std::nullopt;
  return profile_.get(&Profile::appIdentifierPrefix);
}

std::optional<std::string> HeadlessFileManager::containerURLForSecurityApplicationGroupIdentifier(
    const std::string& group) {
  if (!profile_.get(&Profile::appGroup)) return std::nullopt;
  return LinuxFileManager::containerURLForSecurityApplicationGroupIdentifier(group);
}

std::optional<std::string> HeadlessFileManager::URLForUbiquityContainerIdentifier(
    const std::string& identifier) {
  // Its path is told to the UI.
  if (!profile_.get(&Profile::icloud) || !isWellFormedUtf8(dataDirectory_)) return std::nullopt;
  return dataDirectory_ + "/Mobile Documents/" + identifier;
}

std::int32_t HeadlessCrypto::SecRandomCopyBytes(std::span<std::uint8_t> bytes) {
  constexpr std::int32_t kFailed = -1;
  return profile_.get(&Profile::random) ? OpenSslCrypto::SecRandomCopyBytes(bytes) : kFailed;
}

HeadlessPlatform::HeadlessPlatform(Profile initialProfile, const std::string& dataDirectory,
                                   Dispatch& mainDispatch, std::function<void()> quit)
    : profile(std::move(initialProfile)),
      dispatch(mainDispatch),
      application(std::move(quit)),
      bundle(profile),
      fileManager(dataDirectory, profile),
      crypto(profile),
      keychain(dataDirectory, profile),
      credentialStore(dataDirectory, dispatch, profile),
      userDefaults(dataDirectory + "/user-defaults.json"),
      graphics(profile),
      hotkeys(profile),
      keyboard(profile),
      appService(dataDirectory, profile),
      desktop(profile, dispatch, application, bundle),
      workspace(desktop),
      platform(platformOf(*this)),
      installed(platform) {}

HeadlessPlatform::~HeadlessPlatform() { application.releaseAll(); }

}  // namespace norvane
