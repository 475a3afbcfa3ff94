#include "autofill/auto_fill_bridge.h"

#include "base/base64.h"
#include "platform/flutter/standard_method_codec.h"
#include "support/auto_fill_test.h"
#include "window/main_flutter_window.h"

namespace norvane {
namespace {

using namespace std::string_view_literals;

using AutoFillBridgeTest = AutoFillTest;

std::string savedPasskeys(std::size_t count, const char* rest = "}") {
  return "success {\"saved\":" + std::to_string(count) + rest;
}
std::string saved(std::size_t count) { return savedPasskeys(count, ",\"isEnabled\":true}"); }

TEST_F(AutoFillBridgeTest, ArgumentsOfTheWrongShapeHaveNoItemsAndOneStrangerEmptiesTheList) {
  const FlutterMap item{{"id", "1"},           {"username", "u"},         {"password", "p"},
                        {"credential_id", ""}, {"credential_id", "AA=="}, {"rp_id", "r"}};
  FlutterMap strangeKey = item;
  strangeKey.emplace_back(std::int32_t{5}, "x");
  const auto list = [&](FlutterValue second) { return FlutterList{item, std::move(second)}; };
  const std::pair<FlutterValue, int> cases[] = {
      {nullptr, 0},
      {FlutterList{item}, 0},
      {FlutterMap{{"Items", list(item)}}, 0},
      {FlutterMap{{"items", nullptr}}, 0},
      {FlutterMap{{"items", item}}, 0},
      {FlutterMap{{"items", list("text")}}, 0},
      {FlutterMap{{"items", list(nullptr)}}, 0},
      {FlutterMap{{"items", list(strangeKey)}}, 0},
      {FlutterMap{{"items", list(item)}, {true, "x"}}, 0},
      {FlutterMap{{"items", list(FlutterMap{})}, {"other", 1.5}}, 1},
      {FlutterMap{{"items", list(item)}}, 2},
  };
  for (const auto& [arguments, items] : cases) {
    SCOPED_TRACE(&arguments - &cases[0].first);
    Lines expected(items, "domain|Norvane|u|1");
    const auto reply = [&](const char* method) {
      return deliver(kAutoFill, encodeMethodCall(method, arguments));
    };
    EXPECT_EQ(reply("syncVaultSnapshot"), written(kSnapshot, items));
    EXPECT_EQ(extension.read(kSnapshot) == "[]", items == 0);
    EXPECT_EQ(reply("registerCredentials"), saved(items));
    EXPECT_EQ(registered(), expected);
    EXPECT_EQ(reply("registerPasskeys"), savedPasskeys(items));
    // Of a key that stands twice, the first counts.
    expected.resize(2 * items, "passkey|r|r|||1");
    EXPECT_EQ(registered(), expected);
    autoFill("clearCredentials");
  }
}

/// The items of one call, and what those that are not skipped make.
struct Table {
  struct Row {
    const char* item;
    const char* entry = nullptr;  // none: skipped, and takes no other with it
  };
  Table(std::initializer_list<Row> rows) {
    for (const auto& [item, entry] : rows) {
      items += (items.empty() ? R"({"items":[)" : ",") + std::string(item);
      if (entry) entries.emplace_back(entry);
    }
    items += "]}";
  }
  /// What the extension reads.
  std::string json() const {
    std::string text;
    for (const std::string& entry : entries) text += (text.empty() ? "" : ",") + entry;
    return '[' + text + ']';
  }
  std::string items;
  Lines entries;
};

TEST_F(AutoFillBridgeTest, ItemsBecomeEntriesOfTheirFileUnlessTheyAreIncomplete) {
  const Table logins{
      {R"({"id":"1","title":"T","url":" x y ","username":"u","password":"p","notes":"n","otp":1})",
       R"({"id":"1","password":"p","title":"T","url":" x y ","username":"u"})"},
      {R"({"id":"","username":"","password":" "})",
       R"({"id":"","password":" ","title":"","url":"","username":""})"},
      {R"({"id":"1","title":5,"url":null,"username":"u","password":"\u0000\"\\/\n\u2028é😀"})",
       "{\"id\":\"1\",\"password\":\"\\u0000\\\"\\\\/\\n\u2028é😀\",\"title\":\"\",\"url\":\"\","
       "\"username\":\"u\"}"},
      {R"({"id":"1","username":"u","password":""})"},
      {R"({"id":"1","username":"u"})"},
      {R"({"id":5,"username":"u","password":"p"})"},
      {R"({"username":"u","password":"p"})"},
      {R"({"id":"1","Username":"u","password":"p"})"},
      {R"({"password":"q","username":"u","id":"1"})",
       R"({"id":"1","password":"q","title":"","url":"","username":"u"})"},
  };
  const Table keys{
      {R"({"id":"","rp_id":"r","credential_id":"-_ no","private_key":"k","algorithm":"","x":1,)"
       R"("user_name":"n","user_handle":"h"})",
       R"({"algorithm":"","credential_id":"-_ no","id":"","private_key":"k","rp_id":"r",)"
       R"("user_handle":"h","user_name":"n"})"},
      {R"({"rp_id":"r","credential_id":"c","private_key":"k","algorithm":"a"})"},
      {R"({"id":"1","rp_id":"","credential_id":"c","private_key":"k","algorithm":"a"})"},
      {R"({"id":"1","rp_id":"r","credential_id":"","private_key":"k","algorithm":"a"})"},
      {R"({"id":"1","rp_id":"r","credential_id":"c","private_key":"","algorithm":"a"})"},
      {R"({"id":"1","rp_id":"r","credential_id":"c","private_key":"k","algorithm":5})"},
      {R"({"id":"1","rp_id":"r","credential_id":"c","private_key":"k","algorithm":"a",)"
       R"("user_name":5,"user_handle":5})",
       R"({"algorithm":"a","credential_id":"c","id":"1","private_key":"k","rp_id":"r",)"
       R"("user_handle":"","user_name":""})"},
  };
  EXPECT_EQ(autoFill("syncPasskeyIndex", keys.items), written(kPasskeys, 2));
  EXPECT_EQ(extension.read(kPasskeys), keys.json());
  EXPECT_EQ(extension.read(kSnapshot), "none");
  EXPECT_EQ(autoFill("syncVaultSnapshot", logins.items), written(kSnapshot, 4));
  EXPECT_EQ(extension.read(kSnapshot), logins.json());
  EXPECT_EQ(autoFill("syncPasskeyIndex", logins.items), written(kPasskeys, 0));
  EXPECT_EQ(extension.read(kPasskeys), "none") << "no entries, no index";
  EXPECT_EQ(extension.read(kSnapshot), logins.json()) << "the other kind's";
}

