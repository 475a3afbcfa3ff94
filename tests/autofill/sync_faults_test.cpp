#include <cstring>
#include <fstream>
#include <limits>

#include "base/utf8.h"
#include "support/auto_fill_test.h"

namespace norvane {
namespace {

class SyncFaultsTest : public AutoFillTest {
 protected:
  /// Makes the Nth call of a service fail, for each N until a sync passes untouched, on nothing and
  /// over an older pair, once and for good.
  template <class Check>
  void failEachCall(const Sealed& sealed, Fault& fault, Check check) {
    for (const bool forGood : {false, true}) {
      for (const bool older : {false, true}) {
        for (int nth = 1;; ++nth) {
          SCOPED_TRACE(sealed.method + (older ? ", over an older pair" : "") +
                       (forGood ? ", for good from call " : ", call ") + std::to_string(nth));
          ASSERT_LT(nth, 100);
          autoFill("clearCredentials");
          if (older) expectHealthySync(sealed, "old");
          const auto oldKey = extension.key(sealed);
          keychainCalls.clear();
          log.take();
          fault.failNth(nth, forGood);
          const std::string reply = autoFill(sealed.method, itemNamed("new"));
          fault.none();
          if (!fault.struck()) {
            EXPECT_EQ(reply, written(sealed, 1));
            EXPECT_EQ(extension.read(sealed), entryNamed(sealed, "new"));
            EXPECT_GT(nth, 1) << "nothing was called";
            break;
          }
          check(reply, log.take());
          const bool failed = reply != written(sealed, 1);
          if (!failed) {
            EXPECT_EQ(extension.read(sealed), entryNamed(sealed, "new"));
          } else if (!forGood) {  // else what cannot be removed stays
            EXPECT_EQ(extension.read(sealed), "none");
            EXPECT_EQ(extension.leftovers(), Lines{});
          }
          expectHealthySync(sealed);
          EXPECT_NE(extension.key(sealed), oldKey);
        }
      }
    }
    relaunch();
    EXPECT_EQ(extension.leftovers(), Lines{});
    takeTranscript();
    log.take();
  }
};

TEST_F(SyncFaultsTest, EachCallOfTheCryptoAndTheKeychain) {
  for (const Sealed& sealed : {kSnapshot, kPasskeys}) {
    failEachCall(sealed, cryptoFault, [&](const std::string& reply, const Lines&) {
      EXPECT_EQ(reply, failure(sealed, "AES-GCM seal failed"));
      EXPECT_EQ(extension.read(sealed), "none");
    });
    failEachCall(sealed, keychainFault, [&](const std::string& reply, const Lines&) {
      EXPECT_EQ(reply, failure(sealed, "keychain status -25308"));
      EXPECT_FALSE(extension.file(sealed)) << "a key that cannot be deleted keeps no file";
    });
  }
}

TEST_F(SyncFaultsTest, EachSystemCall) {
  for (const Sealed& sealed : {kSnapshot, kPasskeys}) {
    for (const int error : {EIO, ENOSPC, EACCES, EINVAL}) {
      systemFault.error = error;
      std::size_t tooLate = 0;
      failEachCall(sealed, systemFault, [&](const std::string& reply, const Lines& logged) {
        if (reply == written(sealed, 1)) {  // everything is in its place but for a directory's sync
          EXPECT_EQ(logged.size(), error == EINVAL ? 0U : 1U);
          ++tooLate;
          return;
        }
        // The container's errors carry the path and the system's text, the keychain's its status.
        if (reply == failure(sealed, "keychain status -36")) return;
        EXPECT_TRUE(reply.ends_with(": " + std::string(std::strerror(error)) + ", null")) << reply;
        EXPECT_TRUE(reply.starts_with("error " + sealed.errorCode + ": /")) << reply;
      });
      EXPECT_GE(tooLate, 8U);
    }
  }
}

TEST_F(SyncFaultsTest, InterruptionsAndShortWritesAreNoFailures) {
  for (const Sealed& sealed : {kSnapshot, kPasskeys}) {
    for (const int error : {EINTR, SystemFault::kShortWrite}) {
      int strikes = 0;
      for (int nth = 1; nth < 40; ++nth) {
        SCOPED_TRACE("call " + std::to_string(nth));
        systemFault.error = error;
        systemFault.failNth(nth);
        const std::string reply = autoFill(sealed.method, itemNamed("1"));
        strikes += systemFault.struck();
        systemFault.none();
        EXPECT_EQ(reply, written(sealed, 1));
        EXPECT_EQ(extension.read(sealed), entryNamed(sealed, "1"));
      }
      EXPECT_GE(strikes, error == EINTR ? 8 : 2);
    }
  }
}

TEST_F(SyncFaultsTest, EachStatusOfTheKeychainReachesTheUiAndCausesNoOtherCalls) {
  using Limits = std::numeric_limits<OSStatus>;
  for (const Sealed& sealed : {kSnapshot, kPasskeys}) {
    const Lines calls{"update " + sealed.account, "add " + sealed.account,
                      "delete " + sealed.account};
    const std::string ok = written(sealed, 1);
    const auto sync = [&](const std::string& operation, OSStatus status, const Lines& expected) {
      autoFill("clearCredentials");
      change(R"({"keychain":{")" + operation + "\":" + std::to_string(status) + "}}");
      keychainCalls.clear();
      const bool fails = expected.back() == calls[2];
      EXPECT_EQ(autoFill(sealed.method, itemNamed("1")),
                fails ? failure(sealed, "keychain status " + std::to_string(status)) : ok);
      EXPECT_EQ(keychainCalls, expected) << operation << ' ' << status;
      EXPECT_EQ(extension.read(sealed), fails ? "none" : entryNamed(sealed, "1"));
    };
    for (const OSStatus status : {-25299, -25291, -34018, 5, Limits::min(), Limits::max()}) {
      sync("update", status, {calls[0], calls[2]});
      sync("add", status, calls);
      sync("delete", status, {calls[0], calls[1]});
      EXPECT_EQ(autoFill("clearCredentials"), "success true");
      EXPECT_EQ(extension.read(sealed), "only a key");
      change(R"({"keychain":{}})");
    }
    sync("update", errSecItemNotFound, {calls[0], calls[1]});
    sync("add", errSecItemNotFound, calls);
    change(R"({"keychain":{}})");
  }
}

TEST_F(SyncFaultsTest, AKeyThatIsDamagedOnDiskIsRemovedByTheFirstSyncAndMadeAnewByTheNext) {
  for (const Sealed& sealed : {kSnapshot, kPasskeys}) {
    for (const char* damaged : {"", "{}\nkey", "\xff"}) {
      expectHealthySync(sealed, "old");
      ASSERT_EQ(host().keychain.items().size(), 1U);
      for (const auto& entry : std::filesystem::directory_iterator(directory.path / "keychain")) {
        std::ofstream(entry.path()) << damaged;
      }
      EXPECT_EQ(autoFill(sealed.method, itemNamed("1")), failure(sealed, "keychain status -36"));
      EXPECT_EQ(extension.read(sealed), "none");
    }
    expectHealthySync(sealed);
    autoFill("clearCredentials");
  }
}

TEST_F(SyncFaultsTest, WithoutAContainerTheKeyGoesAgainAndNothingIsMade) {
  for (const Sealed& sealed : {kSnapshot, kPasskeys}) {
    expectHealthySync(sealed, "old");
    change(R"({"appGroup":false})");
    EXPECT_EQ(autoFill(sealed.method, itemNamed("1")),
              failure(sealed, "app group container not available (entitlement missing?)"));
    EXPECT_EQ(extension.read(sealed), "only a file") << "nobody can look there any more";
    std::filesystem::remove_all(directory.path / "Group Containers");
    EXPECT_EQ(autoFill("clearCredentials"), "success true");
    EXPECT_FALSE(std::filesystem::exists(directory.path / "Group Containers"));
    change(R"({"appGroup":true})");
  }
}

TEST_F(SyncFaultsTest, WhatStandsInTheWayIsReplacedOrNamedButNeverFollowed) {
  const auto victim = directory.path / "victim";
  std::ofstream(victim) << "precious";
  const auto support = extension.pathOf(kSnapshot).parent_path();
  for (const Sealed& sealed : {kSnapshot, kPasskeys}) {
    const auto target = extension.pathOf(sealed);
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"", [] {}},
        {"", [&] { std::filesystem::create_symlink(victim, target); }},
        {"", [&] { std::filesystem::create_symlink("dangling", target); }},
        {target.string() + ": Is a directory",
         [&] {
           std::filesystem::create_directories(target / "inner");
           std::filesystem::create_symlink(directory.path, target / "inner" / "link");
         }},
        {support.string() + ": Not a directory",
         [&] {
           std::filesystem::remove_all(support);
           std::ofstream(support) << "x";
         }},
    };
    for (const auto& [message, prepare] : cases) {
      SCOPED_TRACE(&message - &cases[0].first);
      std::filesystem::remove_all(directory.path / "Group Containers");
      ASSERT_EQ(autoFill("clearCredentials"), "success true");
      std::filesystem::create_directories(support);
      prepare();
      const std::string reply = autoFill(sealed.method, itemNamed("1"));
      EXPECT_EQ(reply, message.empty() ? written(sealed, 1) : failure(sealed, utf8Of(message)));
      EXPECT_EQ(extension.key(sealed).has_value(), message.empty());
      EXPECT_EQ(extension.leftovers(), Lines{});
      if (message.ends_with("Is a directory")) {
        expectHealthySync(sealed, "1");
        std::filesystem::remove(target);
        prepare();
        EXPECT_EQ(autoFill("clearCredentials"), "success true");
        EXPECT_FALSE(std::filesystem::exists(target));
      }
      if (!message.empty()) continue;
      EXPECT_EQ(extension.read(sealed), entryNamed(sealed, "1"));
      EXPECT_FALSE(std::filesystem::is_symlink(target));
    }
  }
  std::string content;
  std::getline(std::ifstream(victim), content);
  EXPECT_EQ(content, "precious");
}

}  // namespace
}  // namespace norvane
