// The key quest, played from the start by walking and turning only: a coin in the yard, the keep's
// oak door opened with E and shut again behind the player, the iron key from the kitchen table, the
// rusty key from the storeroom's rock shelf, up the stairwell into the library and its coin, and
// the locked door of the solar: refused, the rusty key does not fit, the iron key opens it.
#include "scenario.h"

#include <math.h>

namespace {

constexpr float OPEN_ANGLE = 80.0f * 0.017453292f;

// The shipped level's numbering, in load order.
constexpr int32_t YARD = 0, HALL = 1, KITCHEN = 2, STOREROOM = 4, LIBRARY = 6, SOLAR = 7;
constexpr int32_t OAK_DOOR = 0, SOLAR_DOOR = 2;
constexpr int32_t YARD_COIN = 28, IRON_KEY = 60, RUSTY_KEY = 85, LIBRARY_COIN = 108;
constexpr int32_t SOLAR_DOOR_LEAF = 119;

// The route, from the start at (0, 0, 0) facing north (+z); its first part, to tick 183, is shared
// (routes/oak_door.script and routes/into_the_hall.script). The mouse turns by 0.001 rad a pixel:
// right (+x from north) and down are positive.
//   ticks 0-1       a click captures the mouse
//   tick 2          turn toward the coin on the well's rim; ticks 4-24 W to about (2.2, 0, 0.7)
//   tick 30         look down at it; tick 33 E takes it
//   tick 40         turn toward the oak door, level; ticks 42-121 W to about (0.15, 0, 8.7)
//   tick 130        face north; tick 132 E opens the door, which swings into the hall
//   ticks 140-182   W through the doorway into the hall, about (0.13, 0, 13.3)
//   tick 190        turn round toward the open leaf; tick 192 E shuts it behind the player
//   ticks 200-257   face west, W through the opening into the kitchen, about (-5.5, 0, 13.3)
//   tick 265        look down at the iron key on the table; tick 268 E takes it
//   ticks 275-332   face east, W back across the hall to about (0.27, 0, 13.3)
//   ticks 340-432   face north, W through the storeroom door to about (0.33, 0, 22.6)
//   ticks 445-521   face east, W until the rock shelf stops the body, about (7.05, 0, 22.65)
//   tick 530        look down at the rusty key on the shelf; tick 532 E takes it
//   ticks 540-654   face west, W to x = 0.25; face south, W out to the hall, about (0.19, 0, 18.65)
//   ticks 662-735   face west, W into the stairwell, about (-7.2, 0, 18.6)
//   ticks 745-944   into the south wall, into the west wall, up the stairs and east through the low
//                   door into the library, about (-3.1, -4.4, 24.64)
//   ticks 955-990   face south, W to about (-3.09, -4.4, 21.0)
//   tick 1000       look at the coin on the library table; tick 1003 E takes it
//   ticks 1010-1079 face south, W to z = 18.9; face east, W to x = 0.14; face south: the solar door
//   tick 1085       E: "This door is locked."
//   tick 1090       `[`: the open bar steps left of the first slot, onto the last: the rusty key
//   tick 1095       a click arms it and closes the bar; tick 1100 a click uses it: it does not fit
//   ticks 1110-1115 `[` twice: the first only opens the bar, the second selects the iron key
//   tick 1120       a click arms it; tick 1125 a click unlocks the door, which opens
//   ticks 1135-1168 W south through the doorway into the solar, about (0.17, -4.4, 15.3)
const std::string KEY_QUEST = route("oak_door.script") + route("into_the_hall.script") +
    "190 mouse -2842 0\n192 down E\n193 up E\n"
    "200 mouse 2842 0\n202 mouse -1571 0\n204 down W\n258 up W\n"
    "265 mouse -1101 555\n268 down E\n269 up E\n"
    "275 mouse 4243 -555\n277 down W\n333 up W\n"
    "340 mouse -1571 0\n342 down W\n433 up W\n"
    "445 mouse 1571 0\n447 down W\n522 up W\n"
    "530 mouse 35 423\n532 down E\n533 up E\n"
    "540 mouse -3177 -423\n542 down W\n608 up W\n"
    "615 mouse -1571 0\n617 down W\n655 up W\n"
    "662 mouse 1571 0\n664 down W\n736 up W\n"
    "745 mouse -1571 0\n747 down W\n765 up W\n"
    "775 mouse 1571 0\n777 down W\n795 up W\n"
    "805 mouse 1571 0\n807 down W\n874 up W\n"
    "885 mouse 1571 0\n887 down W\n945 up W\n"
    "955 mouse 1571 0\n957 down W\n991 up W\n"
    "1000 mouse -1635 320\n1003 down E\n1004 up E\n"
    "1010 mouse 1635 -320\n1012 down W\n1030 up W\n"
    "1040 mouse -1571 0\n1042 down W\n1072 up W\n"
    "1080 mouse 1571 0\n"
    "1085 down E\n1086 up E\n"
    "1090 down [\n1091 up [\n"
    "1095 down LBUTTON\n1096 up LBUTTON\n"
    "1100 down LBUTTON\n1101 up LBUTTON\n"
    "1110 down [\n1111 up [\n1115 down [\n1116 up [\n"
    "1120 down LBUTTON\n1121 up LBUTTON\n"
    "1125 down LBUTTON\n1126 up LBUTTON\n"
    "1135 down W\n1169 up W\n";

constexpr int32_t YARD_COIN_TAKEN = 36;
constexpr int32_t OAK_DOOR_OPENING = 140;
constexpr int32_t OAK_DOOR_OPEN = 150;
constexpr int32_t OAK_DOOR_SHUT_BEHIND = 240;
constexpr int32_t IRON_KEY_TAKEN = 272;
constexpr int32_t RUSTY_KEY_TAKEN = 536;
constexpr int32_t LIBRARY_COIN_TAKEN = 1008;
constexpr int32_t SOLAR_DOOR_REFUSED = 1087;
constexpr int32_t RUSTY_KEY_ARMED = 1097;
constexpr int32_t RUSTY_KEY_TRIED = 1102;
constexpr int32_t IRON_KEY_ARMED = 1122;
constexpr int32_t SOLAR_DOOR_UNLOCKED = 1127;
constexpr int32_t IN_THE_SOLAR = 1180;

const json& door_state(const json& state, int32_t door)
{
    return state.at("doors").at(door);
}

float door_yaw(const json& state, int32_t door)
{
    return door_state(state, door).at("yaw").get<float>();
}

const json& slots(const json& state)
{
    return state.at("inventory").at("slots");
}

// Every sound started during that update, by name.
std::vector<std::string> sounds_at(const json& state, int32_t tick)
{
    std::vector<std::string> names;
    for (const sound_heard& sound : sounds_heard(state))
        if (sound.tick == tick)
            names.push_back(sound.name);
    return names;
}

bool removed(const json& state, int32_t object)
{
    for (const json& taken : state.at("removed_objects"))
        if (taken.get<int32_t>() == object)
            return true;
    return false;
}

using key_quest = scenario;

} // namespace

