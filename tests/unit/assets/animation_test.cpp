#include <gtest/gtest.h>

#include <math.h>

#include <filesystem>
#include <string>
#include <vector>

#include "assets/animation.h"
#include "support/asset_state.h"

namespace {

class animation_test : public data_folder_test {
protected:
    static int32_t load(const std::string& name, const std::string& text)
    {
        write_data("animations/" + name, text);
        return load_animation(name.c_str());
    }

    static const animation* at(int32_t index) { return registry_at<animation>(&animations, index); }

    // An animation held by the test itself, for sampling.
    struct keys {
        std::vector<int32_t> parents;
        std::vector<float> times;
        std::vector<bone_pose> poses;
        animation view() { return {static_cast<int32_t>(parents.size()), static_cast<int32_t>(times.size()),
                                   parents.data(), times.data(), poses.data()}; }
    };
};

const std::string TWO_BONES = "BONES 2\nFRAMES 2\nHIERARCHY -1 0\n"
                              "0\n0 0 0 0 0 0 1\n1 2 3 0 0 0 1\n"
                              "1.5\n2 0 0 0 0 0 1\n1 2 3 0 0 1 0\n";

} // namespace

TEST_F(animation_test, bones_frames_and_poses_are_read_frame_major)
{
    int32_t index = load("walk.anim", TWO_BONES);
    ASSERT_GE(index, 0);
    const animation* a = at(index);
    EXPECT_EQ(a->bone_count, 2);
    EXPECT_EQ(a->frame_count, 2);
    EXPECT_EQ(a->parents[0], -1);
    EXPECT_EQ(a->parents[1], 0);
    EXPECT_EQ(a->frame_times[1], 1.5f);
    EXPECT_EQ(a->poses[1].translation.z, 3.0f);   // frame 0, bone 1
    EXPECT_EQ(a->poses[2].translation.x, 2.0f);   // frame 1, bone 0
    EXPECT_EQ(a->poses[3].rotation[2], 1.0f);     // frame 1, bone 1: the scalar part is last
    EXPECT_EQ(a->poses[3].rotation[3], 0.0f);
}

TEST_F(animation_test, frames_0_loads_with_nothing_after_the_hierarchy)
{
    int32_t index = load("still.anim", "BONES 3\nFRAMES 0\nHIERARCHY -1 0 1\n");
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->frame_count, 0);
    EXPECT_EQ(at(index)->bone_count, 3);
}

TEST_F(animation_test, hierarchy_minus_1_0_1_gives_three_bones_with_those_parents)
{
    int32_t index = load("chain.anim", "BONES 3\nFRAMES 0\nHIERARCHY -1 0 1\n");
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->parents[0], -1);
    EXPECT_EQ(at(index)->parents[1], 0);
    EXPECT_EQ(at(index)->parents[2], 1);
}

TEST_F(animation_test, comment_between_a_frame_time_and_its_first_pose_fails)
{
    EXPECT_EQ(load("bad.anim", "BONES 1\nFRAMES 1\nHIERARCHY -1\n0\n# pose\n0 0 0 0 0 0 1\n"), -1);
    EXPECT_EQ(animations.count, 0);
}

TEST_F(animation_test, comment_before_a_frame_time_is_skipped)
{
    EXPECT_GE(load("good.anim", "BONES 1\nFRAMES 1\nHIERARCHY -1\n# frame 0\n0\n0 0 0 0 0 0 1\n"), 0);
}

TEST_F(animation_test, empty_line_among_the_pose_lines_fails)
{
    EXPECT_EQ(load("gap.anim", "BONES 2\r\nFRAMES 1\r\nHIERARCHY -1 0\r\n0\r\n0 0 0 0 0 0 1\r\n\r\n0 0 0 0 0 0 1\r\n"),
              -1);
}

TEST_F(animation_test, pose_line_with_six_numbers_fails)
{
    EXPECT_EQ(load("short.anim", "BONES 1\nFRAMES 1\nHIERARCHY -1\n0\n0 0 0 0 0 1\n"), -1);
}

TEST_F(animation_test, missing_hierarchy_line_fails)
{
    EXPECT_EQ(load("flat.anim", "BONES 1\nFRAMES 0\n"), -1);
    EXPECT_EQ(load("named.anim", "BONES 1\nFRAMES 0\nPARENTS -1\n"), -1);
}

TEST_F(animation_test, parent_that_is_not_an_integer_fails)
{
    EXPECT_EQ(load("word.anim", "BONES 2\nFRAMES 0\nHIERARCHY -1 root\n"), -1);
}

TEST_F(animation_test, hierarchy_with_too_few_parents_fails)
{
    EXPECT_EQ(load("few.anim", "BONES 3\nFRAMES 0\nHIERARCHY -1 0\n"), -1);
}

TEST_F(animation_test, parent_must_be_an_earlier_bone)
{
    EXPECT_EQ(load("loop.anim", "BONES 2\nFRAMES 0\nHIERARCHY 1 0\n"), -1);
    EXPECT_EQ(load("self.anim", "BONES 2\nFRAMES 0\nHIERARCHY -1 1\n"), -1);
    EXPECT_EQ(load("far.anim", "BONES 2\nFRAMES 0\nHIERARCHY -2 0\n"), -1);
}

TEST_F(animation_test, frame_line_without_a_number_fails)
{
    EXPECT_EQ(load("time.anim", "BONES 1\nFRAMES 1\nHIERARCHY -1\nstart\n0 0 0 0 0 0 1\n"), -1);
}

