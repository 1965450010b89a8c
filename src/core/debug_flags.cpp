#include "core/debug_flags.h"

int32_t debug_info = 1;
int32_t debug_wireframe = 0;
int32_t debug_show_colliders = 0;
int32_t debug_show_areas = 1;
int32_t debug_lighting = 1;
int32_t debug_show_occlusion = 0;
int32_t debug_show_lookup_tables = 0;
int32_t debug_portal_culling = 1;
