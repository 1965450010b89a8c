// Sound output: a growable list of voices, each a sound and the moment it started, mixed in
// software into fixed blocks that the host's audio device plays one after the other. No positional
// audio, no looping, no per-voice volume, no stopping: a sound plays once, start to end, at
// AUDIO_VOLUME. The time base of every voice is audio_clock, the start of the block being mixed.
#pragma once

#include <stdint.h>

struct voice {
    int32_t sound;     // index into the sound registry; -1 never plays
    int32_t active;    // 1 from play_sound until the block in which its sound runs out
    double start_time; // audio_clock when it was started
};

struct voice_list {
    voice* records;
    int32_t count;     // records ever used (inactive ones are reused first)
    int32_t capacity;  // raised by 10 when the list is full, before the block grows
    int32_t allocated; // records the block really holds (short of capacity only after a failed growth)
};

enum { VOICE_GROWTH = 10 };

// The output format as opened. Samples are interleaved; 16-bit samples are signed, 8-bit unsigned.
struct audio_format {
    uint32_t samples_per_second;
    uint32_t channels;        // 1 or 2
    uint32_t bits_per_sample; // 8 or 16
    uint32_t block_align;     // bytes per frame: bits / 8 x channels
};

// The device that the game asks for: the system's default output (Windows' WAVE_MAPPER).
enum : uint32_t { AUDIO_DEFAULT_DEVICE = 0xFFFFFFFFu };

extern voice_list voices;
extern audio_format audio_output;
extern uint64_t audio_bytes_queued; // bytes mixed and handed to the device so far
extern double audio_clock;          // audio_bytes_queued in seconds, taken before each block is mixed

// Opens the output device with the given format and starts its chain of two blocks of
// `block_bytes` bytes (silence first); 1 when the device plays, 0 when it could not be opened
// or the format is not one the mixer writes (8 or 16 bits, 1 or 2 channels). Nothing is ever closed.
int audio_open(uint32_t device, uint32_t samples_per_second, uint32_t channels, uint32_t bits_per_sample,
               uint32_t block_bytes);

// Starts `sound` from its beginning at the next mixed block; the same sound may play any number of
// times at once. 1, or 0 when the voice list cannot grow.
int play_sound(int32_t sound);

// The device's refill of one block of `bytes` bytes that it has just played: sets audio_clock,
// mixes the block and counts it as queued. Called on the device's thread.
void audio_refill_block(uint8_t* block, uint32_t bytes);

// Fills `frame_count` output frames at `block` from every active voice at audio_clock. Samples add
// with the wrap-around of the output width (no clipping), and 16-bit sources are scaled by the
// volume as unsigned numbers, so any volume but 1.0 distorts negative samples. The game's sounds
// are mixed this way on purpose; mixer_test pins the distortion.
void mix_block(uint8_t* block, uint32_t frame_count);

// 1 (the default): voices mixed into 16-bit stereo four frames at a time with SSE2; 0: all of it
// frame by frame. The two give the same bytes; tests compare them.
extern int mixer_vectorised;
