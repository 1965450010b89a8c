// The native host: the game in an SDL window, with the Windows game's window size, input rules
// and fixed-step loop.
#pragma once

// Reads the command line (hosts/window_options.h), then runs the game; 0 after the loop ends (also
// when the game's start-up fails, as on Windows), 1 when the window could not be made, 2 for a
// mistake on the command line.
int sdl_host_main(int argc, const char* const* argv);
