#include "support/media_files.h"

#include <string.h>

#include "support/temp_files.h"

namespace {

uint32_t crc32(const std::string& bytes)
{
    uint32_t crc = 0xFFFFFFFFu;
    for (unsigned char c : bytes) {
        crc ^= c;
        for (int k = 0; k < 8; ++k)
            crc = (crc & 1) ? (crc >> 1) ^ 0xEDB88320u : crc >> 1;
    }
    return crc ^ 0xFFFFFFFFu;
}

uint32_t adler32(const std::string& bytes)
{
    uint32_t a = 1, b = 0;
    for (unsigned char c : bytes) {
        a = (a + c) % 65521;
        b = (b + a) % 65521;
    }
    return b << 16 | a;
}

void put_be32(std::string& out, uint32_t v)
{
    out += static_cast<char>(v >> 24);
    out += static_cast<char>(v >> 16);
    out += static_cast<char>(v >> 8);
    out += static_cast<char>(v);
}

void put_le16(std::string& out, uint32_t v)
{
    out += static_cast<char>(v);
    out += static_cast<char>(v >> 8);
}

void put_le32(std::string& out, uint32_t v)
{
    put_le16(out, v & 0xFFFF);
    put_le16(out, v >> 16);
}

uint32_t le16(const std::string& b, size_t at)
{
    return static_cast<uint8_t>(b[at]) | static_cast<uint32_t>(static_cast<uint8_t>(b[at + 1])) << 8;
}

uint32_t le32(const std::string& b, size_t at)
{
    return le16(b, at) | le16(b, at + 2) << 16;
}

void put_chunk(std::string& out, const char* type, const std::string& body)
{
    put_be32(out, static_cast<uint32_t>(body.size()));
    std::string typed = std::string(type, 4) + body;
    out += typed;
    put_be32(out, crc32(typed));
}

// A zlib stream of stored deflate blocks.
std::string zlib_stored(const std::string& raw)
{
    std::string out = "\x78\x01";
    size_t offset = 0;
    do {
        size_t length = raw.size() - offset < 65535 ? raw.size() - offset : 65535;
        bool last = offset + length == raw.size();
        out += static_cast<char>(last ? 1 : 0);
        put_le16(out, static_cast<uint32_t>(length));
        put_le16(out, static_cast<uint32_t>(~length & 0xFFFF));
        out.append(raw, offset, length);
        offset += length;
    } while (offset < raw.size());
    put_be32(out, adler32(raw));
    return out;
}

uint32_t channels_of(png_colour_type type)
{
    switch (type) {
    case PNG_RGB:
        return 3;
    case PNG_GREY_ALPHA:
        return 2;
    case PNG_RGBA:
        return 4;
    default:
        return 1;
    }
}

// Scanlines with filter 0, for the whole image or, interlaced, for each Adam7 pass in turn.
std::string scanlines(const png_description& image)
{
    size_t bits_per_pixel = channels_of(image.colour_type) * image.bit_depth;
    size_t row_bytes = (image.width * bits_per_pixel + 7) / 8;
    std::string raw;
    if (!image.interlaced) {
        for (uint32_t y = 0; y < image.height; ++y) {
            raw += '\0';
            raw.append(reinterpret_cast<const char*>(image.pixels.data()) + y * row_bytes, row_bytes);
        }
        return raw;
    }
    static const uint32_t start_x[7] = {0, 4, 0, 2, 0, 1, 0}, start_y[7] = {0, 0, 4, 0, 2, 0, 1};
    static const uint32_t step_x[7] = {8, 8, 4, 4, 2, 2, 1}, step_y[7] = {8, 8, 8, 4, 4, 2, 2};
    size_t pixel_bytes = bits_per_pixel / 8;
    for (int pass = 0; pass < 7; ++pass) {
        if (start_x[pass] >= image.width)
            continue;
        for (uint32_t y = start_y[pass]; y < image.height; y += step_y[pass]) {
            raw += '\0';
            for (uint32_t x = start_x[pass]; x < image.width; x += step_x[pass])
                raw.append(reinterpret_cast<const char*>(image.pixels.data()) + y * row_bytes + x * pixel_bytes,
                           pixel_bytes);
        }
    }
    return raw;
}

} // namespace

std::string encode_png(const png_description& image)
{
    std::string out = "\x89PNG\r\n\x1a\n";
    std::string header;
    put_be32(header, image.width);
    put_be32(header, image.height);
    header += static_cast<char>(image.bit_depth);
    header += static_cast<char>(image.colour_type);
    header += '\0'; // deflate
    header += '\0'; // adaptive filtering
    header += static_cast<char>(image.interlaced ? 1 : 0);
    put_chunk(out, "IHDR", header);
    if (!image.palette.empty())
        put_chunk(out, "PLTE", std::string(image.palette.begin(), image.palette.end()));
    if (!image.transparency.empty())
        put_chunk(out, "tRNS", std::string(image.transparency.begin(), image.transparency.end()));
    put_chunk(out, "IDAT", zlib_stored(scanlines(image)));
    put_chunk(out, "IEND", "");
    return out;
}

