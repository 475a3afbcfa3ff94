#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>

#include <glib.h>
#include <gtest/gtest.h>

#include "base/utf8.h"
#include "platform/flutter/standard_message.h"
#include "platform/flutter/standard_method_codec.h"
#include "value_copy.h"

namespace norvane {
namespace {

using namespace std::string_literals;

/// Pairs of hexadecimal digits, and texts in quotes, as bytes.
Bytes wire(std::string_view notation) {
  Bytes message;
  while (!notation.empty()) {
    if (notation.front() == '\'') {
      const auto text = notation.substr(1, notation.find('\'', 1) - 1);
      message.insert(message.end(), text.begin(), text.end());
      notation.remove_prefix(text.size() + 2);
    } else if (notation.front() == ' ') {
      notation.remove_prefix(1);
    } else {
      message.push_back(std::stoi(std::string(notation.substr(0, 2)), nullptr, 16));
      notation.remove_prefix(2);
    }
  }
  message.shrink_to_fit();  // a read beyond the end then leaves the block
  return message;
}

std::string repeated(std::string_view text, std::size_t times) {
  std::string result;
  while (times-- > 0) result += text;
  return result;
}

TEST(Codec, WritesAndReadsTheExactBytesOfTheFormat) {
  struct Row {
    Bytes encoded;
    std::string bytes;
    bool isCall = false;
  };
  const auto success = [](const FlutterValue& value, const std::string& bytes) {
    return Row{encodeSuccessEnvelope(value), "00" + bytes};
  };
  const std::vector<double> noDoubles;
  std::vector<Row> rows = {
      success({}, "00"),
      success(true, "01"),
      success(-2, "03 feffffff"),
      success(std::numeric_limits<std::int32_t>::min(), "03 00000080"),
      success(std::numeric_limits<std::int64_t>::max(), "04 ffffffffffffff7f"),
      success(1.5, "06 000000000000 000000000000f83f"),
      success("a\0\u00e9\U0001f511"s, "07 08 'a' 00 c3a9 f09f9491"),
      success(std::vector<std::uint8_t>{0, 255}, "08 02 00ff"),
      success(std::vector<std::int32_t>{1, -1}, "09 02 00 01000000 ffffffff"),
      success(std::vector<std::int64_t>{-2}, "0a 01 0000000000 feffffffffffffff"),
      success(noDoubles, "0b 00 0000000000"),
      success(std::vector<double>{-0.0}, "0b 01 0000000000 0000000000000080"),
      success(std::vector<float>{1.5f}, "0e 01 00 0000c03f"),
      success(FlutterList{}, "0c 00"),
      success(FlutterMap{}, "0d 00"),
      // Padding counts from the message's first byte, follows an empty list too, and is left out
      // where the position is a multiple already.
      success(FlutterList{true, 1.5, "x", 2.5},
              "0c 04 01 06 000000 000000000000f83f 07 01 'x' 06 "
              "00000000 0000000000000440"),
      success(FlutterList{noDoubles, std::vector<float>{}, std::vector<std::int32_t>{7}, false},
              "0c 04 0b 00 000000 0e 00 0000 09 01 0000 07000000 02"),
      success(FlutterList{1, 2.0}, "0c 02 03 01000000 06 00000000000000 0000000000000040"),
      success(FlutterList{"", "", 1.0}, "0c 03 07 00 07 00 06 000000000000f03f"),
      success(FlutterMap{{"b", 1}, {"a", {}}, {2, FlutterMap{{"b", true}}}, {"b", 3}},
              "0d 04 07 01 'b' 03 01000000 07 01 'a' 00 03 02000000 0d 01 07 01 'b' 01 "
              "07 01 'b' 03 03000000"),
      {encodeMethodCall("setMode", FlutterMap{{"mode", "vault"}}),
       "07 07 'setMode' 0d 01 07 04 'mode' 07 05 'vault'", true},
      {encodeMethodCall("abc", 0.5), "07 03 'abc' 06 0000 000000000000e03f", true},
      {encodeErrorEnvelope({.code = "", .message = ""}), "01 07 00 07 00 00"},
      {encodeErrorEnvelope({.code = "c", .message = "m", .details = FlutterList{1.5}}),
       "01 07 01 'c' 07 01 'm' 0c 01 06 000000000000 000000000000f83f"},
      {{}, ""},
  };
  const std::vector<std::pair<std::size_t, std::string>> sizes = {
      {253, "fd"}, {254, "fefe00"}, {65535, "feffff"}, {65536, "ff00000100"}};
  for (const auto& [count, size] : sizes) {
    rows.push_back(success(std::string(count, 'v'), "07" + size + repeated("'v'", count)));
    rows.push_back(success(FlutterList(count), "0c" + size + repeated("00", count)));
  }
  for (const auto& [encoded, bytes, isCall] : rows) {
    SCOPED_TRACE(bytes.substr(0, 80));
    EXPECT_EQ(encoded, wire(bytes));
    EXPECT_EQ(encodedAgain(wire(bytes), isCall), wire(bytes));
  }
}

TEST(Codec, ReadsWhatOtherWritersOfTheFormatMaySend) {
  const std::pair<const char*, const char*> rows[] = {
      {"00 07 fe0300 'abc'", "00 07 03 'abc'"},
      {"00 07 ff03000000 'abc'", "00 07 03 'abc'"},
      {"00 0c fe0100 01", "00 0c 01 01"},
      {"00 06 a5a5a5a5a5a5 000000000000f83f", "00 06 000000000000 000000000000f83f"},
  };
  for (const auto& [sent, canonical] : rows) {
    EXPECT_EQ(encodedAgain(wire(sent), false), wire(canonical)) << sent;
  }
}

/// A value of each type, null last.
FlutterList everyType() {
  return {true,
          1,
          1.0,
          "text",
          std::vector<std::uint8_t>{1, 2, 3},
          std::vector<std::int32_t>{1},
          std::vector<std::int64_t>{1},
          std::vector<float>{1},
          std::vector<double>{},
          FlutterList{std::string(300, 'x'), std::int64_t{8}},
          FlutterMap{{"items", FlutterList{FlutterMap{{"password", "secret"}, {"tags", {}}}}}},
          {}};
}

TEST(HostileMessage, CutOffAnywhereIsRefused) {
  const FlutterList everything = everyType();
  const std::pair<Bytes, bool> messages[] = {
      {encodeMethodCall("syncVaultSnapshot", everything), true},
      {encodeSuccessEnvelope(everything), false},
      {encodeErrorEnvelope({.code = "code", .message = "message", .details = everything}), false},
  };
  for (const auto& [whole, isCall] : messages) {
    ASSERT_EQ(encodedAgain(whole, isCall), whole);
    for (std::size_t length = isCall ? 0 : 1; length < whole.size(); ++length) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
      EXPECT_FALSE(encodedAgain(cut, isCall)) << "cut to " << length << " of " << whole.size();
    }
  }
}

TEST(HostileMessage, IsRefusedWhole) {
  std::vector<std::pair<std::string, bool>> rows = {
      {"00 07 01 'm'", true},    // the arguments come first
      {"03 01000000 00", true},  // a method that is no text
      {"00 00", true},
      {"07 01 'm' 00 00", true},                                 // something left over
      {"07 01 'm' 0d ff 00000080", true},                        // 2^32 times 2 wraps to nothing
      {"07 01 'm' 0a ff 00000020 00000000000000", true},         // 2^29 times 8 does too
      {"07 01 'm' 0d 02 0c 03 0d 01 0c fe0100 00 00 00", true},  // false counts in one another
      {"07 01 'm' " + repeated("0c ff40420f00 ", 100) + repeated("00", 1'000'000), true},
      {"02 07 01 'c' 00 00", false},  // neither success nor error
      {"00 00 00", false},
      {"01 03 01000000 00 00", false},  // an error whose code is no text
      {"01 00 00 00", false},
      {"01 07 01 'c' 03 01000000 00", false},  // whose message is neither
      {"01 07 01 'c' 00 00 07 01 's'", false},
      {"07 01 'm' 05 02 'ff'", true},
  };
  for (const char* type : {"07", "08", "09", "0a", "0b", "0c", "0d", "0e"}) {
    rows.emplace_back("07 01 'm' " + std::string(type) + " ffffffffff", true);
    rows.emplace_back("07 01 'm' " + std::string(type) + " ffffffffff" + repeated("00", 64), true);
  }
  // Unknown types, whatever payload they may be taken to have; 05 is the big integer of old.
  for (int type = 0; type < 256; ++type) {
    if (type <= 0x0e && type != 0x05) continue;
    for (std::size_t payload = 0; payload <= 16; ++payload) {
      Bytes message = wire("07 01 'm'");
      message.push_back(static_cast<std::uint8_t>(type));
      message.resize(message.size() + payload);
      EXPECT_FALSE(decodeMethodCall(message)) << "type " << type << ", payload " << payload;
    }
  }
  for (const std::string ill : {"07 03 'a' eda0", "07 03 'ab' c3"}) {
    rows.emplace_back(ill + " 00", true);
    rows.emplace_back("07 01 'm' 0d 01 " + ill + " 00", true);
    rows.emplace_back("07 01 'm' 0d 01 07 05 'items' 0c 02 07 01 'x' " + ill, true);
    rows.emplace_back("01 " + ill + " 00 00", false);
    rows.emplace_back("01 07 01 'c' " + ill + " 00", false);
  }
  for (const auto& [bytes, isCall] : rows) {
    EXPECT_FALSE(encodedAgain(wire(bytes), isCall)) << bytes.substr(0, 120);
  }
}

TEST(HostileMessage, NestsToTheLimitAndNoDeeper) {
  const std::pair<std::string, std::string> shapes[] = {
      {"0c 01 ", ""}, {"0d 01 00 ", ""}, {"0d 01 ", " 00"}, {"0c 02 ", " 0c 00"}};
  for (const auto& [open, close] : shapes) {
    for (const char* innermost : {"0c 00", "0d 00", "0c 01 00"}) {
      const auto nested = [&](int depth) {
        const auto around = static_cast<std::size_t>(depth - 1);
        return wire("07 01 'm' " + repeated(open, around) + innermost + repeated(close, around));
      };
      EXPECT_EQ(encodedAgain(nested(kMaxNesting), true), nested(kMaxNesting)) << open << innermost;
      EXPECT_FALSE(encodedAgain(nested(kMaxNesting + 1), true)) << open << innermost;
      EXPECT_FALSE(encodedAgain(nested(100'000), true)) << open << innermost;
    }
  }
}

TEST(Utf8, AgreesWithALibraryAtEveryOffsetInAVector) {
  constexpr std::string_view kEdges =
      "\x01\x7f\x80\x8f\x90\x9f\xa0\xbf\xc0\xc1\xc2\xdf\xe0\xe1\xec\xed\xee\xef\xf0\xf1\xf4\xf5"
      "\xff";
  const std::size_t count = kEdges.size();
  constexpr std::size_t kRoom = 64;
  const auto block = std::make_unique<char[]>(kRoom);  // texts end where the block does
  for (std::size_t n = 0; n < count * count * count * count; ++n) {
    const char sequence[] = {kEdges[n % count], kEdges[n / count % count],
                             kEdges[n / count / count % count], kEdges[n / count / count / count]};
    const bool expected = g_utf8_validate(sequence, 4, nullptr);
    const bool ascii = std::ranges::all_of(sequence, [](char c) { return c > 0; });
    // One place of each length that is looked at in a way of its own: those that begin alike come
    // to stand everywhere.
    for (const std::size_t size : {4, 15, 16, 19, 31, 32, 35, 49}) {
      const std::size_t before = n % (size - 3);
      char* text = block.get() + kRoom - size;
      std::fill_n(text, size, 'a');
      std::copy_n(sequence, 4, text + before);
      ASSERT_EQ(isWellFormedUtf8({text, size}), expected)
          << n << " with " << before << " before in " << size;
      ASSERT_EQ(isAscii({text, size}, size), ascii) << n << " in " << size;
    }
  }
  EXPECT_TRUE(isWellFormedUtf8({}));
  EXPECT_TRUE(isWellFormedUtf8(std::string_view("\0", 1)));
}

TEST(Utf8, TextsFromOutsideBecomeUtf8AndTheWriterTakesNoOther) {
  const std::string mixed = "\xE9 \u00e9\xE2\x82/\U0001f511\xFF"s;
  EXPECT_EQ(utf8Of(mixed), "\uFFFD \u00e9\uFFFD\uFFFD/\U0001f511\uFFFD");
  EXPECT_EQ(utf8OfLatin1("caf\xE9"), "caf\u00e9");
  EXPECT_EQ(utf8Of("a\0\u00e9"s), "a\0\u00e9"s);
  EXPECT_EQ(utf8OfLatin1("\u00e9"), "\u00e9");
  EXPECT_DEATH(encodeSuccessEnvelope(mixed), "decode");

  std::string locales = "/tmp/norvane-locales-XXXXXX";
  ASSERT_TRUE(::mkdtemp(locales.data()));
  EXPECT_EQ(std::system(("localedef -i C -f GBK " + locales + "/C.GBK").c_str()), 0);
  ::setenv("LOCPATH", locales.c_str(), 1);
  EXPECT_TRUE(std::setlocale(LC_CTYPE, "C.GBK"));
  EXPECT_EQ(utf8Of("a\0 \xB2\xBB\xCA\xC7\xC4\xBF\xC2\xBC"s), "a\0 不是目录"s);
  EXPECT_EQ(utf8Of("\xFF\xB2"), "\uFFFD\uFFFD");
  std::setlocale(LC_CTYPE, "C");
  ::unsetenv("LOCPATH");
  std::filesystem::remove_all(locales);
}

TEST(ValueView, ReadsAsItsOwnTypeOnly) {
  // In the order of the values.
  const auto readers = [](FlutterValueView v) {
    return std::vector<bool>{
        v.boolean().has_value(),   v.integer().has_value(),     v.float64().has_value(),
        v.text().has_value(),      v.bytes().has_value(),       v.int32List().has_value(),
        v.int64List().has_value(), v.float32List().has_value(), v.float64List().has_value(),
        v.list().has_value(),      v.map().has_value()};
  };
  const auto call = decodeMethodCall(encodeMethodCall("m", everyType()));
  std::size_t place = 0;
  const FlutterListView list = *call->arguments().list();
  for (const FlutterValueView view : list) {
    std::vector<bool> itsOwn(11);
    if (place < itsOwn.size()) itsOwn[place] = true;
    EXPECT_EQ(readers(view), itsOwn) << "value " << place;
    EXPECT_EQ(view.textKeyedMap().has_value(), view.map().has_value());
    ++place;
  }
  EXPECT_EQ(place, 12u);
}

TEST(ValueView, LooksUpTheFirstOfATextKeyAndOutlivesAMoveOfItsCall) {
  auto decoded = decodeMethodCall(
      encodeMethodCall("m", FlutterMap{{1, "not a text"}, {"twice", 1}, {"twice", 2}}));
  const FlutterMethodCall call = std::move(*decoded);
  decoded.reset();
  const auto map = *call.arguments().map();
  EXPECT_EQ(map["twice"].integer(), 1);
  EXPECT_EQ(map["absent"].text(), std::nullopt);
  EXPECT_FALSE(call.arguments().textKeyedMap()) << "one key is a number";
}

}  // namespace
}  // namespace norvane
