#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <filesystem>
#include <string>

#include "assets/model.h"
#include "assets/texture.h"
#include "support/asset_state.h"
#include "support/media_files.h"
#include "support/test_heap.h"

namespace {

// Headers for the given counts, in their fixed order.
std::string headers(int points, int triangles, int texcoords, int weights, int subsets, int colliders, int occluders)
{
    return "POINTS " + std::to_string(points) + "\nTRIANGLES " + std::to_string(triangles) + "\nTEXCOORDS " +
           std::to_string(texcoords) + "\nWEIGHTS " + std::to_string(weights) + "\nSUBSETS " +
           std::to_string(subsets) + "\nCOLLIDERS " + std::to_string(colliders) + "\nOCCLUDERS " +
           std::to_string(occluders) + "\n";
}

// A unit right triangle in the XY plane plus a fourth point that no triangle uses.
const std::string QUAD_POINTS = "0 0 0\n1 0 0\n0 1 0\n5 -2 7\n";

class model_test : public data_folder_test {
protected:
    static int32_t load(const std::string& name, const std::string& text)
    {
        write_data("models/" + name, text);
        return load_model(name.c_str());
    }

    static const model* at(int32_t index) { return registry_at<model>(&models, index); }

    // A model that must fail: it takes no slot.
    static void expect_refused(const std::string& text)
    {
        int32_t before = models.count;
        EXPECT_EQ(load("bad.mdl", text), -1);
        EXPECT_EQ(models.count, before);
    }

    // Each header count of the simple model below can be replaced to make it inconsistent.
    static std::string simple(const std::string& triangles = "0 1 2\n", const std::string& subsets = "none 0 1\n")
    {
        return headers(4, 1, 0, 0, 1, 0, 0) + QUAD_POINTS + triangles + subsets;
    }
};

} // namespace

TEST_F(model_test, texcoords_0_gives_all_zero_coordinates_and_no_index_lines)
{
    int32_t index = load("plain.mdl", simple());
    ASSERT_GE(index, 0);
    const model* m = at(index);
    EXPECT_EQ(m->point_count, 4);
    EXPECT_EQ(m->triangle_count, 1);
    for (int i = 0; i < m->point_count; ++i) {
        EXPECT_EQ(m->texcoords[i].u, 0.0f);
        EXPECT_EQ(m->texcoords[i].v, 0.0f);
    }
}

TEST_F(model_test, colliders_0_and_occluders_0_need_no_triangle_headers)
{
    int32_t index = load("plain.mdl", simple());
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->collider_count, 0);
    EXPECT_EQ(at(index)->colliders, nullptr);
    EXPECT_EQ(at(index)->occluder_count, 0);
    EXPECT_EQ(at(index)->weights, nullptr);
}

TEST_F(model_test, count_followed_by_a_letter_fails)
{
    // Read as 3 the rest would fit: three points and one triangle.
    std::string rest = headers(3, 1, 0, 0, 0, 0, 0).substr(strlen("POINTS 3\n")) + "0 0 0\n1 0 0\n0 1 0\n0 1 2\n";
    expect_refused("POINTS 3x\n" + rest);
    EXPECT_GE(load("three.mdl", "POINTS 3\n" + rest), 0);
}

TEST_F(model_test, comment_and_blank_line_before_the_first_point_are_skipped)
{
    std::string text = "POINTS 3\r\nTRIANGLES 1\r\nTEXCOORDS 0\r\nWEIGHTS 0\r\nSUBSETS 0\r\nCOLLIDERS 0\r\n"
                       "OCCLUDERS 0\r\n# x\r\n\r\n0 0 0\r\n1 0 0\r\n0 1 0\r\n0 1 2\r\n";
    int32_t index = load("crlf.mdl", text);
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->points[1].x, 1.0f);
}

TEST_F(model_test, blank_line_ending_in_a_bare_line_feed_ends_the_file)
{
    expect_refused(headers(3, 1, 0, 0, 0, 0, 0) + "\n0 0 0\n1 0 0\n0 1 0\n0 1 2\n");
}

TEST_F(model_test, headers_out_of_order_fail)
{
    expect_refused("TRIANGLES 1\nPOINTS 4\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 1\nCOLLIDERS 0\nOCCLUDERS 0\n" + QUAD_POINTS +
                   "0 1 2\nnone 0 1\n");
}

TEST_F(model_test, missing_header_fails)
{
    expect_refused("POINTS 4\nTRIANGLES 1\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 1\nCOLLIDERS 0\n" + QUAD_POINTS);
}

