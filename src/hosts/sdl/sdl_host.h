// The native host: the game in an SDL window, with the Windows game's window size, input rules
// and fixed-step loop.
#pragma once

// Runs the game; 0 after the loop ends (also when the game's start-up fails, as on Windows), 1
// when the window could not be made.
int sdl_host_main();
