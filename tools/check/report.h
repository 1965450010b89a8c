// What the checker finds, one line per problem: "<path>[:<line>]: <message>", printed as found.
// The game's loaders and the checker's own checks report through the same sink
// (core/diagnostics.h). Paths are the game's own ("gloamhold_data/..."), shown under the name the
// user gave the data directory, so that an editor can jump to them.
#pragma once

#include <stdint.h>

#include <string>

// The data directory as the user named it, shown in place of the game's "gloamhold_data".
void report_show_data_root_as(const std::string& shown_root);
std::string shown_path(const std::string& game_path);

// Installs the sink that prints each problem once, however often a loader meets it.
void report_to_standard_output();

int32_t problem_count();
