#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "core/key_codes.h"
#include "hosts/input_script.h"

namespace {

struct parsed {
    input_script script = {};
    int ok;
    int32_t line = 0;
    std::string error;

    explicit parsed(const std::string& text)
    {
        char message[200] = "";
        ok = parse_input_script(text.data(), text.size(), &script, &line, message, sizeof message);
        error = message;
    }
    ~parsed() { input_script_free(&script); }
};

uint32_t code_of(const char* name)
{
    uint32_t code = 0xFFFF;
    EXPECT_EQ(script_key_code(name, &code), 1) << name;
    return code;
}

} // namespace

TEST(input_script, every_event_form_is_read)
{
    parsed p("0 down W\n"
             "2 up w\n"
             "3 mouse 15 -4\n"
             "4 wheel -2\n"
             "5 cursor 100 200\n");
    ASSERT_EQ(p.ok, 1) << p.error;
    ASSERT_EQ(p.script.count, 5);
    EXPECT_EQ(p.script.events[0].kind, SCRIPT_KEY_DOWN);
    EXPECT_EQ(p.script.events[0].a, 'W');
    EXPECT_EQ(p.script.events[1].kind, SCRIPT_KEY_UP);
    EXPECT_EQ(p.script.events[1].tick, 2);
    EXPECT_EQ(p.script.events[2].kind, SCRIPT_MOUSE);
    EXPECT_EQ(p.script.events[2].a, 15);
    EXPECT_EQ(p.script.events[2].b, -4);
    EXPECT_EQ(p.script.events[3].kind, SCRIPT_WHEEL);
    EXPECT_EQ(p.script.events[3].a, -2);
    EXPECT_EQ(p.script.events[4].kind, SCRIPT_CURSOR);
    EXPECT_EQ(p.script.events[4].b, 200);
    EXPECT_EQ(input_script_last_tick(&p.script), 5);
}

TEST(input_script, comments_blank_lines_and_carriage_returns_are_skipped)
{
    parsed p("# walk forward\r\n\r\n   \n0 down W   # hold it\r\n\t1\tup\tW\n# done");
    ASSERT_EQ(p.ok, 1) << p.error;
    EXPECT_EQ(p.script.count, 2);
}

TEST(input_script, an_empty_script_has_no_last_tick)
{
    parsed p("");
    EXPECT_EQ(p.ok, 1);
    EXPECT_EQ(input_script_last_tick(&p.script), -1);
}

TEST(input_script, events_are_put_in_tick_order_keeping_the_written_order_within_a_tick)
{
    parsed p("5 down A\n1 down B\n5 up A\n1 up B\n3 wheel 1\n");
    ASSERT_EQ(p.ok, 1);
    int32_t ticks[5], keys[5];
    for (int i = 0; i < 5; ++i) {
        ticks[i] = p.script.events[i].tick;
        keys[i] = p.script.events[i].kind;
    }
    EXPECT_EQ(std::vector<int32_t>(ticks, ticks + 5), (std::vector<int32_t>{1, 1, 3, 5, 5}));
    EXPECT_EQ(std::vector<int32_t>(keys, keys + 5),
              (std::vector<int32_t>{SCRIPT_KEY_DOWN, SCRIPT_KEY_UP, SCRIPT_WHEEL, SCRIPT_KEY_DOWN, SCRIPT_KEY_UP}));
}

TEST(input_script, key_names_map_to_the_windows_codes)
{
    EXPECT_EQ(code_of("W"), 'W');
    EXPECT_EQ(code_of("q"), 'Q');
    EXPECT_EQ(code_of("SPACE"), 32u);
    EXPECT_EQ(code_of("SHIFT"), 16u);
    EXPECT_EQ(code_of("ALT"), 18u);
    EXPECT_EQ(code_of("ESC"), 27u);
    EXPECT_EQ(code_of("BACKSPACE"), 8u);
    EXPECT_EQ(code_of("ENTER"), 13u);
    EXPECT_EQ(code_of("UP"), 0x26u);
    EXPECT_EQ(code_of("DOWN"), 0x28u);
    EXPECT_EQ(code_of("LBUTTON"), 1u);
    EXPECT_EQ(code_of("RBUTTON"), 2u);
    EXPECT_EQ(code_of("MBUTTON"), 4u);
    EXPECT_EQ(code_of("F1"), 0x70u);
    EXPECT_EQ(code_of("F11"), 0x7Au);
    EXPECT_EQ(code_of("0"), '0');
    EXPECT_EQ(code_of("9"), '9');
    EXPECT_EQ(code_of("["), 0xDBu);
    EXPECT_EQ(code_of("]"), 0xDDu);
    EXPECT_EQ(code_of("ADD"), 0x6Bu);
}

