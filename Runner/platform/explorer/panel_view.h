#pragma once

#include <string_view>
#include <vector>

#include "platform/console/scripted_ui.h"
#include "platform/flutter/flutter_value_view.h"

struct _GtkListBoxRow;
struct _GtkWidget;

namespace norvane {

/// What the explorer shows in the Quick Access panel: the application in front, and what the
/// panel's UI may ask for, to be found by typing. Main thread.
class PanelView : public UiObserver {
 public:
  /// A widget of its own, which owns all of it; floating. `ui` outlives it.
  static _GtkWidget* make(ScriptedUi& ui);
  ~PanelView() override;

  void started(std::string_view, std::string_view) override {}
  void pluginRegistered(std::string_view, std::string_view) override {}
  void called(std::string_view engine, std::string_view channel, const Bytes& message) override;
  void sent(std::uint64_t number, std::string_view engine, std::string_view channel,
            const Bytes& message) override;

 private:
  struct Action {
    const char* title;
    const char* method;
    _GtkWidget* row;
    _GtkWidget* call;  ///< the label that says what will be sent
  };

  explicit PanelView(ScriptedUi& ui);
  _GtkWidget* build();
  _GtkWidget* buildHeader();
  _GtkWidget* buildActions();
  /// Shows `application`, which "shown" has told of, and waits for the person to type.
  void begin(FlutterValueView application);
  void setPinned(bool isPinned);
  void narrow();
  void activate(_GtkListBoxRow* row);
  void activateFirst();
  Bytes messageOf(const Action& action) const;
  void send(Bytes message);

  ScriptedUi& ui_;
  bool isPinned_ = false;
  std::vector<Action> actions_;
  _GtkWidget* icon_ = nullptr;
  _GtkWidget* name_ = nullptr;
  _GtkWidget* identity_ = nullptr;
  _GtkWidget* field_ = nullptr;
  _GtkWidget* list_ = nullptr;
  _GtkWidget* pin_ = nullptr;
};

}  // namespace norvane
