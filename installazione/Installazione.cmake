# What "cmake --install" puts where. A program finds the library beside it, wherever the two are copied to; a packager
# who wants no run path says CMAKE_SKIP_INSTALL_RPATH.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE verso_lib)
install(TARGETS lumoscad EXPORT LumoScadTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libreria NAMELINK_COMPONENT sviluppo)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/lumoscad DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT sviluppo)

set(posto_cmake ${CMAKE_INSTALL_LIBDIR}/cmake/LumoScad)
install(EXPORT LumoScadTargets NAMESPACE LumoScad:: DESTINATION ${posto_cmake} COMPONENT sviluppo)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/LumoScadConfig.cmake.in
  ${PROJECT_BINARY_DIR}/LumoScadConfig.cmake INSTALL_DESTINATION ${posto_cmake})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/LumoScadConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/LumoScadConfig.cmake ${PROJECT_BINARY_DIR}/LumoScadConfigVersion.cmake
  DESTINATION ${posto_cmake} COMPONENT sviluppo)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
  OUTPUT_VARIABLE verso_prefisso)
configure_file(${CMAKE_CURRENT_LIST_DIR}/lumoscad.pc.in ${PROJECT_BINARY_DIR}/lumoscad.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/lumoscad.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT sviluppo)

# For a developer in another language: the module for Python, and a program that calls the component in each.
install(FILES ${PROJECT_SOURCE_DIR}/installazione/lumoscad.py DESTINATION ${CMAKE_INSTALL_DATADIR}/lumoscad/python
  COMPONENT sviluppo)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/esempi DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT sviluppo)

set(manuale ${PROJECT_SOURCE_DIR}/installazione/man)
install(FILES ${manuale}/lumoscad.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT sviluppo)
install(FILES ${manuale}/lumoscad-nexaro.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT libreria)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${CMAKE_CURRENT_LIST_DIR}/licenze-altrui.txt
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT libreria)

if(LUMOSCAD_PROGRAMMI)
  set_target_properties(lumoscad_app PROPERTIES INSTALL_RPATH "$ORIGIN/${verso_lib}")
  install(TARGETS lumoscad_app RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programma)
  install(FILES ${manuale}/lumoscad.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programma)
  install(FILES ${PROJECT_SOURCE_DIR}/installazione/lumoscad.bash RENAME lumoscad
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT programma)
  # The demonstration is put there only when it is asked for by its name.
  set(LUMOSCAD_CARTELLA_DEMO ${CMAKE_INSTALL_DATADIR}/lumoscad/demo CACHE STRING "Where the demonstration is installed")
  set(posto_demo ${LUMOSCAD_CARTELLA_DEMO})
  install(TARGETS VB0001 lumoscad-genera RUNTIME DESTINATION ${posto_demo} COMPONENT demo EXCLUDE_FROM_ALL)
  install(PROGRAMS ${PROJECT_SOURCE_DIR}/demo/prepara.sh DESTINATION ${posto_demo} COMPONENT demo EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_SOURCE_DIR}/demo/schema.sql DESTINATION ${posto_demo} COMPONENT demo EXCLUDE_FROM_ALL)
endif()

# The tarball: everything, the demonstration too, below one directory that may be put anywhere.
set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_FILE_NAME lumoscad-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_SET_DESTDIR OFF)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_CMAKE_PROJECTS "${PROJECT_BINARY_DIR};LumoScad;ALL;/;${PROJECT_BINARY_DIR};LumoScad;demo;/")
set(CPACK_OUTPUT_CONFIG_FILE ${PROJECT_BINARY_DIR}/CPackConfig.cmake)
set(CPACK_SOURCE_OUTPUT_CONFIG_FILE ${PROJECT_BINARY_DIR}/CPackSourceConfig.cmake)
include(CPack)
