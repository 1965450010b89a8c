// The dialogue runtime: talking to a character opens that character's dialogue.
#pragma once

#include <stdint.h>

// Opens the dialogue with this index; 1 when it opened. The runtime that walks the script, shows
// it and takes the answers is not built yet: until it is, no dialogue opens and this returns 0.
int start_dialogue(int32_t dialogue);
