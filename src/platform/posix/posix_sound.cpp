// Sounds through libsndfile. The stored sample format is reported as it is, so the loader can
// refuse what the game does not play; 8- and 16-bit PCM come out as a WAV file stores them:
// 8-bit unsigned, 16-bit signed little-endian, whatever the container.
#include <sndfile.h>

#include "platform/platform.h"

enum { SOUND_BLOCK_FRAMES = 4096 };

struct platform_sound_file_handle {
    SNDFILE* file;
    uint32_t channels;
    uint32_t bits_per_sample;
    short* samples; // one block, as libsndfile hands it over
    uint8_t* bytes; // the same block in the stored layout
};

// The sample size a format stores; 0 for compressed encodings, which state none.
static uint32_t stored_bits(int format)
{
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
        return 8;
    case SF_FORMAT_PCM_16:
        return 16;
    case SF_FORMAT_PCM_24:
        return 24;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
        return 32;
    case SF_FORMAT_DOUBLE:
        return 64;
    default:
        return 0;
    }
}

platform_sound_file platform_sound_file_open(const char* path, platform_sound_format* format)
{
    SF_INFO info = {};
    SNDFILE* file = sf_open(path, SFM_READ, &info);
    if (!file)
        return nullptr;
    uint32_t bits = stored_bits(info.format);
    platform_sound_file sound = nullptr;
    if (bits != 0 && info.channels > 0 && info.samplerate > 0)
        sound = static_cast<platform_sound_file>(platform_heap_alloc(sizeof(platform_sound_file_handle)));
    if (!sound) {
        sf_close(file);
        return nullptr;
    }
    *sound = {};
    sound->file = file;
    sound->channels = static_cast<uint32_t>(info.channels);
    sound->bits_per_sample = bits;
    format->bits_per_sample = bits;
    format->channels = sound->channels;
    format->sample_rate = static_cast<uint32_t>(info.samplerate);
    return sound;
}

int platform_sound_file_read(platform_sound_file sound, const uint8_t** bytes, uint32_t* length, int* ended)
{
    // Only the two sample sizes the game plays are ever read.
    if (sound->bits_per_sample != 8 && sound->bits_per_sample != 16)
        return 0;
    size_t block_samples = static_cast<size_t>(SOUND_BLOCK_FRAMES) * sound->channels;
    if (!sound->samples) {
        sound->samples = static_cast<short*>(platform_heap_alloc(block_samples * sizeof(short)));
        sound->bytes = static_cast<uint8_t*>(platform_heap_alloc(block_samples * sizeof(short)));
        if (!sound->samples || !sound->bytes)
            return 0;
    }
    sf_count_t frames = sf_readf_short(sound->file, sound->samples, SOUND_BLOCK_FRAMES);
    if (sf_error(sound->file) != SF_ERR_NO_ERROR)
        return 0;
    *ended = frames == 0;
    size_t count = static_cast<size_t>(frames) * sound->channels;
    uint8_t* out = sound->bytes;
    for (size_t i = 0; i < count; ++i) {
        uint16_t s = static_cast<uint16_t>(sound->samples[i]);
        if (sound->bits_per_sample == 8) {
            *out++ = static_cast<uint8_t>((s >> 8) ^ 0x80); // signed high byte to unsigned
        } else {
            *out++ = static_cast<uint8_t>(s & 0xFF);
            *out++ = static_cast<uint8_t>(s >> 8);
        }
    }
    *bytes = sound->bytes;
    *length = static_cast<uint32_t>(out - sound->bytes);
    return 1;
}

void platform_sound_file_close(platform_sound_file sound)
{
    if (!sound)
        return;
    sf_close(sound->file);
    platform_heap_free(sound->samples);
    platform_heap_free(sound->bytes);
    platform_heap_free(sound);
}
