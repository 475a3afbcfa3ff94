#include "platform/explorer/traffic_view.h"

#include <cstdio>
#include <utility>

#include "platform/explorer/channel_table.h"
#include "platform/explorer/message_text.h"
#include "platform/explorer/widgets.h"
#include "platform/linux/glib_handles.h"

namespace norvane {
namespace {

enum Column { kNumber, kTime, kWay, kCall, kSummary, kColumns };

constexpr int kCallWidth = 110;
constexpr int kDetailWidth = 210;

std::string timeOf(const TrafficEntry& entry) {
  using std::chrono::milliseconds;
  const auto since = std::chrono::duration_cast<milliseconds>(entry.when.time_since_epoch());
  const std::unique_ptr<GDateTime, Deleter<g_date_time_unref>> time(
      g_date_time_new_from_unix_local(since.count() / 1000));
  const GTextPtr text(g_date_time_format(time.get(), "%H:%M:%S"));
  char fraction[8];
  std::snprintf(fraction, sizeof fraction, ".%03d", static_cast<int>(since.count() % 1000));
  return std::string(text.get()) + fraction;
}

const char* wayOf(const TrafficEntry& entry) {
  switch (entry.kind) {
    case TrafficEntry::Kind::uiCalls:
      return "→ host";
    case TrafficEntry::Kind::hostCalls:
      return "→ UI";
    default:
      return "engine";
  }
}

std::string callOf(const TrafficEntry& entry) {
  switch (entry.kind) {
    case TrafficEntry::Kind::started:
      return entry.engine + " runs " + entry.name;
    case TrafficEntry::Kind::plugin:
      return entry.name;
    default:
      return std::string(shortName(entry.channel)) + " " + entry.name;
  }
}

std::string hidden(const TrafficEntry& entry) {
  return "hidden, " + std::to_string(entry.size) + " bytes";
}

std::string argumentsInShort(const TrafficEntry& entry) {
  if (entry.channel.empty()) return {};
  if (entry.isSecret()) return hidden(entry);
  if (!entry.call) return std::to_string(entry.size) + " bytes";
  const bool isNone = entry.call->arguments().type() == FlutterType::null;
  return isNone ? std::string() : jsonInShort(entry.call->arguments());
}

std::string replyInShort(const TrafficEntry& entry) {
  if (!entry.reply) return entry.kind == TrafficEntry::Kind::uiCalls ? "…" : "";
  if (entry.reply->kind == FlutterReply::Kind::success) return jsonInShort(entry.reply->value);
  return entry.reply->kind == FlutterReply::Kind::error ? std::string(entry.reply->errorCode)
                                                        : "not implemented";
}

std::string summaryOf(const TrafficEntry& entry) {
  const std::string arguments = argumentsInShort(entry);
  const std::string reply = replyInShort(entry);
  return arguments + (reply.empty() ? "" : (arguments.empty() ? "⇒ " : "  ⇒ ") + reply);
}

std::string detailOf(const TrafficEntry& entry, bool isRevealed) {
  std::string text = timeOf(entry) + "  " + wayOf(entry) + "\n" +
                     (entry.channel.empty() ? callOf(entry) : entry.channel + "  " + entry.name);
  if (!entry.channel.empty()) {
    text += "\n\narguments, of the engine " + entry.engine + ":\n";
    if (entry.isSecret() && !isRevealed) {
      text += hidden(entry);
    } else if (!entry.call) {
      text += "too large to be kept, " + std::to_string(entry.size) + " bytes";
    } else {
      text += jsonForPeople(entry.call->arguments());
    }
  }
  if (!entry.reply) return text;
  char time[32];
  std::snprintf(time, sizeof time, " after %.1f ms:\n",
                std::chrono::duration<double, std::milli>(entry.duration).count());
  return text + "\n\n" + kindOf(*entry.reply) + time + contentOf(*entry.reply);
}

std::string textIn(GtkTreeModel* model, GtkTreeIter* row, Column column) {
  char* text = nullptr;
  gtk_tree_model_get(model, row, column, &text, -1);
  const GTextPtr owned(text);
  return text ? text : "";
}

double lastPlace(GtkAdjustment* place) {
  return gtk_adjustment_get_upper(place) - gtk_adjustment_get_page_size(place);
}

}  // namespace

TrafficView::TrafficView(Traffic& traffic) : traffic_(traffic) { traffic_.setListener(*this); }

TrafficView::~TrafficView() { traffic_.removeListener(*this); }

GtkWidget* TrafficView::make(Traffic& traffic) {
  std::unique_ptr<TrafficView> view(new TrafficView(traffic));
  GtkWidget* const widget = view->build();
  tieTo(widget, std::move(view));
  return widget;
}

GtkWidget* TrafficView::build() {
  detail_ = makeCodeView(/*isEditable=*/false);
  setAccessibleName(detail_, "The chosen message");
  detailFrame_ = scrolled(detail_);
  gtk_widget_set_size_request(detailFrame_, kDetailWidth, -1);
  gtk_widget_show_all(detailFrame_);
  gtk_widget_set_no_show_all(detailFrame_, TRUE);  // shown while a message is chosen
  GtkWidget* const both = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  gtk_box_pack_start(GTK_BOX(both), buildList(), TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(both), detailFrame_);
  GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
  gtk_container_set_border_width(GTK_CONTAINER(box), 12);
  gtk_container_add(GTK_CONTAINER(box), buildBar());
  gtk_box_pack_start(GTK_BOX(box), both, TRUE, TRUE, 0);
  for (const TrafficEntry& entry : traffic_.entries()) added(entry);
  showChosen();
  return box;
}

GtkWidget* TrafficView::buildBar() {
  filter_ = gtk_search_entry_new();
  gtk_entry_set_placeholder_text(GTK_ENTRY(filter_), "Filter");
  setAccessibleName(filter_, "Filter the traffic");
  connect(filter_, "changed", this, [](GtkEntry* field, TrafficView* self) {
    const GTextPtr folded(g_utf8_casefold(gtk_entry_get_text(field), -1));
    self->wanted_ = folded.get();
    gtk_tree_model_filter_refilter(GTK_TREE_MODEL_FILTER(self->narrowed_));
  });
  connect(filter_, "stop-search", this,
          [](GtkEntry* field, TrafficView*) { gtk_entry_set_text(field, ""); });
  reveal_ = gtk_toggle_button_new_with_mnemonic("Sho_w secret");
  connect(reveal_, "toggled", this,
          [](GtkToggleButton*, TrafficView* self) { self->showChosen(); });
  GtkWidget* const copy = gtk_button_new_with_mnemonic("_Copy");
  gtk_widget_set_tooltip_text(copy, "The chosen message as it is shown, or else the list");
  connect(copy, "clicked", this, [](GtkButton*, TrafficView* self) { self->copy(); });
  GtkWidget* const clear = gtk_button_new_with_mnemonic("C_lear");
  connect(clear, "clicked", this, [](GtkButton*, TrafficView* self) {
    self->traffic_.clear();
    self->choose();
  });

  GtkWidget* const bar = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  gtk_container_add(GTK_CONTAINER(bar), makeLabelFor(list_, "_Traffic"));
  gtk_box_pack_start(GTK_BOX(bar), filter_, TRUE, TRUE, 6);
  for (GtkWidget* const button : {reveal_, copy, clear}) {
    gtk_container_add(GTK_CONTAINER(bar), button);
  }
  return bar;
}

GtkWidget* TrafficView::buildList() {
  store_ = gtk_list_store_new(kColumns, G_TYPE_UINT64, G_TYPE_STRING, G_TYPE_STRING, G_TYPE_STRING,
                              G_TYPE_STRING);
  narrowed_ = gtk_tree_model_filter_new(GTK_TREE_MODEL(store_), nullptr);
  gtk_tree_model_filter_set_visible_func(
      GTK_TREE_MODEL_FILTER(narrowed_),
      [](GtkTreeModel* model, GtkTreeIter* row, gpointer data) -> gboolean {
        const std::string& wanted = static_cast<TrafficView*>(data)->wanted_;
        if (wanted.empty()) return TRUE;
        std::string line;
        for (const Column column : {kWay, kCall, kSummary})
          line += textIn(model, row, column) + " ";
        const GTextPtr folded(g_utf8_casefold(line.c_str(), -1));
        return std::string_view(folded.get()).find(wanted) != std::string_view::npos;
      },
      this, nullptr);
  list_ = gtk_tree_view_new_with_model(narrowed_);
  g_object_unref(store_);
  g_object_unref(narrowed_);

  GtkTreeView* const list = GTK_TREE_VIEW(list_);
  gtk_tree_view_set_enable_search(list, FALSE);
  constexpr std::pair<const char*, Column> kShown[] = {
      {"Time", kTime}, {"Way", kWay}, {"Call", kCall}, {"Content", kSummary}};
  for (const auto& [title, column] : kShown) {
    const bool isWide = column == kCall || column == kSummary;  // and cut where there is no room
    GtkCellRenderer* const cell = gtk_cell_renderer_text_new();
    if (isWide) g_object_set(cell, "ellipsize", PANGO_ELLIPSIZE_END, nullptr);
    gtk_tree_view_insert_column_with_attributes(list, -1, title, cell, "text", column, nullptr);
    GtkTreeViewColumn* const shown = gtk_tree_view_get_column(list, column - kTime);
    gtk_tree_view_column_set_expand(shown, isWide);
    if (column == kCall) gtk_tree_view_column_set_min_width(shown, kCallWidth);
  }
  connect(gtk_tree_view_get_selection(list), "changed", this,
          [](GtkTreeSelection*, TrafficView* self) { self->choose(); });
  connect(
      list_, "key-press-event", this,
      [](GtkWidget*, GdkEventKey* key, TrafficView* self) -> gboolean {
        if (key->keyval != GDK_KEY_Escape) return FALSE;
        gtk_tree_selection_unselect_all(gtk_tree_view_get_selection(GTK_TREE_VIEW(self->list_)));
        return TRUE;
      });
  GtkWidget* const window = scrolled(list_);
  connect(list_, "size-allocate", this,
          [](GtkWidget*, GdkRectangle*, TrafficView* self) { self->followNewest(); });
  connect(gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(list_)), "value-changed", this,
          [](GtkAdjustment* place, TrafficView* self) {
            self->isFollowing_ = gtk_adjustment_get_value(place) >= lastPlace(place) - 1;
          });
  return window;
}

