#include <functional>
#include <random>

#include "app/app_delegate.h"
#include "quick_access/qa_panel_controller.h"
#include "support/host_test.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

constexpr const char* kPanel = "cn.kestrio.norvane.qa_panel";
constexpr const char* kQaEngine = "norvane-qa";
constexpr Hotkey kHotkey{42, 256};

class QuickAccessTest : public HostTest {
 protected:
  void toPanel(const std::string& method, const std::string& arguments = "null") {
    send(kPanel, method, arguments, kQaEngine);
    dispatch.settle();
  }
  void press() {
    host().hotkeys.press(kHotkey);
    dispatch.settle();
  }
  void called(std::string_view engine, std::string_view channel, const Bytes& message) override {
    if (engine == kQaEngine) {
      EXPECT_EQ(application().isKey(*application().windows().back()),
                decodeMethodCall(message)->method() == "shown");
    }
    HostTest::called(engine, channel, message);
  }
  AppDelegate& delegate() { return dynamic_cast<AppDelegate&>(*application().delegate()); }
  QAPanelController& controller() { return *delegate().qaPanel; }

  /// The transcript with what a "shown" carries cut off, and without the panel engine's first
  /// words.
  Lines events() {
    Lines lines = takeTranscript();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with(kQaEngine); });
    for (std::string& line : lines) {
      if (line.starts_with(std::string(kPanel) + " shown")) line = "shown";
      if (line.starts_with(std::string(kPanel) + " hidden")) line = "hidden";
    }
    return lines;
  }
};

TEST_F(QuickAccessTest, TheFirstShowMakesEngineAndPanelTheLaterOnesReuseThem) {
  start();
  press();
  const std::string first = takeTranscript().back();
  EXPECT_TRUE(first.starts_with(
      "cn.kestrio.norvane.qa_panel shown {\"identity\":\"org.example.editor\",\"name\":\"Editor\","
      "\"frontmostApp\":\"Editor\",\"iconPng\":{\"$bytes\":\"iVBOR"))
      << first;
  EXPECT_FALSE(desktop().isActive());

  const NSWindow& panel = *application().windows().at(1);
  press();
  change(R"({"screens":[]})");
  press();
  EXPECT_EQ(events(), (Lines{"hidden", "shown"}));
  EXPECT_EQ(panel.frame().origin, (NSPoint{310, 225})) << "no screen: left where it was";
  EXPECT_EQ(application().windows().size(), 2u);
  EXPECT_EQ(log.take(), Lines{"[Norvane] QA panel engine created (entrypoint=qaMain)"});
}

TEST_F(QuickAccessTest, WhatIsCapturedOfTheFrontApplication) {
  start();
  const std::pair<Profile::Application, std::string> cases[] = {
      {{{}, "Tool", false, true}, R"({"identity":"Tool","name":"Tool","frontmostApp":"Tool"})"},
      {{"a.b", {}, false, true}, R"({"identity":"a.b","name":"","frontmostApp":""})"},
      {{{}, {}, false, true}, R"({"identity":"","name":"","frontmostApp":""})"},
      {{"a.b", "B", true, false}, "{}"},
  };
  for (const auto& [front, expected] : cases) {
    Profile profile;
    profile.applications = {front};
    desktop().setProfile(profile);
    controller().show();
    EXPECT_EQ(takeTranscript().back(), "cn.kestrio.norvane.qa_panel shown " + expected);
  }
}

// A person at the desk, against a small model of the panel.

struct Model {
  bool visible = false;
  bool panelIsKey = false;
  bool pinned = false;
  bool ready = false;
  std::optional<std::string> pendingLink;
  Lines events;

  void show() {
    visible = panelIsKey = true;
    events.push_back("shown");
  }
  void hide() {
    if (!visible) return;
    visible = panelIsKey = pinned = false;
    events.push_back("hidden");
    if (ready) events.push_back("norvane/hotkey syncLockState null");
  }
  void panelLosesKey() {
    if (std::exchange(panelIsKey, false) && !pinned) hide();
  }
  void open(const std::string& link) {
    if (!ready) {
      pendingLink = link;
    } else {
      events.push_back("norvane/deeplink urlOpened {\"url\":\"" + link + "\"}");
    }
  }
  void openItem(const std::string& arguments) {
    hide();
    if (ready) events.push_back("norvane/hotkey openItem " + arguments);
  }
};

