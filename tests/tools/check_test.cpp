// gloamhold-check on copies of the shipped data, each with one problem planted: the report names
// it in one exact line (and nothing else), and the exit status says problems were found.
#include <gtest/gtest.h>

#include <stdio.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/media_files.h"
#include "support/temp_files.h"

namespace fs = std::filesystem;

namespace {

struct check_run {
    int status = -1;
    std::vector<std::string> lines; // what it printed on standard output
};

std::string read_text(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The line (from 1) on which `text` first appears in `content`; 0 when it does not.
int line_of(const std::string& content, const std::string& text)
{
    size_t at = content.find(text);
    if (at == std::string::npos)
        return 0;
    return 1 + static_cast<int>(std::count(content.begin(), content.begin() + static_cast<long>(at), '\n'));
}

class check_test : public testing::Test {
protected:
    void SetUp() override
    {
        folder = test_folder();
        fs::copy(SHIPPED_DATA, folder + "/gloamhold_data", fs::copy_options::recursive);
    }

    // A copy is kept only when its test failed, to look at.
    void TearDown() override
    {
        if (!HasFailure())
            fs::remove_all(folder);
    }

    std::string data(const std::string& relative) const { return folder + "/gloamhold_data/" + relative; }

    // Replaces the first `from` in a data file with `to`; the line where it stood.
    int replace(const std::string& relative, const std::string& from, const std::string& to) const
    {
        std::string content = read_text(data(relative));
        size_t at = content.find(from);
        EXPECT_NE(at, std::string::npos) << from << " is not in " << relative;
        if (at == std::string::npos)
            return 0;
        int line = line_of(content, from);
        write_file(data(relative), content.replace(at, from.size(), to));
        return line;
    }

    // The line of `text` in a data file as it stands now.
    int line_in(const std::string& relative, const std::string& text) const
    {
        int line = line_of(read_text(data(relative)), text);
        EXPECT_GT(line, 0) << text << " is not in " << relative;
        return line;
    }

    void plant(const std::string& relative, const std::string& bytes) const { write_file(data(relative), bytes); }

    check_run run(const std::string& arguments = "gloamhold_data") const
    {
        check_run result;
        std::string command = "cd '" + folder + "' && '" GLOAMHOLD_CHECK "' " + arguments + " 2>/dev/null";
        FILE* out = popen(command.c_str(), "r");
        if (!out)
            return result;
        std::string text;
        char buffer[4096];
        size_t got;
        while ((got = fread(buffer, 1, sizeof buffer, out)) > 0)
            text.append(buffer, got);
        int status = pclose(out);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);)
            result.lines.push_back(line);
        return result;
    }

    // The run finds exactly this one problem.
    void expect_only(const std::string& problem) const { expect_exactly({problem}); }

    void expect_exactly(const std::vector<std::string>& problems) const
    {
        check_run result = run();
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.lines, problems);
    }

    std::string folder;
};

const char* const GOOD_MODEL_HEAD = "POINTS 3\nTRIANGLES 1\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 0\nCOLLIDERS 0\nOCCLUDERS 0\n";
const char* const GOOD_MODEL_POINTS = "0 0 0\n1 0 0\n0 1 0\n";

} // namespace

TEST_F(check_test, shipped_data_has_no_problems)
{
    check_run result = run();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.lines, std::vector<std::string>());
}

TEST_F(check_test, missing_start_up_sound_is_named)
{
    fs::remove(data("sounds/pl_climb01.wav"));
    expect_only("gloamhold_data/sounds/pl_climb01.wav: missing: the game loads this sound at start-up and cannot start "
                "without it");
}

TEST_F(check_test, missing_sky_texture_is_named)
{
    fs::remove(data("textures/sky_night03.png"));
    expect_only("gloamhold_data/textures/sky_night03.png: missing: the game loads this sky texture at start-up and "
                "cannot start without it");
}

TEST_F(check_test, font_that_fails_to_load_is_named_with_the_reason)
{
    std::string font = read_text(data("fonts/font_system.fnt"));
    font[3] = '!';
    plant("fonts/font_system.fnt", font);
    expect_only("gloamhold_data/fonts/font_system.fnt: not a font: the first four bytes must be \"FNT\" and a zero byte");
}

TEST_F(check_test, font_cut_short_is_named_with_the_character_where_it_ends)
{
    std::string font = read_text(data("fonts/font_dialogue.fnt"));
    unsigned first = static_cast<unsigned char>(font[5]), last = static_cast<unsigned char>(font[6]);
    plant("fonts/font_dialogue.fnt", font.substr(0, 7 + 9 * 2 + 4)); // two glyphs and a bit of the third
    expect_only("gloamhold_data/fonts/font_dialogue.fnt: ends inside the glyph table, at character " +
                std::to_string(first + 2) + " (the header says " + std::to_string(first) + " to " +
                std::to_string(last) + ")");
}

TEST_F(check_test, texture_whose_side_is_not_a_power_of_two_is_named)
{
    plant("textures/crate.png", encode_bgra_png(48, 64, test_pattern_bgra(48, 64)));
    expect_only("gloamhold_data/textures/crate.png: 48x64: both sides of a texture must be powers of two");
}

TEST_F(check_test, model_naming_a_missing_texture_is_named_at_its_subset)
{
    plant("models/probe.mdl", "POINTS 3\nTRIANGLES 1\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 1\nCOLLIDERS 0\nOCCLUDERS 0\n" +
                                  std::string(GOOD_MODEL_POINTS) + "0 1 2\nnowhere.png 0 1\n");
    expect_only("gloamhold_data/models/probe.mdl:12: texture \"nowhere.png\" is missing (no file "
                "gloamhold_data/textures/nowhere.png)");
}

