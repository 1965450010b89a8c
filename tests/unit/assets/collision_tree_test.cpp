#include <gtest/gtest.h>

#include <string>

#include "assets/collision_tree.h"
#include "support/asset_state.h"
#include "support/temp_files.h"

namespace {

class collision_tree_test : public data_folder_test {
protected:
    void TearDown() override
    {
        collision_tree_free(&tree);
        data_folder_test::TearDown();
    }

    int load(const std::string& text)
    {
        write_file("tree.bsp", text);
        return collision_tree_load(&tree, "tree.bsp");
    }

    // The walk that rooms rely on: inside when a front leaf is reached.
    int inside(float x, float y, float z) const
    {
        int32_t node = 0;
        for (int step = 0; step < 254; ++step) {
            const bsp_node& n = tree.nodes[node];
            bool front = n.plane.a * x + n.plane.b * y + n.plane.c * z - n.plane.d >= 0.0f;
            int32_t child = front ? n.front : n.back;
            if (child == 0)
                return front ? 1 : 0;
            node = child;
        }
        return 0;
    }

    collision_tree tree = {};
};

} // namespace

TEST_F(collision_tree_test, node_takes_a_copy_of_the_plane_it_names)
{
    ASSERT_EQ(load("PLANES 2\nNODES 1\n1 0 0 5\n0 1 0 2\n1 0 0\n"), 1);
    ASSERT_EQ(tree.node_count, 1);
    EXPECT_EQ(tree.nodes[0].plane.b, 1.0f);
    EXPECT_EQ(tree.nodes[0].plane.d, 2.0f);
    EXPECT_EQ(inside(0.0f, 3.0f, 0.0f), 1);  // in front of the second plane
    EXPECT_EQ(inside(100.0f, 1.0f, 0.0f), 0); // behind it
}

TEST_F(collision_tree_test, point_exactly_on_a_plane_counts_as_in_front)
{
    ASSERT_EQ(load("PLANES 2\nNODES 1\n1 0 0 5\n0 1 0 2\n1 0 0\n"), 1);
    EXPECT_EQ(inside(0.0f, 2.0f, 0.0f), 1);
}

TEST_F(collision_tree_test, nested_nodes_bound_a_slab)
{
    // Node 0: x >= 0 goes on to node 1, x < 0 is solid; node 1: x <= 4 is open, beyond is solid.
    ASSERT_EQ(load("# a slab 0 <= x <= 4\nPLANES 2\nNODES 2\n1 0 0 0\n-1 0 0 -4\n0 1 0\n1 0 0\n"), 1);
    EXPECT_EQ(inside(2.0f, 0.0f, 0.0f), 1);
    EXPECT_EQ(inside(-1.0f, 0.0f, 0.0f), 0);
    EXPECT_EQ(inside(5.0f, 0.0f, 0.0f), 0);
}

TEST_F(collision_tree_test, node_line_with_two_numbers_fails_and_leaves_the_tree_empty)
{
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n0 0\n"), 0);
    EXPECT_EQ(tree.node_count, 0);
    EXPECT_EQ(tree.nodes, nullptr);
}

TEST_F(collision_tree_test, no_nodes_loads_after_the_planes)
{
    EXPECT_EQ(load("PLANES 1\nNODES 0\n1 0 0 0\n"), 1);
    EXPECT_EQ(tree.node_count, 0);
}

TEST_F(collision_tree_test, too_few_planes_fail)
{
    EXPECT_EQ(load("PLANES 2\nNODES 0\n1 0 0 0\n"), 0);
}

TEST_F(collision_tree_test, plane_with_three_numbers_fails)
{
    EXPECT_EQ(load("PLANES 1\nNODES 0\n1 0 0\n"), 0);
}

TEST_F(collision_tree_test, headers_must_come_planes_first)
{
    EXPECT_EQ(load("NODES 0\nPLANES 0\n"), 0);
    EXPECT_EQ(load("PLANES x\nNODES 0\n"), 0);
}

TEST_F(collision_tree_test, plane_index_outside_the_table_fails)
{
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n1 0 0\n"), 0);
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n-1 0 0\n"), 0);
}

TEST_F(collision_tree_test, child_outside_the_tree_fails)
{
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n0 1 0\n"), 0);
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n0 0 -2\n"), 0);
    EXPECT_EQ(tree.nodes, nullptr);
}

TEST_F(collision_tree_test, missing_file_fails)
{
    EXPECT_EQ(collision_tree_load(&tree, "nowhere.bsp"), 0);
}
