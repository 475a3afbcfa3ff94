#include "autofill/auto_fill_bridge.h"

#include <exception>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "autofill/credential_identities.h"
#include "autofill/passkey_index_sync.h"
#include "autofill/snapshot_sync.h"
#include "base/utf8.h"
#include "platform/credential_identity_store.h"
#include "platform/dispatch.h"
#include "platform/log.h"
#include "platform/ns_bundle.h"
#include "platform/ns_process_info.h"
#include "platform/platform.h"
#include "storage/passkey_index.h"

namespace norvane {
namespace {

using Result = std::shared_ptr<FlutterResult>;
using Outcome = std::variant<FlutterValue, FlutterError>;

void replyOnMain(const Result& result, Outcome outcome) {
  platform().dispatch.mainAsync([result, outcome = std::move(outcome)] {
    std::visit([&](const auto& reply) { (*result)(reply); }, outcome);
  });
}

/// The application identifier prefix, ending in "."; empty when there is none.
std::string teamIdentifierPrefix() {
  const auto prefix = platform().mainBundle.infoText("AppIdentifierPrefix");
  if (!prefix || prefix->empty()) return "";
  return prefix->ends_with('.') ? *prefix : *prefix + '.';
}

std::string sharedAccessGroup() { return teamIdentifierPrefix() + "cn.kestrio.norvane"; }

/// Runs a sync's `work` on the items of `call`, on a worker, and replies. Nothing of the items is
/// left in memory when the reply is given.
template <class Work, class CleanUp>
void performSync(FlutterMethodCall&& call, const Result& result, const char* errorCode, Work work,
                 CleanUp cleanUp) {
  Outcome outcome;
  try {
    outcome = work(Items(std::move(call)));
  } catch (const std::exception& error) {
    cleanUp();
    outcome = FlutterError{errorCode, utf8Of(error.what()), {}};
  } catch (...) {
    cleanUp();
    outcome = FlutterError{errorCode, "unknown error", {}};
  }
  secureWipeStack();
  replyOnMain(result, std::move(outcome));
}

/// `completion` for the first answer of the store; a second one is reported and goes no further.
template <class Completion>
auto once(Completion completion) {
  return [completion = std::move(completion), answered = false](auto&&... answer) mutable {
    if (std::exchange(answered, true)) {
      reportFault("the credential identity store answered twice");
      return;
    }
    completion(std::forward<decltype(answer)>(answer)...);
  };
}

using TurnPtr = std::shared_ptr<const Turns::Turn>;

/// `completion`, which ends the turn, even where the store keeps it after its answer.
template <class Completion>
auto endingTurn(TurnPtr turn, Completion completion) {
  return [turn = std::move(turn), completion](bool success, const auto& error) mutable {
    const TurnPtr held = std::move(turn);
    completion(success, error);
  };
}

/// What the store's completion means for the UI: `reply`, or the store's error under `errorCode`.
Outcome outcomeOf(const std::optional<std::string>& error, const char* errorCode,
                  FlutterValue reply) {
  if (error) return FlutterError{errorCode, *error, {}};
  return reply;
}

/// Hands `identities` to the store's `operation` when the store is enabled, and replies. No other
/// change of the store comes between the two steps.
template <class Identity>
void registerIdentities(Turns& storeTurns, std::vector<Identity> identities, const Result& result,
                        const char* errorCode,
                        void (ASCredentialIdentityStore::*operation)(
                            std::vector<Identity>, ASCredentialIdentityStore::Completion),
                        FlutterValue (*reply)(std::int64_t saved, bool isEnabled)) {
  storeTurns.take([=, identities = std::move(identities)](TurnPtr turn) mutable {
    auto& store = platform().credentialIdentityStore;
    store.getCredentialIdentityStoreState(
        once([=, &store, turn = std::move(turn),
              identities = std::move(identities)](auto state) mutable {
          TurnPtr held = std::move(turn);
          if (!state.isEnabled) return replyOnMain(result, reply(0, false));
          const auto count = static_cast<std::int64_t>(identities.size());
          const auto saved = [=](bool success, const auto& error) {
            replyOnMain(result, outcomeOf(error, errorCode, reply(success ? count : 0, true)));
          };
          (store.*operation)(std::move(identities), endingTurn(std::move(held), saved));
        }));
  });
}

}  // namespace

AutoFillBridge::AutoFillBridge(const std::shared_ptr<FlutterBinaryMessenger>& messenger)
    : channel("cn.kestrio.norvane.autofill", messenger),
      snapshotQueue_(platform().dispatch.makeSerialQueue()),
      passkeyQueue_(platform().dispatch.makeSerialQueue()),
      storeTurns_(std::make_shared<Turns>(platform().dispatch)) {}

std::shared_ptr<AutoFillBridge> AutoFillBridge::make(
    const std::shared_ptr<FlutterBinaryMessenger>& messenger) {
  std::shared_ptr<AutoFillBridge> bridge(new AutoFillBridge(messenger));
  bridge->channel.setMethodCallHandler(
      [weakBridge = std::weak_ptr(bridge)](FlutterMethodCall call, FlutterResult result) {
        if (const auto alive = weakBridge.lock()) {
          alive->handle(std::move(call), std::move(result));
        } else {
          result.drop();
        }
      });
  return bridge;
}

void AutoFillBridge::handle(FlutterMethodCall call, FlutterResult callResult) {
  const auto result = std::make_shared<FlutterResult>(std::move(callResult));
  const std::string method(call.method());
  if (method == "getState") {
    getState(result);
  } else if (method == "registerCredentials") {
    registerCredentials(Items(std::move(call)), result);
  } else if (method == "syncVaultSnapshot") {
    syncVaultSnapshot(std::move(call), result);
  } else if (method == "syncPasskeyIndex") {
    syncPasskeyIndex(std::move(call), result);
  } else if (method == "registerPasskeys") {
    registerPasskeys(Items(std::move(call)), result);
  } else if (method == "clearCredentials") {
    clearCredentials(result);
  } else {
    (*result)(FlutterMethodNotImplemented);
  }
  secureWipeStack();
}

void AutoFillBridge::getState(const Result& result) {
  platform().credentialIdentityStore.getCredentialIdentityStoreState([result](const auto& state) {
    replyOnMain(result,
                FlutterMap{{"isEnabled", state.isEnabled},
                           {"supportsIncrementalUpdates", state.supportsIncrementalUpdates}});
  });
}

void AutoFillBridge::registerCredentials(const Items& items, const Result& result) {
  registerIdentities(*storeTurns_, passwordIdentitiesOf(items), result, "autofill_register_failed",
                     &ASCredentialIdentityStore::replaceCredentialIdentities,
                     [](std::int64_t saved, bool isEnabled) -> FlutterValue {
                       return FlutterMap{{"saved", saved}, {"isEnabled", isEnabled}};
                     });
}

void AutoFillBridge::registerPasskeys(const Items& items, const Result& result) {
  const auto reply = [](std::int64_t saved, bool /*isEnabled*/) -> FlutterValue {
    return FlutterMap{{"saved", saved}};
  };
  if (!platform().processInfo.isOperatingSystemAtLeastVersion({14, 0, 0})) {
    (*result)(reply(0, false));
    return;
  }
  registerIdentities(*storeTurns_, passkeyIdentitiesOf(items), result, "passkey_register_failed",
                     &ASCredentialIdentityStore::saveCredentialIdentityEntries, reply);
}

void AutoFillBridge::syncVaultSnapshot(FlutterMethodCall call, const Result& result) {
  snapshotQueue_->async([call = std::move(call), group = sharedAccessGroup(), result]() mutable {
    performSync(
        std::move(call), result, "autofill_sync_snapshot_failed",
        [&](const Items& items) { return writeSnapshot(items, group); },
        [&] { removeSnapshot(group); });
  });
}

void AutoFillBridge::syncPasskeyIndex(FlutterMethodCall call, const Result& result) {
  passkeyQueue_->async([call = std::move(call), group = sharedAccessGroup(), result]() mutable {
    performSync(
        std::move(call), result, "passkey_sync_failed",
        [&](const Items& items) { return writePasskeyIndex(items, group); },
        [&] { PasskeyIndex::clear(group); });
  });
}

void AutoFillBridge::clearCredentials(const Result& result) {
  const std::string group = sharedAccessGroup();
  // In the order of both kinds of sync: those asked for before have finished, those asked for later
  // come after, so that whoever clears last leaves nothing behind.
  snapshotQueue_->sync([&] {
    passkeyQueue_->sync([&] {
      removeSnapshot(group);
      PasskeyIndex::clear(group);
    });
  });
  storeTurns_->take([result](TurnPtr turn) {
    const auto cleared = [result](bool success, const auto& error) {
      replyOnMain(result, outcomeOf(error, "autofill_clear_failed", success));
    };
    platform().credentialIdentityStore.removeAllCredentialIdentities(
        endingTurn(std::move(turn), cleared));
  });
}

}  // namespace norvane
