#include "core/frame.h"

uint16_t* color_buffer;
int32_t frame_width;
int32_t frame_height;
