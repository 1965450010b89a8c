#include "support/dialogue_script.h"

#include <string.h>

#include "assets/dialogue.h"
#include "core/loop_state.h"
#include "game/dialogue.h"

void dialogue_script_test::SetUp()
{
    data_folder_test::SetUp();
    reset_dialogue_runtime();
    saved_game_time = game_time;
    saved_mouse_captured = mouse_captured;
    memset(key_state, 0, sizeof key_state);
    game_time = 1.0f;
    mouse_captured = 1;
}

void dialogue_script_test::TearDown()
{
    reset_dialogue_runtime();
    memset(key_state, 0, sizeof key_state);
    game_time = saved_game_time;
    mouse_captured = saved_mouse_captured;
    data_folder_test::TearDown();
}

int32_t dialogue_script_test::load_script(const std::string& text, const std::string& name)
{
    write_data("dialogues/" + name, text);
    int32_t index = load_dialogue(name.c_str());
    EXPECT_GE(index, 0) << name;
    return index;
}

void dialogue_script_test::open_script(const std::string& text)
{
    dialogue_state.current = load_script(text);
    run_dialogue(-1);
}

void dialogue_script_test::open_shown(const std::string& text)
{
    static int32_t loaded = 0;
    int32_t index = load_script(text, "shown" + std::to_string(loaded++) + ".txt");
    ASSERT_EQ(start_dialogue(index), 1);
    dialogue_state.phase = DIALOGUE_PHASE_SHOWN;
    dialogue_state.fade = 1.0f;
}

bool dialogue_script_test::statement(const std::string& text)
{
    return eval_statement(text.c_str(), static_cast<int32_t>(text.size())) != 0;
}

std::string dialogue_script_test::value_of(const std::string& name)
{
    const dialogue_var* var = find_var(name.c_str(), static_cast<int32_t>(name.size()));
    return var ? var->value : "(undefined)";
}

std::string dialogue_script_test::shown_text()
{
    return std::string(dialogue_state.text, static_cast<size_t>(dialogue_state.text_length));
}
