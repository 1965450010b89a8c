// Falls in the shipped level: off the west wall-walk into the yard, which hurts, and down the
// well's dry shaft, which kills and brings up the red death screen.
#include "scenario.h"

namespace {

enum { STONE = 0, GROUND = 1, WOOD = 2, CARPET = 4 };

constexpr float GRAVITY = 20.0f;

// Landing at up to 12 units a second is harmless; at 30 or more it costs the whole maximum
// health on stone. Soft floors take some of it: earth and carpet leave 0.6, wood 0.8.
int32_t fall_damage(float landing_speed, int32_t material, int32_t health_max)
{
    float share = (landing_speed - 12.0f) / 18.0f;
    share = share < 0.0f ? 0.0f : (share > 1.0f ? 1.0f : share);
    float factor = material == GROUND || material == CARPET ? 0.6f : (material == WOOD ? 0.8f : 1.0f);
    return static_cast<int32_t>(static_cast<float>(health_max) * factor * share);
}

// The speed at the moment of landing: the state just before the landing update, plus that
// update's gravity (it falls before it lands).
float landing_speed(const json& before_landing)
{
    return before_landing["player"]["vertical_velocity"].get<float>() + GRAVITY * tick_length(before_landing);
}

// On the west wall-walk, 6 above the yard, north of the stairs (so that below is the yard's
// earth), facing east over the edge: walk, jump off and let go.
const char* const WALL_WALK_EDGE = "-9,-6,7,90,0";
const char* const JUMP_OFF = "1 down W\n8 down SPACE\n9 up SPACE\n20 up W\n";

// Eight above the cobbled path: a drop onto stone.
const char* const ABOVE_THE_COBBLES = "0,-8,0,0,0";

// From the start: right (D) along the yard to x = 4, north (W) to the well's rim, Space held to
// climb it; W still held walks over the rim into the shaft, a fall of 31 onto its stone bottom.
// F1 and F4 switch off the debug overlays that are on at start, so only the death screen is drawn.
const char* const INTO_THE_WELL =
    "0 down F1\n1 up F1\n0 down F4\n1 up F4\n"
    "1 down D\n38 up D\n"
    "50 down W\n"
    "66 down SPACE\n";
constexpr float WELL_BOTTOM_DEPTH = 30.0f;

using falls = scenario;

bool is_white(const uint8_t* rgb)
{
    return rgb[0] == 255 && rgb[1] == 255 && rgb[2] == 255;
}

// Pixels that pass `test`, in rows y0 to y1 - 1.
template <typename pixel_test>
uint32_t count_pixels(const rgb_image& frame, uint32_t y0, uint32_t y1, pixel_test test)
{
    uint32_t count = 0;
    for (uint32_t y = y0; y < y1; ++y)
        for (uint32_t x = 0; x < frame.width; ++x)
            count += test(frame.pixel(x, y)) ? 1 : 0;
    return count;
}

} // namespace

TEST_F(falls, jumping_off_the_wall_walk_onto_the_earth_hurts_as_the_landing_speed_says)
{
    json after = play_from(WALL_WALK_EDGE, JUMP_OFF, 80);
    int32_t landed = first_tick_of(after, "pl_land_ground01.wav");
    ASSERT_GT(landed, 0) << "a landing on earth";
    EXPECT_EQ(first_tick_of(after, "pl_hurt01.wav"), landed);
    EXPECT_EQ(first_tick_of(after, "pl_death01.wav"), -1);

    json before = play_from(WALL_WALK_EDGE, JUMP_OFF, landed);
    EXPECT_EQ(before["player"]["on_ground"], 0);
    float speed = landing_speed(before);
    int32_t health_max = after["player"]["health_max"];
    int32_t damage = fall_damage(speed, GROUND, health_max);
    EXPECT_GT(damage, 0) << "a landing at " << speed;
    EXPECT_EQ(after["player"]["health"], health_max - damage) << "landing at " << speed << " on earth";
    EXPECT_EQ(after["player"]["dead"], 0);
    EXPECT_EQ(after["player"]["ground_material"], GROUND);
    EXPECT_FLOAT_EQ(player_y(after), 0.0f) << "in the yard";
}

