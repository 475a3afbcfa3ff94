// What a password that is copied looks like to other applications.

#include <optional>
#include <string>
#include <vector>

#include "platform/gtk/gtk_pasteboard.h"
#include "platform/headless/headless_services.h"
#include "real_desktop.h"

namespace norvane {
namespace {

constexpr const char* kConcealed = "org.nspasteboard.ConcealedType";

std::vector<NSPasteboardItem> oneItem(const std::string& text, bool isConcealed = true) {
  std::vector<NSPasteboardItem> items(1);
  items.front().setString(text, NSPasteboardTypeString);
  if (isConcealed) items.front().setString("", kConcealed);
  return items;
}

class HeadlessClipboard {
 public:
  HeadlessPasteboard pasteboard;

  std::optional<std::string> read(const std::string& type) {
    for (const auto& item : pasteboard.items()) {
      for (const auto& [itemType, text] : item.types()) {
        if (itemType == type) return text;
      }
    }
    return std::nullopt;
  }
};

class RealClipboard {
 public:
  GtkPasteboard pasteboard;

  /// What xclip gets; nothing when it gets a refusal.
  std::optional<std::string> read(const std::string& type) {
    const char* target = type == NSPasteboardTypeString ? "UTF8_STRING" : type.c_str();
    return outputOf({"xclip", "-selection", "clipboard", "-o", "-t", target});
  }
};

template <class Clipboard>
class PasteboardContract : public testing::Test {};
using Clipboards = testing::Types<HeadlessClipboard, RealClipboard>;
TYPED_TEST_SUITE(PasteboardContract, Clipboards);

TYPED_TEST(PasteboardContract, HoldsTheLastTextWithItsMarkersUntilCleared) {
  TypeParam clipboard;
  for (const char* text : {"first", "pä$$ 密码", ""}) {
    clipboard.pasteboard.clearContents();
    ASSERT_TRUE(clipboard.pasteboard.writeObjects(oneItem(text)));
    EXPECT_EQ(clipboard.read(NSPasteboardTypeString), text);
    EXPECT_EQ(clipboard.read(kConcealed), "");
  }
  clipboard.pasteboard.clearContents();
  EXPECT_EQ(clipboard.read(NSPasteboardTypeString), std::nullopt);
  EXPECT_EQ(clipboard.read(kConcealed), std::nullopt);
}

TEST(RealPasteboard, GivesTheSameBytesInEveryFormatAndNoneToKeep) {
  RealClipboard clipboard;
  ASSERT_TRUE(clipboard.pasteboard.writeObjects(oneItem("pä$$")));
  for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "TEXT"}) {
    EXPECT_EQ(clipboard.read(target), "pä$$") << target;
  }
  EXPECT_EQ(clipboard.read("STRING"), std::nullopt);  // Latin-1 by definition
  EXPECT_EQ(clipboard.read("x-kde-passwordManagerHint"), "secret");
  const std::string targets = clipboard.read("TARGETS").value_or("");
  EXPECT_NE(targets.find(kConcealed), std::string::npos) << targets;
  EXPECT_EQ(targets.find("SAVE_TARGETS"), std::string::npos) << targets;

  ASSERT_TRUE(clipboard.pasteboard.writeObjects(oneItem("plain", false)));
  EXPECT_EQ(clipboard.read("STRING"), "plain");
  EXPECT_EQ(clipboard.read("x-kde-passwordManagerHint"), std::nullopt);
  EXPECT_FALSE(clipboard.pasteboard.writeObjects({}));
}

}  // namespace
}  // namespace norvane
