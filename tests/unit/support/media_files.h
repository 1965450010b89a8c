// Small image and sound files written by the tests themselves, byte for byte the same on every
// platform: PNGs with stored (uncompressed) deflate blocks and PCM WAVs; and WAV files read back.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

enum png_colour_type : uint8_t {
    PNG_GREY = 0,
    PNG_RGB = 2,
    PNG_PALETTE = 3,
    PNG_GREY_ALPHA = 4,
    PNG_RGBA = 6,
};

struct png_description {
    uint32_t width = 0;
    uint32_t height = 0;
    png_colour_type colour_type = PNG_RGBA;
    uint8_t bit_depth = 8;
    bool interlaced = false;          // Adam7; only for bit depths of 8 and 16
    std::vector<uint8_t> pixels;      // rows top first, packed as the colour type and depth say
    std::vector<uint8_t> palette;     // RGB triples for PNG_PALETTE
    std::vector<uint8_t> transparency; // the tRNS chunk's bytes, when not empty
};

// The bytes of a PNG file.
std::string encode_png(const png_description& image);

// An RGBA PNG (8 bits a channel) from B, G, R, A pixels, as the decoders hand them to the packer.
std::string encode_bgra_png(uint32_t width, uint32_t height, const std::vector<uint8_t>& bgra);

// A test picture: every pixel a different mix of the four channels, alpha 0 in a few places.
std::vector<uint8_t> test_pattern_bgra(uint32_t width, uint32_t height);

struct wav_description {
    uint16_t format_tag = 1; // 1 PCM, 3 float, 6 A-law
    uint16_t channels = 1;
    uint32_t sample_rate = 44100;
    uint16_t bits_per_sample = 16;
    bool extensible = false; // WAVE_FORMAT_EXTENSIBLE, as files with more than two channels use
    std::string data;        // the data chunk's bytes
};

// The bytes of a WAV file.
std::string encode_wav(const wav_description& sound);

// What a WAV file's own chunks say.
struct wav_facts {
    bool is_wav = false;     // RIFF ... WAVE
    bool pcm = false;        // format 1, or extensible with the PCM sub-format
    uint32_t channels = 0, rate = 0, bits = 0;
    size_t data_at = 0;      // where the data chunk's bytes start
    uint64_t data_bytes = 0; // the data chunk's length, cut to what the file holds
};
wav_facts read_wav_facts(const std::string& bytes);

// A 16-bit PCM WAV file: interleaved samples.
struct pcm_sound {
    int32_t rate = 0;
    int32_t channels = 0;
    std::vector<int16_t> samples;

    size_t frames() const { return channels > 0 ? samples.size() / channels : 0; }
};
// Rate 0 when the file is not a 16-bit PCM WAV.
pcm_sound read_pcm_wav(const std::string& path);
