#include "platform/explorer/method_list.h"

#include <utility>

#include "platform/explorer/widgets.h"
#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

enum Column { kName, kNote, kWeight, kStyle, kChannel, kMethod, kColumns };

constexpr int kWidth = 220;

template <class T>
const T* infoIn(GtkTreeModel* model, GtkTreeIter* row, Column column) {
  gpointer info = nullptr;
  gtk_tree_model_get(model, row, column, &info, -1);
  return static_cast<const T*>(info);
}

bool has(const std::string& text, const std::string& wanted) {
  const GTextPtr folded(g_utf8_casefold(text.c_str(), -1));
  return std::string_view(folded.get()).find(wanted) != std::string_view::npos;
}

bool fits(const ChannelInfo& channel, const MethodInfo& method, const std::string& wanted) {
  return has(channel.name, wanted) || has(method.name, wanted) || has(method.about, wanted);
}

}  // namespace

MethodList::MethodList(Chosen chosen) : chosen_(std::move(chosen)) {}

GtkWidget* MethodList::make(Chosen chosen) {
  std::unique_ptr<MethodList> list(new MethodList(std::move(chosen)));
  GtkWidget* const widget = list->build();
  tieTo(widget, std::move(list));
  return widget;
}

GtkWidget* MethodList::build() {
  store_ = gtk_tree_store_new(kColumns, G_TYPE_STRING, G_TYPE_STRING, G_TYPE_INT, G_TYPE_INT,
                              G_TYPE_POINTER, G_TYPE_POINTER);
  fill();
  narrowed_ = gtk_tree_model_filter_new(GTK_TREE_MODEL(store_), nullptr);
  gtk_tree_model_filter_set_visible_func(
      GTK_TREE_MODEL_FILTER(narrowed_),
      [](GtkTreeModel* model, GtkTreeIter* row, gpointer self) -> gboolean {
        return static_cast<MethodList*>(self)->isShown(model, row);
      },
      this, nullptr);
  list_ = gtk_tree_view_new_with_model(narrowed_);
  g_object_unref(store_);
  g_object_unref(narrowed_);

  GtkTreeView* const list = GTK_TREE_VIEW(list_);
  gtk_tree_view_set_headers_visible(list, FALSE);
  gtk_tree_view_set_enable_search(list, FALSE);  // the field above does it
  GtkTreeViewColumn* const column = gtk_tree_view_column_new();
  GtkCellRenderer* const name = gtk_cell_renderer_text_new();
  g_object_set(name, "ellipsize", PANGO_ELLIPSIZE_END, nullptr);
  gtk_tree_view_column_pack_start(column, name, TRUE);
  gtk_tree_view_column_set_attributes(column, name, "text", kName, "weight", kWeight, "style",
                                      kStyle, nullptr);
  GtkCellRenderer* const note = gtk_cell_renderer_text_new();
  g_object_set(note, "scale", PANGO_SCALE_SMALL, "style", PANGO_STYLE_ITALIC, nullptr);
  gtk_tree_view_column_pack_end(column, note, FALSE);
  gtk_tree_view_column_set_attributes(column, note, "text", kNote, nullptr);
  gtk_tree_view_append_column(list, column);
  gtk_tree_view_expand_all(list);
  connect(gtk_tree_view_get_selection(list), "changed", this,
          [](GtkTreeSelection*, MethodList* self) { self->choose(); });

  field_ = gtk_search_entry_new();
  gtk_entry_set_placeholder_text(GTK_ENTRY(field_), "Find a method");
  setAccessibleName(list_, "Methods");
  connect(field_, "changed", this, [](GtkEntry*, MethodList* self) { self->narrow(); });
  connect(field_, "activate", this,
          [](GtkEntry*, MethodList* self) { gtk_widget_grab_focus(self->list_); });
  connect(field_, "stop-search", this,
          [](GtkEntry* field, MethodList*) { gtk_entry_set_text(field, ""); });

  GtkWidget* const label = makeLabelFor(field_, "_Methods");
  GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  gtk_container_set_border_width(GTK_CONTAINER(box), 12);
  gtk_widget_set_size_request(box, kWidth, -1);
  gtk_container_add(GTK_CONTAINER(box), label);
  gtk_container_add(GTK_CONTAINER(box), field_);
  gtk_box_pack_start(GTK_BOX(box), scrolled(list_), TRUE, TRUE, 0);

  GtkTreePath* const first = gtk_tree_path_new_from_indices(0, 0, -1);
  gtk_tree_view_set_cursor(list, first, nullptr, FALSE);
  gtk_tree_path_free(first);
  // The window has the keyboard from the beginning; so has somebody in it.
  connect(list_, "map", this, [](GtkWidget* self, MethodList*) {
    GtkWidget* const window = gtk_widget_get_toplevel(self);
    if (!gtk_window_get_focus(GTK_WINDOW(window))) gtk_widget_grab_focus(self);
  });
  return box;
}

void MethodList::fill() {
  for (const ChannelInfo& channel : channelTable()) {
    GtkTreeIter parent;
    const std::string name(shortName(channel.name));
    gtk_tree_store_insert_with_values(store_, &parent, nullptr, -1, kName, name.c_str(), kWeight,
                                      PANGO_WEIGHT_BOLD, kStyle, PANGO_STYLE_NORMAL, kChannel,
                                      &channel, -1);
    for (const MethodInfo& method : channel.methods) {
      gtk_tree_store_insert_with_values(store_, nullptr, &parent, -1, kName, method.name.c_str(),
                                        kNote, method.isHosts ? "host" : "", kWeight,
                                        PANGO_WEIGHT_NORMAL, kStyle,
                                        method.isHosts ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL,
                                        kChannel, &channel, kMethod, &method, -1);
    }
  }
}

bool MethodList::isShown(GtkTreeModel* model, GtkTreeIter* row) const {
  const auto* channel = infoIn<ChannelInfo>(model, row, kChannel);
  const auto* method = infoIn<MethodInfo>(model, row, kMethod);
  if (wanted_.empty()) return true;
  if (method) return fits(*channel, *method, wanted_);
  for (const MethodInfo& inner : channel->methods) {
    if (fits(*channel, inner, wanted_)) return true;
  }
  return false;
}

void MethodList::narrow() {
  const GTextPtr folded(g_utf8_casefold(gtk_entry_get_text(GTK_ENTRY(field_)), -1));
  wanted_ = folded.get();
  gtk_tree_model_filter_refilter(GTK_TREE_MODEL_FILTER(narrowed_));
  gtk_tree_view_expand_all(GTK_TREE_VIEW(list_));
  GtkTreePath* const first = gtk_tree_path_new_from_indices(0, 0, -1);
  GtkTreeIter row;
  if (!wanted_.empty() && gtk_tree_model_get_iter(narrowed_, &row, first)) {
    gtk_tree_view_set_cursor(GTK_TREE_VIEW(list_), first, nullptr, FALSE);
  }
  gtk_tree_path_free(first);
}

void MethodList::choose() {
  GtkTreeModel* model = nullptr;
  GtkTreeIter row;
  GtkTreeSelection* const selection = gtk_tree_view_get_selection(GTK_TREE_VIEW(list_));
  if (!gtk_tree_selection_get_selected(selection, &model, &row)) return;
  chosen_(*infoIn<ChannelInfo>(model, &row, kChannel), infoIn<MethodInfo>(model, &row, kMethod));
}

}  // namespace norvane