TEST_F(check_test, triangle_index_out_of_range_is_named_at_its_line)
{
    plant("models/probe.mdl", std::string(GOOD_MODEL_HEAD) + GOOD_MODEL_POINTS + "0 1 3\n");
    expect_only("gloamhold_data/models/probe.mdl:11: triangle 0 names point 3, but the model has 3 points");
}

TEST_F(check_test, header_out_of_order_is_named_at_its_line)
{
    plant("models/probe.mdl", "POINTS 3\nTRIANGLES 1\nWEIGHTS 0\nTEXCOORDS 0\nSUBSETS 0\nCOLLIDERS 0\nOCCLUDERS 0\n" +
                                  std::string(GOOD_MODEL_POINTS) + "0 1 2\n");
    expect_only("gloamhold_data/models/probe.mdl:3: expected the header \"TEXCOORDS <count>\" here, found \"WEIGHTS 0\"");
}

TEST_F(check_test, count_that_is_not_a_number_is_named)
{
    plant("models/probe.mdl", "# a probe\nPOINTS 3x\n");
    expect_only("gloamhold_data/models/probe.mdl:2: \"3x\" is not a count");
}

TEST_F(check_test, line_with_too_few_numbers_is_named_with_what_was_expected)
{
    plant("models/probe.mdl", std::string(GOOD_MODEL_HEAD) + "0 0 0\n1 0 zero\n0 1 0\n0 1 2\n");
    expect_only("gloamhold_data/models/probe.mdl:9: expected point 1 (x y z), found \"1 0 zero\"");
}

TEST_F(check_test, blank_line_that_ends_reading_early_is_named)
{
    plant("models/probe.mdl", std::string(GOOD_MODEL_HEAD) + "0 0 0\n\n1 0 0\n0 1 0\n0 1 2\n");
    expect_only("gloamhold_data/models/probe.mdl:9: blank line ending in a bare line feed: the game stops reading the "
                "file here, before point 1 (x y z)");
}

TEST_F(check_test, unknown_material_is_named)
{
    plant("models/probe.mdl", "POINTS 3\nTRIANGLES 1\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 0\nCOLLIDERS 1\nOCCLUDERS 0\n" +
                                  std::string(GOOD_MODEL_POINTS) + "0 1 2\nCOLLISION_TRIANGLES 1\n0 1 2\nstoen 0 1\n");
    expect_only("gloamhold_data/models/probe.mdl:14: unknown material \"stoen\": it walks and sounds like stone");
}

TEST_F(check_test, comment_between_a_frame_time_and_its_pose_is_named)
{
    plant("animations/probe.anm", "BONES 1\nFRAMES 1\nHIERARCHY -1\n0\n# the pose\n0 0 0 0 0 0 1\n");
    expect_only("gloamhold_data/animations/probe.anm:5: expected the pose of bone 0 in frame 0 (seven numbers, with no "
                "empty or comment line before it), found \"# the pose\"");
}

TEST_F(check_test, collision_tree_node_naming_a_missing_plane_is_named)
{
    std::string tree = read_text(data("keep.bsp"));
    int planes = std::stoi(tree.substr(tree.find("PLANES ") + 7));
    int nodes = std::stoi(tree.substr(tree.find("NODES ") + 6));
    replace("keep.bsp", "NODES " + std::to_string(nodes), "NODES " + std::to_string(nodes + 1));
    plant("keep.bsp", read_text(data("keep.bsp")) + "999 0 0\n");
    int last_line = line_of(read_text(data("keep.bsp")), "999 0 0");
    expect_only("gloamhold_data/keep.bsp:" + std::to_string(last_line) + ": node " + std::to_string(nodes) +
                " names plane 999, but there are " + std::to_string(planes) + " planes");
}

TEST_F(check_test, portal_without_a_partner_is_named)
{
    // The hall's side of the opening into the yard goes; the yard's side is left alone.
    int yard_side = line_in("scene.xml", "<portal points=\"-0.7,0,10 0.7,0,10 0.7,-2.6,10 -0.7,-2.6,10\"/>");
    replace("scene.xml", "<portal points=\"-0.7,-2.6,10 0.7,-2.6,10 0.7,0,10 -0.7,0,10\"/>", "");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(yard_side) +
                ": the portal has no partner: no portal of another room faces it with every corner within 0.01");
}

TEST_F(check_test, room_whose_tree_node_does_not_hold_its_box_centre_is_named)
{
    std::string scene = read_text(data("scene.xml"));
    size_t hall = scene.find("<room box=\"-4.6,-4,10 4.6,0,20.4\" bsp_node=\"6\">");
    ASSERT_NE(hall, std::string::npos);
    size_t next_node = scene.find("bsp_node=\"", scene.find("<room", hall + 1)) + 10;
    std::string other_node = scene.substr(next_node, scene.find('"', next_node) - next_node);
    int line = replace("scene.xml", "box=\"-4.6,-4,10 4.6,0,20.4\" bsp_node=\"6\"",
                       "box=\"-4.6,-4,10 4.6,0,20.4\" bsp_node=\"" + other_node + "\"");
    char centre[64];
    snprintf(centre, sizeof centre, "(%g, %g, %g)", static_cast<double>((-4.6f + 4.6f) * 0.5f),
             static_cast<double>((-4.0f + 0.0f) * 0.5f), static_cast<double>((10.0f + 20.4f) * 0.5f));
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": the centre of the room's box " + centre +
                " is not inside its collision-tree node " + other_node);
}

TEST_F(check_test, pickup_naming_an_unknown_item_is_named)
{
    int line = replace("scene.xml", "item=\"silver_coin\"", "item=\"gold_coin\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": item \"gold_coin\" is not a key of items.xml");
}