TEST_F(AutoFillBridgeTest, LoginsReplaceThePasswordIdentitiesAndPasskeysAddToTheirs) {
  const Table logins{
      {R"({"id":"1","username":"u","url":"x","title":"T","password":"p"})", "URL|x|u|1"},
      {R"({"id":"","username":"u","url":"","title":"T"})", "domain|T|u|"},
      {R"({"id":"1","username":"u","url":5,"title":""})", "domain||u|1"},
      {R"({"id":"1","username":""})"},
      {R"({"id":5,"username":"u"})"},
      {R"({"username":"u"})"},
      {R"({"id":"1","username":"u","title":5})", "domain|Norvane|u|1"},
  };
  EXPECT_EQ(autoFill("registerCredentials", logins.items), saved(logins.entries.size()));
  EXPECT_EQ(registered(), logins.entries);
  EXPECT_EQ(autoFill("registerCredentials"), saved(0));
  EXPECT_EQ(registered(), Lines{});

  const Table keys{
      {R"({"id":"1","rp_id":"r","credential_id":"QQ==","user_name":"n","user_handle":"Qg=="})",
       "passkey|r|n|A|B|1"},
      {R"({"id":"","rp_id":"r","credential_id":"QQ","user_name":"","user_handle":"Q-I="})",
       "passkey|r|r|A||"},
      {R"({"id":"1","rp_id":"r","credential_id":"A"})"},
      {R"({"id":"1","rp_id":"","credential_id":"QQ=="})"},
      {R"({"id":"1","rp_id":"r"})"},
      {R"({"rp_id":"r","credential_id":"QQ=="})"},
      {R"({"id":"1","rp_id":"r","credential_id":"","user_name":5,"user_handle":5})",
       "passkey|r|r|||1"},
  };
  Lines expected;
  for (const int call : {1, 2}) {
    EXPECT_EQ(autoFill("registerPasskeys", keys.items), savedPasskeys(keys.entries.size())) << call;
    expected.insert(expected.end(), keys.entries.begin(), keys.entries.end());
    EXPECT_EQ(registered(), expected);
  }
}

