# Compiler settings shared by every target that is part of the game itself.
# Tests, benchmarks and tools use the standard library freely and only take the warnings.

add_library(gloamhold_warnings INTERFACE)
target_compile_options(gloamhold_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wformat=2 -Wundef -Wcast-align -Wnon-virtual-dtor)

# The game's own code: no exceptions, no RTTI needs, and floating point that gives the
# same frame bit for bit on every run (no contraction into fused multiply-adds, SSE2 maths).
add_library(gloamhold_game_flags INTERFACE)
target_link_libraries(gloamhold_game_flags INTERFACE gloamhold_warnings)
target_compile_options(gloamhold_game_flags INTERFACE
  -fno-exceptions -ffp-contract=off -msse2 -mfpmath=sse)
target_include_directories(gloamhold_game_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)

if(WIN32)
  # Ship one self-contained executable: no libgcc/libstdc++/winpthread DLLs beside it.
  add_link_options(-static -static-libgcc -static-libstdc++)
endif()

# gloamhold_module(NAME SOURCES... [LINKS libs...]): one static library per layer of the game.
function(gloamhold_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC gloamhold_game_flags ${ARG_LINKS})
endfunction()

# gloamhold_link_host(PROGRAM HOST): a program runs on one host (src/CMakeLists.txt) and plays
# through that host's audio device, which the mixer then links after itself.
function(gloamhold_link_host program host)
  get_target_property(device ${host} GLOAMHOLD_AUDIO_DEVICE)
  target_link_libraries(${program} PRIVATE ${host})
  set_target_properties(${program} PROPERTIES GLOAMHOLD_AUDIO_DEVICE ${device})
endfunction()
