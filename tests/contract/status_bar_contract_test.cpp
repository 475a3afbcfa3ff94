// The status item as the person sees and clicks it.

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "platform/gtk/gtk_graphics.h"
#include "platform/gtk/gtk_status_bar.h"
#include "platform/headless/headless_status_bar.h"
#include "real_desktop.h"

namespace norvane {
namespace {

/// The part of a panel that items announce themselves to: says which one does, and is gone.
constexpr const char* kWatcher = R"(
from gi.repository import Gio, GLib
loop = GLib.MainLoop()
def called(bus, sender, path, interface, method, arguments, invocation):
    invocation.return_value(None)
    bus.flush_sync()
    print(arguments[0], end="")
    loop.quit()
node = Gio.DBusNodeInfo.new_for_xml("""<node><interface name="org.kde.StatusNotifierWatcher">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  </interface></node>""")
bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.register_object("/StatusNotifierWatcher", node.interfaces[0], called)
Gio.bus_own_name_on_connection(bus, "org.kde.StatusNotifierWatcher", 0)
loop.run())";

class HeadlessDesk {
 public:
  NSStatusBar& statusBar() { return bar_; }
  std::string seen() {
    const auto* item = bar_.item();
    return (item->image ? item->image->name() : "") + item->title + item->toolTip;
  }
  bool click() { return bar_.click(); }

 private:
  HeadlessStatusBar bar_;
};

class RealDesk {
 public:
  NSStatusBar& statusBar() { return bar_; }
  /// Empty when no item announces itself to a panel that has just come up.
  std::string announcedItem() {
    return outputOf({"/usr/bin/python3", "-c", kWatcher}).value_or("");
  }
  std::string seen() {
    return call("org.freedesktop.DBus.Properties.GetAll", {"org.kde.StatusNotifierItem"});
  }
  bool click() { return !call("org.kde.StatusNotifierItem.Activate", {"3", "4"}).empty(); }
  std::string menu() {
    return call("com.canonical.dbusmenu.GetLayout", {"0", "2", "[]"}, "/StatusNotifierItem/Menu");
  }
  void choose(const char* item) {
    call("com.canonical.dbusmenu.Event", {item, "clicked", "<0>", "0"}, "/StatusNotifierItem/Menu");
  }
  std::vector<std::string> chosen;

 private:
  /// Empty when the item does not answer.
  std::string call(const char* method, std::vector<const char*> arguments,
                   const char* path = "/StatusNotifierItem") {
    if (item_.empty()) item_ = announcedItem();
    arguments.insert(arguments.begin(),
                     {"env", "LC_ALL=C.UTF-8", "gdbus", "call", "--session", "--dest",
                      item_.c_str(), "--object-path", path, "--method", method});
    return outputOf(arguments).value_or("");
  }
  EventTime eventTime_;
  GtkStatusBar bar_{eventTime_,
                    {{"Show Norvane", [this] { chosen.emplace_back("show"); }},
                     {"Quit", [this] { chosen.emplace_back("quit"); }}}};
  std::string item_;
};

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

template <class Desk>
class StatusBarContract : public testing::Test {};
using Desks = testing::Types<HeadlessDesk, RealDesk>;
TYPED_TEST_SUITE(StatusBarContract, Desks);

TYPED_TEST(StatusBarContract, ShowsWhatItIsGivenAndTellsOfClicks) {
  TypeParam desk;
  auto item = desk.statusBar().statusItemWithLength(NSSquareStatusItemLength);
  item->button()->setTitle("NV");
  item->button()->setToolTip("Norvane — Quick Access");
  const auto key = GtkGraphics("").imageWithSystemSymbolName("key.fill", "Norvane");
  key->setTemplate(true);
  item->button()->setImage(key);
  for (const char* part : {"NV", "Norvane — Quick Access", "dialog-password-symbolic"}) {
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

TEST(RealStatusBar, ComesBackWithThePanelAndGivesItsPictureInTheRightForm) {
  RealDesk desk;
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
