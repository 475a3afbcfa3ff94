// What handing a vault to AutoFill costs, from the bytes of the UI's call to the reply, on tmpfs
// and on a disk: against the floor, which is what no implementation can leave out, and a peer made
// of general parts.
//
// No Google Benchmark: it runs one contestant after the other, and on a machine whose speed drifts
// only rounds in which all of them take their turn give ratios that hold.
//
// Usage: sync_bench [ROUNDS [DIRECTORY-ON-DISK]]

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <glib.h>
#include <nlohmann/json.hpp>
#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "autofill/auto_fill_bridge.h"
#include "logins.h"
#include "measure.h"
#include "platform/flutter/flutter_engine.h"
#include "platform/flutter/standard_method_codec.h"
#include "platform/headless/headless_platform.h"
#include "platform/headless/keychain_directory.h"
#include "platform/linux/atomic_file.h"
#include "platform/linux/file_descriptor.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/openssl_crypto.h"
#include "platform/linux/stderr_log.h"
#include "support/open_envelope.h"

namespace norvane {
namespace {

class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(const std::string& parent) : path(parent + "/norvane-bench-XXXXXX") {
    if (!::mkdtemp(path.data())) throw std::runtime_error("no directory in " + parent);
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path); }

  std::string path;
};

/// What one contestant took in one round.
struct Taken {
  double seconds = 0;
  double megabytes = 0;  ///< added at the peak; not measured of the floor, whose memory is warm
};

/// The message read once, as much as the JSON copied once, a key and a nonce drawn, sealed once,
/// written once; in memory that was touched before.
class Floor {
 public:
  Floor(const Bytes& message, std::size_t boxSize, std::string path)
      : message_(message),
        text_(boxSize - kAesGcmNonceSize - kAesGcmTagSize, 'x'),
        box_(boxSize),
        path_(std::move(path)) {}

  Taken run() {
    return {.seconds = secondsOf([this] {
              read();
              std::memcpy(box_.data() + kAesGcmNonceSize, text_.data(), text_.size());
              std::array<std::uint8_t, 32> key;
              if (crypto_.SecRandomCopyBytes(key) != 0 || !crypto_.sealAESGCM(key, box_)) {
                throw std::runtime_error("sealing failed");
              }
              writeFileAtomically(path_, std::as_bytes(std::span(box_)));
            })};
  }

 private:
  void read() {
    std::uint64_t sum = 0;
    for (std::size_t at = 0; at + sizeof sum <= message_.size(); at += sizeof sum) {
      std::uint64_t word;
      std::memcpy(&word, message_.data() + at, sizeof word);
      sum ^= word;
    }
    sum_ = sum;
  }

  const Bytes& message_;
  std::vector<std::uint8_t> text_;
  std::vector<std::uint8_t> box_;
  std::string path_;
  OpenSslCrypto crypto_;
  volatile std::uint64_t sum_ = 0;
};

