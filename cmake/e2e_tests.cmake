# The executables of this build, driven from without. Debian's own Python, for which its packages
# install their modules.
file(GLOB SCRIPTS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/e2e/*_test.py)
if(TARGET norvane_desktop)
  add_test(NAME ui_bundle COMMAND /usr/bin/python3 ${CMAKE_SOURCE_DIR}/tools/ui_bundle.py)
  set_tests_properties(ui_bundle PROPERTIES
    FIXTURES_SETUP ui_bundle RESOURCE_LOCK ui_bundle
    SKIP_REGULAR_EXPRESSION "skipped: no UI bundle to be had")
endif()
foreach(SCRIPT IN LISTS SCRIPTS)
  get_filename_component(NAME ${SCRIPT} NAME_WE)
  if((NAME MATCHES "^(desktop|explorer|ui)_test$" AND NOT TARGET norvane_desktop) OR
     (NAME STREQUAL hardening_test AND NOT CMAKE_BUILD_TYPE STREQUAL Release))
    continue()
  endif()
  add_test(NAME e2e_${NAME} COMMAND /usr/bin/python3 ${SCRIPT})
  set(ENVIRONMENT "NORVANE_BUNDLE=${NORVANE_BUNDLE_DIR};PYTHONPATH=${CMAKE_SOURCE_DIR}/tools;PYTHONDONTWRITEBYTECODE=1")
  if(NAME MATCHES "^(desktop|explorer|ui)_test$")
    # The toolkit keeps much until the process ends.
    list(APPEND ENVIRONMENT "ASAN_OPTIONS=detect_leaks=0")
    set_tests_properties(e2e_${NAME} PROPERTIES RUN_SERIAL ON)
    if(NAME STREQUAL ui_test)
      set_tests_properties(e2e_ui_test PROPERTIES FIXTURES_REQUIRED ui_bundle
                           SKIP_REGULAR_EXPRESSION "no UI bundle to be had")
    endif()
  endif()
  set_tests_properties(e2e_${NAME} PROPERTIES ENVIRONMENT "${ENVIRONMENT}")
endforeach()

if(TARGET norvane_desktop AND CMAKE_BUILD_TYPE STREQUAL Release)  # what is shipped
  add_test(NAME packaging COMMAND /usr/bin/python3
           ${CMAKE_SOURCE_DIR}/tests/packaging/packaging_test.py)
  set_tests_properties(packaging PROPERTIES
    ENVIRONMENT "NORVANE_BUILD=${CMAKE_BINARY_DIR};PYTHONDONTWRITEBYTECODE=1")
endif()
