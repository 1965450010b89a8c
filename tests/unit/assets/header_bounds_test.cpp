// A number read from a file never sizes a block or a loop beyond what the file itself can hold:
// such a file is refused, with the reason at its line, before anything is allocated for it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "assets/animation.h"
#include "assets/collision_tree.h"
#include "assets/model.h"
#include "assets/texture.h"
#include "assets/xml.h"
#include "core/diagnostics.h"
#include "support/asset_state.h"
#include "support/media_files.h"
#include "support/temp_files.h"
#include "support/test_heap.h"
#include "ui/font.h"

namespace {

std::vector<std::string> heard;

void hear(const char* file, int32_t line, const char* message)
{
    heard.push_back(std::string(file) + ":" + std::to_string(line) + ": " + message);
}

// Far more than any of the small files below could ask for honestly.
const size_t LARGE_BLOCK = 1 << 20;

class header_bounds_test : public data_folder_test {
protected:
    void SetUp() override
    {
        data_folder_test::SetUp();
        heard.clear();
        diagnostics = hear;
        test_heap::reset();
    }
    void TearDown() override
    {
        diagnostics = nullptr;
        test_heap::reset();
        data_folder_test::TearDown();
    }

    static size_t largest_request()
    {
        size_t largest = 0;
        for (const test_heap::request& request : test_heap::log())
            largest = request.bytes > largest ? request.bytes : largest;
        return largest;
    }

    static std::string only_report()
    {
        EXPECT_EQ(heard.size(), 1u);
        return heard.empty() ? std::string() : heard[0];
    }
};

uint32_t png_crc(const std::string& bytes)
{
    uint32_t crc = 0xFFFFFFFFu;
    for (unsigned char c : bytes) {
        crc ^= c;
        for (int k = 0; k < 8; ++k)
            crc = (crc & 1) ? (crc >> 1) ^ 0xEDB88320u : crc >> 1;
    }
    return crc ^ 0xFFFFFFFFu;
}

void put_be32_at(std::string* bytes, size_t at, uint32_t value)
{
    for (int k = 0; k < 4; ++k)
        (*bytes)[at + k] = static_cast<char>(value >> (24 - 8 * k));
}

// A small valid PNG whose header then claims another size (its checksum made to match).
std::string png_claiming(uint32_t width, uint32_t height)
{
    std::string bytes = encode_bgra_png(1, 1, test_pattern_bgra(1, 1));
    const size_t IHDR_TYPE = 12, IHDR_WIDTH = 16, IHDR_HEIGHT = 20, IHDR_CRC = 29;
    put_be32_at(&bytes, IHDR_WIDTH, width);
    put_be32_at(&bytes, IHDR_HEIGHT, height);
    put_be32_at(&bytes, IHDR_CRC, png_crc(bytes.substr(IHDR_TYPE, 17)));
    return bytes;
}

} // namespace

TEST_F(header_bounds_test, a_point_count_larger_than_the_file_can_hold_is_refused_before_allocating)
{
    write_data("models/huge.mdl", "POINTS 2000000000\nTRIANGLES 0\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 0\n"
                                  "COLLIDERS 0\nOCCLUDERS 0\n0 0 0\n");
    EXPECT_EQ(load_model("huge.mdl"), -1);
    EXPECT_LT(largest_request(), LARGE_BLOCK);
    EXPECT_EQ(only_report(), "gloamhold_data/models/huge.mdl:1: expected at most 46 entries (a line each in a file "
                             "of 92 bytes), found \"POINTS 2000000000\"");
}

TEST_F(header_bounds_test, a_weight_run_reaching_past_the_largest_number_is_refused_naming_its_last_weight)
{
    write_data("models/run.mdl", "POINTS 2\nTRIANGLES 0\nTEXCOORDS 0\nWEIGHTS 2\nSUBSETS 0\nCOLLIDERS 0\n"
                                 "OCCLUDERS 0\n0 0 0\n1 0 0\n0 0 0 0 1\n1 0 0 0 1\n0 1\n1 2147483647\n");
    EXPECT_EQ(load_model("run.mdl"), -1);
    EXPECT_EQ(only_report(),
              "gloamhold_data/models/run.mdl:13: point 1 takes weights 1 to 2147483647, but the model has 2 weights");
}

TEST_F(header_bounds_test, a_later_model_count_too_large_for_the_file_is_refused_at_its_own_line)
{
    write_data("models/huge.mdl", "POINTS 1\nTRIANGLES 0\nTEXCOORDS 0\nWEIGHTS 900\nSUBSETS 0\n"
                                  "COLLIDERS 0\nOCCLUDERS 0\n0 0 0\n");
    EXPECT_EQ(load_model("huge.mdl"), -1);
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard[0].substr(0, 38), "gloamhold_data/models/huge.mdl:4: expe");
}

