#include <gtest/gtest.h>

#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/headless_program.h"
#include "support/temp_files.h"

namespace {

// The number after `"key": ` in a state file.
double number_after(const std::string& json, const std::string& key)
{
    size_t at = json.find("\"" + key + "\": ");
    EXPECT_NE(at, std::string::npos) << key;
    return at == std::string::npos ? -1.0 : strtod(json.c_str() + at + key.size() + 4, nullptr);
}

// Each test in a folder of its own; every run is the real program, in a process of its own,
// started from this test's working directory.
class headless_host_test : public testing::Test {
protected:
    std::string folder;
    std::string here;
    std::string errors;
    std::string output;

    void SetUp() override
    {
        here = std::filesystem::current_path().string();
        folder = std::filesystem::absolute(test_folder()).string();
        link_shipped_data(here);
        link_shipped_data(folder);
    }

    int run(const std::vector<std::string>& words)
    {
        headless_result result = run_headless(words, folder);
        errors = result.errors;
        output = result.output;
        return result.exit_code;
    }

    std::string file(const std::string& name) const { return folder + "/" + name; }
    std::string script(const std::string& text) const { return write_file(file("input.txt"), text); }
};

} // namespace

TEST_F(headless_host_test, a_run_of_120_ticks_ends_after_the_frame_that_follows_the_last_update)
{
    ASSERT_EQ(run({"-C", folder, "--ticks", "120", "--state", file("state.json")}), 0) << errors;
    std::string state = read_all(file("state.json"));
    EXPECT_EQ(number_after(state, "tick"), 120);
    EXPECT_EQ(number_after(state, "frames"), 180) << "frames at 0, 1/60 ... up to the one after update 119";
    EXPECT_NEAR(number_after(state, "game_time"), 3.0, 1e-5);
}

TEST_F(headless_host_test, settings_come_from_the_working_folder)
{
    // Rates whose steps are exact binary fractions: update 28 and the eighth frame both fall at 0.875 s.
    write_file(file("settings.ini"), "UPS=32\r\nFPS=8\r\nSCREEN_RESOLUTION=64x48\r\n");
    ASSERT_EQ(run({"-C", folder, "--ticks", "29", "--state", file("state.json")}), 0) << errors;
    std::string state = read_all(file("state.json"));
    EXPECT_NE(state.find("\"UPS\": 32"), std::string::npos);
    EXPECT_NE(state.find("\"SCREEN_RESOLUTION\": [64, 48]"), std::string::npos);
    EXPECT_EQ(number_after(state, "frames"), 8);
}

TEST_F(headless_host_test, scripted_backspace_slows_the_game_clock_to_a_quarter)
{
    std::string input = script("0 down BACKSPACE\n");
    ASSERT_EQ(run({"--ticks", "40", "--script", input, "--state", file("state.json")}), 0) << errors;
    EXPECT_NEAR(number_after(read_all(file("state.json")), "game_time"), 0.25, 1e-5);
}

TEST_F(headless_host_test, escape_with_the_mouse_free_quits_before_that_update)
{
    std::string input = script("3 down ESC\n");
    ASSERT_EQ(run({"--ticks", "40", "--script", input, "--state", file("state.json")}), 0) << errors;
    EXPECT_EQ(number_after(read_all(file("state.json")), "tick"), 3);
}

TEST_F(headless_host_test, a_click_captures_the_mouse_and_escape_then_only_frees_it)
{
    std::string input = script("0 down LBUTTON\n1 up LBUTTON\n2 down ESC\n3 up ESC\n");
    ASSERT_EQ(run({"--ticks", "2", "--script", input, "--state", file("captured.json")}), 0) << errors;
    EXPECT_EQ(number_after(read_all(file("captured.json")), "mouse_captured"), 1);
    ASSERT_EQ(run({"--ticks", "6", "--script", input, "--state", file("freed.json")}), 0) << errors;
    std::string freed = read_all(file("freed.json"));
    EXPECT_EQ(number_after(freed, "tick"), 6) << "the game went on";
    EXPECT_EQ(number_after(freed, "mouse_captured"), 0);
}

TEST_F(headless_host_test, without_ticks_the_run_lasts_to_the_last_scripted_tick)
{
    std::string input = script("0 down Z\n9 up Z\n");
    ASSERT_EQ(run({"--script", input, "--state", file("state.json")}), 0) << errors;
    EXPECT_EQ(number_after(read_all(file("state.json")), "tick"), 10);
}

TEST_F(headless_host_test, the_same_arguments_give_the_same_files)
{
    std::string input = script("0 down BACKSPACE\n5 down ADD\n20 up BACKSPACE\n");
    std::vector<std::string> base = {"--ticks", "60", "--script", input};
    std::vector<std::string> first = base, second = base;
    first.insert(first.end(), {"--state", file("a.json"), "--audio", file("a.wav")});
    second.insert(second.end(), {"--state", file("b.json"), "--audio", file("b.wav")});
    ASSERT_EQ(run(first), 0) << errors;
    ASSERT_EQ(run(second), 0) << errors;
    EXPECT_EQ(read_all(file("a.json")), read_all(file("b.json")));
    EXPECT_EQ(read_all(file("a.wav")), read_all(file("b.wav")));
}

