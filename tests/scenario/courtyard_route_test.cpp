// A walk from the start through the yard and up the stairs onto the west wall-walk, turned only by
// the mouse, as a player would do it.
#include "scenario.h"

namespace {

// The shipped yard, in the data's coordinates (x east, y = -height, z north).
constexpr float COBBLED_PATH_HALF_WIDTH = 1.5f;
constexpr float STAIRS_WEST = -8.0f; // the curtain wall's inner face
constexpr float STAIRS_EAST = -6.8f;
constexpr float STAIRS_SOUTH = -4.3f; // the first step
constexpr float STAIRS_NORTH = 4.7f;  // the end of the top step
constexpr float WALL_WALK_WEST = -10.0f; // the parapet
constexpr float WALL_WALK_HEIGHT = 6.0f;

// The route. The mouse turns the view by 0.001 rad a pixel (sensitivity 1), so 1571 pixels right
// is a quarter turn toward +x and 3142 a half turn.
//   ticks 0-1     a click captures the mouse; the game does not see it as a click
//   tick 2        half a turn: from north (+z) to south (-z)
//   ticks 4-57    W: south down the cobbled path to about (0, 0, -5.7)
//   tick 80       a quarter turn right: facing west (-x)
//   ticks 82-153  W: across the earth to the foot of the stairs, about (-7.46, 0, -5.66)
//   tick 170      a quarter turn right: facing north (+z), up the stairs
//   ticks 172-268 W: up thirty steps of 0.2; the walk stops on the second step from the top,
//                 about (-7.46, -5.8, 4.3), short of the top step's open end at z = 4.7
//   tick 290      a quarter turn left: facing west, toward the wall-walk
//   ticks 292-305 W: up onto the wall-walk, about (-9.1, -6, 4.3)
const char* const ROUTE_TO_THE_WALL_WALK =
    "0 down LBUTTON\n"
    "1 up LBUTTON\n"
    "2 mouse 3142 0\n"
    "4 down W\n"
    "58 up W\n"
    "80 mouse 1571 0\n"
    "82 down W\n"
    "154 up W\n"
    "170 mouse 1571 0\n"
    "172 down W\n"
    "269 up W\n"
    "290 mouse -1571 0\n"
    "292 down W\n"
    "306 up W\n";

constexpr int32_t DOWN_THE_PATH = 80;
constexpr int32_t AT_THE_FOOT_OF_THE_STAIRS = 170;
constexpr int32_t NEAR_THE_TOP = 290;
constexpr int32_t ON_THE_WALL_WALK = 330;

float yaw_of(const json& state)
{
    return state.at("player").at("yaw").get<float>();
}

using courtyard_route = scenario;

} // namespace

TEST_F(courtyard_route, the_first_leg_turns_about_and_follows_the_cobbled_path_south)
{
    json state = play(ROUTE_TO_THE_WALL_WALK, DOWN_THE_PATH);
    EXPECT_NEAR(yaw_of(state), 3142 * MOUSE_RADIANS_PER_PIXEL, 1e-5f) << "facing south";
    EXPECT_LT(std::abs(player_x(state)), COBBLED_PATH_HALF_WIDTH);
    EXPECT_FLOAT_EQ(player_y(state), 0.0f);
    EXPECT_LT(player_z(state), -5.0f);
    EXPECT_EQ(state["player"]["ground_material"], 0) << "the cobbles are stone";
}

TEST_F(courtyard_route, a_quarter_turn_right_leads_west_over_the_earth_to_the_foot_of_the_stairs)
{
    json state = play(ROUTE_TO_THE_WALL_WALK, AT_THE_FOOT_OF_THE_STAIRS);
    EXPECT_NEAR(yaw_of(state), (3142 + 1571) * MOUSE_RADIANS_PER_PIXEL, 1e-4f) << "facing west";
    EXPECT_GT(player_x(state), STAIRS_WEST + BODY_RADIUS);
    EXPECT_LT(player_x(state), STAIRS_EAST);
    EXPECT_LT(player_z(state), STAIRS_SOUTH);
    EXPECT_FLOAT_EQ(player_y(state), 0.0f);
    EXPECT_EQ(state["player"]["ground_material"], 1) << "the yard's earth";
}

