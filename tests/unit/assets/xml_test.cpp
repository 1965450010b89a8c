#include <gtest/gtest.h>

#include <string>

#include "assets/xml.h"
#include "support/temp_files.h"
#include "support/test_heap.h"

namespace {

// Parses the text as a file; the document is freed when the test ends.
struct parsed {
    xml_document document = {};
    int result = 0;

    explicit parsed(const std::string& text)
    {
        std::string path = write_file(test_folder() + "/doc.xml", text);
        result = xml_load_file(&document, path.c_str());
    }
    ~parsed() { xml_free_document(&document); }
    const xml_node& node(int i) const { return document.nodes[i]; }
};

} // namespace

TEST(xml_load_file, empty_file_is_an_empty_document)
{
    parsed doc("");
    EXPECT_EQ(doc.result, 1);
    EXPECT_EQ(doc.document.node_count, 0);
}

TEST(xml_load_file, declaration_and_comments_only_is_an_empty_document)
{
    parsed doc("<?xml version=\"1.0\"?>\n<!-- nothing here -->\n<!DOCTYPE x>\n");
    EXPECT_EQ(doc.result, 1);
    EXPECT_EQ(doc.document.node_count, 0);
}

TEST(xml_load_file, missing_file_fails)
{
    xml_document document;
    EXPECT_EQ(xml_load_file(&document, (test_folder() + "/none.xml").c_str()), 0);
    EXPECT_EQ(xml_error_line, 0); // no line to point at
}

TEST(xml_load_file, empty_element_with_one_attribute)
{
    parsed doc("<a x=\"1\"/>");
    ASSERT_EQ(doc.result, 1);
    ASSERT_EQ(doc.document.node_count, 1);
    EXPECT_STREQ(doc.node(0).name, "a");
    ASSERT_EQ(doc.node(0).attribute_count, 1);
    EXPECT_STREQ(doc.node(0).attributes[0].name, "x");
    EXPECT_STREQ(doc.node(0).attributes[0].value, "1");
    EXPECT_EQ(doc.node(0).child_count, 0);
    EXPECT_EQ(doc.node(0).children, nullptr);
}

TEST(xml_load_file, slash_must_be_followed_by_the_closing_bracket)
{
    EXPECT_EQ(parsed("<a/ >").result, 0);
}

TEST(xml_load_file, line_break_inside_a_start_tag_fails)
{
    EXPECT_EQ(parsed("<room name='hall'\n model=\"m\">").result, 0);
    EXPECT_EQ(parsed("<room name=\"hall\"\n model=\"m\"></room>").result, 0);
}

