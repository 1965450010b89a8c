#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/diagnostics.h"

namespace {

std::vector<std::string> heard;

void hear(const char* file, int32_t line, const char* message)
{
    heard.push_back(std::string(file) + ":" + std::to_string(line) + ": " + message);
}

// Installs the sink for one test and takes it away again, so that no other test hears anything.
class diagnostics_test : public testing::Test {
protected:
    void SetUp() override
    {
        heard.clear();
        diagnostics = hear;
    }
    void TearDown() override { diagnostics = nullptr; }
};

} // namespace

TEST_F(diagnostics_test, a_report_reaches_the_sink_formatted_with_file_and_line)
{
    EXPECT_EQ(report("gloamhold_data/models/crate.mdl", 7, "expected point %d (x y z), found \"%s\"", 2, "1 0"), 0);
    EXPECT_EQ(heard, std::vector<std::string>({"gloamhold_data/models/crate.mdl:7: expected point 2 (x y z), found "
                                               "\"1 0\""}));
}

TEST_F(diagnostics_test, without_a_sink_nothing_is_heard_but_the_report_is_counted)
{
    diagnostics = nullptr;
    int32_t before = diagnostics_reported;
    report("scene.xml", 3, "the portal has no points");
    EXPECT_EQ(diagnostics_reported, before + 1);
    EXPECT_TRUE(heard.empty());
}
