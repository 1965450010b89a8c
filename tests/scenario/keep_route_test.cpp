// A walk inside the keep: from the great hall through its side door into the stairwell, up the
// stairs to the landing and through the low door into the library upstairs. The keep's front door
// is shut, so the walk starts in the hall by placement.
#include "scenario.h"

namespace {

// The stairwell, in the data's coordinates (x east, y = -height, z north).
constexpr float STAIRWELL_SOUTH_WALL = 17.4f;
constexpr float STAIRWELL_WEST_WALL = -9.4f;
constexpr float STAIRS_EAST = -8.2f;
constexpr float FIRST_STEP = 18.5f; // where the stairs' foot stands
constexpr float LANDING_SOUTH = 24.0f;
constexpr float LIBRARY_FLOOR_HEIGHT = 4.4f;
constexpr float LIBRARY_WEST_WALL = -4.2f;
constexpr int32_t STAIRWELL = 5;
constexpr int32_t LIBRARY = 6;

// The route, in the hall at (-3, 0, 18.8) facing west (yaw -90 degrees), in line with the side
// door. The mouse turns the view by 0.001 rad a pixel: 1571 pixels is a quarter turn.
//   ticks 0-1     a click captures the mouse
//   ticks 2-39    W: west through the side door into the stairwell, to about (-7.0, 0, 18.8)
//   tick 50       a quarter turn left: facing south
//   ticks 52-69   W: into the stairwell's south wall, which stops the body at about z = 17.75
//   tick 80       a quarter turn right: facing west
//   ticks 82-99   W: along the wall into the west wall, about (-9.05, 0, 17.75): in front of the
//                 foot of the stairs
//   tick 110      a quarter turn right: facing north, up the stairs
//   ticks 112-178 W: up twenty-two steps of 0.2 onto the landing, about (-9.05, -4.4, 24.84)
//   tick 190      a quarter turn right: facing east, along the landing
//   ticks 192-249 W: through the low door into the library, about (-3.2, -4.4, 24.64)
const char* const PLACE_IN_THE_HALL = "-3,0,18.8,-90,0";
const char* const ROUTE_TO_THE_LIBRARY =
    "0 down LBUTTON\n"
    "1 up LBUTTON\n"
    "2 down W\n"
    "40 up W\n"
    "50 mouse -1571 0\n"
    "52 down W\n"
    "70 up W\n"
    "80 mouse 1571 0\n"
    "82 down W\n"
    "100 up W\n"
    "110 mouse 1571 0\n"
    "112 down W\n"
    "179 up W\n"
    "190 mouse 1571 0\n"
    "192 down W\n"
    "250 up W\n";

constexpr int32_t AT_THE_FOOT_OF_THE_STAIRS = 110;
constexpr int32_t ON_THE_LANDING = 190;
constexpr int32_t IN_THE_LIBRARY = 270;

using keep_route = scenario;

} // namespace

TEST_F(keep_route, the_stairs_foot_leaves_room_to_stand_in_front_of_the_first_step)
{
    json state = play_from(PLACE_IN_THE_HALL, ROUTE_TO_THE_LIBRARY, AT_THE_FOOT_OF_THE_STAIRS);
    EXPECT_EQ(state["camera_area"], STAIRWELL);
    EXPECT_NEAR(player_x(state), STAIRWELL_WEST_WALL + BODY_RADIUS, 0.02f) << "against the west wall";
    EXPECT_LT(player_x(state), STAIRS_EAST - BODY_RADIUS) << "in line with the stairs";
    EXPECT_NEAR(player_z(state), STAIRWELL_SOUTH_WALL + BODY_RADIUS, 0.02f) << "against the south wall";
    EXPECT_LT(player_z(state), FIRST_STEP);
    EXPECT_NEAR(player_y(state), 0.0f, 1e-4f) << "on the floor, not on a step";
}

TEST_F(keep_route, walking_north_from_the_foot_climbs_the_stairs_onto_the_landing)
{
    json state = play_from(PLACE_IN_THE_HALL, ROUTE_TO_THE_LIBRARY, ON_THE_LANDING);
    float placed_yaw = -90.0f * 0.017453292f;
    EXPECT_NEAR(state["player"]["yaw"].get<float>(), placed_yaw + (-1571 + 1571 + 1571) * MOUSE_RADIANS_PER_PIXEL, 1e-4f)
        << "facing north";
    EXPECT_GT(player_z(state), LANDING_SOUTH);
    EXPECT_NEAR(player_y(state), -LIBRARY_FLOOR_HEIGHT, 1e-4f);
    EXPECT_EQ(state["player"]["on_ground"], 1);
    EXPECT_EQ(state["player"]["ground_material"], 2) << "wooden stairs and landing";
    EXPECT_EQ(state["player"]["health"], 100);
}

TEST_F(keep_route, the_route_from_the_hall_ends_in_the_library)
{
    json state = play_from(PLACE_IN_THE_HALL, ROUTE_TO_THE_LIBRARY, IN_THE_LIBRARY);
    EXPECT_EQ(state["camera_area"], LIBRARY);
    EXPECT_GT(player_x(state), LIBRARY_WEST_WALL + BODY_RADIUS);
    EXPECT_NEAR(player_y(state), -LIBRARY_FLOOR_HEIGHT, 1e-4f);
    EXPECT_EQ(state["player"]["on_ground"], 1);
    EXPECT_EQ(state["player"]["health"], 100);
    // Every step of the way after the hall's stone floor is on wood.
    std::vector<sound_heard> steps = sounds_heard(state);
    ASSERT_GE(steps.size(), 2u);
    EXPECT_EQ(steps.front().name.rfind("pl_step_stone0", 0), 0u) << steps.front().name;
    for (size_t i = 1; i < steps.size(); ++i)
        EXPECT_EQ(steps[i].name.rfind("pl_step_wood0", 0), 0u) << steps[i].name;
}