TEST_F(key_quest, the_coin_on_the_wells_rim_is_taken_with_its_sound_and_counted)
{
    json state = play(KEY_QUEST, YARD_COIN_TAKEN);
    ASSERT_EQ(slots(state).size(), 1u);
    EXPECT_EQ(slots(state)[0]["name"], "Silver coin");
    EXPECT_EQ(slots(state)[0]["count"], 1);
    EXPECT_EQ(state["inventory"]["selected"], 0);
    EXPECT_EQ(state["inventory"]["open"], 1) << "a pickup shows the bar";
    EXPECT_EQ(state["removed_objects"], json::array({YARD_COIN}));
    EXPECT_EQ(sounds_at(state, 33), std::vector<std::string>{"pickup_coin.wav"});
    EXPECT_EQ(state["camera_area"], YARD);
}

TEST_F(key_quest, e_opens_the_keeps_oak_door_which_swings_away_into_the_hall)
{
    json opening = play(KEY_QUEST, OAK_DOOR_OPENING);
    EXPECT_EQ(door_state(opening, OAK_DOOR)["open"], 1);
    EXPECT_EQ(door_state(opening, OAK_DOOR)["locked"], 0);
    EXPECT_EQ(first_tick_of(opening, "door_opening.wav"), 132);
    EXPECT_LT(player_z(opening), 10.0f) << "opened from the yard";
    EXPECT_GT(door_yaw(opening, OAK_DOOR), 0.0f);
    EXPECT_LT(door_yaw(opening, OAK_DOOR), OPEN_ANGLE) << "still swinging";

    json open = play(KEY_QUEST, OAK_DOOR_OPEN);
    // The leaf reaches along its local +x from the hinge: at +80 degrees its free edge points
    // north (+z), into the hall, away from the player in the yard.
    EXPECT_FLOAT_EQ(door_yaw(open, OAK_DOOR), OPEN_ANGLE);
    EXPECT_GT(sinf(door_yaw(open, OAK_DOOR)), 0.9f);
}

