#include "platform/session/status_notifier_item.h"

#include <filesystem>
#include <utility>

#include <bus_interfaces.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>
#include <libdbusmenu-glib/dbusmenu-glib.h>
#include <unistd.h>

#include "platform/log.h"

namespace norvane {
namespace {

constexpr const char* kItem = "org.kde.StatusNotifierItem";
constexpr const char* kItemPath = "/StatusNotifierItem";
constexpr const char* kMenuPath = "/StatusNotifierItem/Menu";
// Panels choose the nearest: for usual panels, and for those of twice the density.
constexpr int kIconSides[] = {22, 44};

/// Alpha, red, green, blue, in this order, whatever the processor's.
void addPixmap(GVariantBuilder& pixmaps, GdkPixbuf* pixels) {
  const int width = gdk_pixbuf_get_width(pixels);
  const int height = gdk_pixbuf_get_height(pixels);
  std::string argb;
  argb.reserve(static_cast<std::size_t>(width) * height * 4);
  for (int y = 0; y < height; ++y) {
    const guchar* row = gdk_pixbuf_read_pixels(pixels) + y * gdk_pixbuf_get_rowstride(pixels);
    for (const guchar* rgba = row; rgba != row + width * 4; rgba += 4) {
      for (const int channel : {3, 0, 1, 2}) argb += static_cast<char>(rgba[channel]);
    }
  }
  g_variant_builder_add(
      &pixmaps, "(ii@ay)", width, height,
      g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, argb.data(), argb.size(), 1));
}

DbusmenuServer* serveMenu(const StatusMenu& menu) {
  const GObjectPtr<DbusmenuMenuitem> root(dbusmenu_menuitem_new());
  const auto chosen =
      +[](DbusmenuMenuitem*, guint /*time*/, const StatusMenuItem* item) { item->action(); };
  for (const StatusMenuItem& item : menu) {
    const GObjectPtr<DbusmenuMenuitem> child(dbusmenu_menuitem_new());
    dbusmenu_menuitem_property_set(child.get(), DBUSMENU_MENUITEM_PROP_LABEL, item.label.c_str());
    g_signal_connect(child.get(), DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED, G_CALLBACK(chosen),
                     const_cast<StatusMenuItem*>(&item));
    dbusmenu_menuitem_child_append(root.get(), child.get());
  }
  DbusmenuServer* server = dbusmenu_server_new(kMenuPath);
  dbusmenu_server_set_root(server, root.get());
  return server;
}

/// Empty where the icon has a name.
GVariant* pixmaps(const StatusItemContent& content) {
  GVariantBuilder made;
  g_variant_builder_init(&made, G_VARIANT_TYPE("a(iiay)"));
  if (content.templateIcon().empty()) {
    for (const int side : kIconSides) {
      if (const Pixbuf pixels = content.pixels(side)) addPixmap(made, pixels.get());
    }
  }
  return g_variant_builder_end(&made);
}

GVariant* text(const std::string& value) { return g_variant_new_string(value.c_str()); }

}  // namespace

struct StatusNotifierItem::Bus {
  static StatusNotifierItem& item(gpointer self) { return *static_cast<StatusNotifierItem*>(self); }

  /// Whether the call was cancelled because the item is.
  static bool isGone(const GError* failure) {
    return g_error_matches(failure, G_IO_ERROR, G_IO_ERROR_CANCELLED);
  }
  static void acquired(GDBusConnection* connection, const char* /*name*/, gpointer self) {
    item(self).serve(connection);
  }
  static void nameAcquired(GDBusConnection* connection, const char* /*name*/, gpointer self) {
    constexpr auto kForCalls = static_cast<GDBusProxyFlags>(
        G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES | G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS |
        G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START);
    bus_notifier_watcher_proxy_new(connection, kForCalls, "org.kde.StatusNotifierWatcher",
                                   "/StatusNotifierWatcher", item(self).cancellable_.get(),
                                   watcherKnown, self);
  }
  static void nameLost(GDBusConnection* /*connection*/, const char* /*name*/, gpointer self) {
    item(self).shownChanged_(false);
  }
  static void watcherKnown(GObject*, GAsyncResult* result, gpointer self) {
    GError* failure = nullptr;
    GObjectPtr<BusNotifierWatcher> watcher(bus_notifier_watcher_proxy_new_finish(result, &failure));
    const GErrorPtr error(failure);
    if (isGone(failure)) return;
    if (!watcher) return item(self).shownChanged_(false);
    const auto changed =
        +[](GObject*, GParamSpec*, StatusNotifierItem* changedItem) { changedItem->announce(); };
    g_signal_connect(watcher.get(), "notify::g-name-owner", G_CALLBACK(changed), self);
    item(self).watcher_ = std::move(watcher);
    item(self).announce();
  }
  static void announced(GObject* watcher, GAsyncResult* result, gpointer self) {
    GError* failure = nullptr;
    bus_notifier_watcher_call_register_status_notifier_item_finish(BUS_NOTIFIER_WATCHER(watcher),
                                                                   result, &failure);
    const GErrorPtr error(failure);
    if (isGone(failure)) return;
    if (failure) {
      NSLog("[Norvane] the status bar does not take the item: " + std::string(failure->message));
    }
    item(self).shownChanged_(!failure);
  }
  static void methodCalled(GDBusConnection*, const char* /*sender*/, const char* /*path*/,
                           const char* /*interface*/, const char* method, GVariant* /*arguments*/,
                           GDBusMethodInvocation* invocation, gpointer self) {
    item(self).call(method, invocation);
  }
  static GVariant* property(GDBusConnection*, const char* /*sender*/, const char* /*path*/,
                            const char* /*interface*/, const char* name, GError** /*error*/,
                            gpointer self) {
    return item(self).property(name);
  }
};