TEST(input_script, numbers_of_two_or_more_digits_are_virtual_key_codes)
{
    EXPECT_EQ(code_of("107"), 107u);
    EXPECT_EQ(code_of("0x6B"), 0x6Bu);
    EXPECT_EQ(code_of("05"), 5u);
    EXPECT_EQ(code_of("255"), 255u);
    uint32_t code = 0;
    EXPECT_EQ(script_key_code("256", &code), 0);
    EXPECT_EQ(script_key_code("-12", &code), 0);
    EXPECT_EQ(script_key_code("F0", &code), 0);
    EXPECT_EQ(script_key_code("F25", &code), 0);
    EXPECT_EQ(script_key_code("ESCAPE", &code), 0);
}

TEST(input_script, an_unknown_key_names_the_line)
{
    parsed p("0 down W\n\n# next\n4 down FOO\n");
    EXPECT_EQ(p.ok, 0);
    EXPECT_EQ(p.line, 4);
    EXPECT_EQ(p.error, "unknown key 'FOO'");
    EXPECT_EQ(p.script.events, nullptr) << "nothing is kept from a bad script";
}

TEST(input_script, a_bad_tick_names_the_line)
{
    parsed p("x down W\n");
    EXPECT_EQ(p.ok, 0);
    EXPECT_EQ(p.line, 1);
    EXPECT_EQ(p.error, "'x' is not a tick (a whole number from 0)");
    EXPECT_EQ(parsed("-1 down W").ok, 0);
    EXPECT_EQ(parsed("1.5 down W").ok, 0);
}

TEST(input_script, an_unknown_event_names_the_line)
{
    parsed p("0 down W\n1 press W\n");
    EXPECT_EQ(p.ok, 0);
    EXPECT_EQ(p.line, 2);
    EXPECT_EQ(p.error, "unknown event 'press' (down, up, mouse, wheel, cursor, time or quit)");
}

TEST(input_script, missing_or_extra_values_name_the_form)
{
    parsed p("0 mouse 5\n");
    EXPECT_EQ(p.ok, 0);
    EXPECT_EQ(p.error, "'mouse' takes 2 values: T mouse DX DY");
    parsed extra("0 down W S\n");
    EXPECT_EQ(extra.error, "'down' takes 1 value: T down KEY");
    parsed bare("7\n");
    EXPECT_EQ(bare.error, "an event is missing after the tick");
}

TEST(input_script, values_must_be_whole_numbers)
{
    parsed p("0 wheel 1.5\n");
    EXPECT_EQ(p.ok, 0);
    EXPECT_EQ(p.error, "'1.5' is not a whole number from -1000000 to 1000000");
    EXPECT_EQ(parsed("0 cursor 10 2000000").ok, 0);
}

TEST(input_script, a_recording_adds_the_loops_clock_and_the_quit)
{
    parsed p("0 down W\n0 time 0\n1 time 0.025000000000000001\n1 cursor 300 240\n3 quit\n");
    ASSERT_EQ(p.ok, 1) << p.error;
    ASSERT_EQ(p.script.count, 5);
    EXPECT_EQ(p.script.events[1].kind, SCRIPT_TIME);
    EXPECT_EQ(p.script.events[1].seconds, 0.0);
    EXPECT_EQ(p.script.events[2].seconds, 0.025);
    EXPECT_EQ(p.script.events[4].kind, SCRIPT_QUIT);
    EXPECT_EQ(p.script.events[4].tick, 3);
    EXPECT_EQ(input_script_last_tick(&p.script), 3);
    EXPECT_EQ(input_script_has_times(&p.script), 1);
    parsed plain("0 down W\n3 quit\n");
    EXPECT_EQ(input_script_has_times(&plain.script), 0);
}

TEST(input_script, a_time_is_a_decimal_from_0_and_quit_takes_nothing)
{
    parsed negative("0 time -0.5\n");
    EXPECT_EQ(negative.ok, 0);
    EXPECT_EQ(negative.error, "'-0.5' is not a time in seconds (a decimal from 0)");
    EXPECT_EQ(parsed("0 time soon\n").ok, 0);
    EXPECT_EQ(parsed("0 time inf\n").ok, 0);
    EXPECT_EQ(parsed("0 time\n").error, "'time' takes 1 value: T time SECONDS");
    EXPECT_EQ(parsed("0 quit now\n").error, "'quit' takes 0 values: T quit");
}
