#include "scenario.h"

#include <png.h>
#include <string.h>

#include <filesystem>

#include "support/headless_program.h"
#include "support/temp_files.h"

rgb_frame read_png_frame(const std::string& path)
{
    rgb_frame frame{0, 0, {}};
    png_image image;
    memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        return frame;
    image.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> rgb(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr)) {
        png_image_free(&image);
        return frame;
    }
    frame.width = static_cast<int32_t>(image.width);
    frame.height = static_cast<int32_t>(image.height);
    frame.rgb = std::move(rgb);
    return frame;
}

static uint32_t little_endian(const std::string& bytes, size_t at, int count)
{
    uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i)
        value = value << 8 | static_cast<uint8_t>(bytes[at + i]);
    return value;
}

pcm_sound read_pcm_wav(const std::string& path)
{
    pcm_sound sound{0, 0, {}};
    std::string bytes = read_all(path);
    if (bytes.size() < 12 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(8, 4, "WAVE") != 0)
        return sound;
    int32_t rate = 0, channels = 0, bits = 0;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        std::string id = bytes.substr(at, 4);
        size_t size = little_endian(bytes, at + 4, 4);
        size_t body = at + 8;
        if (body + size > bytes.size())
            size = bytes.size() - body;
        if (id == "fmt " && size >= 16 && little_endian(bytes, body, 2) == 1) {
            channels = static_cast<int32_t>(little_endian(bytes, body + 2, 2));
            rate = static_cast<int32_t>(little_endian(bytes, body + 4, 4));
            bits = static_cast<int32_t>(little_endian(bytes, body + 14, 2));
        } else if (id == "data" && bits == 16 && channels > 0) {
            sound.rate = rate;
            sound.channels = channels;
            sound.samples.resize(size / 2);
            memcpy(sound.samples.data(), bytes.data() + body, sound.samples.size() * 2);
            return sound;
        }
        at = body + size + (size & 1);
    }
    return sound;
}

std::vector<sound_heard> sounds_heard(const json& state)
{
    std::vector<sound_heard> heard;
    for (const json& entry : state.value("sounds", json::array()))
        heard.push_back({entry.at("tick").get<int32_t>(),
                         entry.at("name").is_string() ? entry.at("name").get<std::string>() : ""});
    return heard;
}

int32_t first_tick_of(const json& state, const std::string& sound_name)
{
    for (const sound_heard& sound : sounds_heard(state))
        if (sound.name == sound_name)
            return sound.tick;
    return -1;
}

float player_x(const json& state)
{
    return state.at("player").at("position").at(0).get<float>();
}

float player_y(const json& state)
{
    return state.at("player").at("position").at(1).get<float>();
}

float player_z(const json& state)
{
    return state.at("player").at("position").at(2).get<float>();
}

float tick_length(const json& state)
{
    return 1.0f / state.at("settings").at("UPS").get<float>();
}

void scenario::SetUp()
{
    folder = std::filesystem::absolute(test_folder()).string();
    link_shipped_data(folder);
    use_resolution(160, 120);
}

void scenario::use_resolution(int32_t width, int32_t height) const
{
    write_file(file("settings.ini"),
               "SCREEN_RESOLUTION=" + std::to_string(width) + "x" + std::to_string(height) + "\r\n");
}

json scenario::play(const std::string& script, int32_t ticks, const std::vector<std::string>& more)
{
    std::vector<std::string> arguments = {"-C", folder, "--ticks", std::to_string(ticks),
                                          "--script", write_file(file("input.txt"), script),
                                          "--state", file("state.json")};
    arguments.insert(arguments.end(), more.begin(), more.end());
    std::filesystem::remove(file("state.json"));
    headless_result result = run_headless(arguments, folder);
    if (result.exit_code != 0) {
        ADD_FAILURE() << "gloamhold-headless exited with " << result.exit_code << ": " << result.errors;
        return nullptr;
    }
    return json::parse(read_all(file("state.json")));
}

json scenario::play_from(const std::string& place, const std::string& script, int32_t ticks,
                         const std::vector<std::string>& more)
{
    std::vector<std::string> arguments = {"--place", place};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return play(script, ticks, arguments);
}
