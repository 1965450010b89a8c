#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/headless/headless_options.h"

namespace {

// Parses a command line given as words (the program name is added).
struct parsed {
    headless_options options = {};
    command_line_result result;
    std::string error;

    explicit parsed(std::vector<const char*> words)
    {
        words.insert(words.begin(), "gloamhold-headless");
        char message[300];
        result = parse_headless_arguments(static_cast<int>(words.size()), words.data(), &options, message,
                                          sizeof message);
        error = message;
    }
    ~parsed() { headless_options_free(&options); }
};

} // namespace

TEST(headless_options, no_arguments_run_nothing_but_the_start_up)
{
    parsed p({});
    ASSERT_EQ(p.result, COMMAND_LINE_OK);
    EXPECT_EQ(p.options.directory, nullptr);
    EXPECT_EQ(p.options.ticks_given, 0);
    EXPECT_EQ(p.options.shot_count, 0);
    EXPECT_EQ(headless_ticks_to_run(&p.options, -1), 0);
}

TEST(headless_options, every_option_is_read)
{
    parsed p({"-C", "data", "--ticks", "120", "--script", "walk.txt", "--place", "1.5,-2,3,90,-45", "--shot",
              "10:a.png", "--shot", "119:b.png", "--state", "s.json", "--audio", "a.wav"});
    ASSERT_EQ(p.result, COMMAND_LINE_OK) << p.error;
    EXPECT_STREQ(p.options.directory, "data");
    EXPECT_EQ(p.options.ticks, 120);
    EXPECT_STREQ(p.options.script_path, "walk.txt");
    ASSERT_EQ(p.options.place_given, 1);
    EXPECT_EQ(p.options.place[0], 1.5f);
    EXPECT_EQ(p.options.place[1], -2.0f);
    EXPECT_EQ(p.options.place[2], 3.0f);
    EXPECT_EQ(p.options.place[3], 90.0f * 0.017453292f);
    EXPECT_EQ(p.options.place[4], -45.0f * 0.017453292f);
    ASSERT_EQ(p.options.shot_count, 2);
    EXPECT_EQ(p.options.shots[0].tick, 10);
    EXPECT_STREQ(p.options.shots[0].path, "a.png");
    EXPECT_EQ(p.options.shots[1].tick, 119);
    EXPECT_STREQ(p.options.shots[1].path, "b.png");
    EXPECT_STREQ(p.options.state_path, "s.json");
    EXPECT_STREQ(p.options.audio_path, "a.wav");
}

TEST(headless_options, help_asks_for_the_usage)
{
    EXPECT_EQ(parsed({"--ticks", "3", "--help"}).result, COMMAND_LINE_HELP);
    EXPECT_EQ(parsed({"-h"}).result, COMMAND_LINE_HELP);
}

TEST(headless_options, version_asks_for_the_version_line)
{
    EXPECT_EQ(parsed({"--version"}).result, COMMAND_LINE_VERSION);
    EXPECT_EQ(parsed({"--ticks", "3", "--version"}).result, COMMAND_LINE_VERSION);
}

TEST(headless_options, an_unknown_option_is_named)
{
    parsed p({"--tick", "3"});
    EXPECT_EQ(p.result, COMMAND_LINE_BAD);
    EXPECT_EQ(p.error, "--tick: unknown option");
}

TEST(headless_options, a_stray_word_is_named)
{
    parsed p({"walk.txt"});
    EXPECT_EQ(p.result, COMMAND_LINE_BAD);
    EXPECT_EQ(p.error, "walk.txt: unexpected argument");
}

TEST(headless_options, an_option_without_its_value_is_named)
{
    parsed p({"--state"});
    EXPECT_EQ(p.result, COMMAND_LINE_BAD);
    EXPECT_EQ(p.error, "--state: needs a value");
    EXPECT_EQ(parsed({"-C", ""}).result, COMMAND_LINE_BAD);
}

TEST(headless_options, ticks_must_be_a_whole_number_from_0)
{
    for (const char* bad : {"-1", "1.5", "ten", "3x", "", "99999999999", "+4"}) {
        parsed p({"--ticks", bad});
        EXPECT_EQ(p.result, COMMAND_LINE_BAD) << bad;
    }
    parsed zero({"--ticks", "0"});
    EXPECT_EQ(zero.result, COMMAND_LINE_OK);
    EXPECT_EQ(zero.options.ticks_given, 1);
    EXPECT_EQ(headless_ticks_to_run(&zero.options, 50), 0);
}

TEST(headless_options, single_options_given_twice_are_refused)
{
    EXPECT_EQ(parsed({"--ticks", "1", "--ticks", "2"}).error, "--ticks: given twice");
    EXPECT_EQ(parsed({"--state", "a", "--state", "b"}).error, "--state: given twice");
    EXPECT_EQ(parsed({"--place", "0,0,0,0,0", "--place", "0,0,0,0,0"}).error, "--place: given twice");
}

TEST(headless_options, a_placement_needs_five_finite_numbers)
{
    for (const char* bad : {"1,2,3,4", "1,2,3,4,5,6", "1,2,,4,5", "a,2,3,4,5", "1,2,3,4,inf", "1;2;3;4;5"}) {
        parsed p({"--place", bad});
        EXPECT_EQ(p.result, COMMAND_LINE_BAD) << bad;
        EXPECT_NE(p.error.find("X,Y,Z,YAW,PITCH"), std::string::npos);
    }
}

TEST(headless_options, a_shot_needs_a_tick_and_a_file)
{
    for (const char* bad : {"10", "10:", ":a.png", "x:a.png", "-1:a.png"}) {
        parsed p({"--shot", bad});
        EXPECT_EQ(p.result, COMMAND_LINE_BAD) << bad;
        EXPECT_EQ(p.error, "--shot: expects TICK:FILE.png");
    }
}

TEST(headless_options, a_shot_after_the_last_update_is_refused)
{
    parsed p({"--ticks", "10", "--shot", "10:a.png"});
    EXPECT_EQ(p.result, COMMAND_LINE_BAD);
    EXPECT_NE(p.error.find("tick 10 is never reached"), std::string::npos) << p.error;
    EXPECT_EQ(parsed({"--ticks", "10", "--shot", "9:a.png"}).result, COMMAND_LINE_OK);
    EXPECT_EQ(parsed({"--shot", "0:a.png", "--ticks", "0"}).error,
              "--shot: tick 0 is never reached: --ticks 0 runs no update");
}

TEST(headless_options, without_ticks_the_run_lasts_to_the_last_shot_or_scripted_tick)
{
    parsed p({"--shot", "30:a.png", "--shot", "7:b.png"});
    EXPECT_EQ(headless_ticks_to_run(&p.options, -1), 31);
    EXPECT_EQ(headless_ticks_to_run(&p.options, 40), 41);
}
