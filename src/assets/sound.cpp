#include "assets/sound.h"

registry sounds = REGISTRY_OF(sound);
