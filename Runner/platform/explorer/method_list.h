#pragma once

#include <functional>

#include "platform/explorer/channel_table.h"

struct _GtkTreeModel;
struct _GtkTreeIter;
struct _GtkTreeStore;
struct _GtkWidget;

namespace norvane {

/// The channels with their methods, to choose one from; typing into the field above narrows them.
class MethodList {
 public:
  /// Null for `method`: the channel itself is chosen.
  using Chosen = std::function<void(const ChannelInfo& channel, const MethodInfo* method)>;

  /// The list in a widget of its own, which owns all of it; floating. `chosen` is called at once
  /// for the first method, and must live as long.
  static _GtkWidget* make(Chosen chosen);

 private:
  explicit MethodList(Chosen chosen);
  _GtkWidget* build();
  void fill();
  void narrow();
  void choose();
  bool isShown(_GtkTreeModel* model, _GtkTreeIter* row) const;

  const Chosen chosen_;
  std::string wanted_;  // in lower case
  _GtkTreeStore* store_ = nullptr;
  _GtkTreeModel* narrowed_ = nullptr;
  _GtkWidget* field_ = nullptr;
  _GtkWidget* list_ = nullptr;
};

}  // namespace norvane
