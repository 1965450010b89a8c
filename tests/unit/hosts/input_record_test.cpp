#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <string>

#include "core/key_codes.h"
#include "core/loop_state.h"
#include "hosts/input.h"
#include "hosts/input_record.h"
#include "hosts/input_script.h"
#include "hosts/scripted_input.h"
#include "support/temp_files.h"

namespace {

std::string line_of(int32_t tick, const script_event& event)
{
    char line[96];
    input_record_line(line, sizeof line, tick, event);
    return line;
}

script_event event_of(script_event_kind kind, int32_t a = 0, int32_t b = 0, double seconds = 0.0)
{
    return script_event{0, kind, a, b, seconds};
}

input_script parsed(const std::string& text)
{
    input_script script = {};
    int32_t line = 0;
    char error[200] = "";
    EXPECT_EQ(parse_input_script(text.c_str(), text.size(), &script, &line, error, sizeof error), 1)
        << "line " << line << ": " << error << "\n" << text;
    return script;
}

void no_close() {}

class input_record_test : public testing::Test {
protected:
    std::string path;

    void SetUp() override
    {
        memset(key_state, 0, sizeof key_state);
        mouse_captured = 0;
        path = test_folder() + "/session.txt";
    }

    void TearDown() override
    {
        if (recording.file)
            input_record_finish();
        input_listener = nullptr;
    }

    void start()
    {
        FILE* file = fopen(path.c_str(), "wb");
        ASSERT_NE(file, nullptr);
        input_record_start(file);
    }

    // The recorded lines that are not comments.
    std::string events() const
    {
        std::string text = read_all(path), kept;
        size_t at = 0;
        while (at < text.size()) {
            size_t end = text.find('\n', at);
            std::string line = text.substr(at, end - at + 1);
            if (line[0] != '#')
                kept += line;
            at = end + 1;
        }
        return kept;
    }
};

} // namespace

TEST(input_record, each_event_is_written_as_its_script_line)
{
    EXPECT_EQ(line_of(12, event_of(SCRIPT_KEY_DOWN, 'W')), "12 down W\n");
    EXPECT_EQ(line_of(3, event_of(SCRIPT_KEY_UP, KEYCODE_LBUTTON)), "3 up LBUTTON\n");
    EXPECT_EQ(line_of(0, event_of(SCRIPT_CURSOR, 330, -4)), "0 cursor 330 -4\n");
    EXPECT_EQ(line_of(5, event_of(SCRIPT_WHEEL, -2)), "5 wheel -2\n");
    EXPECT_EQ(line_of(5, event_of(SCRIPT_MOUSE, 7, -1)), "5 mouse 7 -1\n");
    EXPECT_EQ(line_of(9, event_of(SCRIPT_QUIT)), "9 quit\n");
    EXPECT_EQ(line_of(40, event_of(SCRIPT_TIME, 0, 0, 1.0)), "40 time 1\n");
}

TEST(input_record, a_recorded_time_reads_back_as_the_same_double)
{
    const double times[] = {0.025, 1.0 / 3.0, 12345.678901234567, 0.0, 86400.000000000015};
    for (double seconds : times) {
        input_script script = parsed(line_of(1, event_of(SCRIPT_TIME, 0, 0, seconds)));
        ASSERT_EQ(script.count, 1);
        EXPECT_EQ(script.events[0].kind, SCRIPT_TIME);
        EXPECT_EQ(script.events[0].seconds, seconds);
        input_script_free(&script);
    }
}

TEST(input_record, every_key_code_is_written_as_a_name_the_script_reads_back)
{
    for (uint32_t code = 0; code <= 0xFF; ++code) {
        char name[16];
        script_key_name(code, name, sizeof name);
        uint32_t read = 0xFFFF;
        ASSERT_EQ(script_key_code(name, &read), 1) << name;
        EXPECT_EQ(read, code) << name;
    }
    char name[16];
    script_key_name(KEYCODE_F12, name, sizeof name);
    EXPECT_STREQ(name, "F12");
    script_key_name(3, name, sizeof name);
    EXPECT_STREQ(name, "03") << "a single digit would name the digit key";
}