std::string encode_bgra_png(uint32_t width, uint32_t height, const std::vector<uint8_t>& bgra)
{
    png_description image;
    image.width = width;
    image.height = height;
    image.colour_type = PNG_RGBA;
    image.pixels.resize(bgra.size());
    for (size_t i = 0; i + 3 < bgra.size(); i += 4) {
        image.pixels[i] = bgra[i + 2];
        image.pixels[i + 1] = bgra[i + 1];
        image.pixels[i + 2] = bgra[i];
        image.pixels[i + 3] = bgra[i + 3];
    }
    return encode_png(image);
}

std::vector<uint8_t> test_pattern_bgra(uint32_t width, uint32_t height)
{
    std::vector<uint8_t> bgra(static_cast<size_t>(width) * height * 4);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            uint8_t* p = &bgra[(static_cast<size_t>(y) * width + x) * 4];
            p[0] = static_cast<uint8_t>(x * 37 + y * 11);
            p[1] = static_cast<uint8_t>(x * 5 + y * 71 + 3);
            p[2] = static_cast<uint8_t>((x ^ y) * 29 + 100);
            p[3] = (x + y) % 7 == 3 ? 0 : static_cast<uint8_t>(255 - x * 3);
        }
    return bgra;
}

std::string encode_wav(const wav_description& sound)
{
    uint32_t block_align = sound.channels * ((sound.bits_per_sample + 7u) / 8u);
    std::string format;
    put_le16(format, sound.extensible ? 0xFFFE : sound.format_tag);
    put_le16(format, sound.channels);
    put_le32(format, sound.sample_rate);
    put_le32(format, sound.sample_rate * block_align);
    put_le16(format, block_align);
    put_le16(format, sound.bits_per_sample);
    if (sound.extensible) {
        put_le16(format, 22);
        put_le16(format, sound.bits_per_sample);
        put_le32(format, sound.channels == 6 ? 0x3Fu : 0u); // front L/R/C, LFE, back L/R
        // The PCM sub-format GUID: 00000001-0000-0010-8000-00aa00389b71.
        put_le32(format, sound.format_tag);
        format += std::string("\x00\x00\x10\x00\x80\x00\x00\xaa\x00\x38\x9b\x71", 12);
    } else if (sound.format_tag != 1) {
        put_le16(format, 0); // no extra format bytes
    }
    std::string body = "WAVE";
    body += "fmt ";
    put_le32(body, static_cast<uint32_t>(format.size()));
    body += format;
    if (sound.format_tag != 1) { // non-PCM files carry a fact chunk with the frame count
        body += "fact";
        put_le32(body, 4);
        put_le32(body, block_align ? static_cast<uint32_t>(sound.data.size() / block_align) : 0);
    }
    body += "data";
    put_le32(body, static_cast<uint32_t>(sound.data.size()));
    body += sound.data;
    if (sound.data.size() % 2)
        body += '\0';
    std::string out = "RIFF";
    put_le32(out, static_cast<uint32_t>(body.size()));
    return out + body;
}

wav_facts read_wav_facts(const std::string& b)
{
    wav_facts facts;
    if (b.size() < 12 || b.compare(0, 4, "RIFF") != 0 || b.compare(8, 4, "WAVE") != 0)
        return facts;
    facts.is_wav = true;
    for (size_t at = 12; at + 8 <= b.size();) {
        std::string id = b.substr(at, 4);
        uint64_t size = le32(b, at + 4);
        size_t body = at + 8;
        if (id == "fmt " && body + 16 <= b.size()) {
            uint32_t tag = le16(b, body);
            facts.channels = le16(b, body + 2);
            facts.rate = le32(b, body + 4);
            facts.bits = le16(b, body + 14);
            facts.pcm = tag == 1 || (tag == 0xFFFE && body + 26 <= b.size() && le16(b, body + 24) == 1);
        } else if (id == "data") {
            uint64_t available = b.size() - body;
            facts.data_at = body;
            facts.data_bytes = size < available ? size : available;
        }
        at = body + static_cast<size_t>(size) + (size & 1);
    }
    return facts;
}

pcm_sound read_pcm_wav(const std::string& path)
{
    pcm_sound sound;
    std::string bytes = read_all(path);
    wav_facts facts = read_wav_facts(bytes);
    if (!facts.pcm || facts.bits != 16 || facts.channels == 0)
        return sound;
    sound.rate = static_cast<int32_t>(facts.rate);
    sound.channels = static_cast<int32_t>(facts.channels);
    sound.samples.resize(static_cast<size_t>(facts.data_bytes / 2));
    memcpy(sound.samples.data(), bytes.data() + facts.data_at, sound.samples.size() * 2);
    return sound;
}
