// The windowed games' command line:
//   gloamhold [-C DIR] [--script FILE] [--record FILE] [--state FILE] [--version]
// Parsed without touching any file, so that every mistake is reported before the window opens.
#pragma once

#include <stddef.h>

#include "hosts/command_line.h"

struct window_options {
    const char* directory;   // -C: null to stay where we are
    const char* script_path; // --script: timed input added to the player's; null for none
    const char* record_path; // --record: where the session is recorded; null for none
    const char* state_path;  // --state: the state file written when the game quits; null for none
    char* resolved[3];       // the three paths made absolute by window_command_line (heap), or null
};

extern const char* const WINDOW_USAGE;

// Parses argv[1..argc-1] into `options`.
command_line_result parse_window_arguments(int argc, const char* const* argv, window_options* options, char* error,
                                           size_t error_capacity);

// What a windowed game does with its command line before anything else: prints the usage, the
// version or the mistake (on standard output or standard error), makes the file names absolute (they
// keep meaning what they meant where the command was given) and changes into -C's directory.
// Returns WINDOW_GO_ON to start the game, else the status to exit with: 0 after the usage or the
// version, 2 for a mistake or a directory that cannot be entered.
const int WINDOW_GO_ON = -1;
int window_command_line(int argc, const char* const* argv, window_options* options);

// Releases the paths window_command_line made absolute.
void window_options_free(window_options* options);
