// The dialogue runtime: scripts walked into text and answers, the state variables every dialogue
// shares, and the keys and the mouse that pick answers.
#include <gtest/gtest.h>

#include <string.h>

#include <set>
#include <string>
#include <vector>

#include "assets/dialogue.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "game/dialogue.h"
#include "support/asset_state.h"
#include "support/dialogue_script.h"

namespace {

using dialogue_runtime_test = dialogue_script_test;

std::string answer_texts()
{
    std::string all;
    for (int32_t i = 0; i < dialogue_state.choice_count; ++i) {
        int32_t length = 0;
        const char* text = dialogue_answer_text(dialogue_state.choices[i], &length);
        all += (i ? "|" : "") + std::string(text, static_cast<size_t>(length));
    }
    return all;
}

// ---- Statements and variables ----

TEST_F(dialogue_runtime_test, setting_a_variable_defines_it_so_that_equality_holds_and_the_negated_test_fails)
{
    open_script("@T\nT:\n"
                " state.door = open\n"
                " if state.door == open:\n"
                "  \"equal\"\n"
                " if !state.door:\n"
                "  \"undefined\"\n"
                " > \"ok\":\n");
    EXPECT_EQ(shown_text(), "equal");
    EXPECT_EQ(value_of("door"), "open");
}

TEST_F(dialogue_runtime_test, a_bare_state_variable_holds_when_defined_and_its_negation_when_undefined)
{
    EXPECT_TRUE(statement("!state.door"));
    EXPECT_FALSE(statement("state.door"));
    EXPECT_TRUE(statement("state.door = open"));
    EXPECT_TRUE(statement("state.door"));
    EXPECT_FALSE(statement("!state.door"));
}

TEST_F(dialogue_runtime_test, a_third_token_keeps_the_blanks_inside_and_after_it)
{
    EXPECT_TRUE(statement("  state.greeting\t=   good \t evening "));
    EXPECT_EQ(value_of("greeting"), "good \t evening ");
    EXPECT_TRUE(statement("state.greeting == good \t evening "));
    EXPECT_FALSE(statement("state.greeting == good evening"));
}

TEST_F(dialogue_runtime_test, a_value_of_96_characters_is_cut_to_95_and_the_statement_is_false)
{
    std::string long_value(96, 'v');
    EXPECT_FALSE(statement("state.long = " + long_value));
    EXPECT_EQ(value_of("long"), std::string(95, 'v'));
    EXPECT_TRUE(statement("state.fits = " + std::string(95, 'w')));
    EXPECT_EQ(value_of("fits"), std::string(95, 'w'));
}

TEST_F(dialogue_runtime_test, equality_with_a_third_token_of_96_characters_never_holds)
{
    statement("state.long = " + std::string(96, 'v'));
    EXPECT_FALSE(statement("state.long == " + std::string(96, 'v')));
    EXPECT_TRUE(statement("state.long == " + std::string(95, 'v')));
    EXPECT_TRUE(statement("state.long != " + std::string(96, 'v')));
}

TEST_F(dialogue_runtime_test, an_undefined_variable_differs_from_everything)
{
    EXPECT_TRUE(statement("state.nobody != anything"));
    EXPECT_FALSE(statement("state.nobody == anything"));
    EXPECT_EQ(dialogue_vars.count, 0) << "tests create nothing";
}

TEST_F(dialogue_runtime_test, an_unknown_operator_two_tokens_or_a_first_token_not_a_state_variable_are_false)
{
    EXPECT_FALSE(statement("state.a := 1"));
    EXPECT_FALSE(statement("state.a ="));
    EXPECT_FALSE(statement("door = open"));
    EXPECT_FALSE(statement("state. = open"));
    EXPECT_FALSE(statement("hello"));
    EXPECT_FALSE(statement(""));
    EXPECT_EQ(dialogue_vars.count, 0);
}

TEST_F(dialogue_runtime_test, variables_grow_by_exactly_one_record_each_in_order_of_creation)
{
    statement("state.a = 1");
    EXPECT_EQ(dialogue_vars.count, 1);
    statement("state.b = 2");
    EXPECT_EQ(dialogue_vars.count, 2);
    statement("state.a = 3");
    EXPECT_EQ(dialogue_vars.count, 2) << "setting again creates nothing";
    EXPECT_STREQ(dialogue_vars.records[0].name, "a");
    EXPECT_STREQ(dialogue_vars.records[0].value, "3");
    EXPECT_STREQ(dialogue_vars.records[1].name, "b");
}

TEST_F(dialogue_runtime_test, a_name_of_31_characters_is_kept_and_one_of_32_is_never_created_nor_found)
{
    std::string name31(31, 'n'), name32(32, 'n');
    EXPECT_TRUE(statement("state." + name31 + " = yes"));
    EXPECT_EQ(value_of(name31), "yes");
    EXPECT_FALSE(statement("state." + name32 + " = yes"));
    EXPECT_EQ(dialogue_vars.count, 1);
    EXPECT_EQ(find_var(name32.c_str(), 32), nullptr);
    EXPECT_EQ(get_or_add_var(name32.c_str(), 32), nullptr);
    EXPECT_TRUE(statement("!state." + name32));
}

TEST_F(dialogue_runtime_test, var_equals_is_the_equality_test)
{
    statement("state.door = open");
    EXPECT_EQ(var_equals("door", 4, "open", 4), 1);
    EXPECT_EQ(var_equals("door", 4, "ope", 3), 0);
    EXPECT_EQ(var_equals("gate", 4, "open", 4), 0);
}

// ---- random ----

TEST_F(dialogue_runtime_test, random_one_to_ten_gives_a_whole_number_from_one_to_nine)
{
    std::set<std::string> seen;
    for (int32_t step = 0; step < 1000; ++step) {
        game_time = 3.0f + static_cast<float>(step) / 1000.0f;
        ASSERT_TRUE(statement("state.n = random(1, 10)"));
        seen.insert(value_of("n"));
    }
    EXPECT_EQ(seen, (std::set<std::string>{"1", "2", "3", "4", "5", "6", "7", "8", "9"}));
}

TEST_F(dialogue_runtime_test, random_follows_the_fraction_of_the_game_clock)
{
    game_time = 12.5f;
    ASSERT_TRUE(statement("state.n = random(1, 7)"));
    EXPECT_EQ(value_of("n"), "4") << "0.5 * 6 + 1";
    game_time = 7.0f;
    ASSERT_TRUE(statement("state.n = random(10,20)"));
    EXPECT_EQ(value_of("n"), "10");
}

TEST_F(dialogue_runtime_test, random_with_a_missing_number_is_false_and_leaves_the_variable_empty)
{
    EXPECT_FALSE(statement("state.n = random(1)"));
    EXPECT_EQ(value_of("n"), "") << "the variable is created before the call";
    EXPECT_FALSE(statement("state.m = random(1, )"));
    EXPECT_FALSE(statement("state.k = random()"));
}

TEST_F(dialogue_runtime_test, random_with_an_unparsable_number_is_false)
{
    EXPECT_FALSE(statement("state.n = random(one, 10)"));
    EXPECT_FALSE(statement("state.n = random(1, 1e2)"));
    EXPECT_EQ(value_of("n"), "");
}

TEST_F(dialogue_runtime_test, a_function_other_than_random_is_false_and_the_empty_variable_stays)
{
    EXPECT_FALSE(statement("state.n = shuffle(1, 10)"));
    EXPECT_EQ(value_of("n"), "");
    EXPECT_EQ(dialogue_vars.count, 1);
    EXPECT_FALSE(statement("state.m = random (1, 10)")) << "the ( must follow the six letters";
}

// ---- Walking blocks ----

TEST_F(dialogue_runtime_test, a_placeholder_naming_a_variable_never_set_shows_the_unknown_marker)
{
    open_script("@T\nT:\n \"You rolled {state.roll} and {other} then {state.name}.\"\n > \"ok\":\n");
    EXPECT_EQ(shown_text(), "You rolled <?> and <?> then <?>.");
}

TEST_F(dialogue_runtime_test, a_placeholder_prints_the_value_of_its_variable)
{
    open_script("@T\nT:\n state.roll = 5\n \"You rolled {state.roll}.\"\n > \"ok\":\n");
    EXPECT_EQ(shown_text(), "You rolled 5.");
}

TEST_F(dialogue_runtime_test, a_placeholder_without_its_brace_runs_to_the_closing_quote)
{
    open_script("@T\nT:\n state.roll = 5\n \"You rolled {state.roll\" and more\n > \"ok\":\n");
    EXPECT_EQ(shown_text(), "You rolled 5");
}

TEST_F(dialogue_runtime_test, text_lines_are_joined_by_line_feeds)
{
    open_script("@T\nT:\n \"One.\"\n \"\"\n \"Three.\"\n > \"ok\":\n");
    EXPECT_EQ(shown_text(), "One.\n\nThree.");
}

TEST_F(dialogue_runtime_test, nested_entries_are_passed_over_until_the_block_ends)
{
    open_script("@T\nT:\n \"Top.\"\n > \"Ask\":\n  \"Nested.\"\n  > \"Deeper\":\n \"After.\"\n > \"Leave\":\nU:\n \"Other block.\"\n");
    EXPECT_EQ(shown_text(), "Top.\nAfter.");
    EXPECT_EQ(answer_texts(), "Ask|Leave");
}

TEST_F(dialogue_runtime_test, else_runs_only_when_the_last_condition_was_false)
{
    open_script("@T\nT:\n"
                " if state.x:\n  \"x\"\n else:\n  \"not x\"\n"
                " state.x = 1\n"
                " if state.x:\n  \"x now\"\n else:\n  \"never\"\n"
                " > \"ok\":\n");
    EXPECT_EQ(shown_text(), "not x\nx now");
}

TEST_F(dialogue_runtime_test, else_with_no_condition_before_it_in_the_block_always_runs)
{
    open_script("@T\nT:\n else:\n  \"always\"\n > \"ok\":\n");
    EXPECT_EQ(shown_text(), "always");
}

TEST_F(dialogue_runtime_test, a_jump_to_end_goes_to_the_first_label_beginning_with_it_and_the_walk_goes_on)
{
    open_script("@T\nT:\n @end\n \"back\"\n > \"ok\":\nending:\n \"ending first\"\nend:\n \"the end\"\n");
    EXPECT_EQ(shown_text(), "ending first\nback");
}

TEST_F(dialogue_runtime_test, a_jump_to_a_missing_label_ends_the_block)
{
    open_script("@T\nT:\n \"before\"\n @nowhere\n \"after\"\n > \"hidden\":\n");
    EXPECT_EQ(dialogue_state.choice_count, 0);
    EXPECT_EQ(run_dialogue(-1), 0);
    EXPECT_EQ(shown_text(), "before");
}

TEST_F(dialogue_runtime_test, a_jump_is_a_call_and_the_answers_of_both_blocks_are_offered)
{
    open_script("@T\nT:\n \"Hello.\"\n @menu\n > \"Own\":\nmenu:\n > \"From the menu\":\n");
    EXPECT_EQ(shown_text(), "Hello.");
    EXPECT_EQ(answer_texts(), "From the menu|Own");
}

TEST_F(dialogue_runtime_test, a_label_that_jumps_to_itself_stops_descending)
{
    open_script("@loop\nloop:\n \"again\"\n @loop\n > \"ok\":\n");
    EXPECT_EQ(shown_text().substr(0, 11), "again\nagain") << "the walk comes back out";
    EXPECT_EQ(dialogue_state.choice_count, 8);
}

TEST_F(dialogue_runtime_test, a_block_that_jumps_twice_to_its_own_label_ends_its_walk_after_the_step_limit)
{
    // Each walk of the block walks it twice more, 64 levels deep: 2^64 walks without a limit.
    open_script("@loop\nloop:\n > \"ok\":\n @loop\n @loop\n");
    EXPECT_EQ(dialogue_state.choice_count, 8);
    EXPECT_EQ(run_dialogue(-1), 1) << "a second walk is limited afresh";
}

TEST_F(dialogue_runtime_test, picking_answers_of_a_script_whose_labels_jump_back_through_conditions_ends_every_walk)
{
    // Found by fuzzing: each pick's walk calls the label again from inside its own condition.
    open_script("@T\nT:\n if state.x == 3:\n  @loop\n > \"Again\":\n  @T\n > \"Bye\":\n"
                "loop:\n \"again\"\n if state.x == 3:\n  @loop\n else:\n  @T\n @loop\n @T\n");
    statement("state.x = 3");
    for (int pick = 0; pick < 6; ++pick) {
        ASSERT_GT(dialogue_state.choice_count, 0);
        pick_choice(0);
    }
    EXPECT_EQ(dialogue_state.choice_count, 8);
}

TEST_F(dialogue_runtime_test, a_ninth_answer_at_once_is_not_offered)
{
    std::string script = "@T\nT:\n";
    for (int i = 1; i <= 9; ++i)
        script += " > \"answer " + std::to_string(i) + "\":\n";
    open_script(script);
    EXPECT_EQ(dialogue_state.choice_count, 8);
    EXPECT_EQ(answer_texts(), "answer 1|answer 2|answer 3|answer 4|answer 5|answer 6|answer 7|answer 8");
}

TEST_F(dialogue_runtime_test, a_script_with_carriage_returns_walks_like_one_without)
{
    open_script("@T\r\nT:\r\n\t\"Line one.\"\r\n\tstate.x = yes\r\n\t> \"Go\":\r\n\t\t\"Gone.\"\r\n");
    EXPECT_EQ(shown_text(), "Line one.");
    EXPECT_EQ(value_of("x"), "yes") << "no carriage return in the value";
    EXPECT_EQ(answer_texts(), "Go");
    pick_choice(0);
    EXPECT_EQ(shown_text(), "Gone.");
}

TEST_F(dialogue_runtime_test, text_beyond_the_buffer_is_cut_at_a_whole_character_inside_it)
{
    // 4094 bytes of "a" leave one byte for a two-byte letter: it does not fit and is dropped whole.
    std::string line(4094, 'a');
    open_script("@T\nT:\n \"" + line + "\xd0\x96\xd0\x96\"\n \"more\"\n > \"ok\":\n");
    EXPECT_EQ(dialogue_state.text_length, 4094);
    EXPECT_EQ(shown_text(), line);
    EXPECT_EQ(dialogue_state.choice_count, 1);
}

TEST_F(dialogue_runtime_test, text_that_fills_the_buffer_exactly_keeps_every_byte)
{
    std::string line(4093, 'a');
    open_script("@T\nT:\n \"" + line + "\xd0\x96\"\n > \"ok\":\n");
    EXPECT_EQ(dialogue_state.text_length, 4095);
    EXPECT_EQ(shown_text(), line + "\xd0\x96");
}

TEST_F(dialogue_runtime_test, an_answers_display_text_lies_between_its_first_pair_of_quotes)
{
    open_script("@T\nT:\n > \"Yes\" (nod):\n > no quotes:\n");
    EXPECT_EQ(answer_texts(), "Yes|");
}

// ---- Reading the script, as the data checker does too ----

TEST_F(dialogue_runtime_test, a_statement_splits_into_two_words_and_the_whole_rest)
{
    const char* text = " state.a\t!=  b  c ";
    const char* token[3] = {};
    int32_t length[3] = {};
    ASSERT_EQ(split_statement(text, static_cast<int32_t>(strlen(text)), token, length), 3);
    EXPECT_EQ(std::string(token[0], static_cast<size_t>(length[0])), "state.a");
    EXPECT_EQ(std::string(token[1], static_cast<size_t>(length[1])), "!=");
    EXPECT_EQ(std::string(token[2], static_cast<size_t>(length[2])), "b  c ");
    EXPECT_EQ(statement_operator_of(token[1], length[1]), STATEMENT_OPERATOR_DIFFERS);
    EXPECT_EQ(statement_operator_of("<>", 2), STATEMENT_OPERATOR_UNKNOWN);
    EXPECT_EQ(statement_operator_of("=", 1), STATEMENT_OPERATOR_SET);
    EXPECT_EQ(statement_operator_of("==", 2), STATEMENT_OPERATOR_EQUALS);
}

TEST_F(dialogue_runtime_test, only_random_with_two_numbers_gives_bounds)
{
    float a = 0.0f, b = 0.0f;
    EXPECT_TRUE(random_call_bounds("random(2, 7)", 12, &a, &b));
    EXPECT_EQ(a, 2.0f);
    EXPECT_EQ(b, 7.0f);
    EXPECT_FALSE(random_call_bounds("random(2)", 9, &a, &b));
    EXPECT_FALSE(random_call_bounds("dice(2, 7)", 10, &a, &b));
    EXPECT_FALSE(random_call_bounds("random (2, 7)", 13, &a, &b));
}

TEST_F(dialogue_runtime_test, a_text_line_without_its_closing_quote_shows_to_the_end_of_the_entry)
{
    open_script("@T\nT:\n \"open {state.x\n > \"ok\":\n");
    EXPECT_EQ(shown_text(), "open <?>");
    const dialogue* record = registry_at<dialogue>(&dialogues, dialogue_state.current);
    int32_t length = 0;
    int closed = 1;
    const char* text = dialogue_quoted_text(record, 2, &length, &closed);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::string(text, static_cast<size_t>(length)), "open {state.x");
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(placeholder_end(text, 5, length), length);
    dialogue_quoted_text(record, 3, &length, &closed);
    EXPECT_EQ(closed, 1);
}

