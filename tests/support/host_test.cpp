#include "support/host_test.h"

#include <cstdlib>
#include <iostream>
#include <utility>

#include "app/main_interface.h"
#include "platform/console/console_values.h"
#include "platform/flutter/standard_method_codec.h"
#include "platform/linux/json.h"

namespace norvane {
namespace {

/// With the example core library.
struct TestBundle : HeadlessBundle {
  using HeadlessBundle::HeadlessBundle;
  std::string bundlePath() const override { return NORVANE_TEST_BUNDLE; }
};

std::string jsonOf(FlutterValueView value) {
  JsonBuffer buffer;
  JsonWriter writer(buffer);
  writeConsoleValue(writer, value);
  return buffer.GetString();
}

}  // namespace

std::mt19937 seededRandom() {
  const char* given = std::getenv("NORVANE_TEST_SEED");
  const auto seed = given ? std::strtoul(given, nullptr, 10) : std::random_device{}();
  std::cout << "seed " << seed << std::endl;
  return std::mt19937(seed);
}

std::string describeReply(Bytes message) {
  const auto reply = decodeEnvelope(std::move(message));
  if (!reply) return "undecodable";
  if (reply->kind == FlutterReply::Kind::notImplemented) return "notImplemented";
  if (reply->kind == FlutterReply::Kind::success) return "success " + jsonOf(reply->value);
  return "error " + std::string(reply->errorCode) + ": " +
         std::string(reply->errorMessage.value_or("(none)")) + ", " + jsonOf(reply->errorDetails);
}

Bytes uiCall(const std::string& method, const std::string& arguments) {
  const JsonDocument json = parseJson(arguments);
  return encodeConsoleCall(method, &json);
}

RecordingLog::~RecordingLog() {
  for (const std::string& line : lines_) {
    EXPECT_FALSE(line.starts_with("[Norvane] fault: ")) << line;
  }
}

TemporaryDirectory::TemporaryDirectory() {
  std::filesystem::path parent = "/dev/shm";
  if (!std::filesystem::is_directory(parent)) parent = std::filesystem::temp_directory_path();
  std::string name = (parent / "norvane-test-\xE9-XXXXXX").string();
  path = ::mkdtemp(name.data());
}

struct HostTest::Process : HeadlessPlatform {
  Process(HostTest& test, const Profile& initial)
      : HeadlessPlatform(initial, test.directory.path, test.dispatch, [] {}),
        keychain(HeadlessPlatform::keychain, test.keychainFault, test.keychainCalls),
        credentialStore(HeadlessPlatform::credentialStore, test.credentialStore),
        bundle(profile),
        crypto(HeadlessPlatform::crypto, test.cryptoFault) {
    ui.addObserver(test);
  }
  ~Process() { application.releaseAll(); }

  // In the place of those of the same names.
  FaultyKeychain keychain;
  HeldCredentialStore credentialStore;
  TestBundle bundle;
  FaultyCrypto crypto;
  const Platform platform = platformOf(*this);
  const ScopedPlatform installed{platform};
};

HostTest::HostTest() : process_(std::make_unique<Process>(*this, Profile{})) {}

HostTest::~HostTest() = default;

void HostTest::launch() {
  desktop().launch(mainInterface());
  dispatch.runMain();
}

void HostTest::relaunch(const Profile& profile) {
  process_.reset();
  process_ = std::make_unique<Process>(*this, profile);
  launch();
}

void HostTest::start(const Profile& profile) {
  relaunch(profile);
  dispatch.settle();
  takeTranscript();
  log.take();
}

void HostTest::change(const std::string& members) {
  Profile changed = host().profile.copy();
  applyToProfile(parseJson(members), changed);
  host().setProfile(changed);
}

void HostTest::send(const std::string& channel, const std::string& method,
                    const std::string& arguments, const std::string& engine) {
  const bool sent = host().ui.send(engine, channel, uiCall(method, arguments), [this](Bytes reply) {
    transcript_.push_back("reply " + describeReply(std::move(reply)));
  });
  EXPECT_TRUE(sent) << "no engine " << engine;
}

std::string HostTest::deliver(const std::string& channel, Bytes message) {
  std::string answer = "(none)";
  host().ui.send("main", channel, std::move(message), [&answer](Bytes reply) {
    EXPECT_EQ(answer, "(none)") << "a second reply";
    answer = describeReply(std::move(reply));
  });
  dispatch.settle();
  return answer;
}

void HostTest::started(std::string_view engine, std::string_view entrypoint) {
  transcript_.push_back(std::string(engine) + " started " + std::string(entrypoint));
}

void HostTest::pluginRegistered(std::string_view engine, std::string_view name) {
  transcript_.push_back(std::string(engine) + " plugin " + std::string(name));
}

void HostTest::called(std::string_view /*engine*/, std::string_view channel, const Bytes& message) {
  const auto call = decodeMethodCall(message);
  ASSERT_TRUE(call) << "the host sent an undecodable call on " << channel;
  transcript_.push_back(std::string(channel) + ' ' + std::string(call->method()) + ' ' +
                        jsonOf(call->arguments()));
}

HeadlessPlatform& HostTest::host() { return *process_; }

}  // namespace norvane
