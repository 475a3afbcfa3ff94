#include "platform/ui/library_engine.h"

#include <exception>
#include <utility>

#include "platform/log.h"
#include "platform/ui/message_view.h"

namespace norvane {
namespace {

using GBytesPtr = std::unique_ptr<GBytes, Deleter<g_bytes_unref>>;

/// Wiped when the library lets it go.
GBytesPtr libraryBytes(Bytes bytes) {
  auto* const owned = new Bytes(std::move(bytes));
  return GBytesPtr(g_bytes_new_with_free_func(
      owned->data(), owned->size(), [](gpointer kept) { delete static_cast<Bytes*>(kept); },
      owned));
}

Bytes hostBytes(GBytes* message) {
  if (!message) return {};
  gsize size = 0;
  const auto* const data = static_cast<const std::uint8_t*>(g_bytes_get_data(message, &size));
  return {data, data + size};
}

void tellOnce(std::function<void()>& told) {
  if (const auto call = std::exchange(told, nullptr)) call();
}

/// The answer to one message of the UI program. One that is never given is "not implemented" as
/// soon as it cannot be given any more: the library wants one for each message. Any thread.
class Answer {
 public:
  Answer(std::shared_ptr<const EngineLibrary> library, FlBinaryMessenger* messenger,
         FlBinaryMessengerResponseHandle* handle)
      : library_(std::move(library)),
        messenger_(static_cast<FlBinaryMessenger*>(g_object_ref(messenger))),
        handle_(static_cast<FlBinaryMessengerResponseHandle*>(g_object_ref(handle))) {}
  Answer(Answer&&) = default;
  Answer& operator=(Answer&&) = delete;
  ~Answer() {
    if (handle_) give(nullptr);
  }

  void operator()(Bytes reply) {
    const GBytesPtr bytes = reply.empty() ? nullptr : libraryBytes(std::move(reply));
    give(bytes.get());
  }

 private:
  void give(GBytes* reply) {
    GError* raised = nullptr;
    library_->messenger_send_response(messenger_.get(), handle_.get(), reply, &raised);
    const GErrorPtr error(raised);  // the engine has ended, and nobody waits
    handle_.reset();
  }

