#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <vector>

#include "app/game.h"
#include "app/schedule.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "audio/mixer.h"
#include "core/debug_flags.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/numbers.h"
#include "core/settings.h"
#include "game/dialogue.h"
#include "game/player.h"
#include "support/saved_globals.h"
#include "support/test_audio.h"
#include "ui/debug_overlay.h"

namespace {

void no_hook() {}
void no_title(const char*) {}

// The real schedule driving the real update, as every host runs it.
const loop_hooks update_only = {game_update, no_hook, no_hook, no_hook, no_title};

// Every test leaves the switches and settings as it found them.
class game_test : public testing::Test {
protected:
    saved_globals globals;

    void SetUp() override
    {
        globals.keep_all(&debug_info, &debug_wireframe, &debug_show_colliders, &debug_show_areas, &debug_lighting,
                         &debug_show_occlusion, &debug_show_lookup_tables, &debug_portal_culling,
                         &LIGHT_DITHERING, &TEXTURE_INTERPOLATION, &TEXTURE_DITHERING, &FOV, &tick_dt, &game_time,
                         &mouse_captured, &key_state, &fov_current, &fov_target, &texture_reload_message);
        memset(key_state, 0, sizeof key_state);
        mouse_captured = 0;
        FOV = 90.0f;
        tick_dt = 0.025f;
        game_time = 0.0f;
        texture_reload_message[0] = 0;
        // The update moves the player: one must exist (object 0), standing in an empty world.
        if (objects.count == 0) {
            ASSERT_EQ(create_player(), 1);
        }
        clear_player_motion();
        fov_current = fov_target = FOV * DEGREES_TO_RADIANS;
    }
    void TearDown() override { globals.restore(); }

    // One update with `tick_dt` at its nominal length; returns the length the update left.
    static float update()
    {
        tick_dt = 0.025f;
        game_update();
        return tick_dt;
    }
};

} // namespace

TEST(game_flags, the_debug_switches_start_with_info_areas_lighting_and_culling_on)
{
    EXPECT_EQ(debug_info, 1);
    EXPECT_EQ(debug_wireframe, 0);
    EXPECT_EQ(debug_show_colliders, 0);
    EXPECT_EQ(debug_show_areas, 1);
    EXPECT_EQ(debug_lighting, 1);
    EXPECT_EQ(debug_show_occlusion, 0);
    EXPECT_EQ(debug_show_lookup_tables, 0);
    EXPECT_EQ(debug_portal_culling, 1);
}

TEST_F(game_test, start_up_opens_44100_hz_stereo_16_bit_audio_first_and_stops_when_it_cannot)
{
    test_audio::refuse_open();
    int32_t objects_before = objects.count;
    EXPECT_EQ(game_init(), 0);
    ASSERT_EQ(test_audio::opens().size(), 1u);
    const test_audio::open_request& request = test_audio::opens().back();
    EXPECT_EQ(request.device, AUDIO_DEFAULT_DEVICE);
    EXPECT_EQ(request.samples_per_second, 44100u);
    EXPECT_EQ(request.channels, 2u);
    EXPECT_EQ(request.bits_per_sample, 16u);
    EXPECT_EQ(request.block_bytes, 6000u);
    EXPECT_EQ(objects.count, objects_before) << "nothing after the audio device is started: no player";
}

TEST_F(game_test, a_function_key_that_went_down_flips_its_switch_once)
{
    key_state[KEYCODE_F1 + 1] = KEY_PRESSED;
    key_state[KEYCODE_F1] = KEY_PRESSED;
    update();
    EXPECT_EQ(debug_wireframe, 1);
    EXPECT_EQ(debug_info, 0);
    promote_pressed_keys();
    update();
    EXPECT_EQ(debug_wireframe, 1) << "a held key does not flip again";
}

TEST_F(game_test, pressing_f5_once_turns_the_lighting_off_and_the_panel_then_says_fullbright_yes)
{
    debug_lighting = 1;
    key_state[KEYCODE_F1 + 4] = KEY_PRESSED;
    update();
    EXPECT_EQ(debug_lighting, 0);
    panel_line lines[PLAYER_PANEL_LINE_COUNT];
    player_panel_lines(lines);
    int fullbright_lines = 0;
    for (const panel_line& line : lines)
        if (strncmp(line.text, "- [F5]", 6) == 0) {
            EXPECT_STREQ(line.text, "- [F5] Fullbright: Yes");
            ++fullbright_lines;
        }
    EXPECT_EQ(fullbright_lines, 1);
}

TEST_F(game_test, f3_to_f8_flip_their_switches)
{
    int32_t before[6] = {debug_show_colliders, debug_show_areas,         debug_lighting,
                         debug_show_occlusion, debug_show_lookup_tables, debug_portal_culling};
    for (int code = KEYCODE_F1 + 2; code <= KEYCODE_F1 + 7; ++code)
        key_state[code] = KEY_PRESSED;
    update();
    int32_t after[6] = {debug_show_colliders, debug_show_areas,         debug_lighting,
                        debug_show_occlusion, debug_show_lookup_tables, debug_portal_culling};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(after[i], before[i] == 0 ? 1 : 0) << "F" << (i + 3);
}

