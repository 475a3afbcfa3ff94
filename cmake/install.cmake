# Where everything belongs on a system: the bundle whole, and what the desktops look for.
include(GNUInstallDirs)

# The image of the status item, and the windows' icon where none is installed.
configure_file(packaging/icons/cn.kestrio.norvane-symbolic.svg
               ${NORVANE_BUNDLE_DIR}/Contents/Resources/MenuBarIcon-symbolic.svg COPYONLY)
configure_file(packaging/icons/cn.kestrio.norvane.svg
               ${NORVANE_BUNDLE_DIR}/Contents/Resources/icons/hicolor/scalable/apps/cn.kestrio.norvane.svg
               COPYONLY)

install(DIRECTORY ${NORVANE_BUNDLE_DIR}/ DESTINATION ${CMAKE_INSTALL_LIBDIR}/norvane/Norvane.app
        USE_SOURCE_PERMISSIONS)
install(FILES packaging/cn.kestrio.norvane.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/cn.kestrio.norvane.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES packaging/icons/cn.kestrio.norvane.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES packaging/icons/cn.kestrio.norvane-symbolic.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/symbolic/apps)

# What names the prefix is made when it is known: at the installation.
file(RELATIVE_PATH FROM_BIN ${CMAKE_INSTALL_FULL_BINDIR}
     ${CMAKE_INSTALL_FULL_LIBDIR}/norvane/Norvane.app/Contents/MacOS/Norvane)
install(CODE "
  set(NORVANE_EXECUTABLE \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/Norvane\")
  configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/packaging/cn.kestrio.norvane.service.in\"
                 \"${CMAKE_CURRENT_BINARY_DIR}/cn.kestrio.norvane.service\" @ONLY)
  file(INSTALL \"${CMAKE_CURRENT_BINARY_DIR}/cn.kestrio.norvane.service\"
       DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/dbus-1/services\")
  set(BIN \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
  file(MAKE_DIRECTORY \"\${BIN}\")
  file(CREATE_LINK \"${FROM_BIN}\" \"\${BIN}/Norvane\" SYMBOLIC)
")
