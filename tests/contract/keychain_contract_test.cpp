// What the host relies on of the keychain, asked of the simulated one and of the session's keyring.

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <libsecret/secret.h>

#include "platform/gtk/glib_handles.h"
#include "platform/gtk/secret_service_keychain.h"
#include "platform/headless/headless_keychain.h"
#include "platform/linux/glib_dispatch.h"

namespace norvane {
namespace {

constexpr const char* kTestService = "org.example.norvane.contract";

/// Group, accessibility, whether it synchronises, value.
using Kept = std::tuple<std::string, std::string, bool, std::vector<std::uint8_t>>;

struct SimulatedKeychain {
  std::string directory = GTextPtr(g_dir_make_tmp(nullptr, nullptr)).get();
  LiveProfile profile{Profile()};
  HeadlessKeychain keychain{directory, profile};

  ~SimulatedKeychain() { std::filesystem::remove_all(directory); }
  std::vector<Kept> items() {
    std::vector<Kept> kept;
    for (const auto& item : keychain.items()) {
      kept.emplace_back(item.name.accessGroup.value_or("none"), item.accessible,
                        item.synchronizable,
                        std::vector<std::uint8_t>(item.value.begin(), item.value.end()));
    }
    return kept;
  }
};

/// Read back as another program would.
struct Keyring {
  GlibDispatch dispatch;
  SecretServiceKeychain keychain{dispatch};

  ~Keyring() { keychain.SecItemDelete({kTestService, "session-key", {}}); }
  std::vector<Kept> items() {
    GList* found = secret_password_search_sync(
        &kAnySchema, static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS),
        nullptr, nullptr, "service", kTestService, nullptr);
    std::vector<Kept> kept;
    for (const GList* entry = found; entry; entry = entry->next) {
      const GObjectPtr<SecretRetrievable> item(SECRET_RETRIEVABLE(entry->data));
      const std::unique_ptr<GHashTable, GlibDeleter<g_hash_table_unref>> attributes(
          secret_retrievable_get_attributes(item.get()));
      const auto attribute = [&](const char* name) {
        const auto* value = static_cast<const char*>(g_hash_table_lookup(attributes.get(), name));
        return std::string(value ? value : "none");
      };
      const std::unique_ptr<SecretValue, GlibDeleter<secret_value_unref>> value(
          secret_item_get_secret(SECRET_ITEM(item.get())));
      gsize size = 0;
      const char* bytes = secret_value_get(value.get(), &size);
      kept.emplace_back(attribute("access-group"), attribute("accessible"),
                        attribute("synchronizable") == "true",
                        std::vector<std::uint8_t>(bytes, bytes + size));
    }
    g_list_free(found);
    std::ranges::sort(kept);
    return kept;
  }

  static constexpr SecretSchema kAnySchema = {
      "any", SECRET_SCHEMA_DONT_MATCH_NAME, {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}}};
};

template <class World>
class KeychainContract : public testing::Test, public World {};
using Worlds = testing::Types<SimulatedKeychain, Keyring>;
TYPED_TEST_SUITE(KeychainContract, Worlds);

TYPED_TEST(KeychainContract, ItemsAreAddedOnceUpdatedInPlaceAndDeletedByGroupOrAll) {
  Keychain& chain = this->keychain;
  const std::vector<std::uint8_t> first{1, 0, 0xFF, 0}, second(32, 7);
  const KeychainQuery any{kTestService, "session-key", {}};
  const KeychainQuery mine{kTestService, "session-key", "TEAM.mine"};
  const KeychainQuery other{kTestService, "session-key", "TEAM.other"};

  EXPECT_EQ(chain.SecItemUpdate(mine, {first, "a"}), errSecItemNotFound);
  EXPECT_EQ(chain.SecItemDelete(any), errSecItemNotFound);
  EXPECT_EQ(chain.SecItemAdd(mine, {first, "a"}, false), errSecSuccess);
  for (const KeychainQuery& duplicate : {mine, any}) {
    EXPECT_EQ(chain.SecItemAdd(duplicate, {second, "b"}, true), errSecDuplicateItem);
  }
  EXPECT_EQ(this->items(), std::vector{Kept("TEAM.mine", "a", false, first)});

  EXPECT_EQ(chain.SecItemAdd(other, {second, "b"}, true), errSecSuccess);
  EXPECT_EQ(chain.SecItemUpdate({kTestService, "other account", {}}, {{}, ""}), errSecItemNotFound);
  EXPECT_EQ(chain.SecItemUpdate(any, {second, "c"}), errSecSuccess);
  EXPECT_EQ(chain.SecItemUpdate(other, {first, "d"}), errSecSuccess);
  EXPECT_EQ(this->items(), (std::vector{Kept("TEAM.mine", "c", false, second),
                                        Kept("TEAM.other", "d", true, first)}));

  EXPECT_EQ(chain.SecItemDelete(mine), errSecSuccess);
  EXPECT_EQ(chain.SecItemDelete(mine), errSecItemNotFound);
  EXPECT_EQ(chain.SecItemAdd({kTestService, "session-key", "TEAM.mine"}, {first, "a"}, false),
            errSecSuccess);
  EXPECT_EQ(chain.SecItemDelete(any), errSecSuccess);
  EXPECT_TRUE(this->items().empty());
}

