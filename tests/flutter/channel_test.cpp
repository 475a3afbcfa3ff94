#include <csignal>
#include <functional>

#include "platform/flutter/flutter_engine.h"
#include "platform/flutter/flutter_method_channel.h"
#include "support/host_test.h"

namespace norvane {
namespace {

constexpr const char* kChannel = "test/channel";
constexpr const char* kNotAnswered = "[Norvane] fault: a message on test/channel was not answered";
constexpr const char* kAnsweredTwice =
    "[Norvane] fault: a message on test/channel was answered twice";
constexpr const char* kThrew = "[Norvane] fault: the handler of test/channel threw";

/// An engine whose UI program sends calls on one channel. Faults that a test does not take from the
/// log fail it.
class ChannelTest : public HostTest {
 protected:
  ChannelTest() { engine->runWithEntrypoint("main"); }

  FlutterMethodChannel channel() { return {kChannel, engine->binaryMessenger()}; }
  void handle(FlutterMethodChannel::Handler handler) {
    channel().setMethodCallHandler(std::move(handler));
  }
  /// What reaches the UI when it calls; all queues are run.
  Lines answers() {
    takeTranscript();
    send(kChannel, "method", "null", "test");
    dispatch.settle();
    return takeTranscript();
  }
  /// Binds a handler that only keeps its reply, and calls it.
  std::unique_ptr<FlutterResult> openReply() {
    std::unique_ptr<FlutterResult> open;
    handle([&open](FlutterMethodCall, FlutterResult result) {
      open = std::make_unique<FlutterResult>(std::move(result));
    });
    EXPECT_EQ(answers(), Lines{});
    return open;
  }

  std::unique_ptr<FlutterEngine> engine = std::make_unique<FlutterEngine>("test");
};

TEST_F(ChannelTest, UndecodableCallIsAnsweredOnceAndItsContentNeverLogged) {
  handle([](FlutterMethodCall, FlutterResult) { FAIL() << "an undecodable call came through"; });
  const std::size_t whole = encodeMethodCall("hunter2", {}).size();
  for (const std::size_t size : {std::size_t{0}, whole - 1, whole + 1}) {
    Bytes message = encodeMethodCall("hunter2", {});
    message.resize(size);
    std::vector<Bytes> replies;
    host().ui.send("test", kChannel, message, [&](Bytes reply) { replies.push_back(reply); });
    dispatch.settle();
    EXPECT_EQ(replies, std::vector<Bytes>{{}});
    EXPECT_EQ(log.take(), Lines{"[Norvane] undecodable call on test/channel (" +
                                std::to_string(size) + " bytes)"});
  }
}

TEST_F(ChannelTest, EveryCallEndsInOneReplyWhateverItsHandlerDoes) {
  struct Row {
    FlutterMethodChannel::Handler handler;
    Lines answers;
    Lines faults;
  };
  const Row rows[] = {
      {[](FlutterMethodCall, FlutterResult) {}, {"reply notImplemented"}, {kNotAnswered}},
      {[](FlutterMethodCall, FlutterResult) { throw std::runtime_error("hunter2"); },
       {"reply notImplemented"},
       {kNotAnswered, kThrew}},
      {[](FlutterMethodCall, FlutterResult result) {
         result(1);
         throw 2;
       },
       {"reply success 1"},
       {kThrew}},
      {[](FlutterMethodCall, FlutterResult result) {
         result(1);
         result(FlutterError{.code = "late"});
       },
       {"reply success 1"},
       {kAnsweredTwice}},
      {[](FlutterMethodCall, FlutterResult result) { result.drop(); }, {}, {}},
  };
  for (const auto& [handler, expected, faults] : rows) {
    SCOPED_TRACE(&handler - &rows[0].handler);
    handle(handler);
    EXPECT_EQ(answers(), expected);
    EXPECT_EQ(log.take(), faults);
  }
}

TEST_F(ChannelTest, ReplyLostOnAWorkerIsAnsweredOnTheMainThreadOrNotAtAll) {
  for (const bool engineEnds : {false, true}) {
    handle([this](FlutterMethodCall, FlutterResult result) {
      dispatch.globalAsync([lost = std::move(result)] {});
    });
    int replies = 0;
    host().ui.send("test", kChannel, encodeMethodCall("method", {}), [&](Bytes) {
      EXPECT_TRUE(dispatch.isMainThread());
      ++replies;
    });
    dispatch.runWorkers();
    EXPECT_EQ(log.take(), Lines{kNotAnswered});
    EXPECT_EQ(replies, 0) << "on the worker";
    if (engineEnds) engine.reset();
    dispatch.runMain();
    EXPECT_EQ(replies, engineEnds ? 0 : 1);
  }
}

TEST_F(ChannelTest, HandlerMayReplaceItselfOrEndItsEngineWhileItRuns) {
  const std::string owned(100, 'x');  // freed with the handler
  handle([this, owned](FlutterMethodCall call, FlutterResult result) {
    handle([](FlutterMethodCall, FlutterResult next) { next("second"); });
    result(owned.substr(95) + std::string(call.method()));
  });
  EXPECT_EQ(answers(), Lines{"reply success \"xxxxxmethod\""});
  EXPECT_EQ(answers(), Lines{"reply success \"second\""});
  channel().setMethodCallHandler({});
  EXPECT_EQ(answers(), Lines{"reply notImplemented"});

  std::string seen;
  handle([this, owned, &seen](FlutterMethodCall call, FlutterResult result) {
    engine.reset();
    seen = owned.substr(95) + std::string(call.method());
    result(seen);
  });
  EXPECT_EQ(answers(), Lines{});
  EXPECT_EQ(seen, "xxxxxmethod");
}

TEST_F(ChannelTest, AfterTheEngineCallsAndRepliesGoNowhere) {
  FlutterMethodChannel toUi = channel();
  const auto open = openReply();
  const auto kept = engine->binaryMessenger();
  engine.reset();
  (*open)("late");
  toUi.invokeMethod("opened");
  toUi.setMethodCallHandler({});
  dispatch.settle();
  EXPECT_EQ(takeTranscript(), Lines{});
}

using ChannelDeathTest = ChannelTest;

TEST_F(ChannelDeathTest, UseOffTheMainThreadEndsTheProcess) {
  const auto open = openReply();
  const std::function<void()> uses[] = {
      [&] { (*open)(1); },
      [&] { channel().invokeMethod("method"); },
      [&] { send(kChannel, "method", "null", "test"); },
  };
  for (const auto& use : uses) {
    const auto useOnWorker = [&] {
      dispatch.globalAsync(use);
      dispatch.runWorkers();
    };
    EXPECT_EXIT(useOnWorker(), ::testing::KilledBySignal(SIGABRT), "") << &use - &uses[0];
  }
  open->drop();
}

}  // namespace
}  // namespace norvane
