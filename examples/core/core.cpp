// A core library to load: it says that it is there, under a name that any later lookup in the
// process can resolve. The real core is the password manager's own and lies outside the host.

#include <cstdint>

extern "C" {

/// Set by the library's constructor: what a lookup of this symbol finds is 1 once the library
/// lives.
__attribute__((visibility("default"))) std::int32_t norvane_example_core_alive = 0;
}

namespace {

__attribute__((constructor)) void comeToLife() { norvane_example_core_alive = 1; }

}  // namespace
