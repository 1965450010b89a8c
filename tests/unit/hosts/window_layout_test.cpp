#include <gtest/gtest.h>

#include "hosts/window_layout.h"

TEST(window_layout, a_resolution_of_640x480_at_scale_1_5_gives_a_960x720_client_area)
{
    client_size client = window_client_size(640, 480, 1.5f);
    EXPECT_EQ(client.width, 960);
    EXPECT_EQ(client.height, 720);
}

TEST(window_layout, scaled_sides_are_cut_toward_zero)
{
    client_size client = window_client_size(641, 479, 1.3f);
    EXPECT_EQ(client.width, 833);  // 833.3
    EXPECT_EQ(client.height, 622); // 622.7
}

TEST(window_layout, a_negative_scale_is_passed_on_as_it_is)
{
    client_size client = window_client_size(640, 480, -0.5f);
    EXPECT_EQ(client.width, -320);
    EXPECT_EQ(client.height, -240);
}

TEST(window_layout, the_client_centre_uses_integer_division)
{
    client_point centre = client_centre_of(client_size{961, 721});
    EXPECT_EQ(centre.x, 480);
    EXPECT_EQ(centre.y, 360);
}

TEST(window_layout, the_window_is_centred_on_the_screen)
{
    window_rectangle placed = centred_window(966, 749, 1920, 1080);
    EXPECT_EQ(placed.x, (1920 - 966) / 2);
    EXPECT_EQ(placed.y, (1080 - 749) / 2);
    EXPECT_EQ(placed.width, 966);
    EXPECT_EQ(placed.height, 749);
}

TEST(window_layout, a_window_larger_than_the_screen_starts_at_a_negative_position)
{
    window_rectangle placed = centred_window(1927, 1101, 1024, 768);
    EXPECT_EQ(placed.x, -451); // -903 / 2 truncates toward zero
    EXPECT_EQ(placed.y, -166);
}