TEST_F(animation_test, same_name_twice_is_loaded_once)
{
    int32_t first = load("walk.anim", TWO_BONES);
    ASSERT_GE(first, 0);
    std::filesystem::remove("gloamhold_data/animations/walk.anim");
    EXPECT_EQ(load_animation("walk.anim"), first);
}

TEST_F(animation_test, sample_interpolates_translation_linearly_between_keys)
{
    int32_t index = load("walk.anim", TWO_BONES);
    ASSERT_GE(index, 0);
    bone_pose out[2];
    sample_pose(at(index), 0.75f, out);
    EXPECT_EQ(out[0].translation.x, 1.0f);
    EXPECT_EQ(out[1].translation.y, 2.0f);
}

TEST_F(animation_test, sample_past_the_last_key_runs_toward_the_first_and_extrapolates)
{
    keys k;
    k.parents = {-1};
    k.times = {0.0f, 1.0f};
    k.poses = {{{0, 0, 0}, {0, 0, 0, 1}}, {{4, 0, 0}, {0, 0, 0, 1}}};
    animation a = k.view();
    bone_pose out;
    sample_pose(&a, 2.0f, &out); // key 1, next key 0: t = (2 - 1) / (0 - 1) = -1
    EXPECT_EQ(out.translation.x, 8.0f);
    sample_pose(&a, 0.5f, &out);
    EXPECT_EQ(out.translation.x, 2.0f);
}

TEST_F(animation_test, rotation_is_the_first_key_at_or_before_it_and_the_second_at_or_after_it)
{
    keys k;
    k.parents = {-1};
    k.times = {1.0f, 2.0f, 3.0f};
    k.poses = {{{0, 0, 0}, {0, 0, 0, 1}}, {{0, 0, 0}, {0, 1, 0, 0}}, {{0, 0, 0}, {1, 0, 0, 0}}};
    animation a = k.view();
    bone_pose out;
    sample_pose(&a, 0.5f, &out); // before the first key: key 0 toward key 1 with t < 0
    EXPECT_EQ(out.rotation[3], 1.0f);
    EXPECT_EQ(out.rotation[1], 0.0f);
    sample_pose(&a, 2.0f, &out); // exactly on key 1
    EXPECT_EQ(out.rotation[1], 1.0f);
}

TEST_F(animation_test, rotation_takes_the_shorter_way_round)
{
    keys k;
    k.parents = {-1};
    k.times = {0.0f, 1.0f};
    // The same orientation written with opposite signs: blending must not pass through zero.
    k.poses = {{{0, 0, 0}, {0, 0, 0, 1}}, {{0, 0, 0}, {0, 0, 0, -1}}};
    animation a = k.view();
    bone_pose out;
    sample_pose(&a, 0.5f, &out);
    EXPECT_EQ(out.rotation[3], 1.0f);
}

TEST_F(animation_test, rotation_between_distant_keys_is_spherical_and_not_renormalised)
{
    keys k;
    k.parents = {-1};
    k.times = {0.0f, 1.0f};
    k.poses = {{{0, 0, 0}, {0, 0, 0, 1}}, {{0, 0, 0}, {0, 1, 0, 0}}};
    animation a = k.view();
    bone_pose out;
    sample_pose(&a, 0.5f, &out);
    float expected = sinf(acosf(0.0f) * 0.5f) / sinf(acosf(0.0f));
    EXPECT_FLOAT_EQ(out.rotation[1], expected);
    EXPECT_FLOAT_EQ(out.rotation[3], expected);
}

TEST_F(animation_test, rotation_between_nearly_equal_keys_blends_linearly)
{
    keys k;
    k.parents = {-1};
    k.times = {0.0f, 1.0f};
    // Unnormalised keys 0.1 apart in w: their dot product is above cos 0.5 degrees.
    k.poses = {{{0, 0, 0}, {0, 0, 0, 1.0f}}, {{0, 0, 0}, {0, 0, 0, 1.1f}}};
    animation a = k.view();
    bone_pose out;
    sample_pose(&a, 0.25f, &out);
    EXPECT_EQ(out.rotation[3], 0.75f * 1.0f + 0.25f * 1.1f);
}

TEST_F(animation_test, single_key_is_the_pose_at_every_time)
{
    keys k;
    k.parents = {-1, 0};
    k.times = {0.5f};
    k.poses = {{{1, 2, 3}, {0, 0, 0, 1}}, {{4, 5, 6}, {0, 1, 0, 0}}};
    animation a = k.view();
    bone_pose out[2];
    sample_pose(&a, 3.0f, out);
    EXPECT_EQ(out[1].translation.y, 5.0f);
    EXPECT_EQ(out[1].rotation[1], 1.0f);
}

TEST_F(animation_test, no_keys_give_the_identity_pose)
{
    keys k;
    k.parents = {-1};
    animation a = k.view();
    bone_pose out = {{9, 9, 9}, {9, 9, 9, 9}};
    sample_pose(&a, 1.0f, &out);
    EXPECT_EQ(out.translation.x, 0.0f);
    EXPECT_EQ(out.rotation[0], 0.0f);
    EXPECT_EQ(out.rotation[3], 1.0f);
}

TEST_F(animation_test, sampling_an_animation_without_bones_gives_nothing_and_reads_no_pose)
{
    // Found by fuzzing: a single key with no bones has no block of poses to copy from.
    int32_t index = load("empty.anm", "BONES 0\nFRAMES 1\nHIERARCHY \n0\n");
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->poses, nullptr);
    bone_pose untouched = {{7.0f, 8.0f, 9.0f}, {0.0f, 0.0f, 0.0f, 1.0f}};
    sample_pose(at(index), 0.5f, &untouched);
    EXPECT_EQ(untouched.translation.x, 7.0f);
}