TEST(Base64Test, PaddingMayBeMissingButNotTooMuchAndNothingElseMayStandThere) {
  const std::pair<const char*, std::vector<std::uint8_t>> texts[] = {
      {"", {}},
      {"AZaz09+/", {0x01, 0x96, 0xb3, 0xd3, 0xdf, 0xbf}},
      {"QUI=", {'A', 'B'}},
      {"QUI", {'A', 'B'}},
      {"QQ==", {'A'}},
      {"QQ=", {'A'}},
      {"QR", {'A'}},  // the bits left over do not count
  };
  for (const auto& [text, bytes] : texts) EXPECT_EQ(decodeBase64(text), bytes) << text;
  for (const std::string_view text :
       {"A"sv, "A="sv, "A==="sv, "="sv, "===="sv, "QUI=="sv, "QQ==="sv, "AAAA="sv, "AAAA===="sv,
        "A=AA"sv, "AA=A"sv, "QQ==QQ=="sv, "-_AA"sv, "AA A"sv, "AAA\n"sv, "AA\xc3\xa9"sv,
        "AAA\0"sv}) {
    EXPECT_EQ(decodeBase64(text), std::nullopt) << ::testing::PrintToString(text);
  }
}

TEST_F(AutoFillBridgeTest, TheAccessGroupIsFormedAtEachCall) {
  for (const auto& [prefix, group] : {std::pair{"null", "cn.kestrio.norvane"},
                                      {"\"\"", "cn.kestrio.norvane"},
                                      {"\"TEAM.\"", "TEAM.cn.kestrio.norvane"},
                                      {"\" a..b \"", " a..b .cn.kestrio.norvane"},
                                      {"\".\"", ".cn.kestrio.norvane"}}) {
    change(std::string("{\"appIdentifierPrefix\":") + prefix + "}");
    autoFill(kSnapshot.method);
    autoFill(kPasskeys.method, itemNamed("1"));
    const auto items = host().keychain.items();
    ASSERT_EQ(items.size(), 2U) << prefix;
    for (const auto& item : items) EXPECT_EQ(item.name.accessGroup, group);
    EXPECT_EQ(autoFill("clearCredentials"), "success true");
    EXPECT_TRUE(host().keychain.items().empty()) << prefix;
  }
}

TEST_F(AutoFillBridgeTest, TheStoreDecidesWhatIsRegisteredButNotWhatIsCleared) {
  struct Case {
    const char* store;
    std::string credentials;
    std::string passkeys;
    std::string clear;
    bool registers = false;
    bool keeps = true;
  };
  const std::string disabled = R"(success {"saved":0,"isEnabled":false})";
  for (const Case& c : {
           Case{"{}", saved(1), savedPasskeys(1), "success true", true, false},
           Case{R"({"isEnabled":false})", disabled, savedPasskeys(0), "success true", false, false},
           Case{R"({"success":false})", saved(0), savedPasskeys(0), "success false"},
           Case{R"({"error":"é"})", "error autofill_register_failed: é, null",
                "error passkey_register_failed: é, null", "error autofill_clear_failed: é, null"},
           Case{R"({"isEnabled":false,"error":"E"})", disabled, savedPasskeys(0),
                "error autofill_clear_failed: E, null"},
       }) {
    SCOPED_TRACE(c.store);
    change(R"({"credentialStore":{}})");
    autoFill("clearCredentials");
    autoFill("registerCredentials", itemNamed("old"));
    autoFill("registerPasskeys", itemNamed("old"));
    expectHealthySync(kSnapshot);
    expectHealthySync(kPasskeys);
    change(std::string("{\"credentialStore\":") + c.store + "}");
    EXPECT_EQ(autoFill("registerCredentials", itemNamed("new")), c.credentials);
    EXPECT_EQ(autoFill("registerPasskeys", itemNamed("new")), c.passkeys);
    EXPECT_EQ(registered()[0], c.registers ? "domain|Norvane|u|new" : "domain|Norvane|u|old");
    EXPECT_EQ(registered().size(), c.registers ? 3U : 2U);
    EXPECT_EQ(autoFill("clearCredentials", "[1]"), c.clear);
    EXPECT_EQ(registered().size(), c.keeps ? 2U : 0U);
    EXPECT_EQ(extension.read(kSnapshot), "none");
    EXPECT_EQ(extension.read(kPasskeys), "none");
  }
  change(R"({"credentialStore":{"supportsIncrementalUpdates":false,"error":"E"}})");
  EXPECT_EQ(autoFill("getState"),
            R"(success {"isEnabled":true,"supportsIncrementalUpdates":false})");
}

