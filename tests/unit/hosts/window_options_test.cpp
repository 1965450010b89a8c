#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

#include "app/version.h"
#include "hosts/window_options.h"

namespace {

// Parses a windowed game's command line given as words (the program name is added).
struct parsed {
    window_options options = {};
    command_line_result result;
    std::string error;

    explicit parsed(std::vector<const char*> words)
    {
        words.insert(words.begin(), "gloamhold");
        char message[300];
        result = parse_window_arguments(static_cast<int>(words.size()), words.data(), &options, message,
                                        sizeof message);
        error = message;
    }
};

} // namespace

TEST(window_options, no_arguments_stay_in_the_working_directory)
{
    parsed p({});
    ASSERT_EQ(p.result, COMMAND_LINE_OK);
    EXPECT_EQ(p.options.directory, nullptr);
}

TEST(window_options, dash_c_names_the_directory_to_work_in)
{
    parsed p({"-C", "games/gloamhold"});
    ASSERT_EQ(p.result, COMMAND_LINE_OK) << p.error;
    EXPECT_STREQ(p.options.directory, "games/gloamhold");
}

TEST(window_options, dash_c_without_a_directory_is_refused)
{
    parsed missing({"-C"});
    EXPECT_EQ(missing.result, COMMAND_LINE_BAD);
    EXPECT_EQ(missing.error, "-C: needs a value");
    parsed empty({"-C", ""});
    EXPECT_EQ(empty.result, COMMAND_LINE_BAD);
    EXPECT_EQ(empty.error, "-C: needs a value");
}

TEST(window_options, dash_c_given_twice_is_refused)
{
    parsed p({"-C", "a", "-C", "b"});
    EXPECT_EQ(p.result, COMMAND_LINE_BAD);
    EXPECT_EQ(p.error, "-C: given twice");
}

TEST(window_options, version_and_help_stop_before_anything_else_is_read)
{
    EXPECT_EQ(parsed({"--version"}).result, COMMAND_LINE_VERSION);
    EXPECT_EQ(parsed({"-C", "a", "--version", "--bogus"}).result, COMMAND_LINE_VERSION);
    EXPECT_EQ(parsed({"--help"}).result, COMMAND_LINE_HELP);
    EXPECT_EQ(parsed({"-h"}).result, COMMAND_LINE_HELP);
}

TEST(window_options, an_unknown_option_or_a_stray_word_is_named)
{
    parsed option({"--fullscreen"});
    EXPECT_EQ(option.result, COMMAND_LINE_BAD);
    EXPECT_EQ(option.error, "--fullscreen: unknown option");
    parsed word({"level2"});
    EXPECT_EQ(word.result, COMMAND_LINE_BAD);
    EXPECT_EQ(word.error, "level2: unexpected argument");
}

TEST(version, starts_with_the_project_version_number)
{
    std::string version = GAME_VERSION;
    std::string number = PROJECT_VERSION_FOR_TESTS;
    EXPECT_EQ(version.substr(0, number.size()), number);
    // Then nothing, or what git said of the sources in brackets.
    std::string rest = version.substr(number.size());
    if (!rest.empty()) {
        EXPECT_EQ(rest.substr(0, 2), " (") << version;
        EXPECT_EQ(rest.back(), ')') << version;
    }
}

TEST(window_options, script_record_and_state_name_their_files)
{
    parsed p({"--script", "route.txt", "--record", "session.txt", "--state", "end.json"});
    ASSERT_EQ(p.result, COMMAND_LINE_OK) << p.error;
    EXPECT_STREQ(p.options.script_path, "route.txt");
    EXPECT_STREQ(p.options.record_path, "session.txt");
    EXPECT_STREQ(p.options.state_path, "end.json");
    parsed none({});
    EXPECT_EQ(none.options.script_path, nullptr);
    EXPECT_EQ(none.options.record_path, nullptr);
    EXPECT_EQ(none.options.state_path, nullptr);
}

TEST(window_options, a_file_option_without_its_file_or_given_twice_is_refused)
{
    for (const char* option : {"--script", "--record", "--state"}) {
        parsed missing({option});
        EXPECT_EQ(missing.result, COMMAND_LINE_BAD);
        EXPECT_EQ(missing.error, std::string(option) + ": needs a value");
        parsed empty({option, ""});
        EXPECT_EQ(empty.error, std::string(option) + ": needs a value");
        parsed twice({option, "a", option, "b"});
        EXPECT_EQ(twice.result, COMMAND_LINE_BAD);
        EXPECT_EQ(twice.error, std::string(option) + ": given twice");
    }
}

TEST(window_options, file_names_keep_meaning_where_the_command_was_given_after_dash_c)
{
    char here[4096];
    ASSERT_NE(getcwd(here, sizeof here), nullptr);
    const char* argv[] = {"gloamhold", "-C", "..", "--record", "session.txt", "--state", "/tmp/end.json"};
    window_options options;
    ASSERT_EQ(window_command_line(7, argv, &options), WINDOW_GO_ON);
    char moved[4096];
    ASSERT_NE(getcwd(moved, sizeof moved), nullptr);
    ASSERT_EQ(chdir(here), 0);
    EXPECT_EQ(std::string(options.record_path), std::string(here) + "/session.txt");
    EXPECT_STREQ(options.state_path, "/tmp/end.json") << "an absolute name stays as it is";
    EXPECT_EQ(options.script_path, nullptr);
    EXPECT_NE(std::string(moved), std::string(here)) << "-C changed the directory after the names were fixed";
    window_options_free(&options);
}
