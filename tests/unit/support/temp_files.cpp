#include "support/temp_files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

std::string test_folder()
{
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    std::filesystem::path folder = std::filesystem::path("test_files") / info->test_suite_name() / info->name();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder.generic_string();
}

std::string write_file(const std::string& path, const std::string& bytes)
{
    std::filesystem::path parent = std::filesystem::path(path).parent_path();
    if (!parent.empty())
        std::filesystem::create_directories(parent);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string read_all(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
