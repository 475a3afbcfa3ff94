# The Debian packages, made by cpack of the components host and desktop.
set(DOC ${CMAKE_INSTALL_DATADIR}/doc)
set(CPACK_COMPONENTS_ALL host)
if(TARGET norvane-desktop)
  list(APPEND CPACK_COMPONENTS_ALL desktop)
endif()
foreach(COMPONENT IN LISTS CPACK_COMPONENTS_ALL)
  install(FILES packaging/debian/copyright DESTINATION ${DOC}/norvane-${COMPONENT}
          COMPONENT ${COMPONENT})
  install(CODE "execute_process(
    COMMAND gzip -9nc \"${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/changelog\"
    OUTPUT_FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${DOC}/norvane-${COMPONENT}/changelog.gz\"
    COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${COMPONENT})
endforeach()
install(FILES packaging/debian/norvane-desktop.lintian-overrides
        DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME norvane-desktop
        COMPONENT desktop)

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_SET_DESTDIR ON)  # the service names the prefix
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "Kestrio <norvane@kestrio.cn>")
set(CPACK_DEBIAN_PACKAGE_NAME norvane)
set(CPACK_DEBIAN_PACKAGE_SOURCE norvane)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION non-free/utils)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

# What shlibdeps cannot find: libraries that are opened at first use, and services of the session.
# Recommended is what AutoFill cannot do without: the cipher, the bus and a keyring. Without the others
# the simulated desktop has no icons, and the real one looks for no updates.
set(CPACK_DEBIAN_HOST_PACKAGE_RECOMMENDS libssl3)
set(CPACK_DEBIAN_HOST_PACKAGE_SUGGESTS libgdk-pixbuf-2.0-0)
set(CPACK_DEBIAN_HOST_DESCRIPTION "desktop host of the Norvane password manager
The native process of the password manager, on a simulated desktop without a
display: whoever writes JSON lines to it is its user interface and the person
at the desk.
.
The password manager's core library is not in this package. It is looked for
in /usr/lib/norvane/Norvane.app/Contents/Frameworks/libffi_bridge.dylib, or
where NORVANE_RUST_LIB_PATH says.")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS "norvane-host (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS 
    "default-dbus-session-bus | dbus-session-bus, gnome-keyring | libkf5wallet-bin | keepassxc")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SUGGESTS libcurl4)
set(CPACK_DEBIAN_DESKTOP_DESCRIPTION "Norvane password manager on the desktop
Real windows, a hotkey for Quick Access over any application, status item,
keyring, autostart and links of the form norvane: for the host that is in
norvane-host. Where no user interface is installed, an explorer of the host's
channels takes its place.")
include(CPack)
