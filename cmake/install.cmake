# Where everything belongs on a system: the bundle whole, and what the desktops and the shell look for.
# The components host and desktop are the packages' (cmake/packages.cmake).
include(GNUInstallDirs)
set(BUNDLE ${CMAKE_INSTALL_LIBDIR}/norvane/Norvane.app)
set(COMPLETIONS ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
set(ICONS ${CMAKE_INSTALL_DATADIR}/icons/hicolor)

# The image of the status item, and the windows' icon where none is installed.
configure_file(packaging/icons/cn.kestrio.norvane-symbolic.svg
               ${NORVANE_BUNDLE_DIR}/Contents/Resources/MenuBarIcon-symbolic.svg COPYONLY)
configure_file(packaging/icons/cn.kestrio.norvane.svg
               ${NORVANE_BUNDLE_DIR}/Contents/Resources/icons/hicolor/scalable/apps/cn.kestrio.norvane.svg
               COPYONLY)

# In no package: the core that serves as an example, and what else was put into the bundle.
install(DIRECTORY ${NORVANE_BUNDLE_DIR}/ DESTINATION ${BUNDLE} USE_SOURCE_PERMISSIONS
        COMPONENT bundle REGEX "/Contents/(MacOS|Resources)$" EXCLUDE)

install(TARGETS Norvane norvane-keychain DESTINATION ${BUNDLE}/Contents/MacOS COMPONENT host)
install(FILES docs/console.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/norvane-host COMPONENT host)
install(FILES packaging/completion.bash DESTINATION ${COMPLETIONS} RENAME Norvane COMPONENT host)
file(RELATIVE_PATH FROM_BIN ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
install(CODE "
  set(ROOT \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
  file(MAKE_DIRECTORY \"\${ROOT}/${CMAKE_INSTALL_BINDIR}\")
  foreach(PROGRAM IN ITEMS Norvane norvane-keychain)
    file(CREATE_LINK ${FROM_BIN}/norvane/Norvane.app/Contents/MacOS/\${PROGRAM}
         \"\${ROOT}/${CMAKE_INSTALL_BINDIR}/\${PROGRAM}\" SYMBOLIC)
  endforeach()
  file(CREATE_LINK Norvane \"\${ROOT}/${COMPLETIONS}/norvane-keychain\" SYMBOLIC)
" COMPONENT host)
find_program(HELP2MAN help2man)
if(HELP2MAN AND NOT NORVANE_SANITIZE)
  set(Norvane_NAME "desktop host of a password manager")
  set(norvane-keychain_NAME "reads one item of the headless keychain")
  foreach(PROGRAM IN ITEMS Norvane norvane-keychain)
    set(PAGE ${CMAKE_CURRENT_BINARY_DIR}/${PROGRAM}.1.gz)
    add_custom_command(
      OUTPUT ${PAGE}
      COMMAND tools/manual-page $<TARGET_FILE:${PROGRAM}> ${${PROGRAM}_NAME} ${PAGE}
      DEPENDS ${PROGRAM} tools/manual-page
      WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
      VERBATIM)
    add_custom_target(${PROGRAM}_manual ALL DEPENDS ${PAGE})
    install(FILES ${PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT host)
  endforeach()
elseif(NOT NORVANE_SANITIZE)
  message(STATUS "Without manual pages: help2man is not installed")
endif()

if(TARGET norvane-desktop)
  install(TARGETS norvane-desktop DESTINATION ${BUNDLE}/Contents/MacOS COMPONENT desktop)
  install(DIRECTORY ${NORVANE_BUNDLE_DIR}/Contents/Resources DESTINATION ${BUNDLE}/Contents
          COMPONENT desktop)
  install(FILES packaging/cn.kestrio.norvane.desktop
          DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT desktop)
  install(FILES packaging/cn.kestrio.norvane.metainfo.xml
          DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT desktop)
  install(FILES packaging/icons/cn.kestrio.norvane.svg DESTINATION ${ICONS}/scalable/apps
          COMPONENT desktop)
  install(FILES packaging/icons/cn.kestrio.norvane-symbolic.svg DESTINATION ${ICONS}/symbolic/apps
          COMPONENT desktop)
  # What names the prefix is made when it is known: at the installation.
  install(CODE "
    set(NORVANE_EXECUTABLE \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/Norvane\")
    configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/packaging/cn.kestrio.norvane.service.in\"
                   \"${CMAKE_CURRENT_BINARY_DIR}/cn.kestrio.norvane.service\" @ONLY)
    file(INSTALL \"${CMAKE_CURRENT_BINARY_DIR}/cn.kestrio.norvane.service\"
         DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/dbus-1/services\")
  " COMPONENT desktop)
endif()