TEST_F(QuickAccessTest, RandomSequencesMatchTheModel) {
  std::mt19937 random = seededRandom();
  int link = 0;

  for (int sequence = 0; sequence < 200; ++sequence) {
    start();
    Model model;
    const auto toggle = [&] { model.visible ? model.hide() : model.show(); };
    // A call to the panel has its effect once there is one.
    const auto ask = [&](const std::string& method, const std::string& arguments, auto effect) {
      if (!controller().panel) return;
      toPanel(method, arguments);
      effect();
      model.events.push_back("reply success null");
    };
    const std::vector<std::function<void()>> steps{
        [&] {
          press();
          toggle();
        },
        [&] {
          host().statusBar.click();
          toggle();
        },
        [&] {
          desktop().activate("org.example.editor");
          model.panelLosesKey();
        },
        [&] {
          application().openURL("norvane://unlock?x");
          model.show();
        },
        [&] {
          const std::string url = "norvane://item/" + std::to_string(++link);
          application().openURL(url);
          model.open(url);
          model.panelLosesKey();
        },
        [&] {
          send("norvane/deeplink", "flutterReady");
          model.ready = true;
          if (model.pendingLink) model.open(*std::exchange(model.pendingLink, {}));
          model.events.push_back("reply success null");
        },
        [&] { desktop().closeMainWindow(); },
        [&] { ask("setPinned", R"({"pinned":true})", [&] { model.pinned = true; }); },
        [&] { ask("setPinned", R"({"pinned":1})", [&] { model.pinned = false; }); },
        [&] { ask("close", "null", [&] { model.hide(); }); },
        [&] {  // the window manager closes the panel
          if (controller().panel) controller().panel->close();
          model.hide();
        },
        [&] {
          ask("openMain", R"({"editItemId":"a"})",
              [&] { model.openItem(R"({"editItemId":"a"})"); });
        },
        [&] { ask("openMain", R"({"editItemId":7})", [&] { model.openItem("{}"); }); },
    };
    for (int step = 0; step < 30; ++step) {
      steps[random() % steps.size()]();
      dispatch.settle();
      ASSERT_EQ(events(), std::exchange(model.events, {})) << "sequence " << sequence;
      ASSERT_EQ(controller().panel && controller().panel->isVisible(), model.visible);
      ASSERT_EQ(controller().pinned, model.pinned);
    }
  }
}

// Where parts meet

TEST_F(QuickAccessTest, AFocusLossAndATogglesTurnMeet) {
  start();
  press();
  events();
  desktop().activate("org.example.editor");
  host().hotkeys.press(kHotkey);
  dispatch.settle();
  EXPECT_EQ(events(), (Lines{"hidden", "shown"})) << "focus lost first, then the press";
  host().hotkeys.press(kHotkey);
  desktop().activate("org.example.editor");
  dispatch.settle();
  EXPECT_EQ(events(), (Lines{"hidden"})) << "the press first, then a loss of what is gone";
}

/// Lets something go in the middle of a call: as soon as the UI hears of it.
class VanishingTest : public QuickAccessTest {
 protected:
  void called(std::string_view engine, std::string_view channel, const Bytes& message) override {
    QuickAccessTest::called(engine, channel, message);
    if (vanish) std::exchange(vanish, {})();
  }
  std::function<void()> vanish;
};

