// Talking, played from the start by walking, turning and the answer keys: into the great hall,
// the Warden through every branch of his talk (the keep, the iron door, the dice, back to his menu,
// good night), west into the kitchen to Maud (her saying in Russian, a story, goodbye), and back to
// the Warden, whose words have changed because Maud and he share what the story has set. Answers are
// picked by number, by the arrows (and W) with Enter or E, and by the mouse.
#include "scenario.h"

#include <math.h>

#include "support/temp_files.h"

#include <string>

namespace {

// The shipped level's numbering, in load order.
constexpr int32_t HALL = 1, KITCHEN = 2;
constexpr int32_t WARDEN = 45, MAUD = 59;

// The route, from the start at (0, 0, 0) facing north, at 640 x 480 (the dialogue box's answer rows
// under a one-line speech start 396 lines down, one 16-line row each).
//   ticks 0-183     as in the key quest: the coin, the oak door opened, W into the hall to about
//                   (0.13, 0, 13.3)
//                   (routes/oak_door.script, routes/into_the_hall.script)
//   tick 190        turn toward the Warden by the fire, 0.7 rad right and 0.2 down; tick 192 E
//                   (routes/greet_the_warden.script)
//   tick 210        1 "What is this place?"; tick 225 2 "I see.": back to his menu
//   ticks 240-245   Down, Down (the second answer), Enter: "Care for a game of dice?"
//   tick 260        the cursor onto the first answer row, "Again."; ticks 262-263 a click
//   tick 280        2 "Enough dice.": his menu again
//   ticks 295-325   1, 1 "And the iron door upstairs?" (he sends the player to Maud), 1 "I will."
//   tick 340        3 "Good night, Warden.": nothing more to say, the box closes over 0.2 s
//   ticks 360-416   face west, W into the kitchen to about (-5.5, 0, 13.3)
//   tick 425        turn toward Maud; tick 427 E
//   ticks 445-452   Up (from none, wrapping to the last answer), Up, W, E: "Where are you from, Maud?"
//   tick 475        1 "Wise words."; tick 490 2 "Tell me a story."; tick 505 2 "Enough stories."
//   tick 520        3 "I should go.": her box closes
//   ticks 540-598   face east, W back across the hall to about (0.3, 0, 13.3)
//   tick 605        turn toward the Warden; tick 607 E: he has heard from Maud
const std::string TALKS = route("oak_door.script") + route("into_the_hall.script") +
    route("greet_the_warden.script") +
    "210 down 1\n211 up 1\n225 down 2\n226 up 2\n"
    "240 down DOWN\n241 up DOWN\n242 down DOWN\n243 up DOWN\n245 down ENTER\n246 up ENTER\n"
    "260 cursor 60 400\n262 down LBUTTON\n263 up LBUTTON\n"
    "280 down 2\n281 up 2\n"
    "295 down 1\n296 up 1\n310 down 1\n311 up 1\n325 down 1\n326 up 1\n"
    "340 down 3\n341 up 3\n"
    "360 mouse -2271 -200\n362 down W\n416 up W\n"
    "425 mouse 761 200\n427 down E\n428 up E\n"
    "445 down UP\n446 up UP\n447 down UP\n448 up UP\n449 down W\n450 up W\n452 down E\n453 up E\n"
    "475 down 1\n476 up 1\n490 down 2\n491 up 2\n505 down 2\n506 up 2\n"
    "520 down 3\n521 up 3\n"
    "540 mouse 2381 -200\n542 down W\n598 up W\n"
    "605 mouse -911 200\n607 down E\n608 up E\n";

const json WARDEN_MENU = json::array({"What is this place?", "Care for a game of dice?", "Good night, Warden."});
const json MAUD_MENU = json::array({"Where are you from, Maud?", "Tell me a story.", "I should go."});

const json& talk(const json& state)
{
    return state.at("dialogue");
}

std::string text(const json& state)
{
    return talk(state).at("text").get<std::string>();
}

const json& variables(const json& state)
{
    return state.at("variables");
}

// The game clock during update `tick`, added up tick by tick as the game's float clock does.
float game_time_at(const json& state, int32_t tick)
{
    float time = 0.0f;
    for (int32_t i = 0; i < tick; ++i)
        time += tick_length(state);
    return time;
}

// What random(a, b) gives during update `tick`: the game clock's fraction scaled onto a ... b.
int32_t roll_at(const json& state, int32_t tick, int32_t a, int32_t b)
{
    return static_cast<int32_t>(fmodf(game_time_at(state, tick), 1.0f) * static_cast<float>(b - a) +
                                static_cast<float>(a));
}

// The dice's words for a roll: a six wins, anything else is printed.
std::string dice_text(int32_t roll)
{
    if (roll == 6)
        return "A six! You have the devil's own luck tonight. Keep it away from the well.";
    return "You rolled " + std::to_string(roll) + ". The Warden rolls a six and grins into his beard.";
}

class dialogue_route : public scenario {
protected:
    void SetUp() override
    {
        scenario::SetUp();
        // The box needs room for its answer rows; 20 frames a second keep the runs short.
        write_file(file("settings.ini"), "SCREEN_RESOLUTION=640x480\r\nFPS=20\r\n");
    }
};

} // namespace

