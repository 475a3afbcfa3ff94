#include "platform/explorer/panel_view.h"

#include <algorithm>
#include <string>

#include "platform/explorer/message_text.h"
#include "platform/explorer/widgets.h"
#include "platform/flutter/standard_method_codec.h"
#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

constexpr const char* kChannel = "cn.kestrio.norvane.qa_panel";
constexpr const char* kEngine = "norvane-qa";
constexpr int kIconSize = 48;

/// Null for bytes that are no picture.
GObjectPtr<GdkPixbuf> pictureOf(std::span<const std::uint8_t> png) {
  const GObjectPtr<GdkPixbufLoader> loader(gdk_pixbuf_loader_new());
  gdk_pixbuf_loader_set_size(loader.get(), kIconSize, kIconSize);
  const bool isWhole = gdk_pixbuf_loader_write(loader.get(), png.data(), png.size(), nullptr);
  const bool isClosed = gdk_pixbuf_loader_close(loader.get(), nullptr);
  GdkPixbuf* const picture = gdk_pixbuf_loader_get_pixbuf(loader.get());
  if (!isWhole || !isClosed || !picture) return nullptr;
  return GObjectPtr<GdkPixbuf>(GDK_PIXBUF(g_object_ref(picture)));
}

std::string textOf(FlutterValueView value) { return std::string(value.text().value_or("")); }

}  // namespace

PanelView::PanelView(ScriptedUi& ui) : ui_(ui) { ui_.addObserver(*this); }

PanelView::~PanelView() { ui_.removeObserver(*this); }

GtkWidget* PanelView::make(ScriptedUi& ui) {
  std::unique_ptr<PanelView> view(new PanelView(ui));
  GtkWidget* const widget = view->build();
  tieTo(widget, std::move(view));
  return widget;
}

GtkWidget* PanelView::build() {
  field_ = gtk_search_entry_new();
  connect(field_, "changed", this, [](GtkEntry*, PanelView* self) { self->narrow(); });
  connect(field_, "stop-search", this,
          [](GtkEntry*, PanelView* self) { self->send(encodeMethodCall("close", {})); });
  connect(field_, "activate", this, [](GtkEntry*, PanelView* self) { self->activateFirst(); });

  GtkWidget* const card = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
  setClass(card, "norvane-panel");
  GtkWidget* const inside = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
  gtk_container_set_border_width(GTK_CONTAINER(inside), 18);
  gtk_container_add(GTK_CONTAINER(inside), buildHeader());
  gtk_container_add(GTK_CONTAINER(inside),
                    makeLabelFor(field_, "_What to do, or the id of an item"));
  gtk_container_add(GTK_CONTAINER(inside), field_);
  gtk_box_pack_start(GTK_BOX(inside), buildActions(), TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(inside),
                    makeLabel("Enter does what is chosen, Escape closes.", "dim-label"));
  gtk_box_pack_start(GTK_BOX(card), inside, TRUE, TRUE, 0);
  connect(card, "key-press-event", this,
          [](GtkWidget*, GdkEventKey* key, PanelView* self) -> gboolean {
            if (key->keyval != GDK_KEY_Escape) return FALSE;
            self->send(encodeMethodCall("close", {}));
            return TRUE;
          });
  GtkWidget* const view = ofAnySize(card);
  narrow();
  return view;
}

GtkWidget* PanelView::buildHeader() {
  icon_ = gtk_image_new();
  gtk_widget_set_size_request(icon_, kIconSize, kIconSize);
  name_ = makeHeadline("");
  identity_ = makeLabel("", "dim-label");
  GtkWidget* const texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_widget_set_valign(texts, GTK_ALIGN_CENTER);
  gtk_container_add(GTK_CONTAINER(texts), name_);
  gtk_container_add(GTK_CONTAINER(texts), identity_);
  pin_ = makeLabel("Pinned", "dim-label");
  gtk_widget_set_no_show_all(pin_, TRUE);
  gtk_widget_set_valign(pin_, GTK_ALIGN_START);
  GtkWidget* const header = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
  gtk_container_add(GTK_CONTAINER(header), icon_);
  gtk_box_pack_start(GTK_BOX(header), texts, TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(header), pin_);
  return header;
}

