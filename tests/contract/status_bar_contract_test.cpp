// The status item as the person sees and clicks it.

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "other_program.h"
#include "platform/gtk/glib_handles.h"
#include "platform/gtk/gtk_graphics.h"
#include "platform/gtk/gtk_status_bar.h"
#include "platform/headless/headless_status_bar.h"
#include "real_desktop.h"

namespace norvane {
namespace {

constexpr const char* kInterface = R"xml(<node>
  <interface name="org.kde.StatusNotifierWatcher">
    <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  </interface></node>)xml";

/// The part of a panel that items announce themselves to.
class Watcher {
 public:
  explicit Watcher(std::vector<std::string>& items)
      : bus_(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr)) {
    static const GDBusInterfaceVTable callbacks{announced, nullptr, nullptr, {}};
    static GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kInterface, nullptr);
    object_ =
        g_dbus_connection_register_object(bus_.get(), "/StatusNotifierWatcher", node->interfaces[0],
                                          &callbacks, &items, nullptr, nullptr);
    name_ = g_bus_own_name_on_connection(bus_.get(), "org.kde.StatusNotifierWatcher",
                                         G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr,
                                         nullptr);
  }
  ~Watcher() {
    g_bus_unown_name(name_);
    g_dbus_connection_unregister_object(bus_.get(), object_);
  }

 private:
  static void announced(GDBusConnection*, const char*, const char*, const char*, const char*,
                        GVariant* name, GDBusMethodInvocation* invocation, gpointer items) {
    const char* text = nullptr;
    g_variant_get(name, "(&s)", &text);
    static_cast<std::vector<std::string>*>(items)->emplace_back(text);
    g_dbus_method_invocation_return_value(invocation, nullptr);
  }
  const GObjectPtr<GDBusConnection> bus_;
  unsigned object_;
  unsigned name_;
};

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
  std::vector<std::string> items;
  std::optional<Watcher> watcher{items};

  NSStatusBar& statusBar() { return bar_; }
  std::string seen() {
    return call("org.freedesktop.DBus.Properties.GetAll", {"org.kde.StatusNotifierItem"})
        .value_or("");
  }
  bool click() { return call("org.kde.StatusNotifierItem.Activate", {"3", "4"}).has_value(); }

 private:
  /// The last item's answer.
  std::optional<std::string> call(const char* method, std::vector<const char*> arguments) {
    if (!await([&] { return !items.empty(); })) return std::nullopt;
    arguments.insert(arguments.begin(), {"env", "LC_ALL=C.UTF-8", "gdbus", "call", "--session",
                                         "--dest", items.back().c_str(), "--object-path",
                                         "/StatusNotifierItem", "--method", method});
    return outputOf(arguments);
  }
  EventTime eventTime_;
  GtkStatusBar bar_{eventTime_};
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
  desk.watcher.reset();
  desk.watcher.emplace(desk.items);
  EXPECT_TRUE(await([&] { return desk.items.size() == 2; }));
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
