// Footsteps on every kind of floor of the shipped level, in the list of started sounds and in the
// mixed audio.
#include <math.h>

#include "scenario.h"

namespace {

struct floor_walk {
    const char* name;
    const char* place;     // X,Y,Z,yaw,pitch (degrees): facing north with room to walk
    int32_t material;      // as the state file reports the ground's material
    const char* material_name; // as the footstep sounds are named
    int32_t area;          // the room
};

// The keep's rooms are behind its shut door: the walks inside start there by placement.
const floor_walk FLOORS[] = {
    {"yard_cobbles", "0,0,0,0,0", 0, "stone", 0},
    {"yard_earth", "-4,0,-6,0,0", 1, "ground", 0},
    {"hall_carpet_runner", "0,0,11.5,0,0", 4, "carpet", 1},
    {"hall_stone_floor", "3,0,11,0,0", 0, "stone", 1},
    {"kitchen_tiles", "-5.5,0,11,0,0", 5, "ceramic", 2},
    {"armoury_iron_plates", "6,0,11.5,0,0", 3, "metal", 3},
    {"storeroom_earth", "1,0,21.5,0,0", 1, "ground", 4},
    {"stairwell_planks", "-6.5,0,18,0,0", 2, "wood", 5},
};

// Test names show the floor's name.
void PrintTo(const floor_walk& floor, std::ostream* out)
{
    *out << floor.name;
}

// Walking for 1.2 seconds: the first step comes after half a unit, then one every two.
const char* const WALK = "0 down W\n";
constexpr int32_t WALK_TICKS = 48;

// The footstep variants (0 to 3) of the first steps, shuffled so that none repeats at once; the
// first step takes the second entry.
const int32_t FIRST_VARIANTS[] = {2, 1, 3, 2, 0, 3, 1};

// Where the mix starts to sound at or after `from` (a frame with any channel not zero); the
// number of frames when it stays silent.
size_t first_loud_frame(const pcm_sound& mix, size_t from)
{
    for (size_t frame = from; frame < mix.frames(); ++frame)
        for (int32_t channel = 0; channel < mix.channels; ++channel)
            if (mix.samples[frame * mix.channels + channel] != 0)
                return frame;
    return mix.frames();
}

class footsteps_on : public scenario, public testing::WithParamInterface<floor_walk> {};

using footsteps = scenario;

} // namespace

TEST_P(footsteps_on, walking_plays_the_floor_materials_footsteps_in_shuffled_order)
{
    const floor_walk& floor = GetParam();
    json state = play_from(floor.place, WALK, WALK_TICKS);
    EXPECT_EQ(state["player"]["ground_material"], floor.material);
    EXPECT_EQ(state["camera_area"], floor.area);
    std::vector<sound_heard> heard = sounds_heard(state);
    ASSERT_GE(heard.size(), 2u);
    for (size_t step = 0; step < heard.size(); ++step) {
        char expected[64];
        snprintf(expected, sizeof expected, "pl_step_%s%02d.wav", floor.material_name, FIRST_VARIANTS[step] + 1);
        EXPECT_EQ(heard[step].name, expected) << "step " << step + 1;
    }
}

INSTANTIATE_TEST_SUITE_P(shipped_level, footsteps_on, testing::ValuesIn(FLOORS),
                         [](const testing::TestParamInfo<floor_walk>& tested) { return std::string(tested.param.name); });

TEST_F(footsteps, each_footstep_is_heard_in_the_mix_from_the_update_that_started_it)
{
    json state = play(WALK, 70, {"--audio", file("mix.wav")});
    pcm_sound mix = read_pcm_wav(file("mix.wav"));
    ASSERT_EQ(mix.rate, 44100);
    ASSERT_EQ(mix.channels, 2);
    std::vector<sound_heard> steps = sounds_heard(state);
    ASSERT_GE(steps.size(), 3u);
    // The device plays finished blocks of 1500 frames and keeps two queued: a sound started
    // during an update is in the mix within two blocks of that update's time. Before the first
    // step, and between the end of one step and the start of the next, the mix is silent.
    const double latency = 2 * 1500;
    size_t quiet_from = 0;
    for (const sound_heard& step : steps) {
        double due = step.tick * static_cast<double>(tick_length(state)) * mix.rate;
        size_t onset = first_loud_frame(mix, quiet_from);
        EXPECT_GE(static_cast<double>(onset), due - latency) << step.name << " at update " << step.tick;
        EXPECT_LE(static_cast<double>(onset), due + latency) << step.name << " at update " << step.tick;
        pcm_sound source = read_pcm_wav(file("gloamhold_data/sounds/" + step.name));
        ASSERT_GT(source.rate, 0) << step.name;
        // The step has ended one source length later (at the mix's rate, plus a frame of rounding).
        quiet_from = onset + static_cast<size_t>(ceil(source.frames() * static_cast<double>(mix.rate) / source.rate)) + 1;
    }
}
