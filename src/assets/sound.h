// Sound effects: files in gloamhold_data/sounds decoded once into raw PCM, as the file holds it,
// so that the mixer only copies and scales samples.
#pragma once

#include <stdint.h>

#include "assets/registry.h"

struct sound {
    uint32_t bits_per_sample; // 8 (unsigned samples) or 16 (signed samples)
    uint32_t channels;        // 1 or 2, interleaved
    uint32_t sample_rate;     // as the file gives it; never resampled at load
    uint64_t size;            // bytes of sample data
    uint8_t* data;            // heap block owned by the record; null when size is 0
};

extern registry sounds;

// 1 only when the whole stream was read as 8- or 16-bit PCM with one or two channels.
int sound_load_file(sound* record, const char* path);

// Decodes gloamhold_data/sounds/<name> into a new slot and registers the name; -1 on failure.
// Every call decodes again and takes a new slot: sounds are never looked up by name.
int32_t load_sound(const char* name);