StatusNotifierItem::StatusNotifierItem(const StatusItemContent& content,
                                       std::function<void()> clicked,
                                       std::function<void(bool shown)> shownChanged)
    : content_(content),
      clicked_(std::move(clicked)),
      shownChanged_(std::move(shownChanged)),
      cancellable_(g_cancellable_new()) {
  static int number = 0;  // of the process's items
  busName_ = kItem + std::string("-") + std::to_string(::getpid()) + "-" + std::to_string(++number);
  ownedName_ = g_bus_own_name(G_BUS_TYPE_SESSION, busName_.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE,
                              Bus::acquired, Bus::nameAcquired, Bus::nameLost, this, nullptr);
}

StatusNotifierItem::~StatusNotifierItem() {
  g_cancellable_cancel(cancellable_.get());
  // A cancelled call keeps it for a while.
  if (watcher_) g_signal_handlers_disconnect_by_data(watcher_.get(), this);
  if (object_ != 0) g_dbus_connection_unregister_object(connection_.get(), object_);
  g_bus_unown_name(ownedName_);
}

void StatusNotifierItem::serve(_GDBusConnection* connection) {
  static constexpr GDBusInterfaceVTable kCallbacks{Bus::methodCalled, Bus::property, nullptr, {}};
  connection_.reset(G_DBUS_CONNECTION(g_object_ref(connection)));
  object_ =
      g_dbus_connection_register_object(connection, kItemPath, bus_notifier_item_interface_info(),
                                        &kCallbacks, this, nullptr, nullptr);
  menu_.reset(serveMenu(content_.menu));
}

void StatusNotifierItem::announce() {
  if (!GTextPtr(g_dbus_proxy_get_name_owner(G_DBUS_PROXY(watcher_.get())))) {
    return shownChanged_(false);
  }
  bus_notifier_watcher_call_register_status_notifier_item(watcher_.get(), busName_.c_str(),
                                                          G_DBUS_CALL_FLAGS_NONE, -1,
                                                          cancellable_.get(), Bus::announced, this);
}

GVariant* StatusNotifierItem::property(const std::string& name) const {
  const std::filesystem::path icon = content_.templateIcon();
  if (name == "Category") return text("ApplicationStatus");
  if (name == "Id") return text("norvane");
  if (name == "Title") return text(content_.name());
  if (name == "Status") return text("Active");
  // A file is found as an icon without a theme in its folder.
  if (name == "IconName") return text(icon.has_parent_path() ? icon.stem() : icon);
  if (name == "IconThemePath") return text(icon.parent_path());
  if (name == "IconPixmap") return pixmaps(content_);
  if (name == "Menu") return g_variant_new_object_path(kMenuPath);
  if (name == "ItemIsMenu") return g_variant_new_boolean(FALSE);
  return g_variant_new("(s@a(iiay)ss)", "", g_variant_new("a(iiay)", nullptr),
                       content_.toolTip.c_str(), "");
}

void StatusNotifierItem::call(const std::string& method, _GDBusMethodInvocation* invocation) {
  g_dbus_method_invocation_return_value(invocation, nullptr);
  if (method != "Activate") return;
  const auto clicked = clicked_;  // a copy: the item may go meanwhile
  clicked();
}

void StatusNotifierItem::imageChanged() { signal("NewIcon"); }

void StatusNotifierItem::titleChanged() {
  signal("NewTitle");
  signal("NewIcon");  // where there is no image it shows the title
}

void StatusNotifierItem::toolTipChanged() { signal("NewToolTip"); }

void StatusNotifierItem::signal(const char* name) {
  if (object_ == 0) return;
  g_dbus_connection_emit_signal(connection_.get(), nullptr, kItemPath, kItem, name, nullptr,
                                nullptr);
}

}  // namespace norvane