TYPED_TEST(KeychainContract, OfTwoThreadsThatAddTheSameItemOneSucceeds) {
  const KeychainQuery item{kTestService, "session-key", "TEAM.mine"};
  const std::vector<std::uint8_t> value{1};
  std::array<OSStatus, 2> statuses{};
  {
    std::vector<std::jthread> threads;
    for (OSStatus& status : statuses) {
      threads.emplace_back([&] { status = this->keychain.SecItemAdd(item, {value, "a"}, false); });
    }
  }
  std::ranges::sort(statuses);
  EXPECT_EQ(statuses, (std::array{errSecDuplicateItem, errSecSuccess}));
  EXPECT_EQ(this->items().size(), 1U);
}

// Calls of the real keyring that the host does not make itself.
GVariantPtr call(GDBusConnection* bus, const char* path, const char* interface, const char* method,
                 GVariant* arguments) {
  GError* error = nullptr;
  GVariantPtr reply(g_dbus_connection_call_sync(bus, "org.freedesktop.secrets", path, interface,
                                                method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
                                                5000, nullptr, &error));
  if (error) ADD_FAILURE() << method << ": " << GErrorPtr(error)->message;
  return reply;
}

TEST(KeyringTest, ALockedKeyringIsSaidSoAtOnceWithoutAPrompt) {
  constexpr const char* kServicePath = "/org/freedesktop/secrets";
  constexpr const char* kService = "org.freedesktop.Secret.Service";
  constexpr const char* kLogin = "/org/freedesktop/secrets/collection/login";
  const GObjectPtr<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  int prompters = 0;
  const guint watch = g_bus_watch_name(
      G_BUS_TYPE_SESSION, "org.gnome.keyring.SystemPrompter", G_BUS_NAME_WATCHER_FLAGS_NONE,
      [](GDBusConnection*, const char*, const char*, gpointer count) {
        ++*static_cast<int*>(count);
      },
      nullptr, &prompters, nullptr);
  Keyring keyring;
  const KeychainQuery item{kTestService, "session-key", "TEAM.mine"};
  const KeychainQuery missing{kTestService, "other", {}};
  const std::vector<std::uint8_t> value{1};
  ASSERT_EQ(keyring.keychain.SecItemAdd(item, {value, "a"}, false), errSecSuccess);

  call(bus.get(), kServicePath, kService, "Lock", g_variant_new_parsed("([%o],)", kLogin));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(keyring.keychain.SecItemUpdate(item, {value, "b"}), errSecInteractionNotAllowed);
  EXPECT_EQ(keyring.keychain.SecItemAdd(missing, {value, "b"}, false), errSecInteractionNotAllowed);
  EXPECT_EQ(keyring.keychain.SecItemDelete(item), errSecInteractionNotAllowed);
  EXPECT_EQ(keyring.keychain.SecItemDelete(missing), errSecInteractionNotAllowed);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  EXPECT_EQ(prompters, 0);
  g_bus_unwatch_name(watch);

  const GVariantPtr session = call(bus.get(), kServicePath, kService, "OpenSession",
                                   g_variant_new_parsed("('plain', <''>)"));
  GVariant* output = nullptr;
  const char* path = nullptr;
  g_variant_get(session.get(), "(v&o)", &output, &path);
  g_variant_unref(output);
  call(bus.get(), kServicePath, "org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface",
       "UnlockWithMasterPassword",
       g_variant_new_parsed("(%o, (%o, @ay [], [byte 10], 'text/plain'))", kLogin, path));
  EXPECT_EQ(keyring.keychain.SecItemUpdate(item, {value, "b"}), errSecSuccess);
}

