// The status item on the session bus.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "contract.h"
#include "desktop_worlds.h"
#include "platform/gtk/gtk_graphics.h"

namespace norvane {
namespace {

TEST(RealStatusBar, ComesBackWithThePanelAndGivesItsPictureInTheRightForm) {
  DesktopStatusBar desk;
  const auto item = desk.statusBar().statusItemWithLength(NSSquareStatusItemLength);
  EXPECT_FALSE(has(desk.seen(), "'IconPixmap': <[(22"));  // nothing to show yet
  EXPECT_NE(desk.announcedItem(), "");                    // to the next panel too
  EXPECT_TRUE(has(desk.seen(), "'Menu': <objectpath '/StatusNotifierItem/Menu'>"));
  const std::string menu = desk.menu();
  std::smatch found;
  ASSERT_TRUE(std::regex_search(menu, found, std::regex("\\((\\d+), \\{'label': <'Quit'>\\}")))
      << menu;
  desk.choose(found.str(1).c_str());
  EXPECT_TRUE(await([&] { return desk.chosen == std::vector<std::string>{"quit"}; }));
  item->button()->setTitle("NV");
  EXPECT_TRUE(has(desk.seen(), "0xff, 0xff, 0xff, 0xff"));  // drawn in white

  const std::string home = std::getenv("HOME");
  std::filesystem::create_directories(home + "/Contents/Resources");
  std::ofstream(home + "/Contents/Resources/MenuBarIcon-symbolic.svg")
      << R"(<svg xmlns="http://www.w3.org/2000/svg" width="16" height="16">)"
      << R"(<path fill="#112233" d="M0 0h16v16H0z"/></svg>)";
  GtkGraphics graphics(home);
  EXPECT_FALSE(graphics.imageNamed("Missing"));
  const auto image = graphics.imageNamed("MenuBarIcon");
  item->button()->setImage(image);
  EXPECT_TRUE(has(desk.seen(), "'IconPixmap': <[(22, 22, [byte 0xff, 0x11, 0x22, 0x33"));
  image->setTemplate(true);
  EXPECT_TRUE(has(desk.seen(), "'IconName': <'MenuBarIcon-symbolic'>"));
  EXPECT_TRUE(has(desk.seen(), "'IconThemePath': <'" + home + "/Contents/Resources'>"));
}

}  // namespace
}  // namespace norvane
