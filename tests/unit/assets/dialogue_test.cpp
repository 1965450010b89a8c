#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "assets/dialogue.h"
#include "support/asset_state.h"
#include "support/test_heap.h"

namespace {

struct entry_text {
    int indent;
    std::string text;
    bool operator==(const entry_text& other) const { return indent == other.indent && text == other.text; }
};

std::ostream& operator<<(std::ostream& out, const entry_text& e)
{
    return out << e.indent << ":'" << e.text << "'";
}

class dialogue_test : public data_folder_test {
protected:
    static int32_t load(const std::string& name, const std::string& text)
    {
        write_data("dialogues/" + name, text);
        return load_dialogue(name.c_str());
    }

    static std::vector<entry_text> entries_of(int32_t index)
    {
        const dialogue* d = registry_at<dialogue>(&dialogues, index);
        std::vector<entry_text> out;
        for (int32_t i = 0; i < d->entry_count; ++i) {
            const dialogue_entry& e = d->entries[i];
            out.push_back({e.indent, std::string(d->text + e.start, d->text + e.end)});
        }
        return out;
    }

    static std::vector<entry_text> index_of(const std::string& text)
    {
        int32_t index = load("talk.txt", text);
        EXPECT_GE(index, 0);
        return index >= 0 ? entries_of(index) : std::vector<entry_text>();
    }
};

} // namespace

TEST_F(dialogue_test, empty_file_yields_zero_entries_and_success)
{
    int32_t index = load("empty.txt", "");
    ASSERT_GE(index, 0);
    const dialogue* d = registry_at<dialogue>(&dialogues, index);
    EXPECT_EQ(d->entry_count, 0);
    EXPECT_EQ(d->size, 0u);
    EXPECT_EQ(d->cursor, 0);
}

TEST_F(dialogue_test, colons_split_one_line_into_entries_of_the_same_indent)
{
    EXPECT_EQ(index_of("A:B:C\n"), (std::vector<entry_text>{{0, "A:"}, {0, "B:"}, {0, "C"}}));
}

TEST_F(dialogue_test, speaker_and_speech_split_at_the_colon_with_the_spaces_after_it_added)
{
    EXPECT_EQ(index_of("  Guard: Halt!\n"), (std::vector<entry_text>{{2, "Guard:"}, {3, "Halt!"}}));
}

TEST_F(dialogue_test, line_of_only_spaces_yields_one_empty_entry_at_that_indent)
{
    int32_t index = load("blank.txt", "A\n   \nB\n");
    ASSERT_GE(index, 0);
    EXPECT_EQ(entries_of(index), (std::vector<entry_text>{{0, "A"}, {3, ""}, {0, "B"}}));
    const dialogue* d = registry_at<dialogue>(&dialogues, index);
    EXPECT_EQ(d->entries[1].start, d->entries[1].end);
}

TEST_F(dialogue_test, lines_ending_in_cr_lf_produce_no_extra_entries)
{
    EXPECT_EQ(index_of("Guard:\r\n  Halt!\r\n    1\r\n"),
              (std::vector<entry_text>{{0, "Guard:"}, {2, "Halt!"}, {4, "1"}}));
}

TEST_F(dialogue_test, indented_hash_is_text_but_a_hash_opening_a_line_is_a_comment)
{
    EXPECT_EQ(index_of("# note\n  # note\nA\n"), (std::vector<entry_text>{{2, "# note"}, {0, "A"}}));
}

TEST_F(dialogue_test, hash_right_after_a_colon_comments_out_the_rest_of_the_line)
{
    EXPECT_EQ(index_of("Guard:# the captain\nA: # text\n"),
              (std::vector<entry_text>{{0, "Guard:"}, {0, "A:"}, {1, "# text"}}));
}

TEST_F(dialogue_test, tab_counts_as_one_space)
{
    EXPECT_EQ(index_of("\t\tA\n \tB\n"), (std::vector<entry_text>{{2, "A"}, {2, "B"}}));
}

TEST_F(dialogue_test, last_line_without_a_line_feed_is_still_an_entry)
{
    EXPECT_EQ(index_of("A\n B"), (std::vector<entry_text>{{0, "A"}, {1, "B"}}));
}

TEST_F(dialogue_test, zero_byte_ends_the_text)
{
    EXPECT_EQ(index_of(std::string("A\nB\0C\nD\n", 8)), (std::vector<entry_text>{{0, "A"}, {0, "B"}}));
}

