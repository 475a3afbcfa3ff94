// What a password that is copied looks like to other applications.

#include <optional>

#include "contract.h"
#include "worlds.h"

namespace norvane {
namespace {

template <class Clipboard>
class PasteboardContract : public testing::Test {};
TYPED_TEST_SUITE(PasteboardContract, PasteboardWorlds);

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

}  // namespace
}  // namespace norvane
