#include "game/dialogue.h"

// No dialogue runtime yet: talking to a character opens nothing. The runtime replaces this body.
int start_dialogue(int32_t)
{
    return 0;
}
