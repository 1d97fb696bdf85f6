# What `cmake --install` puts in place, and how other projects find it there.
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/zelcam)

if(WIN32)
  # As the package for programmers lies: the programs at the top, in one folder with the server.
  install(FILES $<TARGET_FILE:ZELCam> ${PROJECT_BINARY_DIR}/src/api/idl/ZELCam.tlb ${PROJECT_SOURCE_DIR}/LICENSE
          DESTINATION .)
  install(TARGETS zelcam RUNTIME DESTINATION .)
  install(FILES ${PROJECT_BINARY_DIR}/src/api/idl/ZELCam_i.h ${PROJECT_BINARY_DIR}/src/api/idl/ZELCam_i.c
                ${PROJECT_SOURCE_DIR}/src/api/ZELCam.idl
          DESTINATION include)
  return()
endif()

install(TARGETS ZELCam EXPORT ZELCamTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS zelcam RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# One folder to search. Not the include folder itself: nobody shall find these by accident.
install(FILES src/api/ZELCam.h src/api/ZELCam.idl ${PROJECT_BINARY_DIR}/src/api/idl/ZELCam_i.h DESTINATION ${headers})
install(FILES src/platform/ComponentTypes.h DESTINATION ${headers}/platform)
install(FILES src/platform/posix/ComponentTypesPosix.h DESTINATION ${headers}/platform/posix)
install(FILES packaging/linux/70-zelcam.rules DESTINATION lib/udev/rules.d)  # read there for every library folder
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zelcam)

# find_package(ZELCam)
include(CMakePackageConfigHelpers)
set(package ${PROJECT_BINARY_DIR}/package)
file(CONFIGURE OUTPUT ${package}/ZELCamConfig.cmake @ONLY
     CONTENT "include(\"\${CMAKE_CURRENT_LIST_DIR}/ZELCamTargets.cmake\")\n")
write_basic_package_version_file(${package}/ZELCamConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${package}/ZELCamConfig.cmake ${package}/ZELCamConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZELCam)
install(EXPORT ZELCamTargets NAMESPACE ZELCam:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZELCam)

# pkg-config zelcam
file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" up ${up})
configure_file(packaging/linux/zelcam.pc.in ${package}/zelcam.pc @ONLY)
install(FILES ${package}/zelcam.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