/// The peer's process.
class Peer {
 public:
  explicit Peer(std::string file) {
    std::array<int, 2> in;
    std::array<int, 2> out;
    if (::pipe2(in.data(), O_CLOEXEC) != 0 || ::pipe2(out.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::string program = SYNC_PEER;
    std::array<char*, 3> argv{program.data(), file.data(), nullptr};
    const int failure =
        ::posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(in[0]);
    ::close(out[1]);
    input_.reset(::fdopen(in[1], "w"));
    output_.reset(::fdopen(out[0], "r"));
    if (failure != 0) throw std::runtime_error("cannot start " + program);
  }
  ~Peer() {
    input_.reset();  // which ends it
    ::waitpid(pid_, nullptr, 0);
  }
  Peer(const Peer&) = delete;

  Taken run(std::size_t count) {
    Taken taken;
    std::fprintf(input_.get(), "%zu\n", count);
    std::fflush(input_.get());
    if (std::fscanf(output_.get(), "%lf %lf", &taken.seconds, &taken.megabytes) != 2) {
      throw std::runtime_error("the peer failed");
    }
    return taken;
  }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  pid_t pid_ = 0;
  std::unique_ptr<std::FILE, Close> input_;
  std::unique_ptr<std::FILE, Close> output_;
};

double processorSecondsOfThisThread() {
  timespec time;
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// The host, on a data directory.
class Host {
 public:
  struct Sync : Taken {
    double held = 0;  ///< seconds that the main thread could not serve anything else
    double kept = 0;  ///< megabytes that stay after the reply, beyond those before the message
  };

  explicit Host(const std::string& directory)
      : directory_(directory),
        snapshot_(directory +
                  "/Group Containers/group.cn.kestrio.norvane/Library/Application Support/"
                  "snapshot.enc"),
        platform_({}, directory, dispatch_, [] {}),
        engine_("main"),
        bridge_(AutoFillBridge::make(engine_.binaryMessenger())) {
    engine_.runWithEntrypoint("main");
  }

  Sync run(const Bytes& message, const std::vector<Login>& logins) {
    const MemoryUse sinceBefore;
    Bytes received = message;
    std::optional<Bytes> reply;
    Sync taken;
    const MemoryUse memory;
    taken.seconds = secondsOf([&] {
      taken.held = secondsOf([&] {
        platform_.ui.send("main", "cn.kestrio.norvane.autofill", std::move(received),
                          [&reply](Bytes bytes) { reply = std::move(bytes); });
      });
      const double before = processorSecondsOfThisThread();
      while (!reply) g_main_context_iteration(nullptr, TRUE);
      taken.held += processorSecondsOfThisThread() - before;
    });
    taken.megabytes = memory.peakMegabytes();
    taken.kept = sinceBefore.megabytes();
    requireSuccess(std::move(*reply), logins);
    return taken;
  }

  /// Opens the sealed file as the extension would, and compares what is in it.
  void requireContent(const std::vector<Login>& logins) const {
    const KeychainQuery item{"cn.kestrio.norvane.autofill.snapshot", "session-key", std::nullopt};
    const auto keys = KeychainDirectory(directory_).find(&item);
    const auto text =
        keys.empty() ? std::nullopt : openEnvelope(keys[0].value, textOf(readFile(snapshot_)));
    auto expected = nlohmann::json::array();
    for (const Login& login : logins) {
      if (!login.isComplete()) continue;
      expected.push_back({{"id", login.id},
                          {"title", login.title},
                          {"url", login.url},
                          {"username", login.username},
                          {"password", login.password}});
    }
    if (!text || nlohmann::json::parse(*text) != expected) {
      throw std::runtime_error("the snapshot does not hold the logins");
    }
  }

  /// The part of a sync that the floor has no counterpart for.
  double secondsOfKeychainItem() {
    const std::array<std::uint8_t, 32> key{};
    OSStatus status = errSecSuccess;
    const double seconds = secondsOf([&] {
      status = platform_.keychain.SecItemUpdate(
          {"cn.kestrio.norvane.autofill.snapshot", "session-key", std::nullopt},
          {key, kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly});
    });
    if (status != errSecSuccess) throw std::runtime_error("no session key");
    return seconds;
  }

  std::size_t snapshotSize() const { return std::filesystem::file_size(snapshot_); }

 private:
  static void requireSuccess(Bytes bytes, const std::vector<Login>& logins) {
    const auto reply = decodeEnvelope(std::move(bytes));
    const auto map = reply ? reply->value.map() : std::nullopt;
    if (!map || (*map)["written"].integer() != std::ranges::count_if(logins, &Login::isComplete)) {
      throw std::runtime_error("the sync failed");
    }
  }

  std::string directory_;
  std::string snapshot_;
  StderrLog log_;
  const ScopedLog installedLog_{log_};
  GlibDispatch dispatch_;
  HeadlessPlatform platform_;
  FlutterEngine engine_;
  std::shared_ptr<AutoFillBridge> bridge_;
};

/// One quantity over the rounds.
class Series {
 public:
  void add(double value) { values_.push_back(value); }
  double median() const {
    std::vector<double> values = values_;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
  }
  double least() const { return *std::ranges::min_element(values_); }
  double most() const { return *std::ranges::max_element(values_); }

 private:
  std::vector<double> values_;
};

void compare(const char* place, const std::string& parent, std::size_t count, int rounds) {
  const TemporaryDirectory directory(parent);
  const std::vector<Login> logins = makeLogins(count);
  const Bytes message = syncCall(logins);
  Host host(directory.path);
  Peer peer(directory.path + "/peer.enc");
  host.run(message, logins);  // also says how much there is to seal and to write
  host.requireContent(logins);
  Floor floor(message, host.snapshotSize(), directory.path + "/floor.enc");
  floor.run();
  peer.run(count);

  Series floors, hosts, peers, ratios, keychains, held, hostMemory, kept, peerMemory;
  for (int round = 0; round < rounds; ++round) {
    const double floorSeconds = floor.run().seconds;
    const Host::Sync sync = host.run(message, logins);
    const Taken other = peer.run(count);
    floors.add(floorSeconds);
    hosts.add(sync.seconds);
    peers.add(other.seconds);
    ratios.add(sync.seconds / floorSeconds);
    held.add(sync.held / sync.seconds);
    hostMemory.add(sync.megabytes);
    kept.add(sync.kept);
    peerMemory.add(other.megabytes);
    keychains.add(host.secondsOfKeychainItem());
  }
  std::printf(
      "%-5s %7zu  %6.2f %8.3f | %8.3f %5.2f (%4.2f-%5.2f) %5.2f %8.3f %6.1f %6.1f | %9.2f %6.1f "
      "%6.1f %6.3f\n",
      place, count, static_cast<double>(message.size()) / (1 << 20), floors.median() * 1e3,
      hosts.median() * 1e3, hosts.median() / floors.median(), ratios.least(), ratios.most(),
      held.median(), keychains.median() * 1e3, hostMemory.most(), kept.median(),
      peers.median() * 1e3, peers.median() / floors.median(), peerMemory.most(),
      hosts.median() / peers.median());
  std::fflush(stdout);
}

void run(int rounds, const std::string& disk) {
  std::printf("%-5s %7s  %6s %8s | %8s %5s (%s) %5s %8s %6s %6s | %9s %6s %6s %6s\n", "place",
              "logins", "call", "floor", "host", "x", "of rounds", "held", "keychain", "adds",
              "keeps", "peer", "x", "adds", "host/");
  std::printf("%-5s %7s  %6s %8s | %8s %5s  %9s %6s %8s %6s %6s | %9s %6s %6s %6s\n", "", "", "MB",
              "ms", "ms", "floor", "", "share", "item ms", "MB", "MB", "ms", "floor", "MB", "peer");
  for (const auto& [place, directory] :
       {std::pair("tmpfs", std::string("/dev/shm")), std::pair("disk", disk)}) {
    for (const auto& [count, more] :
         {std::pair(1'000, 8), std::pair(10'000, 3), std::pair(100'000, 1)}) {
      compare(place, directory, static_cast<std::size_t>(count), rounds * more);
    }
  }
}

}  // namespace
}  // namespace norvane

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 7;
  norvane::run(rounds, argc > 2 ? argv[2] : "/var/tmp");
}