// ---- Opening, picking, the keys ----

TEST_F(dialogue_runtime_test, start_dialogue_refuses_an_index_out_of_range)
{
    int32_t index = load_script("@T\nT:\n > \"ok\":\n");
    EXPECT_EQ(start_dialogue(-1), 0);
    EXPECT_EQ(start_dialogue(index + 1), 0);
    EXPECT_EQ(dialogue_state.active, 0);
}

TEST_F(dialogue_runtime_test, a_dialogue_whose_top_offers_no_answer_does_not_open)
{
    int32_t index = load_script("@T\nT:\n \"Nothing to say.\"\n");
    mouse_captured = 1;
    EXPECT_EQ(start_dialogue(index), 0);
    EXPECT_EQ(dialogue_state.active, 0);
    EXPECT_EQ(mouse_captured, 1) << "the mouse stays with the game";
}

TEST_F(dialogue_runtime_test, an_opened_dialogue_frees_the_mouse_and_starts_in_the_opening_phase)
{
    int32_t index = load_script("@T\nT:\n \"Hi.\"\n > \"ok\":\n");
    mouse_captured = 1;
    game_time = 4.0f;
    ASSERT_EQ(start_dialogue(index), 1);
    EXPECT_EQ(dialogue_state.active, 1);
    EXPECT_EQ(dialogue_state.current, index);
    EXPECT_EQ(dialogue_state.phase, DIALOGUE_PHASE_OPENING);
    EXPECT_EQ(dialogue_state.phase_start, 4.0f);
    EXPECT_EQ(dialogue_state.highlighted, -1);
    EXPECT_EQ(mouse_captured, 0);
}

