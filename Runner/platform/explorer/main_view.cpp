#include "platform/explorer/main_view.h"

#include "platform/explorer/call_form.h"
#include "platform/explorer/method_list.h"
#include "platform/explorer/traffic_view.h"
#include "platform/explorer/widgets.h"

namespace norvane {
namespace {

constexpr int kCallHeight = 300;

}  // namespace

GtkWidget* makeMainView(ScriptedUi& ui, Traffic& traffic) {
  auto form = std::make_unique<CallForm>(ui);
  GtkWidget* const view = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
  gtk_container_add(
      GTK_CONTAINER(view),
      MethodList::make([form = form.get()](const ChannelInfo& channel, const MethodInfo* method) {
        form->show(channel, method);
      }));
  gtk_container_add(GTK_CONTAINER(view), gtk_separator_new(GTK_ORIENTATION_VERTICAL));
  GtkWidget* const panes = gtk_paned_new(GTK_ORIENTATION_VERTICAL);
  gtk_paned_pack1(GTK_PANED(panes), form->widget(), TRUE, FALSE);
  gtk_paned_pack2(GTK_PANED(panes), TrafficView::make(traffic), TRUE, FALSE);
  gtk_paned_set_position(GTK_PANED(panes), kCallHeight);
  gtk_box_pack_start(GTK_BOX(view), panes, TRUE, TRUE, 0);
  tieTo(view, std::move(form));
  return ofAnySize(view);
}

}  // namespace norvane
