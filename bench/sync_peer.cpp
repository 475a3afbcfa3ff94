// The job of a vault sync as one would write it with general parts: the message decoded into a tree
// that owns its values, nlohmann::json, OpenSSL, and the host's own way of replacing a file. A
// program of its own, because the host's operator delete wipes, which nobody else's does.
//
// Usage: sync_peer FILE. For each number of logins on standard input, one line: seconds, and the
// memory added in MB.

#include <cstdint>
#include <cstring>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

#include <nlohmann/json.hpp>

#include "logins.h"
#include "measure.h"
#include "platform/flutter/flutter_value.h"
#include "platform/flutter/flutter_value_view.h"
#include "platform/linux/atomic_file.h"
#include "platform/linux/openssl_crypto.h"

namespace norvane {
namespace {

class Reader {
 public:
  explicit Reader(const Bytes& message) : at_(message.data()), end_(at_ + message.size()) {}

  FlutterValue value() {
    switch (static_cast<FlutterType>(number<std::uint8_t>())) {
      case FlutterType::null:
        return {};
      case FlutterType::yes:
        return true;
      case FlutterType::no:
        return false;
      case FlutterType::int32:
        return number<std::int32_t>();
      case FlutterType::int64:
        return number<std::int64_t>();
      case FlutterType::text: {
        const std::size_t count = size();
        return std::string(reinterpret_cast<const char*>(take(count)), count);
      }
      case FlutterType::list: {
        FlutterList list;
        for (std::size_t left = size(); left > 0; --left) list.push_back(value());
        return list;
      }
      case FlutterType::map: {
        FlutterMap map;
        for (std::size_t left = size(); left > 0; --left) {
          FlutterValue key = value();
          map.emplace_back(std::move(key), value());
        }
        return map;
      }
      default:
        throw std::runtime_error("a type that no login has");
    }
  }

 private:
  const std::uint8_t* take(std::size_t count) {
    if (count > static_cast<std::size_t>(end_ - at_)) throw std::runtime_error("cut off");
    return std::exchange(at_, at_ + count);
  }
  template <class Number>
  Number number() {
    Number result;
    std::memcpy(&result, take(sizeof result), sizeof result);
    return result;
  }
  std::size_t size() {
    const auto narrow = number<std::uint8_t>();
    if (narrow < 254) return narrow;
    return narrow == 254 ? number<std::uint16_t>() : number<std::uint32_t>();
  }

  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

template <class T>
const T* find(const FlutterMap& map, std::string_view name) {
  for (const auto& [key, value] : map) {
    const auto* text = std::get_if<std::string>(&key.alternatives());
    if (text && *text == name) return std::get_if<T>(&value.alternatives());
  }
  return nullptr;
}

nlohmann::json entriesOf(const FlutterValue& arguments) {
  nlohmann::json entries = nlohmann::json::array();
  for (const auto& item :
       *find<FlutterList>(std::get<FlutterMap>(arguments.alternatives()), "items")) {
    const auto& login = std::get<FlutterMap>(item.alternatives());
    const auto text = [&](const char* name) {
      const auto* found = find<std::string>(login, name);
      return found ? *found : std::string();
    };
    if (text("password").empty()) continue;
    entries.push_back({{"id", text("id")},
                       {"title", text("title")},
                       {"url", text("url")},
                       {"username", text("username")},
                       {"password", text("password")}});
  }
  return entries;
}

void sync(Bytes message, const std::string& path) {
  Reader reader(message);
  (void)reader.value();  // the method
  const std::string text = entriesOf(reader.value()).dump();
  std::vector<std::uint8_t> box(kAesGcmNonceSize + text.size() + kAesGcmTagSize);
  std::memcpy(box.data() + kAesGcmNonceSize, text.data(), text.size());
  OpenSslCrypto crypto;
  std::array<std::uint8_t, 32> key;
  if (crypto.SecRandomCopyBytes(key) != 0 || !crypto.sealAESGCM(key, box)) {
    throw std::runtime_error("sealing failed");
  }
  writeFileAtomically(path, std::as_bytes(std::span(box)));
}

}  // namespace
}  // namespace norvane

int main(int argc, char** argv) {
  using namespace norvane;
  if (argc != 2) return 64;
  Bytes message;
  std::size_t made = 0;
  for (std::size_t count; std::cin >> count;) {
    if (made != count) message = syncCall(makeLogins(made = count));
    Bytes received = message;
    const MemoryUse memory;
    const double seconds = secondsOf([&] { sync(std::move(received), argv[1]); });
    std::cout << seconds << ' ' << memory.peakMegabytes() << std::endl;
  }
}