TEST_F(dialogue_route, the_dialogue_and_variables_are_in_the_state_from_the_start)
{
    json state = play("", 1);
    EXPECT_EQ(talk(state), json::parse(R"({"active": 0, "phase": 0, "text": "", "choices": [], "highlighted": -1})"));
    EXPECT_EQ(variables(state), json::object());
}

TEST_F(dialogue_route, e_on_the_warden_opens_his_greeting_with_three_answers_and_frees_the_mouse)
{
    json state = play(TALKS, 195);
    EXPECT_EQ(state["camera_area"], HALL);
    EXPECT_EQ(state["focus_object"], WARDEN);
    EXPECT_EQ(talk(state)["active"], 1);
    EXPECT_EQ(talk(state)["phase"], 2);
    EXPECT_EQ(text(state), "Another soul out in the dark? Come to the fire, friend, and mind the door. "
                           "The wind bites tonight.");
    EXPECT_EQ(talk(state)["choices"], WARDEN_MENU);
    EXPECT_EQ(talk(state)["highlighted"], -1);
    EXPECT_EQ(variables(state), json::parse(R"({"met_warden": "yes"})"));
    EXPECT_EQ(state["mouse_captured"], 0);
}

TEST_F(dialogue_route, answers_picked_by_number_go_deeper_and_back_to_the_wardens_menu)
{
    json keep = play(TALKS, 213);
    EXPECT_EQ(text(keep), "Gloamhold. A proud keep once. Now three old servants and a great many shadows.");
    EXPECT_EQ(talk(keep)["choices"], json::array({"And the iron door upstairs?", "I see."}));

    json back = play(TALKS, 228);
    EXPECT_EQ(text(back), "The fire cracks. The Warden waits.");
    EXPECT_EQ(talk(back)["choices"], WARDEN_MENU) << "the jump back to his menu";
    EXPECT_EQ(talk(back)["phase"], 2);
}

TEST_F(dialogue_route, down_twice_highlights_the_dice_and_enter_rolls_them_by_the_game_clock)
{
    json highlighted = play(TALKS, 244);
    EXPECT_EQ(talk(highlighted)["highlighted"], 1);
    EXPECT_EQ(talk(highlighted)["choices"], WARDEN_MENU);

    json rolled = play(TALKS, 248);
    int32_t roll = roll_at(rolled, 245, 1, 7);
    ASSERT_GE(roll, 1);
    ASSERT_LE(roll, 6);
    EXPECT_EQ(variables(rolled)["roll"], std::to_string(roll));
    EXPECT_EQ(text(rolled), dice_text(roll));
    EXPECT_EQ(variables(rolled).contains("dice_won"), roll == 6);
    EXPECT_EQ(talk(rolled)["choices"], json::array({"Again.", "Enough dice."}));
    EXPECT_EQ(talk(rolled)["highlighted"], -1) << "new answers start with none highlighted";
}

TEST_F(dialogue_route, the_mouse_highlights_the_row_under_the_cursor_and_a_click_picks_it)
{
    json hovering = play(TALKS, 262);
    EXPECT_EQ(talk(hovering)["highlighted"], 0) << "the cursor on the first row";

    json again = play(TALKS, 266);
    int32_t roll = roll_at(again, 262, 1, 7);
    EXPECT_EQ(variables(again)["roll"], std::to_string(roll));
    EXPECT_EQ(text(again), dice_text(roll));
    EXPECT_EQ(talk(again)["choices"], json::array({"Again.", "Enough dice."}));
    EXPECT_EQ(again["mouse_captured"], 0) << "while the box is open a click picks, it does not capture the mouse";

    json enough = play(TALKS, 284);
    EXPECT_EQ(text(enough), "Wise. Dice and the dark are poor company.");
    EXPECT_EQ(talk(enough)["choices"], WARDEN_MENU);
}

TEST_F(dialogue_route, asking_about_the_iron_door_sends_the_player_to_maud)
{
    json sent = play(TALKS, 314);
    EXPECT_EQ(text(sent), "The solar. The old lord slept there until the night he rode out and never came "
                          "back. Ask Maud in the kitchen about the key.");
    EXPECT_EQ(talk(sent)["choices"], json::array({"I will."}));
    EXPECT_EQ(variables(sent)["warden_sent"], "yes");

    json nods = play(TALKS, 329);
    EXPECT_EQ(text(nods), "The Warden nods and turns back to the fire.");
    EXPECT_EQ(talk(nods)["choices"], WARDEN_MENU);
}

TEST_F(dialogue_route, good_night_closes_the_box_over_a_fifth_of_a_second_and_gives_the_mouse_back)
{
    json before = play(TALKS, 195);
    json closing = play(TALKS, 344);
    EXPECT_EQ(text(closing), "Mind the well in the yard. It is deeper than it looks.");
    EXPECT_EQ(talk(closing)["choices"], json::array());
    EXPECT_EQ(talk(closing)["phase"], 0);
    EXPECT_EQ(talk(closing)["active"], 1);
    EXPECT_EQ(closing["mouse_captured"], 1);
    EXPECT_EQ(closing["player"]["position"], before["player"]["position"]) << "the world waits while the player talks";

    json closed = play(TALKS, 352);
    EXPECT_EQ(talk(closed)["active"], 0);
    EXPECT_EQ(variables(closed)["met_warden"], "yes");
    EXPECT_EQ(variables(closed)["warden_sent"], "yes") << "variables outlive the dialogue";
}