TEST_F(key_quest, the_oak_door_is_shut_again_behind_the_player_with_e)
{
    json state = play(KEY_QUEST, OAK_DOOR_SHUT_BEHIND);
    EXPECT_EQ(state["camera_area"], HALL);
    EXPECT_GT(player_z(state), 10.0f + BODY_RADIUS);
    EXPECT_EQ(door_state(state, OAK_DOOR)["open"], 0);
    EXPECT_FLOAT_EQ(door_yaw(state, OAK_DOOR), 0.0f);
    EXPECT_EQ(sounds_at(state, 192), std::vector<std::string>{"door_closing.wav"});
}

TEST_F(key_quest, the_kitchens_iron_key_is_taken_with_its_sound_and_shown_in_the_open_bar)
{
    json state = play(KEY_QUEST, IRON_KEY_TAKEN);
    EXPECT_EQ(state["camera_area"], KITCHEN);
    ASSERT_EQ(slots(state).size(), 2u);
    EXPECT_EQ(slots(state)[1]["name"], "Iron key");
    EXPECT_EQ(slots(state)[1]["count"], 1);
    EXPECT_EQ(state["inventory"]["selected"], 1) << "the bar shows the key";
    EXPECT_EQ(state["inventory"]["open"], 1);
    EXPECT_TRUE(removed(state, IRON_KEY));
    EXPECT_EQ(sounds_at(state, 268), std::vector<std::string>{"pickup_key.wav"});
}

TEST_F(key_quest, the_rusty_key_is_taken_from_the_storeroom_shelf_standing_on_the_floor)
{
    json state = play(KEY_QUEST, RUSTY_KEY_TAKEN);
    EXPECT_EQ(state["camera_area"], STOREROOM);
    EXPECT_NEAR(player_y(state), 0.0f, 1e-4f);
    ASSERT_EQ(slots(state).size(), 3u);
    EXPECT_EQ(slots(state)[2]["name"], "Rusty key");
    EXPECT_EQ(state["inventory"]["selected"], 2);
    EXPECT_EQ(state["removed_objects"], json::array({YARD_COIN, IRON_KEY, RUSTY_KEY}));
    EXPECT_EQ(sounds_at(state, 532), std::vector<std::string>{"pickup_key.wav"});
}

TEST_F(key_quest, the_library_coin_counts_into_the_coins_slot)
{
    json state = play(KEY_QUEST, LIBRARY_COIN_TAKEN);
    EXPECT_EQ(state["camera_area"], LIBRARY);
    ASSERT_EQ(slots(state).size(), 3u) << "no new slot for a second coin";
    EXPECT_EQ(slots(state)[0]["name"], "Silver coin");
    EXPECT_EQ(slots(state)[0]["count"], 2);
    EXPECT_EQ(state["inventory"]["selected"], 0);
    EXPECT_TRUE(removed(state, LIBRARY_COIN));
    EXPECT_EQ(sounds_at(state, 1003), std::vector<std::string>{"pickup_coin.wav"});
}

