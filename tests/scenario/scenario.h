// Whole runs of the real gloamhold-headless program on the shipped level. Each test works in a
// folder of its own with a link to the data, hands the program a script of timed input and reads
// back what it wrote: the state file, frames and the mixed audio.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/media_files.h" // pcm_sound, read_pcm_wav
#include "support/png_image.h"   // rgb_image, read_png

using nlohmann::json;

// Mouse-look turns the view by this much a pixel at the default sensitivity of 1.
constexpr float MOUSE_RADIANS_PER_PIXEL = 0.001f;

// The player's body is 0.35 wide either side of the feet: walls stop the feet that far away.
constexpr float BODY_RADIUS = 0.35f;

// One entry of the state file's list of started sounds.
struct sound_heard {
    int32_t tick;
    std::string name;
};

std::vector<sound_heard> sounds_heard(const json& state);

// The update during which the sound first started; -1 when it never did.
int32_t first_tick_of(const json& state, const std::string& sound_name);

// The text of a route shared with other tests (tests/scenario/routes/NAME): a script of timed input.
std::string route(const std::string& name);

// The player's position in the state file, as the game holds it (y points down).
float player_x(const json& state);
float player_y(const json& state);
float player_z(const json& state);

// The length of one update, from the state file's UPS, as the game's float clock has it.
float tick_length(const json& state);

class scenario : public testing::Test {
protected:
    std::string folder;

    // A fresh folder with the shipped data and a small frame (movement does not depend on it).
    void SetUp() override;

    std::string file(const std::string& name) const { return folder + "/" + name; }

    // The frame size of the following runs.
    void use_resolution(int32_t width, int32_t height) const;

    // Runs the game for `ticks` updates on this script (one event a line, as the program reads it)
    // with these further arguments, and returns the state file written at the end; a run that
    // fails is reported and gives null.
    json play(const std::string& script, int32_t ticks, const std::vector<std::string>& more = {});

    // The same from a placement: X,Y,Z in the data's coordinates, yaw and pitch in degrees.
    json play_from(const std::string& place, const std::string& script, int32_t ticks,
                   const std::vector<std::string>& more = {});
};
