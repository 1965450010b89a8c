// Screenshots of the windowed games: F12 saves the next frame drawn as
// screenshots/gloamhold-NNNN.png in the working directory, at the first number not yet taken.
#pragma once

#include <stddef.h>
#include <stdint.h>

enum { SCREENSHOT_PATH_CAPACITY = 64 };

// The first "FOLDER/gloamhold-NNNN.png" from 0001 to 9999 that does not exist yet; 0 when every
// number is taken.
int next_screenshot_path(const char* folder, char* path, size_t capacity);

// Saves the frame in "screenshots", made when it is missing; the name taken goes into `path`. 1
// when the file was written.
int save_screenshot(const uint16_t* pixels, int32_t width, int32_t height, char* path, size_t capacity);