TEST_F(dialogue_test, entry_129_grows_the_list_by_128_and_the_list_is_shrunk_to_its_count)
{
    std::string text;
    for (int i = 0; i < 129; ++i)
        text += "line " + std::to_string(i) + "\n";
    write_data("dialogues/long.txt", text);
    test_heap::reset();
    int32_t index = load_dialogue("long.txt");
    ASSERT_GE(index, 0);
    const dialogue* d = registry_at<dialogue>(&dialogues, index);
    EXPECT_EQ(d->entry_count, 129);
    EXPECT_EQ(std::string(d->text + d->entries[128].start, d->text + d->entries[128].end), "line 128");
    std::vector<size_t> sizes;
    for (const test_heap::request& r : test_heap::log())
        if (r.bytes % sizeof(dialogue_entry) == 0 && r.bytes >= 128 * sizeof(dialogue_entry))
            sizes.push_back(r.bytes / sizeof(dialogue_entry));
    EXPECT_EQ(sizes, (std::vector<size_t>{128, 256, 129}));
}

TEST_F(dialogue_test, text_is_kept_whole_for_the_conversation)
{
    int32_t index = load("whole.txt", "Guard:\n  Halt!\n");
    ASSERT_GE(index, 0);
    const dialogue* d = registry_at<dialogue>(&dialogues, index);
    EXPECT_EQ(d->size, 15u);
    EXPECT_EQ(std::string(d->text, 15), "Guard:\n  Halt!\n");
}

TEST_F(dialogue_test, same_name_twice_is_loaded_once)
{
    int32_t first = load("once.txt", "A\n");
    ASSERT_GE(first, 0);
    std::filesystem::remove("gloamhold_data/dialogues/once.txt");
    EXPECT_EQ(load_dialogue("once.txt"), first);
}

TEST_F(dialogue_test, missing_file_fails)
{
    EXPECT_EQ(load_dialogue("nowhere.txt"), -1);
    EXPECT_EQ(dialogues.count, 0);
}

TEST_F(dialogue_test, allocation_failure_while_indexing_fails_and_releases_the_text)
{
    write_data("dialogues/talk.txt", "A\nB\n");
    int failures = 0;
    bool loaded = false;
    for (int n = 1; n < 10 && !loaded; ++n) {
        dialogue d;
        test_heap::reset();
        test_heap::fail_request(n);
        if (dialogue_load_file(&d, "gloamhold_data/dialogues/talk.txt")) {
            loaded = true;
            EXPECT_EQ(d.entry_count, 2);
            dialogue_free(&d);
        } else {
            ++failures;
            EXPECT_EQ(d.text, nullptr);
        }
    }
    EXPECT_TRUE(loaded);
    EXPECT_GE(failures, 2); // the text block and the entry list
}

TEST_F(dialogue_test, entries_are_told_apart_by_their_text)
{
    int32_t index = load("kinds.txt", "Guard:\n if state.x == 1:\n else:\n > \"Yes\":\n \"Hello\"\n @Guard\n state.x = 2\n"
                                      "   \n");
    ASSERT_GE(index, 0);
    const dialogue* d = registry_at<dialogue>(&dialogues, index);
    std::vector<dialogue_entry_kind> kinds;
    for (int32_t i = 0; i < d->entry_count; ++i)
        kinds.push_back(dialogue_entry_kind_of(d, i));
    std::vector<dialogue_entry_kind> expected = {DIALOGUE_LABEL,  DIALOGUE_CONDITION, DIALOGUE_ELSE,
                                                 DIALOGUE_ANSWER, DIALOGUE_TEXT,      DIALOGUE_JUMP,
                                                 DIALOGUE_STATEMENT, DIALOGUE_STATEMENT};
    EXPECT_EQ(kinds, expected);
}

TEST_F(dialogue_test, block_level_is_the_indent_of_the_entry_after_its_parent)
{
    int32_t index = load("levels.txt", "  Start:\n    Deeper:\n  Last\n");
    ASSERT_GE(index, 0);
    const dialogue* d = registry_at<dialogue>(&dialogues, index);
    EXPECT_EQ(dialogue_block_level(d, -1), 2); // the top takes the first entry's
    EXPECT_EQ(dialogue_block_level(d, 0), 4);
    EXPECT_EQ(dialogue_block_level(d, 1), 2);
    EXPECT_EQ(dialogue_block_level(d, 2), -1); // nothing follows
}

TEST_F(dialogue_test, jump_to_the_label_end_goes_to_the_first_entry_ending_in_a_colon_that_begins_so)
{
    int32_t index = load("jumps.txt", "@end\n@nowhere\nendless:\nend:\n");
    ASSERT_GE(index, 0);
    const dialogue* d = registry_at<dialogue>(&dialogues, index);
    EXPECT_EQ(dialogue_jump_target(d, 0), 2);
    EXPECT_EQ(dialogue_jump_target(d, 1), -1);
}