TEST_F(key_quest, e_on_the_solar_door_says_it_is_locked)
{
    json state = play(KEY_QUEST, SOLAR_DOOR_REFUSED);
    EXPECT_EQ(state["focus_object"], SOLAR_DOOR_LEAF);
    EXPECT_EQ(state["message"]["text"], "This door is locked.");
    EXPECT_EQ(state["message"]["visible"], 1);
    EXPECT_EQ(sounds_at(state, 1085), std::vector<std::string>{"door_locked.wav"});
    EXPECT_EQ(door_state(state, SOLAR_DOOR)["locked"], 1);
    EXPECT_EQ(door_state(state, SOLAR_DOOR)["lock"], 1);
    EXPECT_EQ(door_state(state, SOLAR_DOOR)["open"], 0);
}

TEST_F(key_quest, stepping_left_of_the_first_slot_wraps_to_the_rusty_key_which_a_click_arms)
{
    json state = play(KEY_QUEST, RUSTY_KEY_ARMED);
    EXPECT_EQ(state["inventory"]["armed_slot"], 2);
    EXPECT_EQ(state["inventory"]["selected"], 2);
    EXPECT_EQ(state["inventory"]["open"], 0) << "arming closes the bar";
}

TEST_F(key_quest, the_rusty_key_does_not_fit_the_solar_door_and_stays_armed)
{
    json state = play(KEY_QUEST, RUSTY_KEY_TRIED);
    EXPECT_EQ(state["message"]["text"], "The key doesn't fit this door.");
    EXPECT_EQ(state["message"]["visible"], 1);
    EXPECT_EQ(sounds_at(state, 1100), std::vector<std::string>{"door_locked.wav"});
    EXPECT_EQ(state["inventory"]["armed_slot"], 2);
    EXPECT_EQ(door_state(state, SOLAR_DOOR)["locked"], 1);
}

TEST_F(key_quest, browsing_puts_the_rusty_key_away_and_the_iron_key_is_armed)
{
    json state = play(KEY_QUEST, IRON_KEY_ARMED);
    EXPECT_EQ(state["inventory"]["selected"], 1);
    EXPECT_EQ(state["inventory"]["armed_slot"], 1);
    EXPECT_EQ(slots(state)[1]["name"], "Iron key");
}

TEST_F(key_quest, the_iron_key_unlocks_the_solar_door_which_opens_and_stays_in_the_inventory)
{
    json state = play(KEY_QUEST, SOLAR_DOOR_UNLOCKED);
    EXPECT_EQ(door_state(state, SOLAR_DOOR)["locked"], 0);
    EXPECT_EQ(door_state(state, SOLAR_DOOR)["open"], 1);
    EXPECT_EQ(sounds_at(state, 1125), (std::vector<std::string>{"door_unlock.wav", "door_opening.wav"}));
    EXPECT_EQ(state["inventory"]["armed_slot"], -1) << "a key that worked is put away";
    ASSERT_EQ(slots(state).size(), 3u);
    EXPECT_EQ(slots(state)[1]["name"], "Iron key");
}

TEST_F(key_quest, through_the_solar_door_which_swung_away_into_the_solar)
{
    json state = play(KEY_QUEST, IN_THE_SOLAR);
    EXPECT_EQ(state["camera_area"], SOLAR);
    EXPECT_LT(player_z(state), 17.4f - BODY_RADIUS);
    EXPECT_NEAR(player_y(state), -4.4f, 1e-4f);
    // Opened from the library to the north: the free edge swings south, into the solar.
    EXPECT_FLOAT_EQ(door_yaw(state, SOLAR_DOOR), -OPEN_ANGLE);
    EXPECT_EQ(state["player"]["health"], 100);
    EXPECT_EQ(slots(state)[0]["count"], 2) << "two coins on the way";
}
