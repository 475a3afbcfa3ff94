#include <algorithm>
#include <chrono>
#include <random>
#include <thread>

#include <glib.h>

#include "autofill/auto_fill_bridge.h"
#include "platform/linux/glib_dispatch.h"
#include "support/auto_fill_test.h"

namespace norvane {
namespace {

constexpr int kOperations = 1000;

const Sealed kBoth[] = {kSnapshot, kPasskeys};

/// The AutoFill bridge on the real queues: its syncs and the credential store work on threads.
class ThreadedHost {
 public:
  ThreadedHost() : bridge_(AutoFillBridge::make(messenger_)) {}

  /// The UI sends a call; the reply comes later, or within the call.
  void deliver(Bytes message, FlutterBinaryReply::Sink reply) {
    messenger_->deliver(channel_, std::move(message), std::move(reply));
  }
  /// Runs the main loop until `done` says that it is enough.
  template <class Done>
  void runUntil(Done done) {
    while (!done()) g_main_context_iteration(nullptr, TRUE);
  }

  TemporaryDirectory directory;
  RecordingLog log;
  const ScopedLog installedLog{log};
  GlibDispatch dispatch;
  HeadlessPlatform host{Profile{}, directory.path, dispatch, [] {}};
  Extension extension{directory.path};

 private:
  const std::string channel_ = kAutoFill;  // made before memory runs out
  std::shared_ptr<FlutterBinaryMessenger> messenger_ =
      std::make_shared<FlutterBinaryMessenger>([](std::string_view, Bytes) {});
  std::shared_ptr<AutoFillBridge> bridge_;
};

// All pairs that the test writes are of one size: another size is a torn file.
std::string idOf(int number) { return std::to_string(1000000 + number); }

/// The extension, looking all the time. A key may stand beside a file that it does not open, but
/// not for long.
void watch(const Extension& extension, std::atomic<bool>& stop, std::atomic<int>& opened) {
  using Clock = std::chrono::steady_clock;
  while (!stop) {
    for (const Sealed& sealed : kBoth) {
      const auto giveUp = Clock::now() + std::chrono::seconds(5);
      for (;;) {
        const auto key = extension.key(sealed);
        const auto file = extension.file(sealed);
        if (!key || !file) break;
        ASSERT_EQ(file->size(), entryNamed(sealed, idOf(0)).size() + 28) << "a torn file";
        if (openEnvelope(*key, *file)) {
          ++opened;
          break;
        }
        ASSERT_LT(Clock::now(), giveUp) << sealed.file << " beside a key that does not open it";
      }
    }
  }
}

TEST(AutoFillThreadsTest, OfOverlappingSyncsAndClearsTheLastDecides) {
  ThreadedHost host;
  std::atomic<bool> stop = false;
  std::atomic<int> opened = 0;
  std::thread reader([&] { watch(host.extension, stop, opened); });
  std::mt19937 random(7);
  std::string expected[] = {"none", "none"};
  std::string registered;
  int sent = 0;
  int answered = 0;
  const auto send = [&](const std::string& method, const std::string& arguments,
                        const std::string& expectedReply) {
    ++sent;
    host.deliver(uiCall(method, arguments), [&, expectedReply](Bytes reply) {
      EXPECT_EQ(describeReply(std::move(reply)), expectedReply);
      ++answered;
    });
  };
  while (sent < kOperations && !::testing::Test::HasFailure()) {
    for (auto left = random() % 12; left > 0; --left) {
      const std::string id = idOf(sent);
      switch (random() % 8) {
        case 0:
          send("clearCredentials", "null", "success true");
          registered = "";
          for (int i : {0, 1}) {
            EXPECT_EQ(host.extension.read(kBoth[i]), expected[i] = "none") << "as soon as asked";
          }
          break;
        case 1:
          send("registerCredentials", itemNamed(id), R"(success {"saved":1,"isEnabled":true})");
          registered = id;
          break;
        case 2:
          send(kPasskeys.method, "null", written(kPasskeys, 0));
          expected[1] = "none";
          break;
        default: {
          const auto kind = random() % 2;
          send(kBoth[kind].method, itemNamed(id), written(kBoth[kind], 1));
          expected[kind] = entryNamed(kBoth[kind], id);
        }
      }
    }
    host.runUntil([&] { return answered == sent; });
    for (int i : {0, 1}) EXPECT_EQ(host.extension.read(kBoth[i]), expected[i]);
    host.host.credentialStore.inspect([&](CredentialIdentityDatabase& database) {
      const auto identities = database.passwords();
      EXPECT_EQ(identities.empty() ? "" : identities.back().recordIdentifier, registered);
    });
  }
  stop = true;
  reader.join();
  EXPECT_EQ(answered, sent);
  EXPECT_EQ(host.extension.leftovers(), Lines{});
  EXPECT_GT(opened, kOperations / 100) << "the reader has hardly seen anything";
}

/// One call while the Nth request for memory fails. False when it passed untouched.
bool surviveWithout(int nth, const std::string& method, bool older) {
  ThreadedHost host;
  std::string before[] = {"none", "none"};
  for (int i = 0; older && i < 2; ++i) {
    host.deliver(uiCall(kBoth[i].method, itemNamed("old")), [](Bytes) {});
    host.runUntil([&] { return host.dispatch.isQuiet(); });
    before[i] = entryNamed(kBoth[i], "old");
    EXPECT_EQ(host.extension.read(kBoth[i]), before[i]);
  }
  Bytes message = uiCall(method, itemNamed("new"));
  Bytes reply;
  int replies = 0;
  FlutterBinaryReply::Sink sink([&](Bytes bytes) {
    memoryFault.none();
    reply = std::move(bytes);
    ++replies;
  });
  memoryFault.failNth(nth);
  host.deliver(std::move(message), std::move(sink));
  host.runUntil([&] { return replies > 0; });
  host.runUntil([&] { return host.dispatch.isQuiet(); });
  EXPECT_EQ(replies, 1);
  const std::string said = describeReply(std::move(reply));
  const bool unforeseen = said == "notImplemented";
  EXPECT_EQ(host.log.take().empty(), !unforeseen) << said;
  EXPECT_TRUE(!said.starts_with("error ") || said.ends_with(": std::bad_alloc, null")) << said;
  for (int i : {0, 1}) {
    Lines allowed{before[i]};
    if (method == kBoth[i].method) {
      allowed = {said.starts_with("error ") ? "none" : entryNamed(kBoth[i], "new")};
      if (unforeseen) allowed = {before[i], allowed[0], "none"};
    } else if (method == "clearCredentials") {
      // What failed of it is not told; but one of the two deletions has worked.
      allowed = {"none", "only a key", "only a file"};
      if (unforeseen) allowed.push_back(before[i]);
    }
    const std::string found = host.extension.read(kBoth[i]);
    EXPECT_NE(std::ranges::find(allowed, found), allowed.end()) << found << " after " << said;
  }
  EXPECT_EQ(host.extension.leftovers(), Lines{});
  EXPECT_TRUE(memoryFault.struck() || said.starts_with("success ")) << said;
  return memoryFault.struck();
}

TEST(AutoFillThreadsTest, MemoryThatRunsOutAnywhereCostsOneReplyAndNoPair) {
  for (const std::string method : {"syncVaultSnapshot", "syncPasskeyIndex", "registerCredentials",
                                   "registerPasskeys", "getState", "clearCredentials"}) {
    for (const bool older : {false, true}) {
      int nth = 1;
      do {
        SCOPED_TRACE(method + ", allocation " + std::to_string(nth));
        ASSERT_LT(nth, 1000);
      } while (surviveWithout(nth++, method, older) && !::testing::Test::HasFailure());
      EXPECT_GT(nth, 3);
    }
  }
}

}  // namespace
}  // namespace norvane