/// A session bus on which nothing can be started. A death test's process, which begins again at the
/// top, finds that of its parent in the environment.
class BareBus {
 public:
  BareBus() {
    if (g_getenv(kVariable)) return;
    const std::string config = std::string(g_get_user_runtime_dir()) + "/bare-bus.conf";
    g_file_set_contents(config.c_str(),
                        "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                        "<policy context='default'><allow send_destination='*'/>"
                        "<allow receive_sender='*'/>"
                        "<allow own='*'/></policy></busconfig>",
                        -1, nullptr);
    daemon_.reset(g_subprocess_new(G_SUBPROCESS_FLAGS_STDOUT_PIPE, nullptr, "dbus-daemon",
                                   "--nofork", "--print-address", "--config-file", config.c_str(),
                                   nullptr));
    const GObjectPtr<GDataInputStream> output(
        g_data_input_stream_new(g_subprocess_get_stdout_pipe(daemon_.get())));
    const GTextPtr line(g_data_input_stream_read_line(output.get(), nullptr, nullptr, nullptr));
    g_setenv(kVariable, line.get(), TRUE);
  }
  ~BareBus() {
    g_unsetenv(kVariable);
    g_subprocess_send_signal(daemon_.get(), SIGTERM);
    g_subprocess_wait(daemon_.get(), nullptr, nullptr);
  }
  const char* address() const { return g_getenv(kVariable); }

 private:
  static constexpr const char* kVariable = "NORVANE_TEST_BARE_BUS";
  GObjectPtr<GSubprocess> daemon_;
};

/// Ends the process, successfully when a keychain that finds the session bus at `address` answers
/// `expected` in time on the main thread, also while a worker's call is under way.
[[noreturn]] void endAfterCallOn(const char* address, OSStatus expected) {
  g_setenv("DBUS_SESSION_BUS_ADDRESS", address, TRUE);
  GlibDispatch dispatch;
  SecretServiceKeychain keychain(dispatch);
  const auto begin = std::chrono::steady_clock::now();
  const auto within = [&](std::chrono::seconds limit) {
    return keychain.SecItemDelete({kTestService, "session-key", {}}) == expected &&
           std::chrono::steady_clock::now() - begin < limit;
  };
  bool workerInTime = false;
  std::thread worker([&] { workerInTime = within(std::chrono::seconds(12)); });
  const bool mainInTime = within(std::chrono::seconds(3));
  worker.join();
  std::_Exit(mainInTime && workerInTime ? EXIT_SUCCESS : EXIT_FAILURE);
}

TEST(KeyringTest, WithoutAServiceOrWithOneThatNeverAnswersCallsEndInTime) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process keeps the bus that it once found
  const auto success = testing::ExitedWithCode(EXIT_SUCCESS);
  const BareBus bus;
  EXPECT_EXIT(endAfterCallOn("unix:path=/nowhere", errSecNotAvailable), success, "");
  EXPECT_EXIT(endAfterCallOn(bus.address(), errSecNotAvailable), success, "");

  // A client that owns the service's name and drops what it is sent.
  const GObjectPtr<GDBusConnection> deaf(g_dbus_connection_new_for_address_sync(
      bus.address(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr));
  ASSERT_TRUE(deaf);
  GVariantPtr(g_dbus_connection_call_sync(deaf.get(), "org.freedesktop.DBus", "/",
                                          "org.freedesktop.DBus", "RequestName",
                                          g_variant_new("(su)", "org.freedesktop.secrets", 0U),
                                          nullptr, G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr));
  g_dbus_connection_add_filter(
      deaf.get(),
      [](GDBusConnection*, GDBusMessage* message, gboolean incoming, gpointer) {
        if (!incoming) return message;
        g_object_unref(message);
        return static_cast<GDBusMessage*>(nullptr);
      },
      nullptr, nullptr);
  EXPECT_EXIT(endAfterCallOn(bus.address(), errSecInteractionNotAllowed), success, "");
}

}  // namespace
}  // namespace norvane