void TrafficView::followNewest() {
  GtkAdjustment* const place = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(list_));
  if (isFollowing_) gtk_adjustment_set_value(place, lastPlace(place));
}

void TrafficView::added(const TrafficEntry& entry) {
  GtkTreeIter row;
  gtk_list_store_insert_with_values(store_, &row, -1, kNumber, guint64{entry.number}, kTime,
                                    timeOf(entry).c_str(), kWay, wayOf(entry), kCall,
                                    callOf(entry).c_str(), kSummary, summaryOf(entry).c_str(), -1);
}

void TrafficView::answered(const TrafficEntry& entry) {
  GtkTreeIter row;
  const auto at = static_cast<int>(entry.number - traffic_.entries().front().number);
  gtk_tree_model_iter_nth_child(GTK_TREE_MODEL(store_), &row, nullptr, at);
  gtk_list_store_set(store_, &row, kSummary, summaryOf(entry).c_str(), -1);
  if (chosen() == &entry) showChosen();
}

void TrafficView::removedOldest() {
  GtkTreeIter row;
  if (gtk_tree_model_get_iter_first(GTK_TREE_MODEL(store_), &row)) {
    gtk_list_store_remove(store_, &row);
  }
}

TrafficEntry* TrafficView::chosen() const {
  GtkTreeModel* model = nullptr;
  GtkTreeIter row;
  GtkTreeSelection* const selection = gtk_tree_view_get_selection(GTK_TREE_VIEW(list_));
  if (!gtk_tree_selection_get_selected(selection, &model, &row)) return nullptr;
  guint64 number = 0;
  gtk_tree_model_get(model, &row, kNumber, &number, -1);
  return traffic_.entry(number);
}