  std::shared_ptr<const EngineLibrary> library_;
  GObjectPtr<FlBinaryMessenger> messenger_;
  GObjectPtr<FlBinaryMessengerResponseHandle> handle_;
};

/// What the library's handler of a channel needs, for as long as it is set.
struct Binding {
  std::shared_ptr<const EngineLibrary> library;
  std::weak_ptr<FlutterBinaryMessenger> messenger;
  std::string channel;
};

void deliver(FlBinaryMessenger* messenger, const gchar* /*channel*/, GBytes* message,
             FlBinaryMessengerResponseHandle* handle, gpointer data) {
  const Binding binding = *static_cast<const Binding*>(data);  // the call may unbind it
  try {
    Answer answer(binding.library, messenger, handle);
    const auto host = binding.messenger.lock();
    if (host) host->deliver(binding.channel, hostBytes(message), std::move(answer));
  } catch (const std::exception& error) {
    reportFault("a message on " + binding.channel + " could not be delivered: " + error.what());
  }
}

GdkRGBA themeBackground(GtkWidget* widget) {
  GdkRGBA colour{1, 1, 1, 1};
  gtk_style_context_lookup_color(gtk_widget_get_style_context(widget), "theme_bg_color", &colour);
  return colour;
}

}  // namespace

LibraryEngine::LibraryEngine(FlutterEngine& engine) : engine_(engine) {}

LibraryEngine::~LibraryEngine() {
  if (frame_) g_object_remove_weak_pointer(G_OBJECT(frame_), reinterpret_cast<gpointer*>(&frame_));
  if (!view_) return;
  g_signal_handlers_disconnect_by_data(view_.get(), this);
  gtk_widget_destroy(view_.get());
}

GtkWidget* LibraryEngine::makeFrame(bool clear) {
  isClear_ = clear;
  frame_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  g_object_add_weak_pointer(G_OBJECT(frame_), reinterpret_cast<gpointer*>(&frame_));
  gtk_widget_show(frame_);
  GtkWidget* const frame = frame_;
  fillFrame();
  return frame;
}

void LibraryEngine::start(std::shared_ptr<const EngineLibrary> library,
                          const PluginLibraries& plugins, FlDartProject* project,
                          std::vector<std::string> latePlugins) {
  library_ = std::move(library);
  plugins_ = &plugins;
  latePlugins_ = std::move(latePlugins);
  GtkWidget* const view = reinterpret_cast<GtkWidget*>(library_->view_new(project));
  view_.reset(static_cast<GtkWidget*>(g_object_ref_sink(view)));
  messenger_.reset(
      static_cast<FlBinaryMessenger*>(g_object_ref(library_->engine_get_binary_messenger(
          library_->view_get_engine(reinterpret_cast<FlView*>(view))))));
  // After the library's own, in which its engine starts: that of a child of the view's.
  g_signal_connect_after(view, "map", G_CALLBACK(&LibraryEngine::shown), this);
  for (const std::string& channel : bound_) setHandler(channel);
  fillFrame();
}

void LibraryEngine::fail(const std::string& reason) {
  failure_ = reason;
  fillFrame();
}

void LibraryEngine::whenDrawn(std::function<void()> drawn) {
  constexpr const char* kSignal = "first-frame";  // of newer libraries
  if (!view_ || !g_signal_lookup(kSignal, G_OBJECT_TYPE(view_.get()))) return drawn();
  *drawn_ = std::move(drawn);
  using Told = std::shared_ptr<std::function<void()>>;
  g_signal_connect_data(
      view_.get(), kSignal, G_CALLBACK(+[](GtkWidget*, Told* told) { tellOnce(**told); }),
      new Told(drawn_), [](gpointer told, GClosure*) { delete static_cast<Told*>(told); },
      GConnectFlags{});
}

void LibraryEngine::leaveRunning() {
  if (!view_) return;
  g_signal_handlers_disconnect_by_data(view_.get(), this);
  GtkWidget* const view = view_.release();  // kept for good, and from the window's end
  GtkWidget* const parent = gtk_widget_get_parent(view);
  if (parent) gtk_container_remove(GTK_CONTAINER(parent), view);
}

bool LibraryEngine::isUnused() const {
  return bound_.empty() && !view_ && !frame_ && failure_.empty();
}

void LibraryEngine::fillFrame() {
  if (!frame_) return;
  if (!failure_.empty()) {
    gtk_box_pack_start(GTK_BOX(frame_), makeMessageView(isClear_, failure_), TRUE, TRUE, 0);
  }
  if (!view_) return;
  if (library_->view_set_background_color) {
    const GdkRGBA behind = isClear_ ? GdkRGBA{} : themeBackground(frame_);
    library_->view_set_background_color(reinterpret_cast<FlView*>(view_.get()), &behind);
  }
  gtk_box_pack_start(GTK_BOX(frame_), view_.get(), TRUE, TRUE, 0);
  gtk_widget_show(view_.get());
}

void LibraryEngine::shown(GtkWidget* view, LibraryEngine* self) {
  gtk_widget_grab_focus(view);
  if (std::exchange(self->wasShown_, true)) return;
  for (const std::string& plugin : self->latePlugins_) self->registerPlugin(plugin);
  self->reportWhetherItRuns();
  while (!self->outbox_.isEmpty()) {
    auto [channel, bytes] = self->outbox_.takeOldest();
    self->post(channel, std::move(bytes));
  }
}

// The library tells nobody that its engine could not start, but for an error of what is sent then.
// A UI program need not know the channel: nothing comes of an answer.
void LibraryEngine::reportWhetherItRuns() {
  struct Question {
    std::shared_ptr<const EngineLibrary> library;
    std::string name;
    std::shared_ptr<std::function<void()>> drawn;
  };
  const auto answered = +[](GObject* asked, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Question> question(static_cast<Question*>(data));
    GError* raised = nullptr;
    const GBytesPtr answer(question->library->messenger_send_finish(
        reinterpret_cast<FlBinaryMessenger*>(asked), result, &raised));
    const GErrorPtr error(raised);
    if (!error) return;
    NSLog("[Norvane] the UI of engine \"" + question->name + "\" does not run: " + error->message);
    tellOnce(*question->drawn);  // there will be no frame to wait for
  };
  library_->messenger_send(messenger_.get(), "norvane/host", nullptr, nullptr, answered,
                           new Question{library_, engine_.name(), drawn_});
}

void LibraryEngine::registerPlugin(const std::string& plugin) {
  if (!view_) return;
  const auto registerPlugin = plugins_->find(plugin);
  if (!registerPlugin) {
    g_debug("the UI has no plugin %s", plugin.c_str());
    return;
  }
  const GObjectPtr<FlPluginRegistrar> registrar(library_->registrar_for_plugin(
      reinterpret_cast<FlPluginRegistry*>(view_.get()), plugin.c_str()));
  registerPlugin(registrar.get());
}

void LibraryEngine::bind(std::string_view channel) {
  const auto [bound, isNew] = bound_.emplace(channel);
  if (isNew && view_) setHandler(*bound);
}

void LibraryEngine::unbind(std::string_view channel) {
  const auto bound = bound_.find(channel);
  if (bound == bound_.end()) return;
  if (messenger_) {
    library_->messenger_set_handler(messenger_.get(), bound->c_str(), nullptr, nullptr, nullptr);
  }
  bound_.erase(bound);
}

void LibraryEngine::setHandler(const std::string& channel) {
  library_->messenger_set_handler(messenger_.get(), channel.c_str(), &deliver,
                                  new Binding{library_, engine_.binaryMessenger(), channel},
                                  [](gpointer binding) { delete static_cast<Binding*>(binding); });
}

void LibraryEngine::send(std::string_view channel, Bytes message) {
  if (!failure_.empty()) return;
  if (wasShown_) {
    post(channel, std::move(message));
  } else if (!outbox_.add(channel, std::move(message))) {
    NSLog("[Norvane] engine \"" + engine_.name() +
          "\" was not shown for long: the oldest messages to its UI are dropped");
  }
}

void LibraryEngine::post(std::string_view channel, Bytes message) {
  const GBytesPtr bytes = libraryBytes(std::move(message));
  library_->messenger_send(messenger_.get(), std::string(channel).c_str(), bytes.get(), nullptr,
                           nullptr, nullptr);
}

}  // namespace norvane
