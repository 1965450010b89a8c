# The release package a player downloads, made by `cmake --build --preset <preset> --target package`:
# one folder, gloamhold-<version>-<platform>/, that runs from wherever it is unpacked.
#   windows: build/windows/gloamhold-<version>-windows-x64.zip      (gloamhold.exe)
#   native:  build/native/gloamhold-<version>-linux-x86_64.tar.gz   (gloamhold, gloamhold-headless,
#            gloamhold-check, gloamhold.desktop and its icon)
# Both hold gloamhold_data/, settings.ini, a players' README.txt, LICENSE.txt and
# THIRD_PARTY_NOTICES.txt. The Linux programs use the system's SDL2, libpng and libsndfile (the
# README says so); installed programs carry no run path into the build tree.

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
if(WIN32)
  set(GLOAMHOLD_PACKAGE_PLATFORM windows-x64)
  set(GLOAMHOLD_PACKAGE_PROGRAMS gloamhold)
  file(READ ${packaging}/running-windows.txt GLOAMHOLD_RUNNING)
else()
  set(GLOAMHOLD_PACKAGE_PLATFORM linux-x86_64)
  set(GLOAMHOLD_PACKAGE_PROGRAMS gloamhold gloamhold-headless gloamhold-check)
  file(READ ${packaging}/running-linux.txt GLOAMHOLD_RUNNING)
endif()
string(STRIP "${GLOAMHOLD_RUNNING}" GLOAMHOLD_RUNNING)

# The text files for players, with the platform's line endings.
function(gloamhold_package_text source name)
  file(READ ${source} text)
  string(CONFIGURE "${text}" text @ONLY)
  if(WIN32)
    string(REPLACE "\n" "\r\n" text "${text}")
  endif()
  file(WRITE ${CMAKE_BINARY_DIR}/package/${name} "${text}")
  install(FILES ${CMAKE_BINARY_DIR}/package/${name} DESTINATION .)
endfunction()
gloamhold_package_text(${packaging}/README.txt.in README.txt)
gloamhold_package_text(${PROJECT_SOURCE_DIR}/LICENSE.txt LICENSE.txt)
gloamhold_package_text(${packaging}/THIRD_PARTY_NOTICES.txt THIRD_PARTY_NOTICES.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${packaging}/README.txt.in ${packaging}/running-windows.txt ${packaging}/running-linux.txt
  ${PROJECT_SOURCE_DIR}/LICENSE.txt ${packaging}/THIRD_PARTY_NOTICES.txt)

install(TARGETS ${GLOAMHOLD_PACKAGE_PROGRAMS} RUNTIME DESTINATION .)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/gloamhold_data DESTINATION .)
install(FILES ${PROJECT_SOURCE_DIR}/settings.ini DESTINATION .)
if(NOT WIN32)
  install(FILES ${packaging}/gloamhold.desktop ${packaging}/gloamhold.png DESTINATION .)
endif()

set(CPACK_PACKAGE_NAME gloamhold)
set(CPACK_PACKAGE_VENDOR "the Gloamhold developers")
set(CPACK_PACKAGE_VERSION ${GLOAMHOLD_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "A first-person walk through a keep at night, drawn in software")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE.txt)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_PACKAGE_FILE_NAME gloamhold-${GLOAMHOLD_VERSION}-${GLOAMHOLD_PACKAGE_PLATFORM})
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_BINARY_DIR})
# Players get the programs without their debugging information (the build keeps it).
set(CPACK_STRIP_FILES ON)
# Where the package is written, for the tests that unpack it (CPack's module reuses the name).
if(WIN32)
  set(GLOAMHOLD_PACKAGE_FILE ${CMAKE_BINARY_DIR}/${CPACK_PACKAGE_FILE_NAME}.zip)
else()
  set(GLOAMHOLD_PACKAGE_FILE ${CMAKE_BINARY_DIR}/${CPACK_PACKAGE_FILE_NAME}.tar.gz)
endif()
include(CPack)

