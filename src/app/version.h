// The game's version: the project's version number, then what `git describe` said of the sources
// it was built from, e.g. "0.5.0 (404e86b-dirty)". Written at build time by cmake/version.cmake.
#pragma once

extern const char* const GAME_VERSION;
