// The message line's text and end time, until the interaction code that writes them defines them.
#include "ui/hud.h"

char message_text[MESSAGE_TEXT_CAPACITY];
float message_visible_until;