TEST_F(check_test, dialogue_that_offers_no_answer_at_its_top_is_named)
{
    plant("dialogues/maud.dlg", "Maud:\n\tstate.maud_hint = given\n\t\"Soup, dear?\"\n\t> \"Yes.\":\n\t\t\"Here.\"\n");
    expect_only("gloamhold_data/dialogues/maud.dlg: offers no answer at its top level, so it never opens");
}

TEST_F(check_test, jump_to_a_missing_label_is_named)
{
    plant("dialogues/probe.dlg", "@start\n> \"Bye.\":\nbegin:\n");
    expect_exactly({"gloamhold_data/dialogues/probe.dlg: offers no answer at its top level, so it never opens",
                    "gloamhold_data/dialogues/probe.dlg:1: the jump finds no label \"start:\", so its block ends here"});
}

TEST_F(check_test, item_name_too_long_is_named)
{
    int line = replace("items.xml", "name=\"Iron key\"", "name=\"" + std::string(64, 'k') + "\"");
    expect_only("gloamhold_data/items.xml:" + std::to_string(line) +
                ": the name is 64 characters long, but an item's may have at most 63");
}

TEST_F(check_test, xml_the_game_cannot_read_is_named_where_its_reader_stops)
{
    int line = replace("scene.xml", "model=\"windlass.mdl\"/>", "model=\"windlass.mdl\"></statics>");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": the end tag does not close <static>: it must spell the name, or its beginning, up to \">\"");
}

TEST_F(check_test, missing_model_is_named_at_the_element_that_names_it)
{
    int line = replace("scene.xml", "model=\"windlass.mdl\"", "model=\"windlas.mdl\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": model \"windlas.mdl\" is missing (no file gloamhold_data/models/windlas.mdl)");
}

TEST_F(check_test, name_longer_than_39_characters_is_named)
{
    std::string name = "windlass_" + std::string(27, 'x') + ".mdl"; // 40 characters
    fs::copy_file(data("models/windlass.mdl"), data("models/" + name));
    int line = replace("scene.xml", "model=\"windlass.mdl\"", "model=\"" + name + "\"");
    expect_exactly({"gloamhold_data/scene.xml:" + std::to_string(line) + ": model name \"" + name +
                        "\" is longer than 39 characters: the game cannot register it",
                    "gloamhold_data/models/" + name + ": model name \"" + name +
                        "\" is longer than 39 characters: the game cannot register it"});
}

TEST_F(check_test, door_that_fills_no_portal_is_named)
{
    int line = replace("scene.xml", "<door x=\"4.6\" y=\"0\" z=\"12.7\"", "<door x=\"40.6\" y=\"0\" z=\"12.7\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": the door fills no portal: no portal's centre lies in its box");
}

TEST_F(check_test, lock_that_no_key_opens_is_named)
{
    replace("items.xml", "type=\"key\" lock=\"1\"", "type=\"key\" lock=\"2\"");
    int line = line_in("scene.xml", "lock=\"1\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": lock 1: no key of items.xml opens it");
}

TEST_F(check_test, sound_with_24_bit_samples_is_named)
{
    wav_description sound;
    sound.bits_per_sample = 24;
    sound.data = std::string(300, '\0');
    plant("sounds/pl_step_wood02.wav", encode_wav(sound));
    expect_only("gloamhold_data/sounds/pl_step_wood02.wav: 24-bit samples: sounds must have 8- or 16-bit samples");
}

TEST_F(check_test, data_directory_of_another_name_is_checked_under_that_name)
{
    fs::rename(folder + "/gloamhold_data", folder + "/my_mod");
    fs::remove(folder + "/my_mod/sounds/door_locked.wav");
    check_run result = run("my_mod/");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.lines, std::vector<std::string>({"my_mod/sounds/door_locked.wav: missing: the game loads this "
                                                      "sound at start-up and cannot start without it"}));
}

TEST_F(check_test, bad_arguments_exit_with_2)
{
    EXPECT_EQ(run("gloamhold_data gloamhold_data").status, 2);
    EXPECT_EQ(run("--frobnicate").status, 2);
    EXPECT_EQ(run("no_such_directory").status, 2);
    EXPECT_EQ(run("--help").status, 0);
}

TEST_F(check_test, text_neither_ascii_nor_cyrillic_is_named)
{
    // A typographic quote: the game decodes only Cyrillic letters from UTF-8 and maps it onto another.
    plant("dialogues/probe.dlg", "> \"Yes.\":\n\t\"So you say \xE2\x80\x9Cyes\xE2\x80\x9D.\"\n");
    expect_only("gloamhold_data/dialogues/probe.dlg:2: the bytes E2 80 are neither ASCII nor Cyrillic: the game draws "
                "character 0xB0 for them");
}

TEST_F(check_test, character_the_dialogue_font_lacks_is_named)
{
    plant("dialogues/probe.dlg", "> \"Yes\x7F.\":\n");
    expect_only("gloamhold_data/dialogues/probe.dlg:1: character 0x7F is not in the dialogue font: it is not drawn");
}

TEST_F(check_test, placeholder_naming_a_variable_no_dialogue_sets_is_named)
{
    plant("dialogues/probe.dlg", "> \"Ask.\":\n\tstate.asked = yes\n\t\"You asked {state.askd} times.\"\n"
                                 "\tif state.answred == yes:\n\t\t\"Again?\"\n");
    expect_exactly({"gloamhold_data/dialogues/probe.dlg:3: placeholder {state.askd} names a variable no dialogue sets: "
                    "it shows \"<?>\"",
                    "gloamhold_data/dialogues/probe.dlg:4: the condition tests state.answred, which no dialogue sets"});
}

TEST_F(check_test, problems_after_thousands_of_entries_are_named_at_their_own_lines)
{
    std::string talk = "> \"Tell me everything.\":\n";
    for (int line = 2; line <= 3001; ++line)
        talk += line == 1500 || line == 3001 ? "\t\"Line {state.unset}.\"\n" : "\t\"Line.\"\n";
    plant("dialogues/probe.dlg", talk);
    expect_exactly({"gloamhold_data/dialogues/probe.dlg:1500: placeholder {state.unset} names a variable no dialogue "
                    "sets: it shows \"<?>\"",
                    "gloamhold_data/dialogues/probe.dlg:3001: placeholder {state.unset} names a variable no dialogue "
                    "sets: it shows \"<?>\""});
}

TEST_F(check_test, more_than_eight_answers_at_once_are_named)
{
    std::string talk;
    for (int i = 1; i <= 9; ++i)
        talk += "> \"Answer " + std::to_string(i) + ".\":\n";
    plant("dialogues/probe.dlg", talk);
    expect_only("gloamhold_data/dialogues/probe.dlg:9: more than 8 answers at once: the box offers at most 8");
}

TEST_F(check_test, answers_gathered_through_a_jump_beyond_eight_are_named)
{
    // Four answers from the menu the jump calls, then five more here: nine offered at once.
    std::string talk = "@menu\n";
    for (int i = 1; i <= 5; ++i)
        talk += "> \"Here " + std::to_string(i) + ".\":\n";
    talk += "menu:\n";
    for (int i = 1; i <= 4; ++i)
        talk += "\t> \"There " + std::to_string(i) + ".\":\n";
    plant("dialogues/probe.dlg", talk);
    int line = line_in("dialogues/probe.dlg", "Here 5.");
    expect_only("gloamhold_data/dialogues/probe.dlg:" + std::to_string(line) +
                ": more than 8 answers at once: the box offers at most 8");
}

TEST_F(check_test, jump_into_the_block_it_stands_in_is_named)
{
    plant("dialogues/probe.dlg", "@loop\nloop:\n\t> \"Again.\":\n\t\t\"Once more.\"\n\t@loop\n");
    expect_only("gloamhold_data/dialogues/probe.dlg:5: the jump calls a block it stands in: the game walks it again "
                "and again, 64 blocks deep");
}

TEST_F(check_test, answers_of_a_condition_and_its_else_are_not_counted_together)
{
    // Only one of the two blocks runs: at most five answers at once.
    std::string talk = "state.probed = yes\nif state.probed == yes:\n";
    for (int i = 1; i <= 5; ++i)
        talk += "\t> \"Yes " + std::to_string(i) + ".\":\n";
    talk += "else:\n";
    for (int i = 1; i <= 5; ++i)
        talk += "\t> \"No " + std::to_string(i) + ".\":\n";
    plant("dialogues/probe.dlg", talk);
    check_run result = run();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.lines, std::vector<std::string>());
}