TEST_F(model_test, negative_count_fails)
{
    expect_refused(headers(-1, 1, 0, 0, 1, 0, 0) + QUAD_POINTS + "0 1 2\nnone 0 1\n");
}

TEST_F(model_test, point_with_two_numbers_fails)
{
    expect_refused(headers(4, 1, 0, 0, 1, 0, 0) + "0 0 0\n1 0\n0 1 0\n5 -2 7\n0 1 2\nnone 0 1\n");
}

TEST_F(model_test, file_ending_before_its_last_line_fails)
{
    expect_refused(headers(4, 1, 0, 0, 1, 0, 0) + QUAD_POINTS + "0 1 2\n");
}

TEST_F(model_test, triangle_indices_may_be_octal_or_hexadecimal)
{
    int32_t index = load("hex.mdl", simple("00 0x1 02\n"));
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->triangles[0].points[1], 1);
    EXPECT_EQ(at(index)->triangles[0].points[2], 2);
}

TEST_F(model_test, triangle_naming_a_point_that_does_not_exist_fails)
{
    expect_refused(simple("0 1 4\n"));
    expect_refused(simple("0 -1 2\n"));
}

TEST_F(model_test, subset_reaching_past_the_last_triangle_fails)
{
    expect_refused(simple("0 1 2\n", "none 0 2\n"));
    expect_refused(simple("0 1 2\n", "none 1 0\n"));
}

TEST_F(model_test, collider_material_wood_in_any_case_is_2_and_glass_is_stone)
{
    std::string text = headers(4, 1, 0, 0, 1, 2, 0) + QUAD_POINTS + "0 1 2\nnone 0 1\n" +
                       "COLLISION_TRIANGLES 2\n0 1 2\n1 3 2\nWood 0 1\nglass 1 2\n";
    int32_t index = load("crate.mdl", text);
    ASSERT_GE(index, 0);
    const model* m = at(index);
    ASSERT_EQ(m->collider_count, 2);
    EXPECT_EQ(m->colliders[0].material, MATERIAL_WOOD);
    EXPECT_EQ(m->colliders[1].material, MATERIAL_STONE);
    EXPECT_EQ(m->collision_triangle_count, 2);
    EXPECT_EQ(material_from_name("CERAMIC"), MATERIAL_CERAMIC);
    EXPECT_EQ(material_from_name("glass"), -1);
}

TEST_F(model_test, collider_boxes_cover_their_own_triangles)
{
    std::string text = headers(4, 1, 0, 0, 1, 2, 0) + QUAD_POINTS + "0 1 2\nnone 0 1\n" +
                       "COLLISION_TRIANGLES 2\n0 1 2\n1 3 2\nmetal 0 1\ncarpet 1 2\n";
    int32_t index = load("crate.mdl", text);
    ASSERT_GE(index, 0);
    const model_collider& first = at(index)->colliders[0];
    EXPECT_EQ(first.min.x, 0.0f);
    EXPECT_EQ(first.max.x, 1.0f);
    EXPECT_EQ(first.max.z, 0.0f);
    const model_collider& second = at(index)->colliders[1];
    EXPECT_EQ(second.min.y, -2.0f);
    EXPECT_EQ(second.max.x, 5.0f);
    EXPECT_EQ(second.max.z, 7.0f);
    EXPECT_EQ(second.material, MATERIAL_CARPET);
}

TEST_F(model_test, collider_outside_the_collision_triangles_fails)
{
    expect_refused(headers(4, 1, 0, 0, 1, 1, 0) + QUAD_POINTS + "0 1 2\nnone 0 1\nCOLLISION_TRIANGLES 1\n0 1 2\n" +
                   "stone 0 2\n");
    expect_refused(headers(4, 1, 0, 0, 1, 1, 0) + QUAD_POINTS + "0 1 2\nnone 0 1\nCOLLISION_TRIANGLES 1\n0 1 9\n" +
                   "stone 0 1\n");
}

TEST_F(model_test, colliders_without_their_triangle_header_fail)
{
    expect_refused(headers(4, 1, 0, 0, 1, 1, 0) + QUAD_POINTS + "0 1 2\nnone 0 1\n0 1 2\nstone 0 1\n");
}