TEST_F(input_record_test, the_rules_input_is_written_keyed_by_the_update_it_came_before)
{
    start();
    input_key_down('W', 0, no_close);
    input_record_pass(0.0);
    input_record_update_ran();
    input_button(KEYCODE_LBUTTON, 1);
    input_mouse_move(300, 250, client_point{320, 240});
    input_record_pass(0.025);
    input_record_update_ran();
    input_record_update_ran();
    input_key_up('W');
    input_wheel(-240);
    EXPECT_EQ(input_record_finish(), 1);
    EXPECT_EQ(events(), "0 down W\n0 time 0\n1 down LBUTTON\n1 cursor 300 250\n1 time 0.025000000000000001\n"
                        "3 up W\n3 wheel -2\n3 quit\n");
}

TEST_F(input_record_test, ignored_repeats_and_codes_beyond_a_byte_are_not_written)
{
    start();
    input_key_down('A', 0, no_close);
    input_key_down('A', 1, no_close); // auto-repeat: changes nothing
    input_key_down(0x100, 0, no_close);
    input_system_key_down(KEYCODE_F10);
    input_system_key_down(KEYCODE_F10); // a system key's repeat presses it again
    input_record_finish();
    EXPECT_EQ(events(), "0 down A\n0 down F10\n0 down F10\n0 quit\n");
}

TEST_F(input_record_test, each_line_reaches_the_file_as_it_is_written)
{
    start();
    input_key_down('E', 0, no_close);
    input_record_pass(0.5);
    EXPECT_EQ(events(), "0 down E\n0 time 0.5\n") << "a crash now would leave these";
}

TEST_F(input_record_test, the_recording_opens_with_comments_naming_the_settings_and_parses_as_a_script)
{
    start();
    input_key_down(KEYCODE_ESCAPE, 0, no_close);
    input_record_finish();
    std::string text = read_all(path);
    EXPECT_EQ(text.rfind("# gloamhold ", 0), 0u) << text;
    EXPECT_NE(text.find("UPS="), std::string::npos);
    EXPECT_NE(text.find("MOUSE_SENSITIVITY_X="), std::string::npos);
    input_script script = parsed(text);
    ASSERT_EQ(script.count, 2);
    EXPECT_EQ(script.events[0].a, KEYCODE_ESCAPE);
    EXPECT_EQ(script.events[1].kind, SCRIPT_QUIT);
    input_script_free(&script);
}

TEST_F(input_record_test, nothing_is_heard_once_the_recording_has_finished)
{
    start();
    input_record_finish();
    EXPECT_EQ(input_listener, nullptr);
    input_key_down('W', 0, no_close);
    EXPECT_EQ(events(), "0 quit\n");
}

TEST_F(input_record_test, a_press_after_a_release_the_window_never_saw_is_written_after_an_up)
{
    start();
    input_key_down('E', 0, no_close);
    input_record_update_ran();
    // E went up in another window; pressed again here, it is a new press, not a repeat.
    input_key_down('E', 0, no_close);
    input_record_finish();
    EXPECT_EQ(events(), "0 down E\n1 up E\n1 down E\n1 quit\n");
    input_script script = parsed(read_all(path));
    scripted_input replay;
    scripted_input_start(&replay, client_size{640, 480});
    memset(key_state, 0, sizeof key_state);
    for (int32_t i = 0; i < script.count; ++i) {
        if (i > 0 && script.events[i].tick > script.events[i - 1].tick)
            promote_pressed_keys(); // an update ran in between
        scripted_input_deliver(&replay, script.events[i]);
    }
    EXPECT_EQ(key_state['E'], KEY_PRESSED) << "the replay sees the second press as a press, not as held";
    input_script_free(&script);
}