TEST_F(VanishingTest, DelegateControllerAndWindowsMayGoInMidCall) {
  for (const char* method : {"close", "openMain"}) {
    start();
    press();
    vanish = [&] { application().setDelegate(nullptr); };
    send(kPanel, method, "null", kQaEngine);
    EXPECT_EQ(events().back(), "reply success null");
    send(kPanel, method, "null", kQaEngine);
    EXPECT_EQ(events().back(), "reply success null") << "the controller is gone";
  }
  start();
  press();
  vanish = [&] { application().setDelegate(nullptr); };
  desktop().activate("org.example.editor");
  dispatch.settle();
  start();
  call("norvane/deeplink", "flutterReady");
  press();
  vanish = [&] { application().removeWindow(*application().windows().front()); };
  toPanel("openMain");
  EXPECT_EQ(events().back(), "reply success null");
}

// Links

TEST_F(QuickAccessTest, WithoutAWindowLinksWaitForOneRetryAndOpenMainStillActivates) {
  Profile none;
  none.mainWindow = false;
  start(none);
  application().openURL("norvane://item/1");
  application().openURL("norvane://Unlock");
  EXPECT_EQ(log.take(), (Lines{"[Norvane] received deeplink: norvane://item/1",
                               "[Norvane] received deeplink: norvane://Unlock"}));
  EXPECT_TRUE(desktop().isActive());
  desktop().setProfile({});
  dispatch.advance(0.1);
  EXPECT_EQ(delegate().pendingDeeplinkAtAppLevel, std::nullopt);
  EXPECT_EQ(MainFlutterWindow::first()->pendingDeeplink, "norvane://Unlock");
  EXPECT_EQ(call("norvane/deeplink", "flutterReady"), "success null");
  EXPECT_EQ(events().size(), 9u) << "the engine's start, its plugins and the latest link, once";

  start(none);
  application().openURL("norvane://item/2");
  dispatch.advance(1);
  desktop().setProfile({});
  dispatch.advance(1);
  EXPECT_EQ(delegate().pendingDeeplinkAtAppLevel, "norvane://item/2") << "one retry, no more";
  EXPECT_EQ(MainFlutterWindow::first()->pendingDeeplink, std::nullopt);

  start(none);
  controller().show();
  events();
  toPanel("openMain", "{\"editItemId\":\"x\"}");
  EXPECT_EQ(events(), (Lines{"hidden", "reply success null"}));
  EXPECT_TRUE(desktop().isActive());
}

TEST_F(QuickAccessTest, ALinkToAHiddenWindowBringsItBackUnchanged) {
  start();
  call("norvane/deeplink", "flutterReady");
  desktop().closeMainWindow();
  const std::string link = "x://\u20ac\n%n\x1b[2J" + std::string(4 << 20, 'a');
  application().openURL(link);
  EXPECT_TRUE(MainFlutterWindow::first()->isVisible());
  EXPECT_EQ(takeTranscript().back().size(),
            std::string("norvane/deeplink urlOpened {\"url\":\"\"}").size() + link.size() + 6);
  EXPECT_EQ(log.take(), Lines{"[Norvane] received deeplink: " + link});
}

// The status item

TEST_F(QuickAccessTest, TheStatusItemsThreeLooks) {
  struct Case {
    const char* profile;
    std::string image;
    NSSize size;
  };
  for (const auto& [profile, image, size] : {
           Case{"{}", "MenuBarIcon", {18, 18}},
           Case{R"({"menuBarIcon":false,"osVersion":"11.0.0"})", "key.fill", {15, 17}},
           Case{R"({"menuBarIcon":false,"osVersion":"10.0.0"})", "", {}},
           Case{R"({"menuBarIcon":false,"symbols":false})", "", {}},
       }) {
    Profile looks;
    applyToProfile(parseJson(profile), looks);
    start(looks);
    const HeadlessStatusBar::Item* item = host().statusBar.item();
    ASSERT_TRUE(item);
    EXPECT_EQ(item->title, image.empty() ? "NV" : "");
    ASSERT_EQ(item->image != nullptr, !image.empty());
    if (!item->image) continue;
    EXPECT_EQ(item->image->name(), image);
    EXPECT_EQ(item->image->size(), size);
    EXPECT_TRUE(item->image->isTemplate());
  }
}

}  // namespace
}  // namespace norvane