TEST_F(model_test, occluders_are_packed_pairs_in_a_collider_sized_block)
{
    std::string text = headers(4, 1, 0, 0, 1, 0, 2) + QUAD_POINTS + "0 1 2\nnone 0 1\n" +
                       "OCCLUSION_TRIANGLES 3\n0 1 2\n1 3 2\n0 3 1\n0 2\n2 3\n";
    write_data("models/wall.mdl", text);
    test_heap::reset();
    int32_t index = load_model("wall.mdl");
    ASSERT_GE(index, 0);
    const model* m = at(index);
    ASSERT_EQ(m->occluder_count, 2);
    EXPECT_EQ(m->occluders[0].first, 0);
    EXPECT_EQ(m->occluders[0].end, 2);
    EXPECT_EQ(m->occluders[1].first, 2);
    EXPECT_EQ(m->occluders[1].end, 3);
    EXPECT_EQ(m->occlusion_triangles[2].points[1], 3);
    bool collider_sized = false;
    for (const test_heap::request& r : test_heap::log())
        collider_sized = collider_sized || r.bytes == 2 * sizeof(model_collider);
    EXPECT_TRUE(collider_sized);
}

TEST_F(model_test, occluder_past_its_triangles_fails)
{
    expect_refused(headers(4, 1, 0, 0, 1, 0, 1) + QUAD_POINTS + "0 1 2\nnone 0 1\nOCCLUSION_TRIANGLES 1\n0 1 2\n" +
                   "0 2\n");
}

TEST_F(model_test, point_used_by_no_triangle_has_a_zero_normal_but_widens_the_bounds)
{
    int32_t index = load("plain.mdl", simple());
    ASSERT_GE(index, 0);
    const model* m = at(index);
    EXPECT_EQ(m->normals[3].x, 0.0f);
    EXPECT_EQ(m->normals[3].y, 0.0f);
    EXPECT_EQ(m->normals[3].z, 0.0f);
    EXPECT_EQ(m->normals[0].z, 1.0f);
    EXPECT_EQ(m->bounds_min.y, -2.0f);
    EXPECT_EQ(m->bounds_max.x, 5.0f);
    EXPECT_EQ(m->bounds_max.z, 7.0f);
    EXPECT_EQ(m->bounds_min.x, 0.0f);
}

TEST_F(model_test, normals_weigh_larger_triangles_more)
{
    // Point 0 is shared by a small triangle facing +z and a large one facing +x.
    std::string text = headers(5, 2, 0, 0, 0, 0, 0) + "0 0 0\n1 0 0\n0 1 0\n0 0 -4\n0 4 0\n0 1 2\n0 3 4\n";
    int32_t index = load("weighted.mdl", text);
    ASSERT_GE(index, 0);
    vec3 n = at(index)->normals[0];
    // (0, 0, 1) + (16, 0, 0), normalised.
    EXPECT_NEAR(n.x, 16.0f / sqrtf(257.0f), 1e-6f);
    EXPECT_NEAR(n.z, 1.0f / sqrtf(257.0f), 1e-6f);
    EXPECT_EQ(n.y, 0.0f);
}

TEST_F(model_test, texture_coordinates_are_stored_per_point_with_the_last_triangle_winning)
{
    std::string text = headers(4, 2, 3, 0, 1, 0, 0) + QUAD_POINTS + "0 1 2\n2 1 3\n" +
                       "0.25 0.5\n1 0\n0 1\n0 1 2\n0 0 1\nnone 0 2\n";
    int32_t index = load("mapped.mdl", text);
    ASSERT_GE(index, 0);
    const model* m = at(index);
    EXPECT_EQ(m->texcoords[0].u, 0.25f);
    EXPECT_EQ(m->texcoords[1].u, 0.25f); // set to entry 1 by the first triangle, then entry 0
    EXPECT_EQ(m->texcoords[2].u, 0.25f);
    EXPECT_EQ(m->texcoords[3].u, 1.0f);
}

TEST_F(model_test, texture_coordinate_index_outside_the_table_fails)
{
    expect_refused(headers(4, 1, 2, 0, 1, 0, 0) + QUAD_POINTS + "0 1 2\n0 0\n1 1\n0 1 2\nnone 0 1\n");
}

TEST_F(model_test, weights_place_each_point_by_a_run_of_bone_weights)
{
    std::string text = headers(4, 1, 0, 3, 1, 0, 0) + QUAD_POINTS + "0 1 2\n" +
                       "0 0.5 0 0 1\n1 0 1 0 0.25\n1 0 0 2 0.75\n0 1\n1 2\n0 0\n2 1\nnone 0 1\n";
    int32_t index = load("skinned.mdl", text);
    ASSERT_GE(index, 0);
    const model* m = at(index);
    ASSERT_EQ(m->weight_count, 3);
    EXPECT_EQ(m->weights[1].bone, 1);
    EXPECT_EQ(m->weights[1].position.y, 1.0f);
    EXPECT_EQ(m->weights[2].factor, 0.75f);
    EXPECT_EQ(m->point_weights[1].first_weight, 1);
    EXPECT_EQ(m->point_weights[1].weight_count, 2);
    EXPECT_EQ(m->point_weights[2].weight_count, 0);
}

