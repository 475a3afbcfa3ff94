#include "platform/session/curl_library.h"

#include "platform/linux/lazy_library.h"

namespace norvane {

CurlLibrary::CurlLibrary() {
  const LazyLibrary library("libcurl.so.4");
  decltype(&curl_global_init) globalInit = nullptr;
  isUsable_ = library.find(globalInit, "curl_global_init") && library.find(url, "curl_url") &&
              library.find(urlSet, "curl_url_set") && library.find(urlGet, "curl_url_get") &&
              library.find(urlCleanup, "curl_url_cleanup") && library.find(free, "curl_free") &&
              library.find(easyInit, "curl_easy_init") &&
              library.find(easySetopt, "curl_easy_setopt") &&
              library.find(easyGetinfo, "curl_easy_getinfo") &&
              library.find(easyStrerror, "curl_easy_strerror") &&
              library.find(easyCleanup, "curl_easy_cleanup") &&
              library.find(multiInit, "curl_multi_init") &&
              library.find(multiAdd, "curl_multi_add_handle") &&
              library.find(multiRemove, "curl_multi_remove_handle") &&
              library.find(multiPerform, "curl_multi_perform") &&
              library.find(multiPoll, "curl_multi_poll") &&
              library.find(multiWakeup, "curl_multi_wakeup") &&
              library.find(multiInfoRead, "curl_multi_info_read") &&
              library.find(multiCleanup, "curl_multi_cleanup") &&
              globalInit(CURL_GLOBAL_DEFAULT) == CURLE_OK;
}

const CurlLibrary* CurlLibrary::load() {
  static const CurlLibrary library;
  return library.isUsable_ ? &library : nullptr;
}

}  // namespace norvane