TEST_F(check_test, statement_with_an_unknown_operator_is_named)
{
    plant("dialogues/probe.dlg", "> \"Ask.\":\n\tstate.asked <- yes\n\tif state.asked <> yes:\n\t\t\"Hm.\"\n");
    expect_exactly({"gloamhold_data/dialogues/probe.dlg:2: the statement never does anything: unknown operator \"<-\" "
                    "(=, == and != are known)",
                    "gloamhold_data/dialogues/probe.dlg:3: the condition never holds: unknown operator \"<>\" (=, == "
                    "and != are known)",
                    "gloamhold_data/dialogues/probe.dlg:3: the condition tests state.asked, which no dialogue sets"});
}

TEST_F(check_test, function_other_than_random_is_named)
{
    plant("dialogues/probe.dlg", "> \"Roll.\":\n\tstate.probe_roll = dice(1, 6)\n\tstate.probe_luck = random(1)\n");
    expect_exactly({"gloamhold_data/dialogues/probe.dlg:2: the statement never does anything: \"dice(1, 6)\" is not "
                    "random(a, b) with two numbers: state.probe_roll is only left empty",
                    "gloamhold_data/dialogues/probe.dlg:3: the statement never does anything: \"random(1)\" is not "
                    "random(a, b) with two numbers: state.probe_luck is only left empty"});
}

TEST_F(check_test, statement_that_only_tests_or_names_no_variable_is_named)
{
    plant("dialogues/probe.dlg", "> \"Ask.\":\n\tstate.asked = yes\n\tstate.asked == yes\n\tHello there\n");
    expect_exactly({"gloamhold_data/dialogues/probe.dlg:3: the statement never does anything: it only tests "
                    "state.asked",
                    "gloamhold_data/dialogues/probe.dlg:4: the statement never does anything: \"Hello\" is not a state "
                    "variable (state.<name>)"});
}

TEST_F(check_test, text_line_without_its_closing_quote_is_named)
{
    plant("dialogues/probe.dlg", "> \"Ask.\":\n\t\"Nobody closed this\n\t\"Halt: who goes there?\"\n");
    expect_exactly({"gloamhold_data/dialogues/probe.dlg:2: the text line has no closing double quote: it shows to the "
                    "end of the line",
                    "gloamhold_data/dialogues/probe.dlg:3: the text line ends at its \":\": the game reads it as a "
                    "label and the rest of the line as a further entry",
                    "gloamhold_data/dialogues/probe.dlg:3: the statement never does anything: \"who\" is not a state "
                    "variable (state.<name>)"});
}

