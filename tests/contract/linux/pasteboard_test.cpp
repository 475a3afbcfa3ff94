// The X clipboard: formats, and what clipboard managers see.

#include <optional>
#include <string>

#include "contract.h"
#include "desktop_worlds.h"

namespace norvane {
namespace {

TEST(RealPasteboard, GivesTheSameBytesInEveryFormatAndNoneToKeep) {
  DesktopPasteboard clipboard;
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
