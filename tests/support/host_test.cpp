#include "support/host_test.h"

#include <utility>

#include <stdlib.h>

#include "app/main_interface.h"
#include "platform/flutter/standard_method_codec.h"
#include "platform/headless/console_values.h"
#include "platform/linux/json.h"

namespace norvane {
namespace {

std::string jsonOf(FlutterValueView value) {
  JsonBuffer buffer;
  JsonWriter writer(buffer);
  writeConsoleValue(writer, value);
  return buffer.GetString();
}

std::string describe(Bytes message) {
  const auto reply = decodeEnvelope(std::move(message));
  if (!reply) return "undecodable";
  if (reply->kind == FlutterReply::Kind::notImplemented) return "notImplemented";
  if (reply->kind == FlutterReply::Kind::success) return "success " + jsonOf(reply->value);
  return "error " + std::string(reply->errorCode) + ": " +
         std::string(reply->errorMessage.value_or("(none)")) + ", " + jsonOf(reply->errorDetails);
}

}  // namespace

RecordingLog::~RecordingLog() {
  for (const std::string& line : lines_) {
    EXPECT_FALSE(line.starts_with("[Norvane] fault: ")) << line;
  }
}

TemporaryDirectory::TemporaryDirectory() {
  std::string name = (std::filesystem::temp_directory_path() / "norvane-test-XXXXXX").string();
  path = ::mkdtemp(name.data());
}

struct HostTest::Process {
  Process(HostTest& test, const Profile& profile)
      : host(profile, test.directory.path, test.dispatch, test.log,
             [&test] { test.quitAsked = true; }),
        keychain(host.keychain, test.keychainFault),
        crypto(host.crypto, test.cryptoFault),
        platform{
            .application = host.application,
            .appService = host.appService,
            .carbonEvents = host.hotkeys,
            .credentialIdentityStore = host.credentialStore,
            .crypto = crypto,
            .dispatch = test.dispatch,
            .dynamicLoader = host.loader,
            .eventSource = host.eventSource,
            .fileManager = host.fileManager,
            .flutter = host.ui,
            .graphics = host.graphics,
            .keyboardInput = host.keyboard,
            .keychain = keychain,
            .log = test.log,
            .mainBundle = test.bundle,
            .pasteboard = host.pasteboard,
            .processInfo = host.desktop,
            .screens = host.desktop,
            .statusBar = host.statusBar,
            .updater = host.updater,
            .userDefaults = host.userDefaults,
            .windowServer = host.desktop,
            .workspace = host.desktop,
        },
        installed(platform) {
    test.bundle.real = &host.bundle;
    host.ui.setObserver(&test);
  }
  ~Process() { host.application.releaseAll(); }

  HeadlessPlatform host;
  FaultyKeychain keychain;
  FaultyCrypto crypto;
  Platform platform;
  ScopedPlatform installed;
};

HostTest::HostTest() {
  bundle.path = NORVANE_TEST_BUNDLE;
  process_ = std::make_unique<Process>(*this, Profile{});
}

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

void HostTest::send(const std::string& channel, const std::string& method,
                    const std::string& arguments, const std::string& engine) {
  const JsonDocument json = parseJson(arguments);
  const bool sent = host().ui.send(
      engine, channel, encodeConsoleCall(method, &json),
      [this](Bytes reply) { transcript_.push_back("reply " + describe(std::move(reply))); });
  EXPECT_TRUE(sent) << "no engine " << engine;
}

std::string HostTest::call(const std::string& channel, const std::string& method,
                           const std::string& arguments) {
  std::string answer = "(none)";
  const JsonDocument json = parseJson(arguments);
  host().ui.send("main", channel, encodeConsoleCall(method, &json), [&answer](Bytes reply) {
    EXPECT_EQ(answer, "(none)") << "a second reply";
    answer = describe(std::move(reply));
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

void HostTest::called(std::string_view /*engine*/, std::string_view channel, Bytes message) {
  const auto call = decodeMethodCall(std::move(message));
  ASSERT_TRUE(call) << "the host sent an undecodable call on " << channel;
  transcript_.push_back(std::string(channel) + ' ' + std::string(call->method()) + ' ' +
                        jsonOf(call->arguments()));
}

HeadlessPlatform& HostTest::host() { return process_->host; }

}  // namespace norvane
