# Fails when a file includes what its room may not: another room that the table does not name, or,
# in the portable rooms, anything beyond the C++ standard library's portable part. ROOT is the Runner
# folder.

# Each room, and the rooms whose headers it may include beside its own.
set(ARROWS
  "base:"
  "platform:base platform/flutter"
  "platform/flutter:base platform"
  "storage:base platform"
  "autofill:base platform platform/flutter storage"
  "icloud:platform platform/flutter"
  "services:platform platform/flutter window"
  "quick_access:platform platform/flutter window"
  "window:platform platform/flutter autofill icloud services"
  "app:platform platform/flutter quick_access services window"
  "platform/linux:base platform"
  "platform/console:base platform platform/flutter platform/linux"
  "platform/headless:base platform platform/console platform/linux"
  "platform/session:base platform platform/linux"
  "platform/x11:base platform platform/linux platform/session"
  "platform/ui:base platform platform/console platform/flutter platform/linux"
  "platform/explorer:base platform platform/console platform/flutter platform/linux platform/ui"
  "platform/gtk:base platform platform/console platform/explorer platform/linux platform/session platform/ui platform/x11")
# These use the platform's libraries.
set(SYSTEM "^platform/(linux|console|headless|session|x11|ui|explorer|gtk)$")
# Not among them: threads, clocks, files and the environment belong to the platform.
set(STANDARD algorithm|array|bit|cassert|charconv|cmath|compare|concepts|cstddef|cstdint|cstdlib|cstring|cwchar|deque|exception|functional|initializer_list|iterator|limits|locale|map|memory|new|numeric|optional|ranges|set|span|sstream|stdexcept|string|string_view|system_error|tuple|type_traits|utility|variant|vector)

file(GLOB_RECURSE FILES RELATIVE ${ROOT} ${ROOT}/*.cpp ${ROOT}/*.h ${ROOT}/*.mm)
set(FAULTS 0)
foreach(FILE IN LISTS FILES)
  # The programs' entries are the places that choose a platform.
  if(FILE MATCHES "^app/(desktop_)?main.cpp$")
    continue()
  endif()
  get_filename_component(ROOM ${FILE} DIRECTORY)
  set(ROW ${ARROWS})
  list(FILTER ROW INCLUDE REGEX "^${ROOM}:")
  string(REGEX REPLACE "^[^:]*:" "" ALLOWED "${ROW}")
  if(FILE STREQUAL "services/global_hotkey.cpp")
    string(APPEND ALLOWED " app quick_access")  # the delegate's own operations on its hotkey
  endif()
  string(REPLACE " " "|" ALLOWED "${ROOM} ${ALLOWED}")
  set(ALLOWED "\"(${ALLOWED})/[a-z0-9_]+\\.h\"")
  if(ROOM MATCHES "${SYSTEM}")
    set(ALLOWED "^#(include (<[^>]*>|${ALLOWED})|pragma|if|ifdef|ifndef|else|endif|define|undef)")
  else()
    set(ALLOWED "^#(include (<(${STANDARD})>|${ALLOWED})$|pragma once$)")
  endif()
  file(STRINGS ${ROOT}/${FILE} LINES REGEX "^[ \t]*#")
  if(NOT ROW)
    list(APPEND LINES "a room that cmake/check_seam.cmake does not name")
  endif()
  foreach(LINE IN LISTS LINES)
    if(NOT LINE MATCHES "${ALLOWED}")
      message("${FILE}: ${LINE}")
      math(EXPR FAULTS "${FAULTS} + 1")
    endif()
  endforeach()
endforeach()
if(FAULTS GREATER 0)
  message(FATAL_ERROR "Rooms include each other as cmake/check_seam.cmake has it; the portable ones use the C++ standard library and nothing else.")
endif()
