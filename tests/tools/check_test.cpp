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
                "file here");
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
                ": the game's XML reader stops here (it takes start tags with double-quoted values, names of up to "
                "62 characters, values of up to 126, end tags that match)");
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

TEST_F(check_test, more_than_eight_answers_at_once_are_named)
{
    std::string talk;
    for (int i = 1; i <= 9; ++i)
        talk += "> \"Answer " + std::to_string(i) + ".\":\n";
    plant("dialogues/probe.dlg", talk);
    expect_only("gloamhold_data/dialogues/probe.dlg:9: more than 8 answers at once: the box offers at most 8");
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