void TrafficView::choose() {
  gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(reveal_), FALSE);
  showChosen();
}

void TrafficView::showChosen() {
  const TrafficEntry* const entry = chosen();
  gtk_widget_set_sensitive(reveal_, entry && entry->isSecret());
  const bool isRevealed = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(reveal_));
  gtk_widget_set_visible(detailFrame_, entry != nullptr);
  setText(detail_, entry ? detailOf(*entry, isRevealed).c_str() : "");
}

std::string TrafficView::lines() const {
  std::string text;
  GtkTreeIter row;
  for (gboolean more = gtk_tree_model_get_iter_first(narrowed_, &row); more;
       more = gtk_tree_model_iter_next(narrowed_, &row)) {
    for (const Column column : {kTime, kWay, kCall, kSummary}) {
      text += textIn(narrowed_, &row, column) + (column == kSummary ? '\n' : '\t');
    }
  }
  return text;
}

void TrafficView::copy() const {
  const TrafficEntry* const entry = chosen();
  // Secrets stay hidden: clipboard managers would keep them.
  const std::string text = entry ? detailOf(*entry, /*isRevealed=*/false) : lines();
  gtk_clipboard_set_text(gtk_widget_get_clipboard(list_, GDK_SELECTION_CLIPBOARD), text.data(),
                         static_cast<int>(text.size()));
}

}  // namespace norvane