TEST_F(check_test, variable_set_only_by_a_condition_counts_as_set)
{
    plant("dialogues/probe.dlg", "> \"Ask.\":\n\tif state.probe_asked = yes:\n\t\t\"You asked {state.probe_asked}.\"\n");
    check_run result = run();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.lines, std::vector<std::string>());
}

TEST_F(check_test, light_without_a_radius_is_named)
{
    int line = replace("scene.xml", "radius=\"24\"", "radius=\"0\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": the light has no radius above 0: it lights nothing");
}

TEST_F(check_test, room_whose_space_another_room_claims_first_is_named)
{
    // The room after the hall takes the hall's box and tree node: the camera always finds the hall.
    const std::string hall = "box=\"-4.6,-4,10 4.6,0,20.4\" bsp_node=\"6\"";
    std::string scene = read_text(data("scene.xml"));
    size_t hall_at = scene.find(hall);
    ASSERT_NE(hall_at, std::string::npos);
    size_t next_room = scene.find("<room box=\"", hall_at);
    size_t attributes_end = scene.find('>', next_room);
    std::string next_attributes = scene.substr(next_room + 6, attributes_end - next_room - 6);
    int hall_line = line_of(scene, hall);
    int line = replace("scene.xml", next_attributes, hall);
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": the room shares open space with the room on line " + std::to_string(hall_line) +
                ", which the camera finds first");
}

// ---- Every rule of the game's loaders, named where the file breaks it ----

namespace {

const char* const PROBE_MODEL = "gloamhold_data/models/probe.mdl";

// The probe model with these counts, its three points (lines 8 to 10) and `rest` from line 11.
std::string probe_model(int texcoords, int weights, int subsets, int colliders, int occluders, const std::string& rest)
{
    return "POINTS 3\nTRIANGLES 1\nTEXCOORDS " + std::to_string(texcoords) + "\nWEIGHTS " + std::to_string(weights) +
           "\nSUBSETS " + std::to_string(subsets) + "\nCOLLIDERS " + std::to_string(colliders) + "\nOCCLUDERS " +
           std::to_string(occluders) + "\n" + GOOD_MODEL_POINTS + rest;
}

} // namespace

TEST_F(check_test, model_that_ends_before_a_header_is_named)
{
    plant("models/probe.mdl", "POINTS 3\nTRIANGLES 1\n");
    expect_only(std::string(PROBE_MODEL) + ": the file ends before the header \"TEXCOORDS <count>\"");
}

TEST_F(check_test, negative_count_is_named_at_its_line)
{
    plant("models/probe.mdl", "POINTS 3\nTRIANGLES -1\n");
    expect_only(std::string(PROBE_MODEL) + ":2: negative count -1");
}

TEST_F(check_test, triangle_line_without_three_indices_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 0, 0, 0, 0, "0 1\n"));
    expect_only(std::string(PROBE_MODEL) + ":11: expected triangle 0 (three point indices), found \"0 1\"");
}

TEST_F(check_test, texture_coordinate_line_without_two_numbers_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(1, 0, 0, 0, 0, "0 1 2\n0.5\n"));
    expect_only(std::string(PROBE_MODEL) + ":12: expected texture coordinate 0 (u v), found \"0.5\"");
}

TEST_F(check_test, triangle_naming_a_missing_texture_coordinate_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(1, 0, 0, 0, 0, "0 1 2\n0 0\n0 0 1\n"));
    expect_only(std::string(PROBE_MODEL) +
                ":13: triangle 0 names texture coordinate 1, but there are 1 texture coordinates");
}

TEST_F(check_test, weight_line_without_five_numbers_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 1, 0, 0, 0, "0 1 2\n0 0 0 0\n"));
    expect_only(std::string(PROBE_MODEL) + ":12: expected weight 0 (bone x y z factor), found \"0 0 0 0\"");
}

TEST_F(check_test, weight_naming_a_negative_bone_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 1, 0, 0, 0, "0 1 2\n-1 0 0 0 1\n"));
    expect_only(std::string(PROBE_MODEL) + ":12: weight 0 names bone -1");
}

TEST_F(check_test, point_weights_line_without_two_numbers_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 1, 0, 0, 0, "0 1 2\n0 0 0 0 1\n0\n"));
    expect_only(std::string(PROBE_MODEL) + ":13: expected the weights of point 0 (first count), found \"0\"");
}

TEST_F(check_test, point_taking_weights_past_the_last_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 1, 0, 0, 0, "0 1 2\n0 0 0 0 1\n0 2\n"));
    expect_only(std::string(PROBE_MODEL) + ":13: point 0 takes weights 0 to 1, but the model has 1 weights");
}

TEST_F(check_test, subset_line_without_texture_first_and_end_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 0, 1, 0, 0, "0 1 2\nbrick.png 0\n"));
    expect_only(std::string(PROBE_MODEL) + ":12: expected subset 0 (texture first end), found \"brick.png 0\"");
}

TEST_F(check_test, subset_covering_missing_triangles_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 0, 1, 0, 0, "0 1 2\nbrick.png 0 2\n"));
    expect_only(std::string(PROBE_MODEL) + ":12: subset 0 covers triangles 0 to 2, but there are 1");
}

TEST_F(check_test, collision_triangle_naming_a_missing_point_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 0, 0, 1, 0, "0 1 2\nCOLLISION_TRIANGLES 1\n0 1 5\n"));
    expect_only(std::string(PROBE_MODEL) + ":13: collision triangle 0 names point 5, but the model has 3 points");
}

TEST_F(check_test, collider_line_without_material_first_and_end_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 0, 0, 1, 0, "0 1 2\nCOLLISION_TRIANGLES 1\n0 1 2\nstone 0\n"));
    expect_only(std::string(PROBE_MODEL) + ":14: expected collider 0 (material first end), found \"stone 0\"");
}