TEST(xml_load_file, text_is_trimmed_in_front_and_joined_around_children)
{
    parsed doc("<a>  hello <b/> world </a>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_STREQ(doc.node(0).text, "hello  world ");
    ASSERT_EQ(doc.node(0).child_count, 1);
    EXPECT_STREQ(doc.node(0).children[0].name, "b");
}

TEST(xml_load_file, end_tag_may_be_a_prefix_of_the_name)
{
    EXPECT_EQ(parsed("<abc></ab>").result, 1);
    EXPECT_EQ(parsed("<room></r>").result, 1);
    EXPECT_EQ(parsed("<room></>").result, 1);
}

TEST(xml_load_file, end_tag_longer_than_the_name_fails)
{
    EXPECT_EQ(parsed("<ab></abc>").result, 0);
}

TEST(xml_load_file, blank_before_the_end_tag_bracket_fails)
{
    EXPECT_EQ(parsed("<ab></ab >").result, 0);
}

TEST(xml_load_file, end_tag_compares_case_exactly)
{
    EXPECT_EQ(parsed("<ab></AB>").result, 0);
}

TEST(xml_load_file, attribute_value_of_126_characters_is_accepted)
{
    parsed doc("<a v=\"" + std::string(126, 'v') + "\"/>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_EQ(std::string(doc.node(0).attributes[0].value), std::string(126, 'v'));
}

TEST(xml_load_file, attribute_value_of_127_characters_fails)
{
    EXPECT_EQ(parsed("<a v=\"" + std::string(127, 'v') + "\"/>").result, 0);
}

TEST(xml_load_file, element_name_of_62_characters_is_accepted)
{
    std::string name(62, 'n');
    parsed doc("<" + name + "/>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_EQ(std::string(doc.node(0).name), name);
}

TEST(xml_load_file, element_name_of_63_characters_fails)
{
    EXPECT_EQ(parsed("<" + std::string(63, 'n') + "/>").result, 0);
}

TEST(xml_load_file, attribute_name_of_62_characters_is_accepted_and_63_fails)
{
    EXPECT_EQ(parsed("<a " + std::string(62, 'k') + "=\"1\"/>").result, 1);
    EXPECT_EQ(parsed("<a " + std::string(63, 'k') + "=\"1\"/>").result, 0);
}

TEST(xml_load_file, text_of_510_characters_is_accepted_and_511_fails)
{
    parsed doc("<a>" + std::string(510, 't') + "</a>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_EQ(std::string(doc.node(0).text).size(), 510u);
    EXPECT_EQ(parsed("<a>" + std::string(511, 't') + "</a>").result, 0);
}

TEST(xml_load_file, entities_stay_as_written)
{
    parsed doc("<a v=\"&amp;\">&lt;&amp;</a>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_STREQ(doc.node(0).attributes[0].value, "&amp;");
    EXPECT_STREQ(doc.node(0).text, "&lt;&amp;");
}

TEST(xml_load_file, processing_instruction_inside_an_element_fails)
{
    EXPECT_EQ(parsed("<a><?pi x?></a>").result, 0);
}

TEST(xml_load_file, processing_instruction_at_document_level_is_skipped)
{
    parsed doc("<?pi x?><a/>");
    EXPECT_EQ(doc.result, 1);
    EXPECT_EQ(doc.document.node_count, 1);
}

TEST(xml_load_file, second_top_level_element_is_kept)
{
    parsed doc("<a/>\n<b>text</b>\n");
    ASSERT_EQ(doc.result, 1);
    ASSERT_EQ(doc.document.node_count, 2);
    EXPECT_STREQ(doc.node(1).name, "b");
    EXPECT_STREQ(doc.node(1).text, "text");
}

TEST(xml_load_file, stray_end_tag_fails)
{
    EXPECT_EQ(parsed("</a>").result, 0);
}

TEST(xml_load_file, failure_tells_the_line_where_the_rule_was_broken)
{
    EXPECT_EQ(parsed("<a>\n  <b x=\"1\"/>\n  <c y=\"2\"></d>\n</a>\n").result, 0);
    EXPECT_EQ(xml_error_line, 3);
    // A line break inside a start tag belongs to the line it ends.
    EXPECT_EQ(parsed("<!-- one -->\n<room name=\"hall\"\n model=\"m\"></room>").result, 0);
    EXPECT_EQ(xml_error_line, 2);
}

TEST(xml_load_file, file_ending_inside_a_tag_fails)
{
    EXPECT_EQ(parsed("<a x=\"1\"").result, 0);
    EXPECT_EQ(parsed("<a x=\"1").result, 0);
    EXPECT_EQ(parsed("<a>text").result, 0);
    EXPECT_EQ(parsed("<a></a").result, 0);
    EXPECT_EQ(parsed("<").result, 0);
    EXPECT_EQ(parsed("<!-- open").result, 0);
}

TEST(xml_load_file, comment_inside_content_is_skipped)
{
    parsed doc("<a>x<!-- note -->y</a>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_STREQ(doc.node(0).text, "xy");
}

TEST(xml_load_file, closing_bracket_inside_a_comment_ends_it_early)
{
    // The rest of the comment becomes text of the element.
    parsed doc("<a><!-- a > b --></a>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_STREQ(doc.node(0).text, "b -->");
}

TEST(xml_load_file, single_quotes_do_not_delimit_values)
{
    // Everything up to the first double quote is skipped, so the value runs to the next one.
    parsed doc("<a x='1' y=\"2\"/>");
    ASSERT_EQ(doc.result, 1);
    ASSERT_EQ(doc.node(0).attribute_count, 1);
    EXPECT_STREQ(doc.node(0).attributes[0].name, "x");
    EXPECT_STREQ(doc.node(0).attributes[0].value, "2");
}

TEST(xml_load_file, colon_is_allowed_in_element_names_but_not_inside_attribute_names)
{
    EXPECT_EQ(parsed("<ns:a/>").result, 1);
    EXPECT_EQ(parsed("<a :x=\"1\"/>").result, 1);
    // "x:y" ends the name at ":", which is then skipped up to "=": the attribute is "x".
    parsed doc("<a x:y=\"1\"/>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_STREQ(doc.node(0).attributes[0].name, "x");
}

TEST(xml_load_file, name_must_start_with_a_letter_underscore_or_colon)
{
    EXPECT_EQ(parsed("<1a/>").result, 0);
    EXPECT_EQ(parsed("<a 1x=\"1\"/>").result, 0);
    EXPECT_EQ(parsed("<_a/>").result, 1);
}

TEST(xml_load_file, character_after_the_name_must_close_or_open_attributes)
{
    EXPECT_EQ(parsed("<a\"x\"/>").result, 0);
}

TEST(xml_load_file, value_keeps_line_breaks)
{
    parsed doc("<a v=\"one\ntwo\"/>");
    ASSERT_EQ(doc.result, 1);
    EXPECT_STREQ(doc.node(0).attributes[0].value, "one\ntwo");
}

TEST(xml_load_file, nested_elements_keep_document_order)
{
    parsed doc("<scene>\r\n  <room name=\"hall\">\r\n    <object model=\"a\"/>\r\n    <object model=\"b\"/>\r\n"
               "  </room>\r\n  <room name=\"yard\"/>\r\n</scene>\r\n");
    ASSERT_EQ(doc.result, 1);
    const xml_node& scene = doc.node(0);
    ASSERT_EQ(scene.child_count, 2);
    EXPECT_STREQ(scene.text, "");
    EXPECT_STREQ(xml_attribute_value(&scene.children[0], "name"), "hall");
    ASSERT_EQ(scene.children[0].child_count, 2);
    EXPECT_STREQ(xml_attribute_value(&scene.children[0].children[1], "MODEL"), "b");
    EXPECT_STREQ(xml_attribute_value(&scene.children[1], "name"), "yard");
}

TEST(xml_load_file, arrays_start_at_one_and_grow_by_four_then_shrink)
{
    std::string text = "<list>";
    for (int i = 0; i < 6; ++i)
        text += "<item/>";
    text += "</list>";
    std::string path = write_file(test_folder() + "/doc.xml", text);
    test_heap::reset();
    xml_document document;
    ASSERT_EQ(xml_load_file(&document, path.c_str()), 1);
    EXPECT_EQ(document.nodes[0].child_count, 6);
    EXPECT_EQ(test_heap::sizes_in_units_of(sizeof(xml_node)), std::vector<size_t>({1, 1, 5, 9, 6}));
    xml_free_document(&document);
}

TEST(xml_load_file, failed_allocation_fails_the_parse)
{
    std::string path = write_file(test_folder() + "/doc.xml", "<a><b/><c/></a>");
    for (int n = 1; n <= 5; ++n) {
        test_heap::reset();
        test_heap::fail_request(n);
        xml_document document;
        EXPECT_EQ(xml_load_file(&document, path.c_str()), 0) << "failing request " << n;
        EXPECT_EQ(document.node_count, 0);
    }
}

TEST(xml_name_is, names_compare_without_regard_to_case)
{
    EXPECT_EQ(xml_name_is("Room", "room"), 1);
    EXPECT_EQ(xml_name_is("ROOM", "room"), 1);
    EXPECT_EQ(xml_name_is("rooms", "room"), 0);
    EXPECT_EQ(xml_name_is("roo", "room"), 0);
}

TEST(xml_load_file, every_element_keeps_the_line_of_its_start_tag)
{
    parsed doc("<!-- one -->\n<a>\n  <b x=\"1\"/>\n\n  <c y=\"2\">\n  </c>\n</a>\n");
    ASSERT_EQ(doc.result, 1);
    ASSERT_EQ(doc.document.node_count, 1);
    const xml_node& a = doc.document.nodes[0];
    EXPECT_EQ(a.line, 2);
    ASSERT_EQ(a.child_count, 2);
    EXPECT_EQ(a.children[0].line, 3);
    EXPECT_EQ(a.children[1].line, 5);
}
