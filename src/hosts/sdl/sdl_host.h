// The native host: the game in an SDL window, with the Windows game's window size, input rules
// and fixed-step loop.
#pragma once

enum { SDL_EXIT_START_FAILED = 3 }; // as gloamhold-headless's

// Reads the command line (hosts/window_options.h), finds the data (in the working folder, else
// beside the program), then runs the game; 0 after the loop ends, 1 when the window could not be
// made, 2 for a mistake on the command line, 3 when there is no data or the game's start-up failed
// (the reason is on stderr: where the game looked, or the problem that stopped it).
int sdl_host_main(int argc, const char* const* argv);
