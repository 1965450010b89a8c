// Climbing onto the ledges of the shipped level: the well's rim in the yard and the rock shelf in
// the storeroom. Both are too high to step or jump onto and low enough to climb.
#include "scenario.h"

namespace {

struct ledge {
    const char* name;
    const char* place; // where the player stands, facing the ledge: X,Y,Z,yaw,pitch (degrees)
    float height;      // of the ledge's top above the floor
    float x0, x1, z0, z1; // the top's extent on the side the player climbs
    int32_t area;      // the room it is in
};

// The well: a rim 1.0 high around the shaft; the player starts a step south of it, facing north.
// The storeroom's shelf, 1.05 high along the east end: the storeroom is behind the keep's shut
// door, so the player is placed inside, west of the shelf, facing east.
const ledge LEDGES[] = {
    {"well_rim", "4.0,0,0.5,0,0", 1.0f, 3.3f, 5.7f, 1.3f, 1.7f, 0},
    {"storeroom_shelf", "6.5,0,22.6,90,0", 1.05f, 7.4f, 9.4f, 20.4f, 25.4f, 4},
};

// Walk into the ledge's face, then hold Space: the jump rises, and the climb starts on the way up.
const char* const CLIMB = "1 down W\n12 up W\n12 down SPACE\n70 up SPACE\n";
constexpr int32_t CLIMB_TICKS = 80;

// Pressed against the face, one tap of Space: a jump, let go at once.
const char* const JUMP = "1 down W\n12 down SPACE\n13 up SPACE\n50 up W\n";
constexpr int32_t JUMP_TICKS = 60;

// Test names show the ledge's name.
void PrintTo(const ledge& at, std::ostream* out)
{
    *out << at.name;
}

int32_t count_of(const json& state, const std::string& sound_name)
{
    int32_t count = 0;
    for (const sound_heard& sound : sounds_heard(state))
        count += sound.name == sound_name;
    return count;
}

class ledge_climb : public scenario, public testing::WithParamInterface<ledge> {};

} // namespace

TEST_P(ledge_climb, holding_space_at_the_face_climbs_onto_the_top)
{
    const ledge& at = GetParam();
    json end = play_from(at.place, CLIMB, CLIMB_TICKS);
    EXPECT_EQ(count_of(end, "pl_climb01.wav"), 1);
    EXPECT_EQ(end["player"]["climbing"], 0);
    EXPECT_EQ(end["player"]["on_ground"], 1);
    EXPECT_NEAR(player_y(end), -at.height, 1e-4f) << "standing on the top";
    EXPECT_GT(player_x(end), at.x0);
    EXPECT_LT(player_x(end), at.x1);
    EXPECT_GT(player_z(end), at.z0);
    EXPECT_LT(player_z(end), at.z1);
    EXPECT_EQ(end["player"]["ground_material"], 0) << "a stone top";
    EXPECT_EQ(end["player"]["health"], 100);
    EXPECT_EQ(end["camera_area"], at.area);
}

TEST_P(ledge_climb, the_climb_sound_starts_with_the_climb_and_the_body_rises_in_the_air)
{
    const ledge& at = GetParam();
    int32_t started = first_tick_of(play_from(at.place, CLIMB, CLIMB_TICKS), "pl_climb01.wav");
    ASSERT_GT(started, 12) << "after Space was pressed";

    json before = play_from(at.place, CLIMB, started);
    EXPECT_EQ(before["player"]["climbing"], 0);
    EXPECT_EQ(before["player"]["on_ground"], 0) << "the jump comes first";
    EXPECT_LT(before["player"]["vertical_velocity"].get<float>(), 0.0f) << "still rising";

    json during = play_from(at.place, CLIMB, started + 10);
    EXPECT_EQ(during["player"]["climbing"], 1);
    EXPECT_LT(player_y(during), player_y(before)) << "higher than where the climb started";
    EXPECT_GT(player_y(during), -at.height);
}

TEST_P(ledge_climb, a_jump_without_holding_space_falls_back_to_the_floor)
{
    const ledge& at = GetParam();
    json end = play_from(at.place, JUMP, JUMP_TICKS);
    EXPECT_EQ(count_of(end, "pl_climb01.wav"), 0);
    EXPECT_EQ(end["player"]["climbing"], 0);
    EXPECT_EQ(end["player"]["on_ground"], 1);
    EXPECT_NEAR(player_y(end), 0.0f, 1e-4f) << "back on the floor";
}

INSTANTIATE_TEST_SUITE_P(shipped_level, ledge_climb, testing::ValuesIn(LEDGES),
                         [](const testing::TestParamInfo<ledge>& tested) { return std::string(tested.param.name); });
