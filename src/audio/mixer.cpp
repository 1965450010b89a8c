#include "audio/mixer.h"

#include <string.h>

#include "assets/sound.h"
#include "core/heap.h"
#include "core/numbers.h"
#include "core/settings.h"
#include "platform/platform.h"

voice_list voices;
audio_format audio_output;
uint64_t audio_bytes_queued;
double audio_clock;

int audio_open(uint32_t device, uint32_t samples_per_second, uint32_t channels, uint32_t bits_per_sample,
               uint32_t block_bytes)
{
    if ((bits_per_sample != 8 && bits_per_sample != 16) || (channels != 1 && channels != 2))
        return 0;
    audio_output.samples_per_second = samples_per_second;
    audio_output.channels = channels;
    audio_output.bits_per_sample = bits_per_sample;
    audio_output.block_align = bits_per_sample / 8 * channels;
    // No block can be played before the device opens, so the clock may start before it does.
    audio_clock = 0.0;
    audio_bytes_queued = 0;
    return platform_audio_open(device, samples_per_second, channels, bits_per_sample, block_bytes);
}

// A voice record to use: the first inactive one, else a new one at the end. Null when the list
// cannot grow (its capacity then stays raised, and the growth is retried by the next call).
static voice* claim_voice()
{
    for (int32_t i = 0; i < voices.count; ++i)
        if (voices.records[i].active == 0)
            return &voices.records[i];
    if (voices.count >= voices.capacity)
        voices.capacity += VOICE_GROWTH;
    if (!heap_grow(&voices.records, &voices.allocated, voices.count + 1, voices.capacity))
        return nullptr;
    return &voices.records[voices.count++];
}

int play_sound(int32_t sound)
{
    // The list may move while it grows: keep the device's refill out meanwhile.
    platform_audio_lock();
    voice* record = claim_voice();
    if (record) {
        record->sound = sound;
        record->start_time = audio_clock;
        record->active = 1;
    }
    platform_audio_unlock();
    if (!record)
        return 0;
    platform_audio_voice_started(sound);
    return 1;
}

void audio_refill_block(uint8_t* block, uint32_t bytes)
{
    uint32_t frame_count = audio_output.block_align ? bytes / audio_output.block_align : 0;
    platform_audio_lock();
    audio_clock = static_cast<double>(audio_bytes_queued) / audio_output.block_align /
                  audio_output.samples_per_second;
    mix_block(block, frame_count);
    audio_bytes_queued += bytes;
    platform_audio_unlock();
}

struct source_frame {
    uint32_t left;  // as stored: 0..255 for 8-bit, 0..65535 for 16-bit (a signed sample read unsigned)
    uint32_t right;
};

static uint32_t read_16(const uint8_t* at)
{
    return static_cast<uint32_t>(at[0]) | static_cast<uint32_t>(at[1]) << 8;
}

static source_frame read_source_frame(const sound* source, uint64_t p)
{
    const uint8_t* data = source->data;
    if (source->bits_per_sample == 8 && source->channels == 1)
        return {data[p], 0};
    if (source->bits_per_sample == 8 && source->channels == 2)
        return {data[2 * p], data[2 * p + 1]};
    if (source->bits_per_sample == 16 && source->channels == 1)
        return {read_16(data + 2 * p), 0};
    if (source->bits_per_sample == 16 && source->channels == 2)
        return {read_16(data + 4 * p), read_16(data + 4 * p + 2)};
    return {0, 0};
}

// One source sample in the output's width, before the volume.
static int32_t to_output_width(uint32_t value, uint32_t source_bits)
{
    if (source_bits == 16 && audio_output.bits_per_sample == 8)
        return static_cast<int32_t>(value >> 8) + 128;
    if (source_bits == 8 && audio_output.bits_per_sample == 16)
        return (static_cast<int32_t>(value) - 128) * 256;
    return static_cast<int32_t>(value);
}

static void add_sample(uint8_t* at, int32_t value)
{
    if (audio_output.bits_per_sample == 16) {
        uint32_t sum = read_16(at) + static_cast<uint32_t>(value);
        at[0] = static_cast<uint8_t>(sum);
        at[1] = static_cast<uint8_t>(sum >> 8);
    } else {
        at[0] = static_cast<uint8_t>(at[0] + static_cast<uint32_t>(value));
    }
}

static void mix_voice(voice* playing, uint8_t* block, uint32_t frame_count)
{
    const sound* source = registry_at<sound>(&sounds, playing->sound);
    double ratio = static_cast<double>(source->sample_rate) / audio_output.samples_per_second;
    uint64_t frame_bytes = source->bits_per_sample / 8 * source->channels;
    uint64_t total = frame_bytes ? source->size / frame_bytes : 0;
    uint64_t offset = static_cast<uint64_t>((audio_clock - playing->start_time) * source->sample_rate);
    if (total == 0) {
        playing->active = 0;
        return;
    }
    uint32_t sample_bytes = audio_output.bits_per_sample / 8;
    for (uint32_t j = 0; j < frame_count; ++j) {
        uint64_t p = static_cast<uint64_t>(j * ratio) + offset;
        if (p >= total) {
            playing->active = 0;
            return;
        }
        source_frame frame = read_source_frame(source, p);
        int32_t left = truncate_to_int32(
            static_cast<float>(to_output_width(frame.left, source->bits_per_sample)) * AUDIO_VOLUME);
        int32_t right = truncate_to_int32(
            static_cast<float>(to_output_width(frame.right, source->bits_per_sample)) * AUDIO_VOLUME);
        uint8_t* out = block + static_cast<size_t>(j) * audio_output.block_align;
        if (audio_output.channels == 2) {
            add_sample(out, left);
            add_sample(out + sample_bytes, source->channels == 1 ? left : right);
        } else {
            add_sample(out, source->channels == 1
                                ? left
                                : static_cast<int32_t>((static_cast<int64_t>(left) + right) / 2));
        }
    }
}

void mix_block(uint8_t* block, uint32_t frame_count)
{
    memset(block, 0, static_cast<size_t>(frame_count) * audio_output.block_align);
    for (int32_t i = 0; i < voices.count; ++i) {
        voice* playing = &voices.records[i];
        // Indices that name no sound slot are skipped like -1, rather than read out of bounds.
        if (playing->active && playing->sound >= 0 && playing->sound < sounds.count)
            mix_voice(playing, block, frame_count);
    }
}
