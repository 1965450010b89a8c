// settings.ini: key=value lines read once at start-up into the settings globals. A missing file,
// a missing key or a value that does not parse silently leaves the default; nothing writes the file.
#pragma once

#include <stdint.h>

struct ini_entry {
    char key[100];   // everything before the first "=", exactly as written
    char value[100]; // everything after it
};

struct ini_table {
    int32_t count;
    ini_entry* entries; // heap array, grown by 8 entries and shrunk to count once read
};

// 1 when the file was opened and gave at least one entry, else 0 (and the table is empty).
int ini_load(ini_table* table, const char* file_name);
// The first entry whose whole key matches exactly, or null.
const ini_entry* ini_find(const ini_table* table, const char* key);
// 1 when the key exists and its value parses; `out` is written only then.
int ini_get_int(const ini_table* table, const char* key, int32_t* out);
int ini_get_float(const ini_table* table, const char* key, float* out);
void ini_free(ini_table* table);

// Reads the settings file and sets every setting, defaults where the file says nothing usable. Always 1.
int load_settings(const char* file_name);

struct screen_resolution {
    int32_t width;
    int32_t height;
};

// The settings, under their keys' names. Values are taken as they are, without range checks.
extern int32_t FPS;                          // frames drawn per second (60)
extern int32_t UPS;                          // simulation updates per second (40)
extern screen_resolution SCREEN_RESOLUTION;  // frame-buffer size, written as 800x600 (640x480)
extern float SCREEN_SCALE;                   // window size and presentation scale (1.0)
extern float MOUSE_SENSITIVITY_X;            // yaw per pixel x 0.001 (1.0)
extern float MOUSE_SENSITIVITY_Y;            // pitch per pixel x 0.001 (1.0)
extern float AUDIO_VOLUME;                   // master volume of the mixer (1.0)
extern float FOV;                            // vertical field of view in degrees (90.0)
extern int32_t TEXTURE_INTERPOLATION;        // filtered texture fetch (0); F10
extern int32_t TEXTURE_DITHERING;            // dithering when textures are converted (0); F11
extern int32_t LIGHT_DITHERING;              // ordered dithering of light levels (0); F9
extern int32_t ENABLE_HEAD_BOBBING;          // camera bob while walking (0)
extern int32_t RENDER_THREADS;               // threads drawing each frame; 0 one per processor (0)
