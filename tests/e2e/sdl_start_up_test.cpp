// The native game when it cannot start: it ends with status 3 and tells its user why, on a virtual
// X server of its own (tests/with-display).
#include <gtest/gtest.h>

#include <stdio.h>
#include <sys/wait.h>

#include <filesystem>
#include <string>

#include "support/temp_files.h"

namespace fs = std::filesystem;

namespace {

struct game_run {
    int status = -1;
    std::string said; // standard error (and output)
};

// Starts the game (`program`, the built one unless named) in `folder` with SDL's silent audio
// driver and lets it run until it ends.
game_run run_game_in(const std::string& folder, const std::string& arguments = "",
                     const std::string& program = GLOAMHOLD_GAME)
{
    std::string command = "cd '" + folder + "' && SDL_AUDIODRIVER=dummy " WITH_DISPLAY " '" + program + "' " +
                          arguments + " 2>&1";
    game_run run;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return run;
    char chunk[512];
    size_t got;
    while ((got = fread(chunk, 1, sizeof chunk, pipe)) > 0)
        run.said.append(chunk, got);
    int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

class sdl_start_up : public testing::Test {
protected:
    void SetUp() override { folder = test_folder(); }
    void TearDown() override
    {
        if (!HasFailure())
            fs::remove_all(folder);
    }
    std::string folder;
};

// A copy of the shipped data in `folder` whose armour model has a broken tenth line.
void copy_data_with_a_broken_model_line(const std::string& folder)
{
    fs::copy(SHIPPED_DATA, folder + "/gloamhold_data", fs::copy_options::recursive);
    std::string model = folder + "/gloamhold_data/models/armour.mdl";
    std::string content = read_all(model);
    size_t tenth_line = 0;
    for (int line = 1; line < 10; ++line)
        tenth_line = content.find('\n', tenth_line) + 1;
    content.replace(tenth_line, content.find('\n', tenth_line) - tenth_line, "0.198 zero 0.198");
    write_file(model, content);
}

TEST_F(sdl_start_up, a_broken_model_line_ends_the_game_with_3_naming_the_file_and_line)
{
    copy_data_with_a_broken_model_line(folder);
    game_run run = run_game_in(folder);
    EXPECT_EQ(run.status, 3) << run.said;
    EXPECT_NE(run.said.find("gloamhold: the game's start-up failed: gloamhold_data/models/armour.mdl:10: "
                            "expected point 1 (x y z), found \"0.198 zero 0.198\"\n"),
              std::string::npos)
        << run.said;
    EXPECT_NE(run.said.find("run gloamhold-check gloamhold_data"), std::string::npos) << run.said;
}

TEST_F(sdl_start_up, a_note_on_what_the_game_lets_pass_does_not_hide_the_problem_that_stopped_it)
{
    // The windlass, loaded before the armour, walks like stone on an unknown material: a note.
    copy_data_with_a_broken_model_line(folder);
    std::string windlass = folder + "/gloamhold_data/models/windlass.mdl";
    std::string content = read_all(windlass);
    content.replace(content.rfind("wood 10 20"), 4, "teak");
    write_file(windlass, content);

    game_run run = run_game_in(folder);
    EXPECT_EQ(run.status, 3) << run.said;
    EXPECT_NE(run.said.find("gloamhold: the game's start-up failed: gloamhold_data/models/armour.mdl:10: "),
              std::string::npos)
        << run.said;
    EXPECT_EQ(run.said.find("teak"), std::string::npos) << run.said;
}

TEST_F(sdl_start_up, from_a_folder_without_the_data_it_ends_with_3_saying_where_it_looked_and_how_to_point_it)
{
    game_run run = run_game_in(folder);
    EXPECT_EQ(run.status, 3) << run.said;
    std::string here = fs::canonical(folder).string();
    EXPECT_NE(run.said.find("gloamhold: no gloamhold_data/ in " + here + " (where the game was started) or in " +
                            fs::path(GLOAMHOLD_GAME).parent_path().string() + "/ (beside the game)\n"),
              std::string::npos)
        << run.said;
    EXPECT_NE(run.said.find("or name that folder: gloamhold -C DIR\n"), std::string::npos) << run.said;
}

TEST_F(sdl_start_up, started_from_another_folder_it_takes_the_data_beside_it)
{
    // The game copied beside (broken) data, started from an empty folder: the problem it names is
    // in the data beside it.
    fs::create_directory(folder + "/game");
    fs::create_directory(folder + "/elsewhere");
    fs::copy_file(GLOAMHOLD_GAME, folder + "/game/gloamhold");
    copy_data_with_a_broken_model_line(folder + "/game");
    game_run run = run_game_in(folder + "/elsewhere", "", fs::absolute(folder + "/game/gloamhold").string());
    EXPECT_EQ(run.status, 3) << run.said;
    EXPECT_NE(run.said.find("gloamhold_data/models/armour.mdl:10: "), std::string::npos) << run.said;
}

TEST_F(sdl_start_up, a_folder_given_with_minus_c_without_the_data_is_named)
{
    game_run run = run_game_in(fs::current_path().string(), "-C '" + folder + "'");
    EXPECT_EQ(run.status, 3) << run.said;
    EXPECT_NE(run.said.find("gloamhold: no gloamhold_data/ in " + fs::canonical(folder).string() + " (given with -C)\n"),
              std::string::npos)
        << run.said;
}

} // namespace
