// The status item as the person sees and clicks it.

#include <string>

#include "contract.h"
#include "worlds.h"

namespace norvane {
namespace {

template <class Desk>
class StatusBarContract : public testing::Test {};
TYPED_TEST_SUITE(StatusBarContract, StatusBarWorlds);

TYPED_TEST(StatusBarContract, ShowsWhatItIsGivenAndTellsOfClicks) {
  TypeParam desk;
  auto item = desk.statusBar().statusItemWithLength(NSSquareStatusItemLength);
  item->button()->setTitle("NV");
  item->button()->setToolTip("Norvane — Quick Access");
  const auto key = desk.graphics.imageWithSystemSymbolName("key.fill", "Norvane");
  key->setTemplate(true);
  item->button()->setImage(key);
  for (const char* part : {"NV", "Norvane — Quick Access", TypeParam::kKey}) {
    EXPECT_TRUE(has(desk.seen(), part)) << part;
  }
  int clicks = 0;
  item->button()->setAction([&] { ++clicks; });
  EXPECT_TRUE(desk.click() && desk.click());
  EXPECT_EQ(clicks, 2);
  item->button()->setAction([&] { item.reset(); });  // an action may end it
  EXPECT_TRUE(desk.click());
  EXPECT_FALSE(desk.click());
}

}  // namespace
}  // namespace norvane