TEST_F(game_test, a_switch_holding_any_non_zero_value_flips_to_0)
{
    LIGHT_DITHERING = 7;
    key_state[KEYCODE_F1 + 8] = KEY_PRESSED;
    update();
    EXPECT_EQ(LIGHT_DITHERING, 0);
}

TEST_F(game_test, f9_f10_and_f11_flip_the_rendering_settings)
{
    LIGHT_DITHERING = 0;
    TEXTURE_INTERPOLATION = 1;
    TEXTURE_DITHERING = 0;
    key_state[KEYCODE_F1 + 8] = KEY_PRESSED;
    key_state[KEYCODE_F10] = KEY_PRESSED;
    key_state[KEYCODE_F11] = KEY_PRESSED;
    update();
    EXPECT_EQ(LIGHT_DITHERING, 1);
    EXPECT_EQ(TEXTURE_INTERPOLATION, 0);
    EXPECT_EQ(TEXTURE_DITHERING, 1);
}

TEST_F(game_test, flipping_texture_dithering_reloads_the_textures_once)
{
    key_state[KEYCODE_F11] = KEY_PRESSED;
    update();
    EXPECT_STRNE(texture_reload_message, "") << "F11 converts every texture again";
    texture_reload_message[0] = 0;
    key_state[KEYCODE_F10] = KEY_PRESSED;
    promote_pressed_keys();
    update();
    EXPECT_STREQ(texture_reload_message, "") << "a held F11 does not reload again";
}

TEST_F(game_test, escape_while_captured_frees_the_mouse_and_the_next_left_click_captures_it_unseen)
{
    mouse_captured = 1;
    key_state[KEYCODE_ESCAPE] = KEY_PRESSED;
    update();
    EXPECT_EQ(mouse_captured, 0);
    key_state[KEYCODE_ESCAPE] = KEY_UP;
    key_state[KEYCODE_LBUTTON] = KEY_PRESSED;
    update();
    EXPECT_EQ(mouse_captured, 1);
    EXPECT_EQ(key_state[KEYCODE_LBUTTON], KEY_UP) << "gameplay never sees the capturing click";
}

TEST_F(game_test, a_left_click_while_captured_is_left_for_gameplay)
{
    mouse_captured = 1;
    key_state[KEYCODE_LBUTTON] = KEY_PRESSED;
    update();
    EXPECT_EQ(key_state[KEYCODE_LBUTTON], KEY_PRESSED);
}

// A box half-way through closing: the dialogue step leaves it open and reads no key.
class game_test_in_dialogue : public game_test {
protected:
    void SetUp() override
    {
        game_test::SetUp();
        dialogue_state.active = 1;
        dialogue_state.phase = DIALOGUE_PHASE_CLOSING;
        dialogue_state.fade = 0.5f;
    }
    void TearDown() override
    {
        dialogue_state.active = 0;
        dialogue_state.fade = 0.0f;
        game_test::TearDown();
    }
};

TEST_F(game_test_in_dialogue, while_a_dialogue_is_open_only_the_view_widens_back_no_zoom_time_keys_or_capture)
{
    fov_current = fov_target = 1.0f;
    key_state['Z'] = KEY_HELD;
    key_state[KEYCODE_BACKSPACE] = KEY_HELD;
    key_state[KEYCODE_ADD] = KEY_HELD;
    key_state[KEYCODE_LBUTTON] = KEY_PRESSED;
    EXPECT_EQ(update(), 0.025f) << "the update keeps its length";
    EXPECT_EQ(fov_target, FOV * DEGREES_TO_RADIANS);
    EXPECT_EQ(mouse_captured, 0);
    EXPECT_EQ(key_state[KEYCODE_LBUTTON], KEY_PRESSED) << "the click is left for the answers";
    EXPECT_EQ(dialogue_state.active, 1);
}

TEST_F(game_test_in_dialogue, while_a_dialogue_is_open_the_player_stands_still)
{
    object* player = registry_at<object>(&objects, PLAYER_OBJECT);
    vec3 before = player->position;
    key_state['W'] = KEY_HELD;
    for (int i = 0; i < 10; ++i)
        update();
    EXPECT_EQ(player->position.x, before.x);
    EXPECT_EQ(player->position.y, before.y);
    EXPECT_EQ(player->position.z, before.z);
}

TEST_F(game_test, backspace_slows_an_update_to_a_quarter_and_keypad_plus_speeds_it_ten_times)
{
    key_state[KEYCODE_BACKSPACE] = KEY_HELD;
    EXPECT_EQ(update(), 0.025f * 0.25f);
    key_state[KEYCODE_BACKSPACE] = KEY_UP;
    key_state[KEYCODE_ADD] = KEY_PRESSED;
    EXPECT_EQ(update(), 0.025f * 10.0f);
}

