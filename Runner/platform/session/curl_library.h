#pragma once

#include <curl/curl.h>

namespace norvane {

/// What is used of libcurl, which is loaded when it is first asked for: with its twenty libraries
/// it would take a tenth of the start, and only a look for updates needs it. Any thread.
class CurlLibrary {
 public:
  /// Null where the library cannot be had or does not start.
  static const CurlLibrary* load();

  decltype(&curl_url) url = nullptr;
  decltype(&curl_url_set) urlSet = nullptr;
  decltype(&curl_url_get) urlGet = nullptr;
  decltype(&curl_url_cleanup) urlCleanup = nullptr;
  decltype(&curl_free) free = nullptr;
  decltype(&curl_easy_init) easyInit = nullptr;
  decltype(&curl_easy_setopt) easySetopt = nullptr;
  decltype(&curl_easy_getinfo) easyGetinfo = nullptr;
  decltype(&curl_easy_strerror) easyStrerror = nullptr;
  decltype(&curl_easy_cleanup) easyCleanup = nullptr;
  decltype(&curl_multi_init) multiInit = nullptr;
  decltype(&curl_multi_add_handle) multiAdd = nullptr;
  decltype(&curl_multi_remove_handle) multiRemove = nullptr;
  decltype(&curl_multi_perform) multiPerform = nullptr;
  decltype(&curl_multi_poll) multiPoll = nullptr;
  decltype(&curl_multi_wakeup) multiWakeup = nullptr;
  decltype(&curl_multi_info_read) multiInfoRead = nullptr;
  decltype(&curl_multi_cleanup) multiCleanup = nullptr;

 private:
  CurlLibrary();

  bool isUsable_ = false;
};

}  // namespace norvane