TEST_F(dialogue_runtime_test, the_opening_phase_turns_into_shown_once_the_box_has_drawn_it)
{
    ASSERT_EQ(start_dialogue(load_script("@T\nT:\n \"Hi.\"\n > \"ok\":\n")), 1);
    game_time = 5.0f;
    dialogue_state.fade = 1.0f; // what the box writes for a phase of no duration
    update_dialogue();
    EXPECT_EQ(dialogue_state.phase, DIALOGUE_PHASE_SHOWN);
    EXPECT_EQ(dialogue_state.phase_start, 5.0f);
    EXPECT_EQ(dialogue_state.fade, 0.0f);
}

TEST_F(dialogue_runtime_test, keys_do_nothing_while_the_text_is_typing_out)
{
    open_shown("@T\nT:\n > \"a\":\n  \"A.\"\n > \"b\":\n");
    dialogue_state.fade = 0.5f;
    key_state['1'] = KEY_PRESSED;
    key_state[KEYCODE_DOWN] = KEY_PRESSED;
    update_dialogue();
    EXPECT_EQ(shown_text(), "");
    EXPECT_EQ(dialogue_state.highlighted, -1);
}

TEST_F(dialogue_runtime_test, a_number_key_picks_its_answer_when_that_many_are_offered)
{
    open_shown("@T\nT:\n > \"a\":\n  \"A.\"\n  > \"more\":\n > \"b\":\n  \"B.\"\n  > \"more\":\n");
    key_state['3'] = KEY_PRESSED;
    update_dialogue();
    EXPECT_EQ(shown_text(), "") << "only two answers";
    key_state['3'] = KEY_UP;
    key_state['2'] = KEY_HELD;
    update_dialogue();
    EXPECT_EQ(shown_text(), "") << "a held key does not pick";
    key_state['2'] = KEY_PRESSED;
    game_time = 9.0f;
    update_dialogue();
    EXPECT_EQ(shown_text(), "B.");
    EXPECT_EQ(dialogue_state.phase, DIALOGUE_PHASE_SHOWN);
    EXPECT_EQ(dialogue_state.phase_start, 9.0f);
    EXPECT_EQ(dialogue_state.fade, 0.0f);
}

