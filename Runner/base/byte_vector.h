#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace norvane {

/// Sixteen bytes at once, in the compilers' own vector types: their operators work on each byte,
/// and become SSE2, NEON or what else the machine has.
using ByteVector [[gnu::vector_size(16)]] = std::uint8_t;
/// What a comparison of two gives: all ones in each byte for which it holds, else 0.
using ByteMask [[gnu::vector_size(16)]] = std::int8_t;

/// From and to any address.
inline ByteVector loadBytes(const void* from) {
  ByteVector bytes;
  std::memcpy(&bytes, from, sizeof bytes);
  return bytes;
}
inline void storeBytes(ByteVector bytes, void* to) { std::memcpy(to, &bytes, sizeof bytes); }

/// Each byte `Places` further back, zeros in front.
template <int Places>
ByteVector movedUp(ByteVector bytes) {
  static_assert(Places > 0 && Places < 16);
  return [&]<int... I>(std::integer_sequence<int, I...>) {
    return __builtin_shufflevector(ByteVector{}, bytes, (16 - Places + I)...);
  }
  (std::make_integer_sequence<int, 16>());
}

inline bool anySet(ByteMask mask) {
  using Halves [[gnu::vector_size(16)]] = std::uint64_t;
  const auto halves = reinterpret_cast<Halves>(mask);
  return (halves[0] | halves[1]) != 0;
}

/// The place of the first byte that is set; 16 when none is.
inline std::size_t firstSet(ByteMask mask) {
  using Halves [[gnu::vector_size(16)]] = std::uint64_t;
  const auto halves = reinterpret_cast<Halves>(mask);
  const auto zeros =
      halves[0] != 0 ? std::countr_zero(halves[0]) : 64 + std::countr_zero(halves[1]);
  return static_cast<std::size_t>(zeros) / 8;
}

}  // namespace norvane