GtkWidget* PanelView::buildActions() {
  list_ = gtk_list_box_new();
  setAccessibleName(list_, "What to do");
  gtk_list_box_set_selection_mode(GTK_LIST_BOX(list_), GTK_SELECTION_BROWSE);
  constexpr std::pair<const char*, const char*> kActions[] = {
      {"Open the main window", "openMain"},
      {"Pin the panel, or let it go", "setPinned"},
      {"Close", "close"},
      {"Open the item of this id in the main window", "openMain"}};
  for (const auto& [title, method] : kActions) {
    GtkWidget* const texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
    GtkWidget* const what = makeLabel("", "dim-label");
    gtk_container_add(GTK_CONTAINER(texts), makeLabel(title));
    gtk_container_add(GTK_CONTAINER(texts), what);
    gtk_list_box_insert(GTK_LIST_BOX(list_), texts, -1);
    GtkWidget* const row = gtk_widget_get_parent(texts);
    setAccessibleName(row, title);
    actions_.push_back({title, method, row, what});
  }
  connect(list_, "row-activated", this,
          [](GtkListBox*, GtkListBoxRow* row, PanelView* self) { self->activate(row); });
  GtkWidget* const window = scrolled(list_);
  gtk_scrolled_window_set_shadow_type(GTK_SCROLLED_WINDOW(window), GTK_SHADOW_NONE);
  return window;
}

void PanelView::called(std::string_view engine, std::string_view channel, const Bytes& message) {
  if (engine != kEngine || channel != kChannel) return;
  const auto call = decodeMethodCall(message);
  if (call && call->method() == "shown") begin(call->arguments());
  if (call && call->method() == "hidden") setPinned(false);  // as the host does
}

void PanelView::sent(std::uint64_t /*number*/, std::string_view /*engine*/,
                     std::string_view channel, const Bytes& message) {
  if (channel != kChannel) return;
  const auto call = decodeMethodCall(message);
  if (!call || call->method() != "setPinned") return;
  const auto arguments = call->arguments().textKeyedMap();
  setPinned(arguments && (*arguments)["pinned"].boolean().value_or(false));
}

void PanelView::setPinned(bool isPinned) {
  isPinned_ = isPinned;
  gtk_widget_set_visible(pin_, isPinned_);
  narrow();
}

void PanelView::begin(FlutterValueView application) {
  const auto facts = application.map();
  const std::string name = facts ? textOf((*facts)["name"]) : "";
  const std::string identity = facts ? textOf((*facts)["identity"]) : "";
  const auto png = facts ? (*facts)["iconPng"].bytes() : std::nullopt;
  const auto picture = png ? pictureOf(*png) : nullptr;
  if (picture) {
    gtk_image_set_from_pixbuf(GTK_IMAGE(icon_), picture.get());
  } else {
    gtk_image_set_from_icon_name(GTK_IMAGE(icon_), "application-x-executable",
                                 GTK_ICON_SIZE_DIALOG);
  }
  gtk_label_set_text(GTK_LABEL(name_),
                     name.empty() ? "No other application in front" : name.c_str());
  gtk_label_set_text(GTK_LABEL(identity_),
                     identity.empty() ? "Quick Access" : ("Quick Access over " + identity).c_str());
  gtk_entry_set_text(GTK_ENTRY(field_), "");
  narrow();
  gtk_widget_grab_focus(field_);
}

void PanelView::narrow() {
  const char* const text = gtk_entry_get_text(GTK_ENTRY(field_));
  const GTextPtr wanted(g_utf8_casefold(text, -1));
  bool isFirst = true;
  for (const Action& action : actions_) {
    const GTextPtr title(g_utf8_casefold(action.title, -1));
    const bool isItem = &action == &actions_.back();  // opens what was typed
    const bool fits =
        isItem ? *text != '\0'
               : std::string_view(title.get()).find(wanted.get()) != std::string_view::npos;
    gtk_widget_set_visible(action.row, fits);
    const auto call = decodeMethodCall(messageOf(action));
    const bool hasArguments = call->arguments().type() != FlutterType::null;
    gtk_label_set_text(
        GTK_LABEL(action.call),
        (std::string(call->method()) + " " + (hasArguments ? jsonInShort(call->arguments()) : ""))
            .c_str());
    if (fits && std::exchange(isFirst, false)) {
      gtk_list_box_select_row(GTK_LIST_BOX(list_), GTK_LIST_BOX_ROW(action.row));
    }
  }
}

void PanelView::activateFirst() {
  if (GtkListBoxRow* const row = gtk_list_box_get_selected_row(GTK_LIST_BOX(list_))) activate(row);
}

void PanelView::activate(GtkListBoxRow* row) {
  const auto action = std::ranges::find(actions_, GTK_WIDGET(row), &Action::row);
  send(messageOf(*action));
}

Bytes PanelView::messageOf(const Action& action) const {
  if (action.method == std::string_view("setPinned")) {
    return encodeMethodCall(action.method, FlutterMap{{"pinned", !isPinned_}});
  }
  if (&action != &actions_.back()) return encodeMethodCall(action.method, {});
  const char* const typed = gtk_entry_get_text(GTK_ENTRY(field_));
  return encodeMethodCall(action.method, FlutterMap{{"editItemId", typed}});
}

void PanelView::send(Bytes message) {
  ui_.send(kEngine, kChannel, std::move(message), [](Bytes) {});
}

}  // namespace norvane
