# Fails when a file of the host includes anything beyond the C++ standard library's portable part,
# the host's own headers and the platform's interfaces. ROOT is the Runner folder.

# Not among them: threads, clocks, files, streams and the environment belong to the platform.
set(STANDARD algorithm|array|bit|charconv|compare|concepts|cstddef|cstdint|deque|exception|functional|initializer_list|iterator|limits|map|memory|numeric|optional|ranges|set|span|stdexcept|string|string_view|system_error|tuple|type_traits|utility|variant|vector)
set(HOST app|autofill|icloud|quick_access|services|storage|window)
set(ALLOWED "^#include (<(${STANDARD})>|\"(${HOST})/[a-z0-9_]+\\.h\"|\"platform/(flutter/)?[a-z0-9_]+\\.h\")$")

file(GLOB_RECURSE FILES ${ROOT}/*.cpp ${ROOT}/*.h)
set(FAULTS 0)
foreach(FILE IN LISTS FILES)
  file(RELATIVE_PATH NAME ${ROOT} ${FILE})
  # The programs' entries are the places that choose a platform.
  if(NAME MATCHES "^app/(desktop_)?main.cpp$" OR NOT NAME MATCHES "^(${HOST})/")
    continue()
  endif()
  file(STRINGS ${FILE} LINES REGEX "^[ \t]*#")
  foreach(LINE IN LISTS LINES)
    if(NOT LINE MATCHES "^#pragma once$" AND NOT LINE MATCHES "${ALLOWED}")
      message("${NAME}: ${LINE}")
      math(EXPR FAULTS "${FAULTS} + 1")
    endif()
  endforeach()
endforeach()
if(FAULTS GREATER 0)
  message(FATAL_ERROR "The host may use the standard library and Runner/platform's interfaces only.")
endif()
