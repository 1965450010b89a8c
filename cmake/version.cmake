# Writes the game's version text into OUTPUT at build time: the project's version, then what
# `git describe` says of the source tree when it is a git checkout (a tarball of the sources has
# none). The file is rewritten only when the text changes, so a build with nothing new compiles
# nothing.
#   cmake -DSOURCE_DIR=... -DPROJECT_VERSION=... -DOUTPUT=... -P version.cmake
set(version_text "${PROJECT_VERSION}")
find_program(git_command git)
if(git_command AND EXISTS "${SOURCE_DIR}/.git")
  execute_process(COMMAND "${git_command}" describe --tags --always --dirty
    WORKING_DIRECTORY "${SOURCE_DIR}" OUTPUT_VARIABLE described ERROR_QUIET
    RESULT_VARIABLE described_status OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(described_status EQUAL 0 AND NOT described STREQUAL "")
    set(version_text "${version_text} (${described})")
  endif()
endif()
set(content "// Written by cmake/version.cmake at build time.\n#include \"app/version.h\"\n\nconst char* const GAME_VERSION = \"${version_text}\";\n")
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" old_content)
endif()
if(NOT old_content STREQUAL content)
  file(WRITE "${OUTPUT}" "${content}")
endif()