TEST_F(dialogue_runtime_test, up_from_none_wraps_to_the_last_answer_and_below_the_first_to_the_last)
{
    open_shown("@T\nT:\n > \"a\":\n > \"b\":\n > \"c\":\n");
    dialogue_state.mouse_hover = 1;
    key_state['W'] = KEY_PRESSED;
    update_dialogue();
    EXPECT_EQ(dialogue_state.highlighted, 2);
    EXPECT_EQ(dialogue_state.mouse_hover, 0);
    key_state['W'] = KEY_UP;
    key_state[KEYCODE_UP] = KEY_PRESSED;
    update_dialogue();
    EXPECT_EQ(dialogue_state.highlighted, 1);
    dialogue_state.highlighted = 0;
    update_dialogue();
    EXPECT_EQ(dialogue_state.highlighted, 2);
}

TEST_F(dialogue_runtime_test, down_from_none_highlights_the_first_and_wraps_after_the_last)
{
    open_shown("@T\nT:\n > \"a\":\n > \"b\":\n");
    dialogue_state.mouse_hover = 1;
    key_state['S'] = KEY_PRESSED;
    update_dialogue();
    EXPECT_EQ(dialogue_state.highlighted, 0);
    EXPECT_EQ(dialogue_state.mouse_hover, 0);
    key_state['S'] = KEY_UP;
    key_state[KEYCODE_DOWN] = KEY_PRESSED;
    update_dialogue();
    EXPECT_EQ(dialogue_state.highlighted, 1);
    update_dialogue();
    EXPECT_EQ(dialogue_state.highlighted, 0);
}

