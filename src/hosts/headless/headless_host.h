// The headless host: the game without a window, on a virtual clock, with scripted input, frames,
// state and audio written to files. The same arguments give the same results on every run.
#pragma once

enum headless_exit_code {
    HEADLESS_EXIT_RAN = 0,
    HEADLESS_EXIT_OUTPUT_FAILED = 1, // the run finished but a shot, the state or the audio could not be written
    HEADLESS_EXIT_BAD_ARGUMENTS = 2, // nothing ran; stderr says which argument is wrong
    HEADLESS_EXIT_START_FAILED = 3,  // the game's start-up failed
};

// Runs the whole program for these arguments and returns its exit code.
int headless_main(int argc, const char* const* argv);
