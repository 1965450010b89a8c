// Starting the game so that a failed start-up can say why: the hosts that talk to their user run
// the game's start-up with a diagnostics sink that keeps the reason.
#pragma once

#include <stddef.h>

// Runs game_init with a sink installed for its length only (the running game stays silent). 1 when
// the game started; 0 when a step failed, with `reason` holding the last diagnostic reported, as
// "file:line: message" ("file: message" when it has no line), or "" when none was.
int game_init_keeping_reason(char* reason, size_t capacity);