TEST_F(game_test, with_backspace_held_the_game_clock_runs_at_a_quarter_speed)
{
    loop_schedule schedule;
    schedule_start(&schedule, 40, 60);
    key_state[KEYCODE_BACKSPACE] = KEY_PRESSED;
    for (int i = 0; i < 40; ++i)
        schedule_run(&schedule, schedule.next_tick_time, &update_only); // one second: 40 updates
    EXPECT_NEAR(game_time, 0.25f, 1e-5f);
}

TEST_F(game_test, with_backspace_and_keypad_plus_held_the_game_clock_runs_at_2_5_times)
{
    loop_schedule schedule;
    schedule_start(&schedule, 40, 60);
    key_state[KEYCODE_BACKSPACE] = KEY_PRESSED;
    key_state[KEYCODE_ADD] = KEY_PRESSED;
    for (int i = 0; i < 40; ++i)
        schedule_run(&schedule, schedule.next_tick_time, &update_only); // one second: 40 updates
    EXPECT_NEAR(game_time, 2.5f, 1e-4f);
}

// The brightness of one style-9 flickering light after each of `updates` updates run by the real
// schedule from game time 0, with the time keys given held throughout.
static std::vector<float> flicker_after_each_update(int updates, bool backspace, bool keypad_plus)
{
    saved_globals globals;
    globals.keep_all(&flickering_lights, &key_state, &game_time);
    light lamp = {};
    lamp.flicker_style = 9;
    flickering_lights = {&lamp, 1, 1, FLICKERING_LIGHT_GROWTH};
    key_state[KEYCODE_BACKSPACE] = backspace ? KEY_HELD : KEY_UP;
    key_state[KEYCODE_ADD] = keypad_plus ? KEY_HELD : KEY_UP;
    game_time = 0.0f;
    loop_schedule schedule;
    schedule_start(&schedule, 40, 60);
    std::vector<float> brightness;
    for (int i = 0; i < updates; ++i) {
        schedule_run(&schedule, schedule.next_tick_time, &update_only);
        brightness.push_back(lamp.brightness);
    }
    return brightness;
}

TEST_F(game_test, with_backspace_held_the_light_styles_run_at_a_quarter_speed)
{
    std::vector<float> normal = flicker_after_each_update(64, false, false);   // 1.6 s: one whole pattern
    std::vector<float> slow = flicker_after_each_update(4 * 64, true, false);
    int changes = 0;
    for (int m = 0; m < 64; ++m) {
        EXPECT_NEAR(slow[4 * m], normal[m], 1e-3f) << "update " << m;
        changes += m > 0 && normal[m] != normal[m - 1];
    }
    EXPECT_GT(changes, 0) << "the light must have flickered for the comparison to mean anything";
}

TEST_F(game_test, with_backspace_and_keypad_plus_held_the_light_styles_run_at_2_5_times)
{
    std::vector<float> normal = flicker_after_each_update(5 * 26, false, false);
    std::vector<float> fast = flicker_after_each_update(2 * 26, true, true);
    for (int j = 0; j < 26; ++j)
        EXPECT_NEAR(fast[2 * j], normal[5 * j], 1e-3f) << "update " << 2 * j;
}

TEST_F(game_test, holding_z_narrows_the_view_to_two_thirds_of_fov_about_80_percent_after_a_tenth_of_a_second)
{
    float wide = 90.0f * 0.017453292f;
    float narrow = static_cast<float>(90.0 / 1.5 * 0.01745329238474369);
    key_state['Z'] = KEY_PRESSED;
    for (int i = 0; i < 4; ++i) // 0.1 s at 40 updates a second
        update();
    EXPECT_EQ(fov_target, narrow);
    float progress = (wide - fov_current) / (wide - narrow);
    EXPECT_NEAR(progress, 1.0f - expf(-1.6f), 0.001f);
    EXPECT_GT(progress, 0.79f);
    EXPECT_LT(progress, 0.81f);
}

TEST_F(game_test, the_middle_button_zooms_too_and_letting_go_eases_back)
{
    key_state[KEYCODE_MBUTTON] = KEY_HELD;
    update();
    float zoomed = fov_current;
    EXPECT_LT(zoomed, 90.0f * 0.017453292f);
    key_state[KEYCODE_MBUTTON] = KEY_UP;
    update();
    EXPECT_EQ(fov_target, 90.0f * 0.017453292f);
    EXPECT_GT(fov_current, zoomed);
}

TEST_F(game_test, the_view_eases_with_the_scaled_update_length)
{
    key_state['Z'] = KEY_PRESSED;
    key_state[KEYCODE_BACKSPACE] = KEY_PRESSED;
    float wide = fov_current;
    update();
    float step = (wide - fov_current) / (wide - fov_target);
    EXPECT_NEAR(step, 1.0f - expf(-16.0f * 0.025f * 0.25f), 1e-5f);
}
