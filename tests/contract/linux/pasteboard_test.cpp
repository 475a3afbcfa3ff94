// The X clipboard: formats, and what clipboard managers see.

#include <optional>
#include <string>

#include "contract.h"
#include "desktop_worlds.h"

namespace norvane {
namespace {

TEST(RealPasteboard, GivesNoFormatThatWouldGarbleItAndNoneToKeep) {
  DesktopPasteboard clipboard;
  ASSERT_TRUE(clipboard.pasteboard.writeObjects(oneItem("pä$$")));
  EXPECT_EQ(clipboard.read("TEXT"), "pä$$");
  EXPECT_EQ(clipboard.read("STRING"), std::nullopt);  // Latin-1 by definition
  const std::string targets = clipboard.read("TARGETS").value_or("");
  EXPECT_EQ(targets.find("SAVE_TARGETS"), std::string::npos) << targets;

  ASSERT_TRUE(clipboard.pasteboard.writeObjects(oneItem("plain", false)));
  EXPECT_EQ(clipboard.read("STRING"), "plain");
  EXPECT_EQ(clipboard.read("x-kde-passwordManagerHint"), std::nullopt);
  EXPECT_FALSE(clipboard.pasteboard.writeObjects({}));
}

}  // namespace
}  // namespace norvane
