# Writes the source file OUTPUT, of SOURCE's VERSION and of the commit that is checked out, where SOURCE
# is a repository of git's. A file that says the same already is left alone.
set(COMMIT "")
if(EXISTS ${SOURCE}/.git)
  # As many digits in a shallow clone as in a whole one.
  execute_process(
    COMMAND git --no-optional-locks -C ${SOURCE} describe --always --dirty --abbrev=12 --exclude=*
    OUTPUT_VARIABLE COMMIT OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(COMMIT)
  set(COMMIT " (${COMMIT})")
endif()
configure_file(${SOURCE}/Runner/platform/linux/version.cpp.in ${OUTPUT} @ONLY)
