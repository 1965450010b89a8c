// Tests of the loaders start from the state of a fresh process: every asset registry, the name
// table and the world model empty, and the working directory a folder of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/asset_reset.h"

// The data folder of a test: the current directory moves into the test's own folder for its
// duration, so the game's relative "gloamhold_data/..." paths land there.
class data_folder_test : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Writes gloamhold_data/<relative>; returns the path relative to the current directory.
    static std::string write_data(const std::string& relative, const std::string& bytes);

private:
    std::string previous_directory;
};