TEST_F(AutoFillBridgeTest, BeforeVersion14PasskeysAreNotRegisteredAndTheReplyIsImmediate) {
  for (const auto& [version, replies] :
       {std::pair{"13.6.9", Lines{"reply " + savedPasskeys(0)}}, {"14.0", Lines{}}}) {
    change(std::string(R"({"osVersion":")") + version + "\"}");
    send(kAutoFill, "registerPasskeys", itemNamed("1"));
    EXPECT_EQ(takeTranscript(), replies) << version;
    dispatch.settle();
    EXPECT_EQ(registered().size(), 1 - replies.size());
  }
}

// Order and lifetime

TEST_F(AutoFillBridgeTest, TheStoreMayAnswerLateTwiceOrNever) {
  for (const std::string method :
       {"getState", "registerCredentials", "registerPasskeys", "clearCredentials"}) {
    for (const int times : {0, 1, 2}) {
      SCOPED_TRACE(method + ' ' + std::to_string(times));
      autoFill("clearCredentials");
      credentialStore.held = true;
      send(kAutoFill, method, itemNamed("1"));
      std::size_t faults = 0;
      for (dispatch.settle(); !credentialStore.answers.empty(); dispatch.settle()) {
        const auto answer = std::move(credentialStore.answers.front());
        credentialStore.answers.erase(credentialStore.answers.begin());
        EXPECT_EQ(takeTranscript(), Lines{}) << "replied before the store answered";
        for (int i = 0; i < times; ++i) dispatch.globalAsync([answer] { (*answer)(); });
        faults += times != 1;
      }
      credentialStore.held = false;
      EXPECT_EQ(takeTranscript().size(), 1U) << "replies, that of a lost call included";
      EXPECT_EQ(log.take().size(), faults);
      EXPECT_EQ(registered().size(), times > 0 && method.starts_with("register") ? 1U : 0U);
    }
  }
}

TEST_F(AutoFillBridgeTest, WorkOutlivesTheBridgeAndItsEngineAndCallsToNobodyAreDropped) {
  send(kAutoFill, "registerCredentials", itemNamed("1"));
  send(kAutoFill, "syncVaultSnapshot", itemNamed("1"));
  MainFlutterWindow::first()->autoFillBridge.reset();
  dispatch.settle();
  EXPECT_EQ(takeTranscript(), (Lines{"reply " + written(kSnapshot, 1), "reply " + saved(1)}));
  EXPECT_EQ(autoFill("clearCredentials"), "(none)");
  EXPECT_EQ(extension.read(kSnapshot), entryNamed(kSnapshot, "1"));

  start();
  send(kAutoFill, "getState");
  send(kAutoFill, "syncVaultSnapshot", itemNamed("2"));
  application().removeWindow(*MainFlutterWindow::first());
  dispatch.settle();
  EXPECT_EQ(takeTranscript(), Lines{}) << "replies to an engine that has ended";
  EXPECT_EQ(extension.read(kSnapshot), entryNamed(kSnapshot, "2"));
  log.take();
}

}  // namespace
}  // namespace norvane
