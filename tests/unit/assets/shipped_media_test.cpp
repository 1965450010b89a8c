// The image and sound loaders over files that nobody here wrote: the PNGs and WAVs that Debian
// packages ship (a PNG test suite with every colour type, depth and interlacing, broken and
// oversized images, sound effects and test sounds of many sample formats). Each file either loads
// with the size and format its own header states, or is refused cleanly.
#include <gtest/gtest.h>

#include <stdint.h>

#include <filesystem>
#include <string>
#include <vector>

#include "assets/sound.h"
#include "assets/texture.h"
#include "core/settings.h"
#include "platform/platform.h"
#include "support/media_files.h"
#include "support/temp_files.h"

namespace {

namespace fs = std::filesystem;

// A system folder as the platform's file calls spell it (under Wine the Unix root is drive Z).
std::string system_path(const std::string& unix_path)
{
#if defined(_WIN32)
    return "Z:" + unix_path;
#else
    return unix_path;
#endif
}

std::vector<std::string> files_under(const std::string& folder, const std::vector<std::string>& extensions)
{
    std::vector<std::string> found;
    std::error_code error;
    for (fs::recursive_directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        if (!it->is_regular_file(error))
            continue;
        std::string extension = it->path().extension().string();
        for (const std::string& wanted : extensions)
            if (extension == wanted)
                found.push_back(it->path().generic_string());
    }
    return found;
}

uint32_t be32(const std::string& b, size_t at)
{
    return static_cast<uint32_t>(static_cast<uint8_t>(b[at])) << 24 |
           static_cast<uint32_t>(static_cast<uint8_t>(b[at + 1])) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(b[at + 2])) << 8 | static_cast<uint8_t>(b[at + 3]);
}

bool power_of_two(uint32_t n)
{
    return n != 0 && (n & (n - 1)) == 0;
}

// Files made broken on purpose by the suites that ship them.
bool damaged_on_purpose(const std::string& path)
{
    for (const char* mark : {"invalid", "/fail/", "premature", "crasher", "trunc", "randomly-modified"})
        if (path.find(mark) != std::string::npos)
            return true;
    return false;
}

void check_images_under(const std::string& folder)
{
    std::vector<std::string> files = files_under(system_path(folder), {".png"});
    if (files.empty())
        GTEST_SKIP() << "no PNG files under " << folder << " (tools/install-deps installs them)";
    int loaded = 0;
    for (const std::string& path : files) {
        SCOPED_TRACE(path);
        std::string bytes = read_all(path);
        bool has_header = bytes.size() >= 24 && bytes.compare(12, 4, "IHDR") == 0;
        uint32_t width = has_header ? be32(bytes, 16) : 0, height = has_header ? be32(bytes, 20) : 0;
        for (int dither = 0; dither < 2; ++dither) {
            TEXTURE_DITHERING = dither;
            texture t = {};
            if (texture_load_file(&t, path.c_str())) {
                ++loaded;
                EXPECT_EQ(static_cast<uint32_t>(t.width), width);
                EXPECT_EQ(static_cast<uint32_t>(t.height), height);
                EXPECT_TRUE(power_of_two(width) && power_of_two(height));
                texture_free(&t);
            } else {
                EXPECT_EQ(t.texels, nullptr);
                EXPECT_TRUE(!has_header || !power_of_two(width) || !power_of_two(height) ||
                            damaged_on_purpose(path))
                    << "a sound " << width << " x " << height << " image was refused";
            }
        }
    }
    TEXTURE_DITHERING = 0;
    EXPECT_GT(loaded, 0);
}

void check_sounds_under(const std::string& folder)
{
    std::vector<std::string> files =
        files_under(system_path(folder), {".wav", ".aiff", ".aifc", ".au", ".voc", ".8svx", ".sndt", ".hcom"});
    if (files.empty())
        GTEST_SKIP() << "no sound files under " << folder << " (tools/install-deps installs them)";
    int loaded = 0;
    for (const std::string& path : files) {
        SCOPED_TRACE(path);
        wav_facts facts = read_wav_facts(read_all(path));
        sound s = {};
        int ok = sound_load_file(&s, path.c_str());
        if (ok) {
            ++loaded;
            EXPECT_TRUE(s.bits_per_sample == 8 || s.bits_per_sample == 16);
            EXPECT_TRUE(s.channels == 1 || s.channels == 2);
            EXPECT_EQ(s.size % (s.channels * s.bits_per_sample / 8), 0u);
            EXPECT_EQ(s.data == nullptr, s.size == 0);
        }
        if (facts.is_wav) {
            bool playable = facts.pcm && (facts.bits == 8 || facts.bits == 16) && facts.channels >= 1 &&
                            facts.channels <= 2;
            EXPECT_EQ(ok, playable ? 1 : 0) << facts.bits << "-bit, " << facts.channels << " channels";
            if (ok) {
                EXPECT_EQ(s.bits_per_sample, facts.bits);
                EXPECT_EQ(s.channels, facts.channels);
                EXPECT_EQ(s.sample_rate, facts.rate);
                uint64_t whole_frames = facts.data_bytes / (facts.channels * facts.bits / 8);
                EXPECT_EQ(s.size, whole_frames * (facts.channels * facts.bits / 8));
            }
        }
        platform_heap_free(s.data);
    }
    EXPECT_GT(loaded, 0);
}

} // namespace

TEST(shipped_media, png_test_suite_images_load_at_their_size_or_are_refused)
{
    check_images_under("/usr/share/go-1.19/src/image/png/testdata");
}

TEST(shipped_media, broken_and_oversized_images_are_refused_cleanly)
{
    check_images_under("/usr/libexec/installed-tests/gdk-pixbuf");
}

TEST(shipped_media, sound_effects_load_with_their_stated_format)
{
    check_sounds_under("/usr/share/sounds/sound-icons");
}

TEST(shipped_media, test_sounds_of_every_sample_size_load_or_are_refused_by_format)
{
    check_sounds_under("/usr/lib/python3.11/test/audiodata");
    check_sounds_under("/usr/lib/python3.11/test/sndhdrdata");
}
