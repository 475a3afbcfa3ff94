// The codec's speed, as a ratio to copying the same message in the same run: absolute times differ
// between machines and hours, the ratio hardly does.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "heap_use.h"
#include "logins.h"
#include "measure.h"
#include "platform/flutter/standard_method_codec.h"
#include "value_copy.h"

namespace norvane {
namespace {

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
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
  const auto call =
      decodeMethodCall(syncCall(makeLogins(static_cast<std::size_t>(state.range(0)))));
  const FlutterValue arguments = copyOf(call->arguments());
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
  const Bytes message = syncCall(makeLogins(static_cast<std::size_t>(state.range(0))));
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