TEST_F(dialogue_route, maud_knows_the_warden_sent_the_player)
{
    json state = play(TALKS, 430);
    EXPECT_EQ(state["camera_area"], KITCHEN);
    EXPECT_EQ(state["focus_object"], MAUD);
    EXPECT_EQ(talk(state)["active"], 1);
    EXPECT_EQ(text(state), "The Warden sent you, did he? Then take the iron key from my table. Nobody has "
                           "dared the solar in years.");
    EXPECT_EQ(talk(state)["choices"], MAUD_MENU);
    EXPECT_EQ(variables(state)["maud_hint"], "given");
    EXPECT_FALSE(variables(state).contains("met_maud")) << "her first-meeting branch did not run";
}

TEST_F(dialogue_route, up_from_none_wraps_to_the_last_answer_and_w_steps_up_too)
{
    json state = play(TALKS, 451);
    EXPECT_EQ(talk(state)["highlighted"], 0);
    EXPECT_EQ(talk(state)["choices"], MAUD_MENU);
}

TEST_F(dialogue_route, maud_says_her_mothers_saying_in_russian_in_the_dialogue_font)
{
    json state = play(TALKS, 466, {"--shot", "465:" + file("saying.png")});
    EXPECT_EQ(text(state), "From the east, past the salt marshes. My mother had a saying in her tongue.\n"
                           "\xd0\x9d\xd0\xbe\xd1\x87\xd1\x8c \xd0\xb4\xd0\xbb\xd0\xb8\xd0\xbd\xd0\xbd\xd0\xb0, "
                           "\xd0\xb0 \xd1\x81\xd0\xb2\xd0\xb5\xd1\x87\xd0\xb8 \xd0\xba\xd0\xbe\xd1\x80\xd0\xbe"
                           "\xd1\x82\xd0\xba\xd0\xb8. The night is long and the candles short.");
    EXPECT_EQ(talk(state)["choices"], json::array({"Wise words."}));
    // The line feed only separates words: the speech wraps onto two lines of the box, both written
    // in white, and the Russian words sit at the end of the first and the start of the second.
    rgb_image frame = read_png(file("saying.png"));
    ASSERT_EQ(frame.width, 640u);
    auto white_in = [&](int32_t x0, int32_t x1, int32_t y0, int32_t y1) {
        int32_t count = 0;
        for (int32_t y = y0; y < y1; ++y)
            for (int32_t x = x0; x < x1; ++x) {
                const uint8_t* p = frame.pixel(x, y);
                count += p[0] == 255 && p[1] == 255 && p[2] == 255;
            }
        return count;
    };
    const int32_t first_line = 480 - 108, second_line = first_line + 18;
    EXPECT_GT(white_in(520, 628, first_line, first_line + 16), 50) << "\"Ночь длинна,\" ends the first line";
    EXPECT_GT(white_in(12, 130, second_line, second_line + 16), 50) << "\"а свечи коротки.\" starts the second";
}

TEST_F(dialogue_route, a_story_is_drawn_by_the_game_clock_and_goodbye_closes_her_box)
{
    json story = play(TALKS, 494);
    int32_t told = roll_at(story, 490, 1, 4);
    EXPECT_EQ(variables(story)["story"], std::to_string(told));
    EXPECT_EQ(talk(story)["choices"], json::array({"Another.", "Enough stories."}));
    EXPECT_FALSE(text(story).empty());

    json menu = play(TALKS, 509);
    EXPECT_EQ(text(menu), "As you like, dear.");
    EXPECT_EQ(talk(menu)["choices"], MAUD_MENU);

    json closed = play(TALKS, 533);
    EXPECT_EQ(talk(closed)["active"], 0);
    EXPECT_EQ(text(closed), "Go on then. And close the hall door behind you, the draught gets in the soup.");
    EXPECT_EQ(closed["mouse_captured"], 1);
}

TEST_F(dialogue_route, back_in_the_hall_the_warden_has_heard_from_maud)
{
    json state = play(TALKS, 615);
    EXPECT_EQ(state["camera_area"], HALL);
    EXPECT_EQ(state["focus_object"], WARDEN);
    EXPECT_EQ(text(state), "So Maud has talked your ear off. Did you find the key on her table?");
    EXPECT_EQ(talk(state)["choices"], WARDEN_MENU);
    EXPECT_EQ(variables(state), json::parse(R"({"met_warden": "yes", "roll": ")" +
                                            std::to_string(roll_at(state, 262, 1, 7)) +
                                            R"(", "warden_sent": "yes", "maud_hint": "given", "story": ")" +
                                            std::to_string(roll_at(state, 490, 1, 4)) + R"("})"));
}
