#include <gtest/gtest.h>

#include "platform/platform.h"
#include "render/frame.h"
#include "support/test_frame.h"
#include "support/test_heap.h"

TEST(depth_buffer_create, takes_one_float_and_one_rank_per_pixel_from_the_heap)
{
    test_frame frame(40, 30);
    ASSERT_EQ(depth_buffer_create(), 1);
    ASSERT_EQ(test_heap::log().size(), 2u);
    EXPECT_EQ(test_heap::log()[0].bytes, 40u * 30u * sizeof(float));
    EXPECT_EQ(test_heap::log()[1].bytes, 40u * 30u * sizeof(uint16_t));
    platform_heap_free(depth_buffer);
    platform_heap_free(depth_ranks);
}

TEST(depth_buffer_create, fails_when_the_heap_refuses)
{
    for (int32_t refused = 1; refused <= 2; ++refused) {
        test_frame frame(40, 30);
        test_heap::fail_request(refused);
        EXPECT_EQ(depth_buffer_create(), 0) << "request " << refused;
        EXPECT_EQ(depth_buffer, nullptr) << "request " << refused;
        EXPECT_EQ(depth_ranks, nullptr) << "request " << refused;
    }
}

TEST(depth_buffer_clear, sets_every_cell_to_zero)
{
    test_frame frame(5, 3);
    frame.depth.assign(frame.depth.size(), 7.0f);
    depth_buffer_clear();
    for (float d : frame.depth)
        EXPECT_EQ(d, 0.0f);
}

TEST(view_mapping_update, centres_a_square_of_the_smaller_side)
{
    test_frame frame(640, 480);
    view_mapping_update();
    EXPECT_EQ(view_size, 480.0f);
    EXPECT_EQ(view_offset_x, 80.0f);
    EXPECT_EQ(view_offset_y, 0.0f);
}

TEST(camera_transform, turns_by_yaw_then_pitch)
{
    camera_position[0] = 1.0f;
    camera_position[1] = camera_position[2] = 0.0f;
    camera_pitch_cos = 1.0f;
    camera_pitch_sin = 0.0f;
    camera_yaw_cos = 0.0f; // a quarter turn: world +x lies straight ahead
    camera_yaw_sin = 1.0f;
    const float ahead[3] = {3.0f, 0.0f, 0.0f};
    float out[3];
    camera_transform(ahead, out);
    EXPECT_EQ(out[0], 0.0f);
    EXPECT_EQ(out[1], 0.0f);
    EXPECT_EQ(out[2], 2.0f);
    camera_pitch_cos = 0.0f; // looking straight down (y points down): what lies ahead is now above
    camera_pitch_sin = 1.0f;
    camera_transform(ahead, out);
    EXPECT_EQ(out[1], -2.0f);
    EXPECT_EQ(out[2], 0.0f);
}