TEST_F(courtyard_route, walking_north_climbs_the_stairs_step_by_step)
{
    json state = play(ROUTE_TO_THE_WALL_WALK, NEAR_THE_TOP);
    EXPECT_NEAR(yaw_of(state), (3142 + 1571 + 1571) * MOUSE_RADIANS_PER_PIXEL, 1e-4f) << "facing north";
    EXPECT_GT(player_x(state), STAIRS_WEST);
    EXPECT_LT(player_x(state), STAIRS_EAST);
    EXPECT_LT(player_z(state), STAIRS_NORTH);
    // Each step is 0.3 deep and 0.2 high: the feet stand on the step under them.
    int32_t step = static_cast<int32_t>((player_z(state) - STAIRS_SOUTH) / 0.3f) + 1;
    EXPECT_GE(step, 28);
    EXPECT_NEAR(player_y(state), -0.2f * step, 1e-4f);
    EXPECT_EQ(state["player"]["on_ground"], 1);
    EXPECT_EQ(state["player"]["ground_material"], 0) << "stone steps";
}

TEST_F(courtyard_route, the_route_from_the_start_ends_on_the_west_wall_walk)
{
    json state = play(ROUTE_TO_THE_WALL_WALK, ON_THE_WALL_WALK);
    const json& player = state["player"];
    EXPECT_GT(player_x(state), WALL_WALK_WEST);
    EXPECT_LT(player_x(state), STAIRS_WEST) << "west of the stairs, over the curtain wall";
    EXPECT_NEAR(player_y(state), -WALL_WALK_HEIGHT, 1e-4f);
    EXPECT_NEAR(yaw_of(state), (3142 + 1571 + 1571 - 1571) * MOUSE_RADIANS_PER_PIXEL, 1e-4f) << "facing west";
    EXPECT_EQ(player["on_ground"], 1);
    EXPECT_EQ(player["ground_material"], 0);
    EXPECT_EQ(player["health"], 100) << "nobody fell";
    EXPECT_EQ(player["dead"], 0);
    EXPECT_EQ(state["camera_area"], 0) << "still in the yard";
}

TEST_F(courtyard_route, footsteps_on_the_route_follow_the_ground_underfoot)
{
    json state = play(ROUTE_TO_THE_WALL_WALK, ON_THE_WALL_WALK);
    std::vector<std::string> path, earth, stairs;
    for (const sound_heard& sound : sounds_heard(state)) {
        if (sound.tick < DOWN_THE_PATH)
            path.push_back(sound.name);
        else if (sound.tick < AT_THE_FOOT_OF_THE_STAIRS)
            earth.push_back(sound.name);
        else
            stairs.push_back(sound.name);
    }
    ASSERT_FALSE(path.empty());
    for (const std::string& name : path)
        EXPECT_EQ(name.rfind("pl_step_stone0", 0), 0u) << name;
    // The second leg leaves the cobbles for the earth.
    ASSERT_FALSE(earth.empty());
    EXPECT_EQ(earth.back().rfind("pl_step_ground0", 0), 0u) << earth.back();
    ASSERT_FALSE(stairs.empty());
    for (const std::string& name : stairs)
        EXPECT_EQ(name.rfind("pl_step_stone0", 0), 0u) << name;
}

namespace {

// The curtain walls' tops, 6 above the yard, end at a parapet or battlements with an unseen screen
// above, 10 from the yard's middle: running and jumping at it, and holding Space as if to climb,
// leaves the player on the wall, short of the crag outside.
struct wall_top_edge {
    const char* place;    // on the wall top, facing outward (X,Y,Z,yaw,pitch in degrees)
    int axis;             // 0 x, 2 z: the outward direction
    float outward;        // its sign
};

const wall_top_edge WALL_TOP_EDGES[] = {
    {"-9,-6,0,-90,0", 0, -1.0f},   // the west wall-walk
    {"0,-6,-9.2,180,0", 2, -1.0f}, // the south wall
    {"9.2,-6,0,90,0", 0, 1.0f},    // the east wall
};

const char* const RUN_AND_JUMP_AT_THE_EDGE =
    "0 down SHIFT\n0 down W\n"
    "10 down SPACE\n30 up SPACE\n"
    "40 down SPACE\n41 up SPACE\n"
    "60 up W\n60 up SHIFT\n";

} // namespace

TEST_F(courtyard_route, the_wall_tops_outer_edge_holds_a_player_who_runs_and_jumps_at_it)
{
    constexpr float SCREEN = 10.0f;
    for (const wall_top_edge& edge : WALL_TOP_EDGES) {
        json state = play_from(edge.place, RUN_AND_JUMP_AT_THE_EDGE, 80);
        float reached = state["player"]["position"][edge.axis].get<float>() * edge.outward;
        EXPECT_NEAR(reached, SCREEN - BODY_RADIUS, 0.02f) << edge.place;
        EXPECT_NEAR(player_y(state), -WALL_WALK_HEIGHT, 1e-4f) << edge.place;
        EXPECT_EQ(state["player"]["health"], 100) << edge.place;
    }
}
