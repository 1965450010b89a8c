#include "hosts/headless/headless_audio.h"

#include <stdlib.h>
#include <string.h>

#include "audio/mixer.h"
#include "platform/platform.h"

sound_start_log headless_sound_starts;

enum { WAV_HEADER_BYTES = 44 };

struct virtual_device {
    int32_t open;
    uint32_t block_bytes;
    double block_seconds;
    uint8_t* block;
    uint64_t blocks_mixed;
    uint32_t samples_per_second;
    uint32_t channels;
    uint32_t bits_per_sample;
    FILE* wav;
    uint64_t wav_data_bytes;
    int32_t wav_failed;
    int32_t logging;
    int32_t log_tick;
};

static virtual_device device;

int platform_audio_open(uint32_t, uint32_t samples_per_second, uint32_t channels, uint32_t bits_per_sample,
                        uint32_t block_bytes)
{
    uint32_t frame_bytes = bits_per_sample / 8 * channels;
    if (samples_per_second == 0 || frame_bytes == 0 || block_bytes < frame_bytes)
        return 0;
    void* block = realloc(device.block, block_bytes);
    if (!block)
        return 0;
    device.block = static_cast<uint8_t*>(block);
    device.block_bytes = block_bytes;
    device.block_seconds = static_cast<double>(block_bytes / frame_bytes) / samples_per_second;
    device.samples_per_second = samples_per_second;
    device.channels = channels;
    device.bits_per_sample = bits_per_sample;
    device.blocks_mixed = 0;
    device.open = 1;
    return 1;
}

// Refills run on the game's own thread, between passes of the loop: nothing to exclude.
void platform_audio_lock() {}
void platform_audio_unlock() {}

void platform_audio_voice_started(int32_t sound)
{
    if (!device.logging)
        return;
    sound_start_log& log = headless_sound_starts;
    if (log.count == log.capacity) {
        int32_t grown = log.capacity + 64;
        void* entries = realloc(log.entries, static_cast<size_t>(grown) * sizeof(sound_start));
        if (!entries)
            return;
        log.entries = static_cast<sound_start*>(entries);
        log.capacity = grown;
    }
    log.entries[log.count++] = sound_start{device.log_tick, sound};
}

void headless_audio_log_sounds(int32_t tick)
{
    device.logging = 1;
    device.log_tick = tick;
}

void headless_audio_advance(double now)
{
    // The first block of silence ends one block length after opening; each finished block is
    // refilled at once, so block k is mixed at (k + 1) block lengths.
    while (device.open && static_cast<double>(device.blocks_mixed + 1) * device.block_seconds <= now) {
        audio_refill_block(device.block, device.block_bytes);
        device.blocks_mixed += 1;
        if (device.wav && !device.wav_failed) {
            if (fwrite(device.block, 1, device.block_bytes, device.wav) != device.block_bytes)
                device.wav_failed = 1;
            device.wav_data_bytes += device.block_bytes;
        }
    }
}

uint64_t headless_audio_blocks_mixed()
{
    return device.blocks_mixed;
}

static void put_16(uint8_t* at, uint32_t value)
{
    at[0] = static_cast<uint8_t>(value);
    at[1] = static_cast<uint8_t>(value >> 8);
}

static void put_32(uint8_t* at, uint32_t value)
{
    put_16(at, value & 0xFFFF);
    put_16(at + 2, value >> 16);
}

static void wav_header(uint8_t header[WAV_HEADER_BYTES], uint64_t data_bytes)
{
    uint32_t data = data_bytes > 0xFFFFFFFFu - 36 ? 0xFFFFFFFFu - 36 : static_cast<uint32_t>(data_bytes);
    uint32_t frame_bytes = device.bits_per_sample / 8 * device.channels;
    memcpy(header, "RIFF", 4);
    put_32(header + 4, 36 + data);
    memcpy(header + 8, "WAVEfmt ", 8);
    put_32(header + 16, 16);
    put_16(header + 20, 1); // PCM
    put_16(header + 22, device.channels);
    put_32(header + 24, device.samples_per_second);
    put_32(header + 28, device.samples_per_second * frame_bytes);
    put_16(header + 32, frame_bytes);
    put_16(header + 34, device.bits_per_sample);
    memcpy(header + 36, "data", 4);
    put_32(header + 40, data);
}

int headless_audio_start_wav(FILE* file)
{
    device.wav = file;
    device.wav_data_bytes = 0;
    device.wav_failed = 0;
    uint8_t header[WAV_HEADER_BYTES];
    wav_header(header, 0);
    if (fwrite(header, 1, sizeof header, file) != sizeof header)
        device.wav_failed = 1;
    return !device.wav_failed;
}

int headless_audio_finish_wav()
{
    if (!device.wav)
        return 0;
    uint8_t header[WAV_HEADER_BYTES];
    wav_header(header, device.wav_data_bytes);
    if (fseek(device.wav, 0, SEEK_SET) != 0 || fwrite(header, 1, sizeof header, device.wav) != sizeof header ||
        fflush(device.wav) != 0)
        device.wav_failed = 1;
    device.wav = nullptr;
    return !device.wav_failed;
}

void headless_audio_reset()
{
    free(device.block);
    free(headless_sound_starts.entries);
    device = virtual_device{};
    headless_sound_starts = sound_start_log{};
}