TEST_F(dialogue_runtime_test, e_or_enter_picks_the_highlighted_answer_and_nothing_without_one)
{
    open_shown("@T\nT:\n > \"a\":\n  \"A.\"\n  > \"x\":\n > \"b\":\n  \"B.\"\n  > \"x\":\n");
    key_state['E'] = KEY_PRESSED;
    update_dialogue();
    EXPECT_EQ(shown_text(), "");
    dialogue_state.highlighted = 1;
    update_dialogue();
    EXPECT_EQ(shown_text(), "B.");
    key_state['E'] = KEY_UP;
    open_shown("@T\nT:\n > \"a\":\n  \"A.\"\n  > \"x\":\n");
    dialogue_state.highlighted = 0;
    key_state[KEYCODE_ENTER] = KEY_PRESSED;
    update_dialogue();
    EXPECT_EQ(shown_text(), "A.");
}

TEST_F(dialogue_runtime_test, the_left_button_picks_only_a_highlight_the_mouse_set)
{
    open_shown("@T\nT:\n > \"a\":\n  \"A.\"\n  > \"x\":\n");
    dialogue_state.highlighted = 0;
    key_state[KEYCODE_LBUTTON] = KEY_HELD;
    update_dialogue();
    EXPECT_EQ(shown_text(), "") << "highlighted by the keys";
    dialogue_state.mouse_hover = 1;
    update_dialogue();
    EXPECT_EQ(shown_text(), "A.") << "held counts as down";
}

