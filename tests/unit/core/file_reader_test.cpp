#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/file_reader.h"
#include "support/temp_files.h"
#include "support/test_heap.h"

namespace {

// A reader over a file with the given bytes, closed when the test ends.
struct open_file {
    platform_file handle = nullptr;
    file_reader reader = {};

    open_file(const std::string& bytes, int32_t capacity = 512)
    {
        std::string path = write_file(test_folder() + "/data.txt", bytes);
        handle = platform_file_open(path.c_str());
        EXPECT_NE(handle, nullptr);
        EXPECT_EQ(reader_open(&reader, handle, capacity), 1);
    }
    ~open_file()
    {
        reader_close(&reader);
        platform_file_close(handle);
    }
};

// Every line up to the first 0 result, as the data loaders read them.
std::vector<std::string> lines_until_zero(file_reader* reader, int32_t capacity = 200)
{
    std::vector<std::string> lines;
    std::vector<char> line(static_cast<size_t>(capacity));
    while (reader_read_line(reader, line.data(), capacity) != 0)
        lines.push_back(line.data());
    return lines;
}

} // namespace

TEST(reader_open, starts_before_the_first_fill)
{
    open_file file("abc");
    EXPECT_EQ(file.reader.position, -1);
    EXPECT_EQ(file.reader.size, 512);
    EXPECT_EQ(file.reader.buffer[0], 0);
}

TEST(reader_open, fails_when_the_buffer_cannot_be_allocated)
{
    std::string path = write_file(test_folder() + "/data.txt", "abc");
    platform_file handle = platform_file_open(path.c_str());
    file_reader reader;
    test_heap::reset();
    test_heap::fail_request(1);
    EXPECT_EQ(reader_open(&reader, handle, 64), 0);
    test_heap::reset();
    platform_file_close(handle);
}

TEST(platform_file_open, missing_file_gives_no_handle)
{
    EXPECT_EQ(platform_file_open((test_folder() + "/missing.txt").c_str()), nullptr);
}

TEST(platform_file_size, tells_the_byte_count)
{
    std::string path = write_file(test_folder() + "/data.bin", std::string(1234, 'q'));
    platform_file handle = platform_file_open(path.c_str());
    uint32_t size = 0;
    EXPECT_EQ(platform_file_size(handle, &size), 1);
    EXPECT_EQ(size, 1234u);
    platform_file_close(handle);
}

TEST(reader_read_line, blank_line_with_bare_line_feed_ends_reading)
{
    open_file file("A\n\nB\n");
    EXPECT_EQ(lines_until_zero(&file.reader), std::vector<std::string>({"A"}));
}

TEST(reader_read_line, blank_line_with_carriage_return_is_an_empty_line)
{
    open_file file("A\r\n\r\nB\r\n");
    EXPECT_EQ(lines_until_zero(&file.reader), std::vector<std::string>({"A", "", "B"}));
}

TEST(reader_read_line, count_includes_the_dropped_carriage_return)
{
    open_file file("ab\r\n");
    char line[200];
    EXPECT_EQ(reader_read_line(&file.reader, line, sizeof line), 3);
    EXPECT_STREQ(line, "ab");
}

TEST(reader_read_line, long_line_is_cut_at_capacity_minus_one)
{
    open_file file(std::string(300, 'x') + "\nnext\n");
    char line[200];
    EXPECT_EQ(reader_read_line(&file.reader, line, 200), 199);
    EXPECT_EQ(std::string(line), std::string(199, 'x'));
    EXPECT_EQ(reader_read_line(&file.reader, line, 200), 101);
    EXPECT_EQ(std::string(line), std::string(101, 'x'));
    EXPECT_EQ(reader_read_line(&file.reader, line, 200), 4);
    EXPECT_STREQ(line, "next");
}

TEST(reader_read_line, line_of_199_characters_leaves_its_line_feed_as_an_empty_line)
{
    // The line fills the buffer, so its line feed is read next as an empty line: the end.
    open_file file(std::string(199, 'a') + "\nafter\n");
    EXPECT_EQ(lines_until_zero(&file.reader), std::vector<std::string>({std::string(199, 'a')}));
}

TEST(reader_read_line, line_of_200_characters_comes_back_as_199_and_1)
{
    open_file file(std::string(200, 'b') + "\nafter\n");
    EXPECT_EQ(lines_until_zero(&file.reader),
              std::vector<std::string>({std::string(199, 'b'), "b", "after"}));
}

TEST(reader_read_line, line_of_201_characters_comes_back_as_199_and_2)
{
    open_file file(std::string(201, 'c') + "\nafter\n");
    EXPECT_EQ(lines_until_zero(&file.reader),
              std::vector<std::string>({std::string(199, 'c'), "cc", "after"}));
}

TEST(reader_read_line, file_without_a_final_line_feed_keeps_its_last_line)
{
    open_file file("first\nlast");
    EXPECT_EQ(lines_until_zero(&file.reader), std::vector<std::string>({"first", "last"}));
}

TEST(reader_read_line, end_of_file_gives_zero_and_an_empty_string)
{
    open_file file("");
    char line[200] = "stale";
    EXPECT_EQ(reader_read_line(&file.reader, line, sizeof line), 0);
    EXPECT_STREQ(line, "");
}

