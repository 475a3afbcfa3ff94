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

#include "platform/linux/json.h"
#include "platform/session/curl_library.h"

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

/// Calls a function of the library with what it is to free.
template <auto Free>
struct Freed {
  template <class T>
  void operator()(T* object) const {
    (CurlLibrary::load()->*Free)(object);
  }
};

using UrlPtr = std::unique_ptr<CURLU, Freed<&CurlLibrary::urlCleanup>>;
using EasyPtr = std::unique_ptr<CURL, Freed<&CurlLibrary::easyCleanup>>;
using MultiPtr = std::unique_ptr<CURLM, Freed<&CurlLibrary::multiCleanup>>;

/// Null when the text is no address.
UrlPtr parseUrl(const CurlLibrary& curl, const std::string& text) {
  UrlPtr url(curl.url());
  if (curl.urlSet(url.get(), CURLUPART_URL, text.c_str(), CURLU_DISALLOW_USER) != CURLUE_OK) {
    return nullptr;
  }
  return url;
}

std::string partOf(const CurlLibrary& curl, const UrlPtr& url, CURLUPart part, unsigned flags = 0) {
  char* text = nullptr;
  curl.urlGet(url.get(), part, &text, flags);
  const std::unique_ptr<char, Freed<&CurlLibrary::free>> owned(text);
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
void prepare(const CurlLibrary& curl, CURL* easy, const std::string& feed) {
  const UrlPtr url = parseUrl(curl, feed);
  if (!url) throw FeedError("The feed's address is not valid");
  const std::string scheme = partOf(curl, url, CURLUPART_SCHEME);
  if (scheme == "https") {
    curl.easySetopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl.easySetopt(easy, CURLOPT_MAXREDIRS, 5L);
  } else if (scheme == "file") {
    // Any other kind of file may never end, or never begin.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(partOf(curl, url, CURLUPART_PATH, CURLU_URLDECODE),
                                          ignored)) {
      throw FeedError("The feed's file does not exist");
    }
  } else if (scheme == "http" && isThisMachine(partOf(curl, url, CURLUPART_HOST))) {
    curl.easySetopt(easy, CURLOPT_PROXY, "");
  } else {
    throw FeedError("The feed's address is not https");
  }
  curl.easySetopt(easy, CURLOPT_URL, feed.c_str());
  curl.easySetopt(easy, CURLOPT_PROTOCOLS_STR, scheme.c_str());
  curl.easySetopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "https");
  curl.easySetopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  curl.easySetopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
  curl.easySetopt(easy, CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
  curl.easySetopt(easy, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl.easySetopt(easy, CURLOPT_TIMEOUT, kTotalSeconds);
  curl.easySetopt(easy, CURLOPT_NOSIGNAL, 1L);
  // A name server that does not answer must not hold up the end of the process.
  curl.easySetopt(easy, CURLOPT_QUICK_EXIT, 1L);
}

/// The feed's content.
std::string fetch(const CurlLibrary& curl, const std::string& feed, const std::stop_token& stop) {
  const MultiPtr multi(curl.multiInit());
  const EasyPtr easy(multi ? curl.easyInit() : nullptr);
  if (!easy) throw FeedError("The network library does not start");
  prepare(curl, easy.get(), feed);
  std::string content;
  std::array<char, CURL_ERROR_SIZE> reason{};
  curl.easySetopt(easy.get(), CURLOPT_ERRORBUFFER, reason.data());
  curl.easySetopt(easy.get(), CURLOPT_WRITEDATA, &content);
  curl.easySetopt(
      easy.get(), CURLOPT_WRITEFUNCTION,
      +[](const char* bytes, std::size_t, std::size_t size, std::string* all) {
        if (all->size() + size > kMostBytes) return std::size_t{0};
        all->append(bytes, size);
        return size;
      });

  const std::stop_callback wake(stop, [&] { curl.multiWakeup(multi.get()); });
  curl.multiAdd(multi.get(), easy.get());
  int running = 1;
  while (running && !stop.stop_requested()) {
    if (curl.multiPerform(multi.get(), &running) != CURLM_OK) break;
    if (running) curl.multiPoll(multi.get(), nullptr, 0, kTotalSeconds * 1000, nullptr);
  }
  int left = 0;
  const CURLMsg* message = curl.multiInfoRead(multi.get(), &left);
  const CURLcode result = message ? message->data.result : CURLE_ABORTED_BY_CALLBACK;
  long status = 0;
  curl.easyGetinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
  curl.multiRemove(multi.get(), easy.get());
  if (result == CURLE_WRITE_ERROR) throw FeedError("The feed is too large");
  if (result != CURLE_OK) throw FeedError(reason[0] ? reason.data() : curl.easyStrerror(result));
  // 0: a file.
  if (status != 0 && status != 200) {
    throw FeedError("The server answered with status " + std::to_string(status));
  }
  return content;
}

UpdateFinding compare(const CurlLibrary& curl, std::string_view content,
                      const std::string& version) {
  const JsonDocument feed = parseJson(content);
  expectObject(feed, "the feed");
  constexpr std::array<std::string_view, 2> kKeys{"version", "url"};
  expectOnly(feed, kKeys);
  const std::string offered = expectText(require(feed, "version"), "version");
  const std::string page = expectText(require(feed, "url"), "url");
  const UrlPtr url = parseUrl(curl, page);
  const bool isPlain = std::ranges::all_of(page, [](char c) { return c > ' ' && c < 0x7F; });
  if (!url || !isPlain || page.size() > kLongestPage ||
      partOf(curl, url, CURLUPART_SCHEME) != "https") {
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
    const CurlLibrary* const curl = CurlLibrary::load();
    if (!curl) throw FeedError("The network library does not start");
    return compare(*curl, fetch(*curl, *feed, stop), version);
  } catch (const FeedError& error) {
    return {.kind = UpdateFinding::Kind::unknown, .reason = error.what()};
  } catch (const JsonError& error) {
    return {.kind = UpdateFinding::Kind::unknown,
            .reason = std::string("The feed is not one: ") + error.what()};
  }
}

}  // namespace norvane
