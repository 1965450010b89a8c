#include <gtest/gtest.h>

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
