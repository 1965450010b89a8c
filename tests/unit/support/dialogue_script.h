// Tests of the dialogue runtime: scripts written into the test's data folder and loaded as the
// game loads them, a fresh runtime (no variables, nothing open) and no keys down.
#pragma once

#include <stdint.h>

#include <string>

#include "support/asset_state.h"

class dialogue_script_test : public data_folder_test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Loads the script as gloamhold_data/dialogues/<name>; its dialogue index.
    static int32_t load_script(const std::string& text, const std::string& name = "talk.txt");
    // Loads the script and walks its top as the dialogue being open (without opening the box).
    static void open_script(const std::string& text);
    // Loads and opens the script with its text fully shown, so that the keys act.
    static void open_shown(const std::string& text);
    // Runs one statement.
    static bool statement(const std::string& text);
    // The variable's value; "(undefined)" when there is none.
    static std::string value_of(const std::string& name);
    static std::string shown_text();

private:
    float saved_game_time = 0.0f;
    int32_t saved_mouse_captured = 0;
};
