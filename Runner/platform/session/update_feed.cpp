#include "platform/session/update_feed.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include <curl/curl.h>

#include "platform/linux/glib_handles.h"
#include "platform/linux/json.h"

namespace norvane {
namespace {

constexpr std::size_t kMostBytes = 1024 * 1024;
constexpr std::size_t kLongestVersion = 40;
constexpr std::size_t kLongestPage = 1024;
constexpr long kConnectSeconds = 10;
constexpr long kTotalSeconds = 30;

/// Why there is no finding; its text is for the person.
class FeedError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using UrlPtr = std::unique_ptr<CURLU, Deleter<curl_url_cleanup>>;
using EasyPtr = std::unique_ptr<CURL, Deleter<curl_easy_cleanup>>;
using MultiPtr = std::unique_ptr<CURLM, Deleter<curl_multi_cleanup>>;

/// Null when the text is no address.
UrlPtr parseUrl(const std::string& text) {
  UrlPtr url(curl_url());
  if (curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_DISALLOW_USER) != CURLUE_OK) {
    return nullptr;
  }
  return url;
}

std::string partOf(const UrlPtr& url, CURLUPart part, unsigned flags = 0) {
  char* text = nullptr;
  curl_url_get(url.get(), part, &text, flags);
  const std::unique_ptr<char, Deleter<curl_free>> owned(text);
  return text ? text : "";
}

bool isThisMachine(const std::string& host) {
  return host == "localhost" || host == "127.0.0.1" || host == "[::1]";
}

/// The version's numbers, zeros at the end left out.
std::vector<std::uint32_t> parseVersion(std::string_view text) {
  if (text.size() > kLongestVersion) throw FeedError("A version is too long");
  std::vector<std::uint32_t> numbers;
  const char* next = text.data();
  const char* const end = next + text.size();
  for (;;) {
    std::uint32_t number = 0;
    const auto [behind, error] = std::from_chars(next, end, number);
    if (error != std::errc() || (behind != end && *behind != '.')) {
      throw FeedError("A version is not numbers between dots");
    }
    numbers.push_back(number);
    if (behind == end) break;
    next = behind + 1;
  }
  while (!numbers.empty() && numbers.back() == 0) numbers.pop_back();
  return numbers;
}

/// The options of one transfer; refuses what is no place for a feed.
void prepare(CURL* easy, const std::string& feed) {
  const UrlPtr url = parseUrl(feed);
  if (!url) throw FeedError("The feed's address is not valid");
  const std::string scheme = partOf(url, CURLUPART_SCHEME);
  if (scheme == "https") {
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 5L);
  } else if (scheme == "file") {
    // Any other kind of file may never end, or never begin.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(partOf(url, CURLUPART_PATH, CURLU_URLDECODE), ignored)) {
      throw FeedError("The feed's file does not exist");
    }
  } else if (scheme == "http" && isThisMachine(partOf(url, CURLUPART_HOST))) {
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
  } else {
    throw FeedError("The feed's address is not https");
  }
  curl_easy_setopt(easy, CURLOPT_URL, feed.c_str());
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, scheme.c_str());
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "https");
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(easy, CURLOPT_TIMEOUT, kTotalSeconds);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  // A name server that does not answer must not hold up the end of the process.
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
}

/// The feed's content.
std::string fetch(const std::string& feed, const std::stop_token& stop) {
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
  const MultiPtr multi(initialised == CURLE_OK ? curl_multi_init() : nullptr);
  const EasyPtr easy(multi ? curl_easy_init() : nullptr);
  if (!easy) throw FeedError("The network library does not start");
  prepare(easy.get(), feed);
  std::string content;
  std::array<char, CURL_ERROR_SIZE> reason{};
  curl_easy_setopt(easy.get(), CURLOPT_ERRORBUFFER, reason.data());
  curl_easy_setopt(easy.get(), CURLOPT_WRITEDATA, &content);
  curl_easy_setopt(
      easy.get(), CURLOPT_WRITEFUNCTION,
      +[](const char* bytes, std::size_t, std::size_t size, std::string* all) {
        if (all->size() + size > kMostBytes) return std::size_t{0};
        all->append(bytes, size);
        return size;
      });

  const std::stop_callback wake(stop, [&] { curl_multi_wakeup(multi.get()); });
  curl_multi_add_handle(multi.get(), easy.get());
  int running = 1;
  while (running && !stop.stop_requested()) {
    if (curl_multi_perform(multi.get(), &running) != CURLM_OK) break;
    if (running) curl_multi_poll(multi.get(), nullptr, 0, kTotalSeconds * 1000, nullptr);
  }
  int left = 0;
  const CURLMsg* message = curl_multi_info_read(multi.get(), &left);
  const CURLcode result = message ? message->data.result : CURLE_ABORTED_BY_CALLBACK;
  long status = 0;
  curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
  curl_multi_remove_handle(multi.get(), easy.get());
  if (result == CURLE_WRITE_ERROR) throw FeedError("The feed is too large");
  if (result != CURLE_OK) throw FeedError(reason[0] ? reason.data() : curl_easy_strerror(result));
  // 0: a file.
  if (status != 0 && status != 200) {
    throw FeedError("The server answered with status " + std::to_string(status));
  }
  return content;
}

UpdateFinding compare(std::string_view content, const std::string& version) {
  const JsonDocument feed = parseJson(content);
  expectObject(feed, "the feed");
  constexpr std::array<std::string_view, 2> kKeys{"version", "url"};
  expectOnly(feed, kKeys);
  const std::string offered = expectText(require(feed, "version"), "version");
  const std::string page = expectText(require(feed, "url"), "url");
  const UrlPtr url = parseUrl(page);
  const bool isPlain = std::ranges::all_of(page, [](char c) { return c > ' ' && c < 0x7F; });
  if (!url || !isPlain || page.size() > kLongestPage || partOf(url, CURLUPART_SCHEME) != "https") {
    throw FeedError("The download page's address is not https");
  }
  if (parseVersion(offered) <= parseVersion(version)) {
    return {.kind = UpdateFinding::Kind::current};
  }
  return {.kind = UpdateFinding::Kind::newer, .version = offered, .url = page};
}

}  // namespace

UpdateFinding lookForUpdate(const std::optional<std::string>& feed, const std::string& version,
                            const std::stop_token& stop) {
  if (!feed) return {.kind = UpdateFinding::Kind::noFeed};
  try {
    return compare(fetch(*feed, stop), version);
  } catch (const FeedError& error) {
    return {.kind = UpdateFinding::Kind::unknown, .reason = error.what()};
  } catch (const JsonError& error) {
    return {.kind = UpdateFinding::Kind::unknown,
            .reason = std::string("The feed is not one: ") + error.what()};
  }
}

}  // namespace norvane