TEST_F(header_bounds_test, a_count_every_line_of_the_file_could_hold_still_loads)
{
    // Seven header lines and one point: the file's 83 bytes could hold 42 single-character lines.
    write_data("models/dot.mdl", "POINTS 1\nTRIANGLES 0\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 0\nCOLLIDERS 0\nOCCLUDERS 0\n"
                                 "1 2 3\n");
    EXPECT_GE(load_model("dot.mdl"), 0);
    EXPECT_TRUE(heard.empty());
}

TEST_F(header_bounds_test, a_node_count_larger_than_the_collision_tree_can_hold_is_refused_before_allocating)
{
    write_file("tree.bsp", "PLANES 1\nNODES 1500000000\n1 0 0 0\n0 0 0\n");
    collision_tree tree = {};
    EXPECT_EQ(collision_tree_load(&tree, "tree.bsp"), 0);
    EXPECT_EQ(tree.nodes, nullptr);
    EXPECT_LT(largest_request(), LARGE_BLOCK);
    EXPECT_EQ(only_report(), "tree.bsp:2: expected at most 20 entries (a line each in a file of 40 bytes), found "
                             "\"NODES 1500000000\"");
}

TEST_F(header_bounds_test, bones_times_frames_larger_than_the_animation_can_hold_is_refused_before_allocating)
{
    // Either count alone fits the file; their product, one pose line each, does not.
    std::string text = "BONES 40\nFRAMES 40\nHIERARCHY -1";
    for (int bone = 1; bone < 40; ++bone)
        text += " 0";
    text += "\n";
    write_data("animations/wide.anm", text);
    EXPECT_EQ(load_animation("wide.anm"), -1);
    EXPECT_LT(largest_request(), LARGE_BLOCK);
    EXPECT_EQ(only_report(), "gloamhold_data/animations/wide.anm:2: expected at most 55 bone poses (a line each in a "
                             "file of 110 bytes), found \"FRAMES 40\"");
}

TEST_F(header_bounds_test, a_font_bitmap_size_larger_than_the_file_is_refused_before_allocating)
{
    std::string bytes("FNT\0\x0A\x41\x41", 7);
    bytes += std::string("\x05\x00\x00\x01\x01\x00\x00\x00\x00", 9); // one glyph, bitmap at 0
    bytes += std::string("\xFF\xFF\xFF\x7F", 4);                     // 2^31 - 1 bytes of bitmaps
    bytes += std::string(3, '\x80');
    std::string path = write_file(test_folder() + "/huge.fnt", bytes);
    font face = {};
    EXPECT_EQ(font_load(&face, path.c_str()), 0);
    EXPECT_EQ(face.bitmaps, nullptr);
    EXPECT_LT(largest_request(), LARGE_BLOCK);
    EXPECT_EQ(only_report(), path + ":0: the header promises 2147483647 bytes of bitmap data, but the file ends "
                                    "before them");
}

TEST_F(header_bounds_test, a_png_claiming_more_pixels_than_its_bytes_can_hold_is_refused_before_allocating)
{
    std::string bytes = png_claiming(524288, 524288);
    write_data("textures/huge.png", bytes);
    EXPECT_EQ(load_texture("huge.png"), -1);
    EXPECT_LT(largest_request(), LARGE_BLOCK);
    std::string report = only_report();
#if defined(_WIN32)
    // A decoder that reads the whole image at once (Wine's) refuses it itself, before the game sees
    // its size; one that reads the header alone leaves the refusal to the game.
    if (report == "gloamhold_data/textures/huge.png:0: cannot be decoded as an image")
        return;
#endif
    EXPECT_EQ(report, "gloamhold_data/textures/huge.png:0: 524288x524288: more pixels than a file of " +
                          std::to_string(bytes.size()) + " bytes can hold");
}

TEST_F(header_bounds_test, a_png_whose_pixels_its_bytes_could_hold_loads)
{
    write_data("textures/plain.png", encode_bgra_png(64, 64, test_pattern_bgra(64, 64)));
    EXPECT_GE(load_texture("plain.png"), 0);
    EXPECT_TRUE(heard.empty());
}

TEST_F(header_bounds_test, xml_nested_as_deep_as_the_limit_loads)
{
    std::string text;
    for (int i = 0; i < XML_DEPTH_LIMIT; ++i)
        text += "<a>";
    for (int i = 0; i < XML_DEPTH_LIMIT; ++i)
        text += "</a>";
    write_file("deep.xml", text);
    xml_document document = {};
    ASSERT_EQ(xml_load_file(&document, "deep.xml"), 1);
    EXPECT_EQ(document.node_count, 1);
    xml_free_document(&document);
}

TEST_F(header_bounds_test, xml_nested_thousands_deep_is_refused_at_the_element_one_too_deep)
{
    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += "<a>\n";
    write_file("deep.xml", text);
    xml_document document = {};
    EXPECT_EQ(xml_load_file(&document, "deep.xml"), 0);
    EXPECT_EQ(document.nodes, nullptr);
    EXPECT_EQ(only_report(), "deep.xml:" + std::to_string(XML_DEPTH_LIMIT + 1) +
                                 ": expected at most 256 elements nested inside each other, found a deeper one");
}