TEST_F(check_test, collider_covering_missing_collision_triangles_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 0, 0, 1, 0, "0 1 2\nCOLLISION_TRIANGLES 1\n0 1 2\nstone 0 2\n"));
    expect_only(std::string(PROBE_MODEL) + ":14: collider 0 covers collision triangles 0 to 2, but there are 1");
}

TEST_F(check_test, occluder_line_without_first_and_end_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 0, 0, 0, 1, "0 1 2\nOCCLUSION_TRIANGLES 1\n0 1 2\n0\n"));
    expect_only(std::string(PROBE_MODEL) + ":14: expected occluder 0 (first end), found \"0\"");
}

TEST_F(check_test, occluder_covering_missing_occlusion_triangles_is_named_at_its_line)
{
    plant("models/probe.mdl", probe_model(0, 0, 0, 0, 1, "0 1 2\nOCCLUSION_TRIANGLES 1\n0 1 2\n0 3\n"));
    expect_only(std::string(PROBE_MODEL) + ":14: occluder 0 covers occlusion triangles 0 to 3, but there are 1");
}

TEST_F(check_test, collision_tree_plane_line_without_four_numbers_is_named_at_its_line)
{
    plant("keep.bsp", "PLANES 1\nNODES 1\n1 0 0\n");
    expect_only("gloamhold_data/keep.bsp:3: expected plane 0 (a b c d), found \"1 0 0\"");
}

TEST_F(check_test, collision_tree_node_line_without_three_indices_is_named_at_its_line)
{
    plant("keep.bsp", "PLANES 1\nNODES 1\n1 0 0 0\n0 0\n");
    expect_only("gloamhold_data/keep.bsp:4: expected node 0 (plane front back), found \"0 0\"");
}

TEST_F(check_test, collision_tree_child_outside_the_tree_is_named_at_its_line)
{
    plant("keep.bsp", "PLANES 1\nNODES 1\n1 0 0 0\n0 0 5\n");
    expect_only("gloamhold_data/keep.bsp:4: node 0's back child 5 is outside the tree's 1 nodes");
}

TEST_F(check_test, animation_without_a_hierarchy_line_is_named_at_its_line)
{
    plant("animations/probe.anm", "BONES 1\nFRAMES 0\nHIERARCHY\n");
    expect_only("gloamhold_data/animations/probe.anm:3: expected \"HIERARCHY\" and a parent for each bone, found "
                "\"HIERARCHY\"");
}

TEST_F(check_test, hierarchy_with_too_few_parents_is_named_at_its_line)
{
    plant("animations/probe.anm", "BONES 2\nFRAMES 0\nHIERARCHY -1\n");
    expect_only("gloamhold_data/animations/probe.anm:3: the hierarchy gives 1 parents for 2 bones");
}

TEST_F(check_test, parent_that_is_not_an_integer_is_named_at_its_line)
{
    plant("animations/probe.anm", "BONES 1\nFRAMES 0\nHIERARCHY x\n");
    expect_only("gloamhold_data/animations/probe.anm:3: the parent of bone 0 is not an integer");
}

TEST_F(check_test, parent_that_is_not_an_earlier_bone_is_named_at_its_line)
{
    plant("animations/probe.anm", "BONES 2\nFRAMES 0\nHIERARCHY -1 1\n");
    expect_only("gloamhold_data/animations/probe.anm:3: bone 1's parent 1 must be -1 or an earlier bone");
}

TEST_F(check_test, frame_time_that_is_not_a_number_is_named_at_its_line)
{
    plant("animations/probe.anm", "BONES 1\nFRAMES 1\nHIERARCHY -1\nsoon\n");
    expect_only("gloamhold_data/animations/probe.anm:4: expected the time of frame 0, found \"soon\"");
}

TEST_F(check_test, frame_time_before_the_previous_one_is_named_at_its_line)
{
    plant("animations/probe.anm", "BONES 1\nFRAMES 2\nHIERARCHY -1\n1\n0 0 0 0 0 0 1\n0.5\n0 0 0 0 0 0 1\n");
    expect_only("gloamhold_data/animations/probe.anm:6: frame 1's time 0.5 comes before the previous frame's 1");
}

TEST_F(check_test, xml_name_longer_than_62_characters_is_named_at_its_line)
{
    int line = replace("scene.xml", "<pickup x=\"4.5\"", "<" + std::string(63, 'i') + " x=\"4.5\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": the name \"" + std::string(62, 'i') +
                "...\" is longer than 62 characters");
}

TEST_F(check_test, xml_value_longer_than_126_characters_is_named_at_its_line)
{
    int line = replace("scene.xml", "model=\"windlass.mdl\"", "model=\"" + std::string(127, 'k') + "\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": the value of model is longer than 126 characters");
}

TEST_F(check_test, xml_text_longer_than_510_characters_is_named_at_its_line)
{
    int line = replace("scene.xml", "bsp_node=\"0\">", "bsp_node=\"0\">" + std::string(511, 't'));
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": the text of <scene> is longer than 510 characters");
}

TEST_F(check_test, xml_end_tag_with_no_element_open_is_named_at_its_line)
{
    int line = replace("scene.xml", "<scene ", "</scene><scene ");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": an end tag with no element open");
}

TEST_F(check_test, xml_element_name_followed_by_a_stray_character_is_named_at_its_line)
{
    int line = replace("scene.xml", "<scene ", "<scene! ");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": expected a blank, \"/>\" or \">\" after the name <scene>, found \"!\"");
}

TEST_F(check_test, xml_slash_not_closing_the_tag_is_named_at_its_line)
{
    int line = replace("scene.xml", "model=\"windlass.mdl\"/>", "model=\"windlass.mdl\"/ >");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": expected \">\" after \"/\" in <static>, found \" \"");
}

