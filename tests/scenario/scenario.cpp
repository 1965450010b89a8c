#include "scenario.h"

#include <filesystem>

#include "support/headless_program.h"
#include "support/temp_files.h"

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

std::string route(const std::string& name)
{
    std::string text = read_all(std::string(GLOAMHOLD_SOURCE_DIR) + "/tests/scenario/routes/" + name);
    EXPECT_FALSE(text.empty()) << "no route " << name;
    return text;
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