TEST_F(dialogue_runtime_test, picking_an_answer_that_offers_nothing_more_closes_the_box_and_gives_the_mouse_back)
{
    open_shown("@T\nT:\n > \"Bye\":\n  \"Farewell.\"\n");
    game_time = 6.0f;
    pick_choice(0);
    EXPECT_EQ(shown_text(), "Farewell.");
    EXPECT_EQ(dialogue_state.phase, DIALOGUE_PHASE_CLOSING);
    EXPECT_EQ(dialogue_state.phase_start, 6.0f);
    EXPECT_EQ(mouse_captured, 1);
    EXPECT_EQ(dialogue_state.active, 1) << "open while the box closes";
    dialogue_state.fade = 0.5f;
    update_dialogue();
    EXPECT_EQ(dialogue_state.active, 1);
    dialogue_state.fade = 1.0f;
    update_dialogue();
    EXPECT_EQ(dialogue_state.active, 0);
}

TEST_F(dialogue_runtime_test, an_answer_picked_out_of_range_is_ignored)
{
    open_shown("@T\nT:\n \"Hi.\"\n > \"a\":\n");
    pick_choice(1);
    pick_choice(-1);
    EXPECT_EQ(shown_text(), "Hi.");
    EXPECT_EQ(dialogue_state.phase, DIALOGUE_PHASE_SHOWN);
}

TEST_F(dialogue_runtime_test, variables_are_shared_by_every_dialogue_and_outlive_it)
{
    int32_t first = load_script("@T\nT:\n state.met = yes\n > \"ok\":\n", "first.txt");
    int32_t second = load_script("@T\nT:\n if state.met == yes:\n  \"We met.\"\n > \"ok\":\n", "second.txt");
    ASSERT_EQ(start_dialogue(first), 1);
    dialogue_state.active = 0;
    ASSERT_EQ(start_dialogue(second), 1);
    EXPECT_EQ(shown_text(), "We met.");
}

} // namespace