TEST_F(headless_host_test, the_audio_file_holds_whole_mixed_blocks)
{
    ASSERT_EQ(run({"--ticks", "40", "--audio", file("out.wav")}), 0) << errors;
    std::string wav = read_all(file("out.wav"));
    ASSERT_GT(wav.size(), 44u);
    EXPECT_EQ(wav.substr(0, 4), "RIFF");
    EXPECT_EQ((wav.size() - 44) % 6000, 0u);
    // The run ends at the frame after update 39 (just under a second): every block finished by then.
    EXPECT_EQ((wav.size() - 44) / 6000, static_cast<size_t>((39 / 40.0 + 1 / 60.0 * 0.5) / (1500 / 44100.0)));
}

TEST_F(headless_host_test, shots_are_the_frame_buffer_and_relative_paths_stay_where_the_command_ran)
{
    write_file(file("data/settings.ini"), "SCREEN_RESOLUTION=64x48\r\n");
    link_shipped_data(file("data"));
    std::string relative = std::filesystem::relative(file("shot.png"), here).string();
    ASSERT_EQ(run({"-C", file("data"), "--shot", "4:" + relative}), 0) << errors;
    std::string png = read_all(file("shot.png"));
    ASSERT_GT(png.size(), 24u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    const unsigned char* header = reinterpret_cast<const unsigned char*>(png.data());
    EXPECT_EQ(header[16] << 24 | header[17] << 16 | header[18] << 8 | header[19], 64);
    EXPECT_EQ(header[20] << 24 | header[21] << 16 | header[22] << 8 | header[23], 48);
}

TEST_F(headless_host_test, a_bad_script_line_is_named_with_its_file_and_line_and_nothing_runs)
{
    std::string input = script("0 down W\n1 down FOO\n");
    EXPECT_EQ(run({"--script", input, "--state", file("state.json")}), 2);
    EXPECT_NE(errors.find(input + ":2: unknown key 'FOO'"), std::string::npos) << errors;
    EXPECT_FALSE(std::filesystem::exists(file("state.json")));
}

TEST_F(headless_host_test, bad_arguments_exit_with_2_and_say_why)
{
    EXPECT_EQ(run({"--ticks"}), 2);
    EXPECT_NE(errors.find("--ticks: needs a value"), std::string::npos) << errors;
    EXPECT_NE(errors.find("usage: gloamhold-headless"), std::string::npos);
    EXPECT_EQ(run({"--script", file("missing.txt")}), 2);
    EXPECT_NE(errors.find("missing.txt"), std::string::npos) << errors;
    EXPECT_EQ(run({"-C", file("missing")}), 2);
    EXPECT_NE(errors.find("-C " + file("missing")), std::string::npos) << errors;
    EXPECT_EQ(run({"--state", file("missing/state.json")}), 2);
    EXPECT_NE(errors.find("--state"), std::string::npos) << errors;
}

TEST_F(headless_host_test, help_prints_the_usage_and_runs_nothing)
{
    EXPECT_EQ(run({"--help"}), 0);
    EXPECT_NE(output.find("--shot TICK:FILE.png"), std::string::npos);
}

TEST_F(headless_host_test, negative_rates_fail_the_start_with_3)
{
    write_file(file("settings.ini"), "UPS=-40\r\n");
    EXPECT_EQ(run({"-C", folder, "--ticks", "1"}), 3);
    EXPECT_NE(errors.find("UPS"), std::string::npos) << errors;
}

TEST_F(headless_host_test, a_shot_that_no_frame_follows_is_reported_with_exit_1)
{
    write_file(file("settings.ini"), "FPS=0\r\n");
    EXPECT_EQ(run({"-C", folder, "--ticks", "3", "--shot", "2:" + file("late.png")}), 1);
    EXPECT_NE(errors.find("no frame was drawn"), std::string::npos) << errors;
}

TEST_F(headless_host_test, a_recording_replays_its_passes_at_their_times_and_turns_in_the_frame_between_updates)
{
    // A click captures the mouse in update 1; the mouse moves 100 pixels right before a pass at
    // 0.034 s that draws a frame and runs no update: that frame turns the view.
    script("0 time 0\n1 down LBUTTON\n1 time 0.025\n2 up LBUTTON\n2 cursor 420 240\n2 time 0.034\n"
           "2 time 0.05\n3 quit\n");
    ASSERT_EQ(run({"-C", folder, "--script", file("input.txt"), "--state", file("state.json")}), 0) << errors;
    std::string state = read_all(file("state.json"));
    EXPECT_EQ(number_after(state, "tick"), 3) << "updates at 0, 0.025 and 0.05 s; the game quit before the fourth";
    EXPECT_EQ(number_after(state, "frames"), 4) << "a frame in every pass: at 0, 0.025, 0.034 and 0.05 s";
    EXPECT_NEAR(number_after(state, "yaw"), 0.1, 1e-6);
    EXPECT_EQ(number_after(state, "mouse_captured"), 1);
}

TEST_F(headless_host_test, a_recording_made_with_other_rates_is_stopped_with_2)
{
    // Recorded at 40 updates a second: one update in the pass at 0.03 s. At 70 a second that pass
    // runs two, and the next line, keyed 1, no longer fits.
    script("0 time 0\n1 time 0.03\n1 down W\n1 time 0.06\n3 quit\n");
    std::string ini = "UPS=70\r\n";
    write_file(file("settings.ini"), ini);
    EXPECT_EQ(run({"-C", folder, "--script", file("input.txt")}), 2);
    EXPECT_NE(errors.find("the recording was made with other settings"), std::string::npos) << errors;
}
