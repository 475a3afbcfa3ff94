#include "platform/secure_memory.h"

#include <string.h>

namespace norvane {

void secureWipe(void* memory, std::size_t size) { explicit_bzero(memory, size); }

}  // namespace norvane
