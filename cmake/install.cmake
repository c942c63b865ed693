# SPDX-License-Identifier: MIT
#
# The installed files. packaging/debian makes the Debian package of them (scripts/package).
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(generated ${PROJECT_BINARY_DIR}/packaging)
set(unit_folder lib/systemd/system)

install(TARGETS vokcontrol vokcollect RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR})
install(TARGETS vokcontrol_library LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/vokcontrol.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The module starts the collector by this name, and gets the guarded one.
file(MAKE_DIRECTORY ${generated})
file(CREATE_LINK ../${CMAKE_INSTALL_SBINDIR}/vokcollect ${generated}/pelstatus SYMBOLIC)
install(FILES ${generated}/pelstatus DESTINATION ${CMAKE_INSTALL_BINDIR})

# Files that name the prefix are made at installation, when the prefix is final.
function(install_configured name folder)
  install(CODE "configure_file(\"${packaging}/${name}.in\" \"${generated}/${name}\" @ONLY)")
  install(FILES ${generated}/${name} DESTINATION ${folder})
endfunction()

install(CODE "set(PROJECT_VERSION ${PROJECT_VERSION})
set(LIBRARY_FOLDER ${CMAKE_INSTALL_LIBDIR})
set(HEADER_FOLDER ${CMAKE_INSTALL_INCLUDEDIR})
set(PROGRAM_FOLDER ${CMAKE_INSTALL_SBINDIR})
set(CLIENT_FOLDER ${CMAKE_INSTALL_BINDIR})")
install_configured(vokcontrol.pc ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES README.md CHANGELOG.md LICENSE docs/architecture.md docs/glossary.md docs/install.md
        docs/porting.md docs/programs.md docs/protocol.md docs/security.md docs/troubleshooting.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} USE_SOURCE_PERMISSIONS)
install(DIRECTORY docs/json DESTINATION ${CMAKE_INSTALL_DATADIR}/vokcontrol)
install(FILES ${packaging}/man/vokcontrol.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
install(FILES ${packaging}/man/vokcontrol-protocol.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7)

if(TARGET vok_config)
  # Where it is looked for, if this is installed into the system; an administrator's own stays.
  install(CODE "set(settings_folder \${CMAKE_INSTALL_PREFIX}/etc)
if(CMAKE_INSTALL_PREFIX STREQUAL /usr)
  set(settings_folder /etc)
endif()
if(NOT EXISTS \$ENV{DESTDIR}\${settings_folder}/vokcontrol.conf)
  file(INSTALL ${packaging}/vokcontrol.conf DESTINATION \${settings_folder})
endif()")
  install(FILES ${packaging}/man/vokcontrol.conf.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
endif()

install_configured(systemd/vokcontrol-boot.service ${unit_folder})
install_configured(systemd/vokcontrol-collect.service ${unit_folder})
install(FILES ${packaging}/systemd/vokcontrol-collect.timer DESTINATION ${unit_folder})
if(TARGET vokserve)
  install(TARGETS vokserve RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR})
  install(FILES ${packaging}/man/vokserve.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
  install(FILES ${packaging}/systemd/vokserve.socket DESTINATION ${unit_folder})
  install_configured(systemd/vokserve.service ${unit_folder})
  # For other systems; where systemd is, a script in /etc/init.d would be started as well.
  install(PROGRAMS ${packaging}/init/vokcontrol DESTINATION ${CMAKE_INSTALL_DATADIR}/vokcontrol/init)
endif()

if(TARGET vokctl)
  install(TARGETS vokctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${packaging}/man/vokctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  # For bash, zsh and fish; its folders are those of share.
  install(DIRECTORY ${packaging}/completion/ DESTINATION ${CMAKE_INSTALL_DATADIR} USE_SOURCE_PERMISSIONS)
  install(FILES ${packaging}/systemd/vokcontrol-history.path ${packaging}/systemd/vokcontrol-metrics.timer
          ${packaging}/systemd/vokcontrol-notify.timer DESTINATION ${unit_folder})
  install_configured(systemd/vokcontrol-history.service ${unit_folder})
  install_configured(systemd/vokcontrol-metrics.service ${unit_folder})
  install_configured(systemd/vokcontrol-notify.service ${unit_folder})
  # Programs are switched on by a link in /etc/vokcontrol/notify.d.
  install(DIRECTORY ${packaging}/notify DESTINATION ${CMAKE_INSTALL_DATADIR}/vokcontrol USE_SOURCE_PERMISSIONS)
  install(FILES docs/monitoring.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
  install(DIRECTORY ${packaging}/monitoring DESTINATION ${CMAKE_INSTALL_DATADIR}/vokcontrol)
endif()
if(TARGET vokpage)
  # Not where a web server would run it unasked.
  install(TARGETS vokpage RUNTIME DESTINATION lib/vokcontrol)
  install(FILES ${packaging}/man/vokpage.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
  install(DIRECTORY ${packaging}/web-server DESTINATION ${CMAKE_INSTALL_DOCDIR} USE_SOURCE_PERMISSIONS)
  install(FILES docs/web-server.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
  install(DIRECTORY page/static/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vokcontrol/www)
endif()

# The system's own folder of libraries is searched anyway, and its programs look nowhere else.
install(CODE "if(CMAKE_INSTALL_PREFIX STREQUAL /usr)
  file(GLOB programs \$ENV{DESTDIR}/usr/${CMAKE_INSTALL_BINDIR}/vok* \$ENV{DESTDIR}/usr/${CMAKE_INSTALL_SBINDIR}/vok*
       \$ENV{DESTDIR}/usr/lib/vokcontrol/vok* \$ENV{DESTDIR}/usr/${CMAKE_INSTALL_LIBDIR}/libvokcontrol.so.*)
  foreach(program \${programs})
    file(RPATH_REMOVE FILE \${program})
  endforeach()
endif()")
