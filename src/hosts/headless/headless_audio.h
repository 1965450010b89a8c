// The headless host's audio device: no sound card, a virtual one that plays its blocks in virtual
// time. Like the wave-out device it starts with two blocks of silence and refills each block as
// it finishes, so a block is mixed every block length of virtual time from then on; what it mixes
// can be kept as a WAV file.
#pragma once

#include <stdint.h>
#include <stdio.h>

#include "hosts/state_file.h" // sound_start_log

// Every sound started since the device was opened, when logging is on.
extern sound_start_log headless_sound_starts;

// Turns the log of started sounds on and sets the tick that new entries get.
void headless_audio_log_sounds(int32_t tick);

// Mixes every block that has finished playing by virtual time `now` (seconds since the device
// opened), in order; each mixed block goes to the WAV file when one is being written.
void headless_audio_advance(double now);

// Blocks mixed so far.
uint64_t headless_audio_blocks_mixed();

// From now on, keeps every mixed block in `file` as a WAV of the opened format (the header is
// completed by headless_audio_finish_wav). 0 when the file cannot be written.
int headless_audio_start_wav(FILE* file);
// Writes the final sizes into the header; 1 when everything reached the file.
int headless_audio_finish_wav();

// Closes the virtual device and forgets the log (for tests that open it again).
void headless_audio_reset();