TEST_F(check_test, xml_name_that_starts_with_a_digit_is_named_at_its_line)
{
    int line = replace("scene.xml", "<pickup x=\"4.5\"", "<1pickup x=\"4.5\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": expected a name (a letter, \"_\" or \":\" first), found \"1\"");
}

TEST_F(check_test, xml_file_that_ends_inside_an_element_is_named_where_it_ends)
{
    plant("scene.xml", "<scene bsp=\"keep.bsp\">\n  <room");
    expect_only("gloamhold_data/scene.xml:2: the game's XML reader stops here: the file ends inside a tag, an element "
                "or a comment");
}

TEST_F(check_test, scene_number_that_does_not_parse_is_named_at_its_element)
{
    int line = replace("scene.xml", "<pickup x=\"4.5\"", "<pickup x=\"4.5m\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": x \"4.5m\" is not a number");
}

TEST_F(check_test, scene_integer_that_does_not_parse_is_named_at_its_element)
{
    int line = replace("scene.xml", "model=\"door_iron.mdl\" lock=\"1\"", "model=\"door_iron.mdl\" lock=\"one\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": lock \"one\" is not an integer");
}

TEST_F(check_test, portal_without_points_is_named_at_its_element)
{
    int line = replace("scene.xml", "<portal points=\"-0.7,-2.6,10 0.7,-2.6,10 0.7,0,10 -0.7,0,10\"/>", "<portal/>");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": the portal has no points");
}

TEST_F(check_test, portal_whose_points_are_not_four_corners_is_named_at_its_element)
{
    int line = replace("scene.xml", "-0.7,-2.6,10 0.7,-2.6,10 0.7,0,10 -0.7,0,10", "1,2,3");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": points \"1,2,3\" must be four corners of three numbers: \"x,y,z x,y,z x,y,z x,y,z\"");
}

TEST_F(check_test, room_box_that_is_not_six_numbers_is_named_at_its_element)
{
    int line = replace("scene.xml", "box=\"-4.6,-4,10 4.6,0,20.4\"", "box=\"-4.6,-4,10 4.6,0\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": box \"-4.6,-4,10 4.6,0\" must be six numbers: \"x,y,z x,y,z\"");
}

TEST_F(check_test, room_naming_a_node_outside_the_tree_is_named_at_its_element)
{
    std::string tree = read_text(data("keep.bsp"));
    int nodes = std::stoi(tree.substr(tree.find("NODES ") + 6));
    int line = replace("scene.xml", "bsp_node=\"6\"", "bsp_node=\"999\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": bsp_node 999 is not a node of the collision tree, which has " + std::to_string(nodes));
}

TEST_F(check_test, model_moved_by_a_bone_its_animation_lacks_is_named_at_its_element)
{
    plant("animations/warden_idle.anm", "BONES 1\nFRAMES 0\nHIERARCHY -1\n");
    int line = line_in("scene.xml", "animation=\"warden_idle.anm\"");
    check_run result = run();
    EXPECT_EQ(result.status, 1);
    ASSERT_EQ(result.lines.size(), 1u);
    std::string start = "gloamhold_data/scene.xml:" + std::to_string(line) + ": model \"warden.mdl\" is moved by bone ";
    std::string end = ", but animation \"warden_idle.anm\" has 1 bones";
    EXPECT_EQ(result.lines[0].compare(0, start.size(), start), 0) << result.lines[0];
    EXPECT_GE(result.lines[0].size(), end.size());
    EXPECT_EQ(result.lines[0].substr(result.lines[0].size() - std::min(end.size(), result.lines[0].size())), end);
}

TEST_F(check_test, scene_file_without_a_scene_element_is_named)
{
    replace("scene.xml", "<scene ", "<scenery ");
    expect_only("gloamhold_data/scene.xml: there is no <scene> element");
}

TEST_F(check_test, scene_without_a_collision_tree_is_named_at_its_element)
{
    int line = replace("scene.xml", "bsp=\"keep.bsp\"", "bsq=\"keep.bsp\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": the scene has no bsp attribute naming its collision tree");
}

TEST_F(check_test, missing_collision_tree_is_named_at_the_scene_element)
{
    int line = replace("scene.xml", "bsp=\"keep.bsp\"", "bsp=\"kep.bsp\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": collision tree \"kep.bsp\" is missing (no file gloamhold_data/kep.bsp)");
}

TEST_F(check_test, flickering_style_outside_1_to_11_is_named_at_its_element)
{
    int line = replace("scene.xml", "flickering=\"10\"", "flickering=\"12\"");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": flickering style 12 is not one of 1 to 11: the light keeps its brightness");
}

TEST_F(check_test, actor_without_a_dialogue_is_named_at_its_element)
{
    int line = replace("scene.xml", " dialogue=\"warden.dlg\"", "");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) +
                ": the actor has no dialogue: talking to it starts the first dialogue loaded");
}

TEST_F(check_test, pickup_without_an_item_is_named_at_its_element)
{
    int line = replace("scene.xml", " item=\"letter\"", "");
    expect_only("gloamhold_data/scene.xml:" + std::to_string(line) + ": the pickup names no item: it gives nothing");
}

TEST_F(check_test, item_type_other_than_key_is_named_at_its_element)
{
    int line = replace("items.xml", "type=\"key\" lock=\"1\"", "type=\"coin\" lock=\"1\"");
    expect_only("gloamhold_data/items.xml:" + std::to_string(line) + ": type \"coin\": the only item type is \"key\"");
}