TEST(reader_read_line, lines_cross_buffer_refills)
{
    // A 7-byte buffer forces many refills, including short ones at the end.
    open_file file("alpha\nbeta\ngamma delta\nz", 7);
    EXPECT_EQ(lines_until_zero(&file.reader),
              std::vector<std::string>({"alpha", "beta", "gamma delta", "z"}));
}

TEST(reader_read, copies_across_refills)
{
    std::string bytes;
    for (int i = 0; i < 1000; ++i)
        bytes.push_back(static_cast<char>(i * 7));
    open_file file(bytes, 64);
    std::vector<char> out(1000);
    EXPECT_EQ(reader_read(&file.reader, out.data(), 4, 250), 1);
    EXPECT_EQ(std::string(out.begin(), out.end()), bytes);
}

TEST(reader_read, running_out_fails)
{
    open_file file("abc");
    char out[8];
    EXPECT_EQ(reader_read(&file.reader, out, 1, 2), 1);
    EXPECT_EQ(reader_read(&file.reader, out, 1, 2), 0);
}

TEST(reader_read, zero_bytes_succeed_at_once)
{
    open_file file("");
    char out[1];
    EXPECT_EQ(reader_read(&file.reader, out, 0, 5), 1);
    EXPECT_EQ(reader_read(&file.reader, out, 4, 0), 1);
    EXPECT_EQ(reader_read(&file.reader, out, 1, 1), 0);
}

TEST(reader_read, short_fill_shrinks_later_requests)
{
    open_file file("abcdefghij", 8);
    char out[8];
    EXPECT_EQ(reader_read(&file.reader, out, 1, 8), 1);
    EXPECT_EQ(reader_read(&file.reader, out, 1, 2), 1); // a fill of only 2 bytes
    EXPECT_EQ(file.reader.size, 2);
    EXPECT_EQ(reader_read(&file.reader, out, 1, 1), 0);
}

TEST(read_content_line, skips_empty_lines_and_comments)
{
    open_file file("# header\r\n\r\nfirst\r\n#second\r\n  # indented is content\r\n");
    char line[200];
    ASSERT_EQ(read_content_line(&file.reader, line, sizeof line), 1);
    EXPECT_STREQ(line, "first");
    ASSERT_EQ(read_content_line(&file.reader, line, sizeof line), 1);
    EXPECT_STREQ(line, "  # indented is content");
    EXPECT_EQ(read_content_line(&file.reader, line, sizeof line), 0);
}

TEST(read_content_line, bare_blank_line_ends_content)
{
    open_file file("# c\nfirst\n\nsecond\n");
    char line[200];
    ASSERT_EQ(read_content_line(&file.reader, line, sizeof line), 1);
    EXPECT_STREQ(line, "first");
    EXPECT_EQ(read_content_line(&file.reader, line, sizeof line), 0);
}

TEST(read_count_line, keyword_followed_by_a_count)
{
    open_file file("# model\r\nPOINTS 3\r\nTRIANGLES -1\r\n");
    char line[200];
    int32_t count = 99;
    ASSERT_EQ(read_count_line(&file.reader, line, sizeof line, "POINTS ", &count), 1);
    EXPECT_EQ(count, 3);
    ASSERT_EQ(read_count_line(&file.reader, line, sizeof line, "TRIANGLES ", &count), 1);
    EXPECT_EQ(count, -1);
}

TEST(read_count_line, wrong_keyword_fails)
{
    open_file file("TRIANGLES 3\n");
    char line[200];
    int32_t count = 99;
    EXPECT_EQ(read_count_line(&file.reader, line, sizeof line, "POINTS ", &count), 0);
    EXPECT_EQ(count, 99);
}

TEST(read_count_line, keyword_is_case_sensitive)
{
    open_file file("points 3\n");
    char line[200];
    int32_t count = 99;
    EXPECT_EQ(read_count_line(&file.reader, line, sizeof line, "POINTS ", &count), 0);
}

TEST(read_count_line, junk_after_the_count_fails)
{
    open_file file("POINTS 3x\n");
    char line[200];
    int32_t count = 99;
    EXPECT_EQ(read_count_line(&file.reader, line, sizeof line, "POINTS ", &count), 0);
    EXPECT_EQ(count, 99);
}

TEST(read_count_line, missing_count_is_zero)
{
    open_file file("POINTS \n");
    char line[200];
    int32_t count = 99;
    EXPECT_EQ(read_count_line(&file.reader, line, sizeof line, "POINTS ", &count), 1);
    EXPECT_EQ(count, 0);
}

TEST(reader_read_line, the_line_number_counts_line_feeds_and_a_cut_line_keeps_its_number)
{
    open_file file("one\r\ntwo that\n\nfour\n");
    char line[8];
    reader_read_line(&file.reader, line, sizeof line);
    EXPECT_EQ(file.reader.line, 1);
    reader_read_line(&file.reader, line, sizeof line); // "two tha", cut at the capacity
    EXPECT_EQ(file.reader.line, 2);
    reader_read_line(&file.reader, line, sizeof line); // its rest, "t"
    EXPECT_EQ(file.reader.line, 2);
    reader_read_line(&file.reader, line, sizeof line); // the empty line
    EXPECT_EQ(file.reader.line, 3);
    reader_read_line(&file.reader, line, sizeof line);
    EXPECT_STREQ(line, "four");
    EXPECT_EQ(file.reader.line, 4);
}
