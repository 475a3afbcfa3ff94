// The codec's speed, as a ratio to copying the same message in the same run: absolute times differ
// between machines and hours, the ratio hardly does.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "heap_use.h"
#include "platform/flutter/standard_method_codec.h"

namespace norvane {
namespace {

using Clock = std::chrono::steady_clock;

template <class Work>
double secondsOf(Work&& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// A vault's logins as the UI sends them: 283 bytes an item on the wire, 18 % of the titles not
/// ASCII, 45 % of the notes empty.
FlutterValue logins(std::int64_t count) {
  static constexpr std::string_view kLetters =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
  static constexpr const char* kTitles[] = {"Online banking", "Mail", "Work account", "Forum"};
  static constexpr const char* kOtherTitles[] = {"Überweisung Sparkasse", "東京電力 ログイン",
                                                 "Почта России", "Café crème ☕"};
  std::mt19937 random(20'240'901);
  const auto between = [&](std::size_t least, std::size_t most) {
    return least + random() % (most - least + 1);
  };
  const auto text = [&](std::size_t size) {
    std::string result(size, ' ');
    for (char& letter : result) letter = kLetters[random() % kLetters.size()];
    return result;
  };
  FlutterList items;
  for (std::int64_t i = 0; i < count; ++i) {
    FlutterList tags;
    for (std::size_t left = between(0, 2); left > 0; --left) tags.emplace_back(text(6));
    items.emplace_back(FlutterMap{
        {"id", text(36)},
        {"title", random() % 100 < 18 ? kOtherTitles[random() % 4] : kTitles[random() % 4]},
        {"url", "https://" + text(between(8, 24)) + ".example.org/login"},
        {"username", text(between(6, 14)) + "@example.org"},
        {"password", text(between(12, 32))},
        {"notes", random() % 100 < 45 ? std::string() : text(between(20, 260))},
        {"tags", std::move(tags)},
    });
  }
  return FlutterMap{{"items", std::move(items)}};
}

/// Reads every text of `value`; the sum keeps the work from being optimised away.
std::size_t readTexts(FlutterValueView value) {
  if (const auto text = value.text()) return text->size();
  std::size_t size = 0;
  if (const auto map = value.map()) {
    for (const auto& [key, mapped] : *map) size += readTexts(key) + readTexts(mapped);
  } else if (const auto list = value.list()) {
    for (const FlutterValueView element : *list) size += readTexts(element);
  }
  return size;
}

void setMessage(benchmark::State& state, std::size_t size) {
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
  state.counters["message_bytes"] = static_cast<double>(size);
}

/// With the making of the value, as a handler writes it down.
void encodeSmallCall(benchmark::State& state) {
  const auto encode = [] { return encodeMethodCall("setMode", FlutterMap{{"mode", "vault"}}); };
  for (auto _ : state) benchmark::DoNotOptimize(encode());
  const HeapUse use;
  const std::size_t size = encode().size();
  state.counters["allocations"] = use.allocations();
  setMessage(state, size);
}
BENCHMARK(encodeSmallCall);

/// With the arrival of the message, in a buffer of its own that is wiped and freed.
void decodeSmallCall(benchmark::State& state) {
  const Bytes message = encodeMethodCall("setMode", FlutterMap{{"mode", "vault"}});
  const auto receive = [&message] {
    const auto call = decodeMethodCall(message);
    return call->method().size() + (*call->arguments().textKeyedMap())["mode"].text()->size();
  };
  for (auto _ : state) benchmark::DoNotOptimize(receive());
  const HeapUse use;
  receive();
  state.counters["allocations"] = use.allocations();
  setMessage(state, message.size());
}
BENCHMARK(decodeSmallCall);

void encodeSync(benchmark::State& state) {
  const FlutterValue arguments = logins(state.range(0));
  std::size_t size = 0;
  double allocations = 0;
  double peak = 0;
  for (auto _ : state) {
    const HeapUse use;
    size = encodeMethodCall("syncVaultSnapshot", arguments).size();
    allocations = use.allocations();
    peak = use.peak();
  }
  setMessage(state, size);
  state.counters["allocations_per_item"] = allocations / static_cast<double>(state.range(0));
  state.counters["peak_per_message_byte"] = peak / static_cast<double>(size);
}
BENCHMARK(encodeSync)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// The check of the whole message, then every text read through the views.
void decodeSync(benchmark::State& state) {
  const Bytes message = encodeMethodCall("syncVaultSnapshot", logins(state.range(0)));
  Bytes target(message.size());
  std::vector<double> ratios;
  double allocations = 0;
  double peak = 0;
  for (auto _ : state) {
    Bytes received = message;
    const double copying = secondsOf([&] {
      std::memcpy(target.data(), message.data(), message.size());
      benchmark::DoNotOptimize(target.data());
      benchmark::ClobberMemory();
    });
    std::optional<FlutterMethodCall> call;
    const HeapUse use;
    const double reading = secondsOf([&] {
      call.emplace(*decodeMethodCall(std::move(received)));
      benchmark::DoNotOptimize(readTexts(call->arguments()));
    });
    allocations = use.allocations();
    peak = use.peak();
    state.SetIterationTime(reading);
    ratios.push_back(reading / copying);
  }
  const auto items = static_cast<double>(state.range(0));
  setMessage(state, message.size());
  state.counters["bytes_per_item"] = static_cast<double>(message.size()) / items;
  state.counters["allocations_per_item"] = allocations / items;
  state.counters["peak_per_message_byte"] = peak / static_cast<double>(message.size());
  state.counters["x_memcpy"] = median(std::move(ratios));
}
BENCHMARK(decodeSync)->Arg(1'000)->Arg(100'000)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace norvane