TEST_F(model_test, weight_run_past_the_last_weight_fails)
{
    expect_refused(headers(4, 1, 0, 2, 1, 0, 0) + QUAD_POINTS + "0 1 2\n0 0 0 0 1\n1 0 0 0 1\n0 1\n1 2\n0 0\n0 0\n" +
                   "none 0 1\n");
}

TEST_F(model_test, weight_with_a_negative_bone_fails)
{
    expect_refused(headers(4, 1, 0, 1, 1, 0, 0) + QUAD_POINTS + "0 1 2\n-1 0 0 0 1\n0 1\n0 1\n0 1\n0 1\nnone 0 1\n");
}

TEST_F(model_test, subset_whose_texture_is_missing_draws_with_the_fallback)
{
    ASSERT_GE(make_fallback_texture(), 0);
    write_data("textures/bark.png", encode_bgra_png(4, 4, test_pattern_bgra(4, 4)));
    std::string text = headers(4, 1, 0, 0, 3, 0, 0) + QUAD_POINTS + "0 1 2\nmissing.png 0 1\nbark.png 0 1\n" +
                       "bark.png 1 1\n";
    int32_t index = load("tree.mdl", text);
    ASSERT_GE(index, 0);
    const model* m = at(index);
    EXPECT_EQ(m->subsets[0].texture, fallback_texture);
    int32_t bark = asset_name_find(ASSET_TEXTURE, "bark.png");
    ASSERT_GE(bark, 0);
    EXPECT_EQ(m->subsets[1].texture, bark);
    EXPECT_EQ(m->subsets[2].texture, bark); // found, not loaded again
    EXPECT_EQ(m->subsets[2].first_triangle, 1);
    EXPECT_EQ(m->subsets[2].end_triangle, 1);
}

TEST_F(model_test, loading_the_same_name_twice_reads_the_file_once)
{
    int32_t first = load("rock.mdl", simple());
    ASSERT_GE(first, 0);
    std::filesystem::remove("gloamhold_data/models/rock.mdl");
    EXPECT_EQ(load_model("rock.mdl"), first);
    EXPECT_EQ(models.count, 1);
}

TEST_F(model_test, name_of_39_characters_registers_and_40_fails_without_a_slot)
{
    std::string fits = std::string(35, 'm') + ".mdl";
    std::string too_long = "n" + fits;
    EXPECT_GE(load(fits, simple()), 0);
    EXPECT_EQ(load(too_long, simple()), -1);
    EXPECT_FALSE(registry_in_use(&models, 1));
}

TEST_F(model_test, missing_file_fails_without_a_slot)
{
    EXPECT_EQ(load_model("nowhere.mdl"), -1);
    EXPECT_EQ(models.count, 0);
}

TEST_F(model_test, anything_after_the_last_section_is_ignored)
{
    int32_t index = load("tail.mdl", simple() + "EXTRA 5\nwhatever\n");
    EXPECT_GE(index, 0);
}

TEST_F(model_test, every_allocation_failure_fails_the_load_and_releases_the_rest)
{
    std::string text = headers(4, 2, 3, 3, 0, 1, 1) + QUAD_POINTS + "0 1 2\n2 1 3\n0.25 0.5\n1 0\n0 1\n0 1 2\n0 0 1\n" +
                       "0 0.5 0 0 1\n1 0 1 0 0.25\n1 0 0 2 0.75\n0 1\n1 2\n0 0\n2 1\n" +
                       "COLLISION_TRIANGLES 1\n0 1 2\nwood 0 1\nOCCLUSION_TRIANGLES 1\n1 2 3\n0 1\n";
    write_data("models/full.mdl", text);
    int failures = 0, loads = 0;
    for (int n = 1; n < 40; ++n) {
        model m;
        test_heap::reset();
        test_heap::fail_request(n);
        if (model_load_file(&m, "gloamhold_data/models/full.mdl")) {
            ++loads;
            EXPECT_EQ(m.occluder_count, 1);
            model_free(&m);
        } else {
            ++failures;
            EXPECT_EQ(m.points, nullptr) << "request " << n;
            EXPECT_EQ(m.point_count, 0) << "request " << n;
        }
    }
    EXPECT_GT(loads, 0);
    // The reader's buffer, the four point and triangle arrays, the texture-coordinate table and
    // the six arrays of weights, colliders and occluders (no subsets: that array is never made).
    EXPECT_EQ(failures, 12);
}