TEST_F(check_test, item_lock_that_is_not_an_integer_is_named_at_its_element)
{
    int line = replace("items.xml", "lock=\"1\"", "lock=\"first\"");
    expect_only("gloamhold_data/items.xml:" + std::to_string(line) + ": lock \"first\" is not an integer");
}

TEST_F(check_test, missing_pickup_sound_is_named_at_the_item)
{
    int line = replace("items.xml", "pickup_sound=\"pickup_key.wav\"", "pickup_sound=\"pickup_kez.wav\"");
    expect_only("gloamhold_data/items.xml:" + std::to_string(line) +
                ": sound \"pickup_kez.wav\" is missing (no file gloamhold_data/sounds/pickup_kez.wav)");
}

TEST_F(check_test, item_key_taken_already_is_named_at_its_element)
{
    int line = replace("items.xml", "key=\"rusty_key\"", "key=\"iron_key\"");
    int pickup = line_in("scene.xml", "item=\"rusty_key\"");
    expect_exactly({"gloamhold_data/items.xml:" + std::to_string(line) +
                        ": key \"iron_key\" is taken already by an earlier item, which pickups get",
                    "gloamhold_data/scene.xml:" + std::to_string(pickup) +
                        ": item \"rusty_key\" is not a key of items.xml"});
}

TEST_F(check_test, item_without_a_key_is_named_at_its_element)
{
    int line = replace("items.xml", "key=\"letter\" ", "");
    int pickup = line_in("scene.xml", "item=\"letter\"");
    expect_exactly({"gloamhold_data/items.xml:" + std::to_string(line) + ": the item has no key: no pickup can name it",
                    "gloamhold_data/scene.xml:" + std::to_string(pickup) + ": item \"letter\" is not a key of items.xml"});
}

TEST_F(check_test, key_without_a_lock_is_named_at_its_element)
{
    int line = replace("items.xml", " lock=\"7\"", "");
    expect_only("gloamhold_data/items.xml:" + std::to_string(line) +
                ": the key has no lock number of 1 or more: it opens no door");
}

TEST_F(check_test, texture_that_is_not_an_image_is_named)
{
    plant("textures/crate.png", "not a picture");
    expect_only("gloamhold_data/textures/crate.png: cannot be decoded as an image");
}

TEST_F(check_test, texture_suffix_letter_without_a_digit_is_named)
{
    fs::copy_file(data("textures/crate.png"), data("textures/glow@e.png"));
    expect_only("gloamhold_data/textures/glow@e.png: the name's \"@\" suffix has \"e\" without a digit after it");
}

TEST_F(check_test, sound_that_is_not_a_sound_is_named)
{
    plant("sounds/pickup_coin.wav", "not a sound");
    expect_only("gloamhold_data/sounds/pickup_coin.wav: not a sound the game can read (it takes uncompressed 8- or "
                "16-bit PCM)");
}

TEST_F(check_test, sound_with_three_channels_is_named)
{
    wav_description sound;
    sound.channels = 3;
    sound.extensible = true;
    sound.data = std::string(600, '\0');
    plant("sounds/pickup_coin.wav", encode_wav(sound));
    expect_only("gloamhold_data/sounds/pickup_coin.wav: 3 channels: sounds must be mono or stereo");
}

TEST_F(check_test, font_shorter_than_its_header_is_named)
{
    plant("fonts/font_system.fnt", std::string("FNT\0\x10", 5));
    expect_only("gloamhold_data/fonts/font_system.fnt: shorter than a font header (7 bytes)");
}

TEST_F(check_test, font_whose_bitmap_data_is_cut_short_is_named)
{
    std::string font = read_text(data("fonts/font_system.fnt"));
    plant("fonts/font_system.fnt", font.substr(0, font.size() - 1));
    unsigned first = static_cast<unsigned char>(font[5]), last = static_cast<unsigned char>(font[6]);
    size_t size_at = 7 + 9 * (last - first + 1);
    unsigned size = static_cast<unsigned char>(font[size_at]) | static_cast<unsigned char>(font[size_at + 1]) << 8 |
                    static_cast<unsigned char>(font[size_at + 2]) << 16;
    expect_only("gloamhold_data/fonts/font_system.fnt: the header promises " + std::to_string(size) +
                " bytes of bitmap data, but the file ends before them");
}

TEST_F(check_test, broken_model_line_is_named_by_the_checker_and_by_the_headless_game)
{
    // The third point of the well's windlass loses a number: the scene names the model, so the game
    // cannot start.
    std::string model = read_text(data("models/windlass.mdl"));
    size_t points = model.find("POINTS ");
    size_t third = model.find('\n', model.find('\n', model.find('\n', model.find("OCCLUDERS ")) + 1) + 1) + 1;
    ASSERT_NE(points, std::string::npos);
    std::string line_text = model.substr(third, model.find('\n', third) - third);
    std::string cut = line_text.substr(0, line_text.rfind(' '));
    int line = replace("models/windlass.mdl", "\n" + line_text + "\n", "\n" + cut + "\n") + 1;
    std::string problem = "gloamhold_data/models/windlass.mdl:" + std::to_string(line) +
                          ": expected point 2 (x y z), found \"" + cut + "\"";
    expect_only(problem);

    std::string command = "'" GLOAMHOLD_HEADLESS "' -C '" + folder + "' --ticks 1 2>&1 >/dev/null";
    FILE* out = popen(command.c_str(), "r");
    ASSERT_NE(out, nullptr);
    std::string errors;
    char buffer[4096];
    size_t got;
    while ((got = fread(buffer, 1, sizeof buffer, out)) > 0)
        errors.append(buffer, got);
    int status = pclose(out);
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 3);
    EXPECT_EQ(errors, "gloamhold-headless: the game's start-up failed: " + problem + "\n");
}
