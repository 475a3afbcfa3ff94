// The updater of the real desktop: which feeds it trusts and understands, and what it then says.

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "platform/gtk/glib_handles.h"
#include "platform/gtk/gtk_updater.h"
#include "platform/gtk/update_feed.h"
#include "platform/linux/glib_dispatch.h"
#include "real_desktop.h"

namespace norvane {
namespace {

using enum UpdateFinding::Kind;

UpdateFinding look(const std::string& feed, const std::stop_token& stop = {}) {
  return lookForUpdate(feed, "1.10.0", stop);
}

/// The address of a file with that content.
std::string fileFeed(const std::string& content) {
  const std::string path = std::string(g_get_user_runtime_dir()) + "/the feed.json";
  std::ofstream(path) << content;
  return GTextPtr(g_filename_to_uri(path.c_str(), nullptr, nullptr)).get();
}

std::string feedOf(const std::string& version,
                   const std::string& url = "https://example.org/get?a=1&b=2") {
  return "{\"version\": \"" + version + "\", \"url\": \"" + url + "\"}";
}

TEST(UpdateFeedTest, VersionsAreComparedNumberByNumber) {
  for (const char* newer : {"1.11", "1.10.1", "2", "1.10.0.1", "10.0.0"}) {
    const UpdateFinding finding = look(fileFeed(feedOf(newer)));
    EXPECT_EQ(finding.kind, UpdateFinding::Kind::newer) << newer << finding.reason;
    EXPECT_EQ(finding.version, newer);
    EXPECT_EQ(finding.url, "https://example.org/get?a=1&b=2");
  }
  for (const char* same : {"1.10.0", "1.10", "1.9.9", "0", "1.2.0", "01.010"}) {
    EXPECT_EQ(look(fileFeed(feedOf(same))).kind, current) << same;
  }
}

TEST(UpdateFeedTest, WhatIsNoFeedOrNoPlaceForOneIsExplained) {
  for (const std::string& garbage : std::vector<std::string>{
           "", "<html>", "[]", "{\"version\": \"2\"}",
           "{\"version\": 2, \"url\": \"https://a.org\"}", feedOf(""), feedOf("2.x"), feedOf("2."),
           feedOf("-1"), feedOf("99999999999"), feedOf(std::string(50, '1')),
           feedOf("2\", \"other\": \""), feedOf("2", "http://a.org/"), feedOf("2", "https:"),
           feedOf("2", "javascript:alert(1)"), feedOf("2", "https://norvane@a.org/"),
           feedOf("2", "https://a.org/\\u202e"),
           feedOf("2", "https://a.org/" + std::string(2000, 'a'))}) {
    const UpdateFinding finding = look(fileFeed(garbage));
    EXPECT_EQ(finding.kind, unknown) << garbage;
    EXPECT_FALSE(finding.reason.empty()) << garbage;
  }
  for (const char* address :
       {"", "nonsense", "http://example.org/", "http://127.0.0.1.example.org/", "ftp://127.0.0.1/",
        "https://a:b@127.0.0.1/", "file:///nowhere", "file:///dev/zero", "file:///tmp"}) {
    const std::string reason = look(address).reason;
    EXPECT_NE(reason.find("The feed's "), std::string::npos) << address << ": " << reason;
  }
}

TEST(UpdateFeedTest, AServerIsTrustedOverTlsOrOnThisMachineAndNotWaitedForAtTheEnd) {
  const std::string certificate = std::string(g_get_user_runtime_dir()) + "/certificate.pem";
  const std::string command =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
      "-subj /CN=localhost -addext subjectAltName=DNS:localhost 2>/dev/null -keyout " +
      certificate + " -out " + certificate;
  ASSERT_EQ(std::system(command.c_str()), 0);
  const char* script = NORVANE_TESTS_DIR "/contract/feed_server.py";
  const GObjectPtr<GSubprocess> server(g_subprocess_new(G_SUBPROCESS_FLAGS_STDOUT_PIPE, nullptr,
                                                        "/usr/bin/python3", script,
                                                        certificate.c_str(), nullptr));
  const GObjectPtr<GDataInputStream> output(
      g_data_input_stream_new(g_subprocess_get_stdout_pipe(server.get())));
  const GTextPtr line(g_data_input_stream_read_line(output.get(), nullptr, nullptr, nullptr));
  ASSERT_TRUE(line);
  std::string plainPort, tlsPort;
  std::istringstream(line.get()) >> plainPort >> tlsPort;
  const std::string plain = "http://localhost:" + plainPort;

  EXPECT_EQ(look(plain + "/feed").version, "9.0");
  EXPECT_EQ(look("http://127.0.0.1:" + plainPort + "/feed").version, "9.0");
  const auto expectReason = [](const std::string& feed, const char* pattern) {
    const std::string reason = look(feed).reason;
    EXPECT_TRUE(std::regex_search(reason, std::regex(pattern))) << feed << ": " << reason;
  };
  expectReason(plain + "/missing", "404");
  expectReason(plain + "/moved", "302");
  expectReason(plain + "/large", "too large");
  expectReason("https://localhost:" + tlsPort + "/feed", "certificate");
  expectReason("https://localhost:" + plainPort + "/feed", "SSL|TLS");

  const auto begin = std::chrono::steady_clock::now();
  {
    const std::jthread waiting([&](const std::stop_token& stop) {
      EXPECT_EQ(look(plain + "/never", stop).kind, unknown);
    });
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  g_subprocess_force_exit(server.get());
  g_subprocess_wait(server.get(), nullptr, nullptr);
  expectReason(plain + "/feed", "connect");
}

/// The message dialogs on the screen.
std::vector<GtkWidget*> dialogs() {
  std::vector<GtkWidget*> shown;
  GList* windows = gtk_window_list_toplevels();
  for (const GList* window = windows; window; window = window->next) {
    if (GTK_IS_MESSAGE_DIALOG(window->data) && gtk_widget_get_mapped(GTK_WIDGET(window->data))) {
      shown.push_back(GTK_WIDGET(window->data));
    }
  }
  g_list_free(windows);
  return shown;
}

/// What a dialog's labels show, one after another.
std::string textOf(GtkWidget* dialog) {
  std::string text;
  GList* labels = gtk_container_get_children(
      GTK_CONTAINER(gtk_message_dialog_get_message_area(GTK_MESSAGE_DIALOG(dialog))));
  for (const GList* label = labels; label; label = label->next) {
    text += std::string(gtk_label_get_text(GTK_LABEL(label->data))) + " ";
  }
  g_list_free(labels);
  return text;
}

TEST(GtkUpdaterTest, EachCheckIsAnsweredByOneDialog) {
  GlibDispatch dispatch;
  const auto expectDialog = [&](std::optional<std::string> feed, const std::string& expected) {
    GtkUpdater updater(dispatch, std::move(feed), "1.10.0");
    const auto controller = updater.makeUpdaterController(true);
    EXPECT_TRUE(dialogs().empty());
    for (int i = 0; i < 2; ++i) {
      controller->checkForUpdates();
      controller->checkForUpdates();
      EXPECT_TRUE(dialogs().empty()) << "inside the call, or that of the check before";
      ASSERT_TRUE(await([] { return !dialogs().empty(); }));
      ASSERT_EQ(dialogs().size(), 1U);
      EXPECT_EQ(textOf(dialogs()[0]), expected);
    }
    gtk_dialog_response(GTK_DIALOG(dialogs()[0]), GTK_RESPONSE_CLOSE);
    EXPECT_TRUE(dialogs().empty());
    controller->checkForUpdates();
  };
  expectDialog(fileFeed(feedOf("2.0")),
               "A newer version of Norvane is available Version 2.0 can be had at "
               "https://example.org/get?a=1&b=2. This is version 1.10.0. ");
  expectDialog(fileFeed(feedOf("1.10.0")),
               "Norvane is up to date There is nothing newer than version 1.10.0. ");
  expectDialog("gopher://a.org",
               "Norvane could not look for a newer version The feed's address is not https. ");
  expectDialog({},
               "Norvane does not look for newer versions No update feed is configured. This is "
               "version 1.10.0. ");
  EXPECT_TRUE(await([&] { return dispatch.isQuiet(); }));
  EXPECT_TRUE(dialogs().empty()) << "of an updater that is gone";
}

}  // namespace
}  // namespace norvane
