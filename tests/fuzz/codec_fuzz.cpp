// Whatever arrives, the codec refuses it, or reads it as a value that comes back the same when it
// is written anew.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "value_copy.h"

using norvane::Bytes;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes message(data, data + size);
  for (const bool isCall : {true, false}) {
    const auto encoded = norvane::encodedAgain(message, isCall);
    if (encoded && norvane::encodedAgain(*encoded, isCall) != encoded) std::abort();
  }
  return 0;
}