TEST_F(falls, the_same_speed_on_stone_costs_more_than_on_earth)
{
    json after = play_from(ABOVE_THE_COBBLES, "", 60);
    int32_t landed = first_tick_of(after, "pl_land_stone01.wav");
    ASSERT_GT(landed, 0) << "a landing on the cobbles";
    EXPECT_EQ(first_tick_of(after, "pl_hurt01.wav"), landed);

    float speed = landing_speed(play_from(ABOVE_THE_COBBLES, "", landed));
    int32_t health_max = after["player"]["health_max"];
    int32_t damage = fall_damage(speed, STONE, health_max);
    EXPECT_GT(damage, fall_damage(speed, GROUND, health_max));
    EXPECT_EQ(after["player"]["health"], health_max - damage) << "landing at " << speed << " on stone";
    EXPECT_EQ(after["player"]["dead"], 0);
    EXPECT_EQ(after["player"]["ground_material"], STONE);
}

TEST_F(falls, the_well_shaft_kills_and_the_view_sinks_to_its_floor)
{
    json after = play(INTO_THE_WELL, 260);
    int32_t landed = first_tick_of(after, "pl_land_stone01.wav");
    ASSERT_GT(landed, 0) << "a landing on the shaft's stone floor";
    EXPECT_LT(first_tick_of(after, "pl_climb01.wav"), landed) << "over the rim by climbing";
    EXPECT_EQ(first_tick_of(after, "pl_death01.wav"), landed);
    EXPECT_EQ(first_tick_of(after, "pl_hurt01.wav"), -1);

    float speed = landing_speed(play(INTO_THE_WELL, landed));
    EXPECT_GE(speed, 30.0f) << "fast enough to cost the whole health on stone";
    EXPECT_EQ(fall_damage(speed, STONE, after["player"]["health_max"]), after["player"]["health_max"]);
    EXPECT_EQ(after["player"]["health"], 0);
    EXPECT_EQ(after["player"]["dead"], 1);
    // The dead player's feet ease toward 1.25 below the floor: the view sinks to the ground.
    EXPECT_NEAR(player_y(after), WELL_BOTTOM_DEPTH + 1.25f, 0.01f);
}

// The death screen keeps only each pixel's blue, moved into red: no green or blue is left. The text
// "You Are Dead!" is drawn in white across the middle one second in two.
TEST_F(falls, after_death_the_frame_is_red_and_the_text_blinks_one_second_in_two)
{
    use_resolution(320, 240);
    json first = play(INTO_THE_WELL, 260);
    int32_t died = first_tick_of(first, "pl_death01.wav");
    ASSERT_GT(died, 0);
    // The first update that begins with no health marks the time of death; the frame after
    // update T shows game time T + 1 updates. Shots half a second, a second and a half and two
    // and a half seconds after the time of death: text off, on, off.
    int32_t death_marked = died + 1;
    int32_t ups = first["settings"]["UPS"];
    int32_t off = death_marked - 1 + ups / 2;
    int32_t on = death_marked - 1 + ups * 3 / 2;
    int32_t off_again = death_marked - 1 + ups * 5 / 2;
    play(INTO_THE_WELL, off_again + 1,
         {"--shot", std::to_string(off) + ":" + file("off.png"), "--shot", std::to_string(on) + ":" + file("on.png"),
          "--shot", std::to_string(off_again) + ":" + file("off_again.png")});

    auto red_only = [](const uint8_t* rgb) { return rgb[1] == 0 && rgb[2] == 0; };
    auto reddened = [](const uint8_t* rgb) { return rgb[0] > 0 && rgb[1] == 0 && rgb[2] == 0; };
    uint32_t red_seen = 0;
    for (const char* name : {"off.png", "off_again.png"}) {
        rgb_image frame = read_png(file(name));
        ASSERT_EQ(frame.width, 320u) << name;
        ASSERT_EQ(frame.height, 240u) << name;
        EXPECT_EQ(count_pixels(frame, 0, frame.height, red_only), frame.width * frame.height) << name;
        red_seen += count_pixels(frame, 0, frame.height, reddened);
    }
    EXPECT_GT(red_seen, 0u) << "the scene shows through in red";

    rgb_image shown = read_png(file("on.png"));
    ASSERT_EQ(shown.width, 320u);
    ASSERT_EQ(shown.height, 240u);
    uint32_t band_top = shown.height / 2 - shown.height / 8, band_bottom = shown.height / 2 + shown.height / 8;
    EXPECT_GT(count_pixels(shown, band_top, band_bottom, is_white), 0u) << "the text across the middle";
    EXPECT_EQ(count_pixels(shown, 0, band_top, is_white), 0u);
    EXPECT_EQ(count_pixels(shown, band_bottom, shown.height, is_white), 0u);
    auto red_or_white = [](const uint8_t* rgb) { return (rgb[1] == 0 && rgb[2] == 0) || is_white(rgb); };
    EXPECT_EQ(count_pixels(shown, 0, shown.height, red_or_white), shown.width * shown.height);
}
