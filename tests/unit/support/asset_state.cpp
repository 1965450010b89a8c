#include "support/asset_state.h"

#include <filesystem>

#include "support/temp_files.h"

void data_folder_test::SetUp()
{
    reset_assets();
    std::string folder = test_folder();
    previous_directory = std::filesystem::current_path().string();
    std::filesystem::current_path(folder);
}

void data_folder_test::TearDown()
{
    std::filesystem::current_path(previous_directory);
    reset_assets();
}

std::string data_folder_test::write_data(const std::string& relative, const std::string& bytes)
{
    return write_file("gloamhold_data/" + relative, bytes);
}
