#include "platform/session/status_notifier_item.h"

#include <filesystem>
#include <utility>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>
#include <libdbusmenu-glib/dbusmenu-glib.h>
#include <unistd.h>

#include "platform/log.h"

namespace norvane {
namespace {

constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* kItem = "org.kde.StatusNotifierItem";
constexpr const char* kItemPath = "/StatusNotifierItem";
constexpr const char* kMenuPath = "/StatusNotifierItem/Menu";
constexpr const char* kIntrospection = R"xml(<node><interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="SecondaryActivate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="ContextMenu"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="Scroll"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
  <method name="ProvideXdgActivationToken"><arg type="s" direction="in"/></method>
  <signal name="NewTitle"/>
  <signal name="NewIcon"/>
  <signal name="NewToolTip"/>
</interface></node>)xml";
// Panels choose the nearest: for usual panels, and for those of twice the density.
constexpr int kIconSides[] = {22, 44};

GDBusInterfaceInfo* interfaceInfo() {
  static GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kIntrospection, nullptr);
  return node->interfaces[0];
}

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

  static void acquired(GDBusConnection* connection, const char* /*name*/, gpointer self) {
    item(self).serve(connection);
  }
  static void nameAcquired(GDBusConnection* connection, const char* /*name*/, gpointer self) {
    item(self).watchedName_ =
        g_bus_watch_name_on_connection(connection, kWatcher, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                       watcherAppeared, watcherVanished, self, nullptr);
  }
  static void nameLost(GDBusConnection* /*connection*/, const char* /*name*/, gpointer self) {
    item(self).shownChanged_(false);
  }
  static void watcherAppeared(GDBusConnection* /*connection*/, const char* /*name*/,
                              const char* /*owner*/, gpointer self) {
    item(self).announce();
  }
  static void watcherVanished(GDBusConnection* /*connection*/, const char* /*name*/,
                              gpointer self) {
    item(self).shownChanged_(false);
  }
  static void announced(GObject* connection, GAsyncResult* result, gpointer self) {
    GError* failure = nullptr;
    const GVariantPtr answer(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &failure));
    const GErrorPtr error(failure);
    // Cancelled: the item is gone.
    if (g_error_matches(failure, G_IO_ERROR, G_IO_ERROR_CANCELLED)) return;
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
  if (watchedName_ != 0) g_bus_unwatch_name(watchedName_);
  if (object_ != 0) g_dbus_connection_unregister_object(connection_.get(), object_);
  g_bus_unown_name(ownedName_);
}

void StatusNotifierItem::serve(_GDBusConnection* connection) {
  static constexpr GDBusInterfaceVTable kCallbacks{Bus::methodCalled, Bus::property, nullptr, {}};
  connection_.reset(G_DBUS_CONNECTION(g_object_ref(connection)));
  object_ = g_dbus_connection_register_object(connection, kItemPath, interfaceInfo(), &kCallbacks,
                                              this, nullptr, nullptr);
  menu_.reset(serveMenu(content_.menu));
}

void StatusNotifierItem::announce() {
  g_dbus_connection_call(connection_.get(), kWatcher, "/StatusNotifierWatcher", kWatcher,
                         "RegisterStatusNotifierItem", g_variant_new("(s)", busName_.c_str()),
                         nullptr, G_DBUS_CALL_FLAGS_NONE, -1, cancellable_.get(), Bus::announced,
                         this);
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
