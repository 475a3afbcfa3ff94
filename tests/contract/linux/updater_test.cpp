// The updater of the real desktop: which feeds it trusts and understands, and what it then says.

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "platform/gtk/gtk_updater.h"
#include "platform/linux/glib_dispatch.h"
#include "platform/linux/glib_handles.h"
#include "platform/session/update_feed.h"
#include "real_desktop.h"

namespace norvane {
namespace {

using enum UpdateFinding::Kind;
const std::string kPage = "https://example.org/get?a=1&b=2";

UpdateFinding look(const std::string& feed, const std::stop_token& stop = {}) {
  return lookForUpdate(feed, "1.10.0", stop);
}

/// The address of a file that offers the version.
std::string offer(const std::string& version, const std::string& page = kPage) {
  std::ofstream(std::string(g_get_user_runtime_dir()) + "/the feed")
      << "{\"version\": \"" << version << "\", \"url\": \"" << page << "\"}";
  return std::string("file://") + g_get_user_runtime_dir() + "/the%20feed";
}

TEST(UpdateFeedTest, VersionsAreComparedAndWhatIsNoFeedOrNoPlaceForOneIsExplained) {
  for (const char* version : {"1.11", "1.10.1", "2", "1.10.0.1", "10.0.0"}) {
    EXPECT_EQ(look(offer(version)).kind, newer) << version;
  }
  for (const char* version : {"1.10.0", "1.10", "1.9.9", "0", "1.2.0", "01.010"}) {
    EXPECT_EQ(look(offer(version)).kind, current) << version;
  }
  for (const char* version : {"", "2.x", "2.", "-1", "99999999999", "2\", \"other\": \""}) {
    EXPECT_EQ(look(offer(version)).kind, unknown) << version;
  }
  for (const char* page :
       {"http://a.org/", "https:", "javascript:a()", "https://a@b.org/", "\"1"}) {
    EXPECT_EQ(look(offer("2", page)).kind, unknown) << page;
  }
  for (const char* address :
       {"", "nonsense", "http://example.org/", "http://127.0.0.1.example.org/", "ftp://127.0.0.1/",
        "https://a:b@127.0.0.1/", "file:///nowhere", "file:///dev/zero"}) {
    EXPECT_TRUE(look(address).reason.starts_with("The feed's ")) << address;
  }
}

TEST(UpdateFeedTest, AServerIsTrustedOverTlsOrOnThisMachineAndNotWaitedForAtTheEnd) {
  // Two servers of one folder, the second with a certificate that nobody has signed.
  const GObjectPtr<GSubprocess> server(g_subprocess_new(
      G_SUBPROCESS_FLAGS_STDOUT_PIPE, nullptr, "sh", "-c",
      "cd $XDG_RUNTIME_DIR && mkdir moved && truncate -s 2M large && openssl req -x509 -nodes "
      "-newkey rsa -subj /CN=localhost -addext subjectAltName=DNS:localhost -keyout pem -out pem "
      "2>/dev/null && exec /usr/bin/python3 -c \"import http.server as h, ssl, threading as t\n"
      "a, b = (h.ThreadingHTTPServer(('127.0.0.1', 0), h.SimpleHTTPRequestHandler) for _ in 'ab')\n"
      "context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)\n"
      "context.load_cert_chain('pem')\n"
      "b.socket = context.wrap_socket(b.socket, server_side=True)\n"
      "print(a.server_port, b.server_port, flush=True)\n"
      "[t.Thread(target=server.serve_forever).start() for server in (a, b)]\" 2>/dev/null",
      nullptr));
  const GObjectPtr<GDataInputStream> output(
      g_data_input_stream_new(g_subprocess_get_stdout_pipe(server.get())));
  const GTextPtr ports(g_data_input_stream_read_line(output.get(), nullptr, nullptr, nullptr));
  ASSERT_TRUE(ports);
  std::string plain, tls;
  std::istringstream(ports.get()) >> plain >> tls;
  offer("9.0");
  EXPECT_EQ(look("http://localhost:" + plain + "/the%20feed").version, "9.0");
  for (const auto& [feed, reason] : std::map<std::string, std::string>{
           {"http://localhost:" + plain + "/missing", "404"},
           {"http://127.0.0.1:" + plain + "/moved", "301"},
           {"http://127.0.0.1:" + plain + "/large", "too large"},
           {"https://localhost:" + tls + "/the%20feed", "certificate"},
           {"http://localhost:1/", "onnect"}}) {
    EXPECT_NE(look(feed).reason.find(reason), std::string::npos) << feed << look(feed).reason;
  }

  g_subprocess_force_exit(server.get());

  const GObjectPtr<GSocketListener> silent(g_socket_listener_new());
  const guint16 port = g_socket_listener_add_any_inet_port(silent.get(), nullptr, nullptr);
  std::jthread looking([&](const std::stop_token& stop) {
    EXPECT_EQ(look("http://127.0.0.1:" + std::to_string(port), stop).kind, unknown);
  });
  const GObjectPtr<GSocketConnection> asked(
      g_socket_listener_accept(silent.get(), nullptr, nullptr, nullptr));
  const auto begin = std::chrono::steady_clock::now();
  looking = {};
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

/// What the dialogs on the screen say; closes them where that is asked.
std::string shown(bool close = false) {
  std::string text;
  GList* windows = gtk_window_list_toplevels();
  for (const GList* window = windows; window; window = window->next) {
    if (!GTK_IS_MESSAGE_DIALOG(window->data)) continue;
    auto* dialog = GTK_MESSAGE_DIALOG(window->data);
    const auto append = [](GtkWidget* label, gpointer all) {
      *static_cast<std::string*>(all) += std::string(gtk_label_get_text(GTK_LABEL(label))) + "|";
    };
    gtk_container_foreach(GTK_CONTAINER(gtk_message_dialog_get_message_area(dialog)), append,
                          &text);
    if (close) gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_CLOSE);
  }
  g_list_free(windows);
  return text;
}

TEST(GtkUpdaterTest, EachCheckIsAnsweredByOneDialog) {
  GlibDispatch dispatch;
  const std::string version = "This is version 1.10.0.|";
  for (const auto& [feed, expected] : std::map<std::optional<std::string>, std::string>{
           {offer("2.0"), "A newer version of Norvane is available|Version 2.0 can be had at " +
                              kPage + ". " + version},
           {"x:y", "Norvane could not look for a newer version|The feed's address is not valid.|"},
           {{},
            "Norvane does not look for newer versions|No update feed is configured. " + version}}) {
    GtkUpdater updater(dispatch, feed, "1.10.0");
    const auto controller = updater.makeUpdaterController(true);
    for (int i = 0; i < 2; ++i) {
      controller->checkForUpdates();
      controller->checkForUpdates();
      EXPECT_EQ(shown(), "") << "inside the call, or that of the check before";
      ASSERT_TRUE(await([] { return !shown().empty(); }));
      EXPECT_EQ(shown(), expected);
    }
    shown(/*close=*/true);
    controller->checkForUpdates();
  }
  EXPECT_TRUE(await([&] { return dispatch.isQuiet(); }));
  EXPECT_EQ(shown(), "") << "of an updater that is gone";
}

}  // namespace
}  // namespace norvane
