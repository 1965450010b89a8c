// The game's start-up order, run by the checker.
#pragma once

#include <string>

// Runs every step of the game's start-up with the game's loaders, checking each.
void check_startup();
// The step at which the game's start-up would stop (a shown path or a step's name); empty when it would start.
std::string startup_stop();
