#pragma once

#include <optional>
#include <string>

#include "platform/explorer/traffic.h"

struct _GtkListStore;
struct _GtkTreeModel;
struct _GtkTreeIter;
struct _GtkWidget;

namespace norvane {

/// The traffic as a running list, with one entry of it in full beside it. What is secret is a
/// length until the person asks for it, and then for that one entry. Main thread.
class TrafficView : public TrafficListener {
 public:
  /// A widget of its own, which owns all of it; floating. `traffic` outlives it.
  static _GtkWidget* make(Traffic& traffic);
  ~TrafficView() override;

  void added(const TrafficEntry& entry) override;
  void answered(const TrafficEntry& entry) override;
  void removedOldest() override;

 private:
  explicit TrafficView(Traffic& traffic);
  _GtkWidget* build();
  _GtkWidget* buildBar();
  _GtkWidget* buildList();
  TrafficEntry* chosen() const;
  /// What the filter lets through, as lines.
  std::string lines() const;
  void choose();
  void followNewest();
  void showChosen();
  void copy() const;

  Traffic& traffic_;
  std::string wanted_;       // in lower case
  bool isFollowing_ = true;  // the newest entry, until the person scrolls away from it
  _GtkListStore* store_ = nullptr;
  _GtkTreeModel* narrowed_ = nullptr;
  _GtkWidget* list_ = nullptr;
  _GtkWidget* filter_ = nullptr;
  _GtkWidget* reveal_ = nullptr;
  _GtkWidget* detail_ = nullptr;
  _GtkWidget* detailFrame_ = nullptr;
};

}  // namespace norvane
