#include "audio/mixer.h"

#include <emmintrin.h>
#include <string.h>

#include "assets/sound.h"
#include "core/heap.h"
#include "core/numbers.h"
#include "core/settings.h"
#include "platform/platform.h"

voice_list voices;
int mixer_vectorised = 1;
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

// Four source frames in output order, left and right of frames 0 and 1 in *first and of frames 2
// and 3 in *second, in the 16-bit output's width (an 8-bit sample c becomes (c - 128) x 256).
static void gather_frames(const sound* source, const int32_t steps[4], uint64_t offset, __m128i* first,
                          __m128i* second)
{
    const uint8_t* data = source->data;
    if (source->bits_per_sample == 16 && source->channels == 2 && steps[3] - steps[0] == 3) {
        // Four frames side by side (the source plays at the output's rate): one load.
        __m128i frames = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + 4 * (steps[0] + offset)));
        *first = _mm_unpacklo_epi16(frames, _mm_setzero_si128());
        *second = _mm_unpackhi_epi16(frames, _mm_setzero_si128());
        return;
    }
    // One shape per format, so that no sample asks again what the whole sound is. The lanes are
    // filled from registers: four stores read back as one vector would stall on every frame.
    __m128i left, right;
    if (source->bits_per_sample == 8 && source->channels == 1) {
        left = right = _mm_setr_epi32(data[steps[0] + offset], data[steps[1] + offset], data[steps[2] + offset],
                                      data[steps[3] + offset]);
    } else if (source->bits_per_sample == 16 && source->channels == 1) {
        left = right = _mm_setr_epi32(static_cast<int32_t>(read_16(data + 2 * (steps[0] + offset))),
                                      static_cast<int32_t>(read_16(data + 2 * (steps[1] + offset))),
                                      static_cast<int32_t>(read_16(data + 2 * (steps[2] + offset))),
                                      static_cast<int32_t>(read_16(data + 2 * (steps[3] + offset))));
    } else {
        source_frame frames[4];
        for (int32_t k = 0; k < 4; ++k)
            frames[k] = read_source_frame(source, static_cast<uint64_t>(steps[k]) + offset);
        left = _mm_setr_epi32(static_cast<int32_t>(frames[0].left), static_cast<int32_t>(frames[1].left),
                              static_cast<int32_t>(frames[2].left), static_cast<int32_t>(frames[3].left));
        right = _mm_setr_epi32(static_cast<int32_t>(frames[0].right), static_cast<int32_t>(frames[1].right),
                               static_cast<int32_t>(frames[2].right), static_cast<int32_t>(frames[3].right));
    }
    if (source->bits_per_sample == 8) {
        left = _mm_slli_epi32(_mm_sub_epi32(left, _mm_set1_epi32(128)), 8);
        right = _mm_slli_epi32(_mm_sub_epi32(right, _mm_set1_epi32(128)), 8);
    }
    *first = _mm_unpacklo_epi32(left, right);
    *second = _mm_unpackhi_epi32(left, right);
}

// Samples in the output's width scaled by the volume and cut toward zero (cvttps gives INT32_MIN
// where truncate_to_int32 does), kept to their low 16 bits, sign extended.
static __m128i scale_to_16_bits(__m128i samples, __m128 volume)
{
    // Every sample is below 2^16 in magnitude, so exact as a float.
    __m128i scaled = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(samples), volume));
    return _mm_srai_epi32(_mm_slli_epi32(scaled, 16), 16);
}

// Any source into 16-bit stereo output, four frames at a time, as the loop of mix_voice does it to
// the bit: the source positions are the same double products cut to integers, the volume the same
// float product, and the sums wrap in 16 bits. Stops before the first four frames that would read
// past the sound; returns how many frames it mixed, for the plain loop to go on from there.
static uint32_t mix_into_16_bit_stereo(const sound* source, double ratio, uint64_t offset, uint64_t total,
                                       uint8_t* block, uint32_t frame_count)
{
    const __m128d ratios = _mm_set1_pd(ratio);
    const __m128d four = _mm_set1_pd(4.0);
    const __m128 volume = _mm_set1_ps(AUDIO_VOLUME);
    __m128d frames_01 = _mm_setr_pd(0.0, 1.0);
    __m128d frames_23 = _mm_setr_pd(2.0, 3.0);
    uint32_t j = 0;
    for (; j + 4 <= frame_count; j += 4) {
        // Whole positions below 2^31, so the 32-bit conversion cuts them as the 64-bit one would.
        __m128i low = _mm_cvttpd_epi32(_mm_mul_pd(frames_01, ratios));
        __m128i high = _mm_cvttpd_epi32(_mm_mul_pd(frames_23, ratios));
        frames_01 = _mm_add_pd(frames_01, four);
        frames_23 = _mm_add_pd(frames_23, four);
        alignas(16) int32_t steps[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(steps), _mm_unpacklo_epi64(low, high));
        // Positions only grow: when the fourth is inside the sound, so are the others.
        if (static_cast<uint64_t>(steps[3]) + offset >= total)
            break;
        __m128i first, second;
        gather_frames(source, steps, offset, &first, &second);
        // The low 16 bits of each, sign extended, pack into 16-bit lanes unchanged.
        __m128i samples = _mm_packs_epi32(scale_to_16_bits(first, volume), scale_to_16_bits(second, volume));
        __m128i* out = reinterpret_cast<__m128i*>(block + static_cast<size_t>(j) * 4);
        _mm_storeu_si128(out, _mm_add_epi16(_mm_loadu_si128(out), samples));
    }
    return j;
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
    uint32_t j = 0;
    if (mixer_vectorised && audio_output.bits_per_sample == 16 && audio_output.channels == 2 &&
        static_cast<double>(frame_count) * ratio < 2147483648.0)
        j = mix_into_16_bit_stereo(source, ratio, offset, total, block, frame_count);
    for (; j < frame_count; ++j) {
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
