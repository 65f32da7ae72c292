// The boxes of the block's columns and the faces of the block that can be seen.

#include "ColumnSupport.h"
#include "SimulatorSupport.h"
#include "kernel/domain/Domain.h"
#include "view/BlockMesh.h"
#include "view/ColumnBoxes.h"

#include <gtest/gtest.h>

using namespace testing_support;

namespace
{
// Facies family, thickness steps of 1 cm, age delta.
DepositionUnit unit(unsigned char family, unsigned char steps, unsigned char delta = 1)
{
    return DepositionUnit(Facies(family), steps, delta);
}
} // namespace

TEST(ColumnBoxes, AdjacentEqualFaciesMergeAndVoidsDrop)
{
    DepositionSet set;
    build_column(set, 1., {unit(2, 100), unit(2, 50), unit(0, 20), unit(2, 30), unit(8, 10), unit(9, 40, 3)});
    FaciesColorMap colors;
    std::vector<ColumnBox> boxes;
    ColumnBoxes::append(set, colors, 0, boxes);
    ASSERT_EQ(boxes.size(), 4u);
    const double expected[4][2] = {{1., 2.5}, {2.7, 3.0}, {3.0, 3.1}, {3.1, 3.5}};
    const unsigned char families[4] = {2, 2, 8, 9};
    for (size_t k = 0; k < boxes.size(); ++k)
    {
        EXPECT_NEAR(boxes[k].zbot, expected[k][0], 1e-9) << k;
        EXPECT_NEAR(boxes[k].ztop, expected[k][1], 1e-9) << k;
        EXPECT_EQ(boxes[k].facies.family(), families[k]) << k;
    }
    EXPECT_EQ(boxes[0].age, 2u);
    EXPECT_EQ(boxes[3].age, 8u);
    // Under the age coding, units of one facies but two ages stay apart.
    std::vector<ColumnBox> by_age;
    colors.setAgeRange(0, 8);
    ColumnBoxes::append(set, colors, 4, by_age);
    EXPECT_EQ(by_age.size(), 5u);
    Facies top;
    uint32_t age = 0;
    ColumnBoxes::top_info(set, top, age);
    EXPECT_EQ(top.family(), 9);
    EXPECT_EQ(age, 8u);
    DepositionSet empty;
    ColumnBoxes::top_info(empty, top, age);
    EXPECT_EQ(top.family(), 0);
}

TEST(BlockMesh, OnlyFacesAgainstEmptySpaceAreKept)
{
    auto sim = simulator_on_grid(3, 2);
    ASSERT_EQ(sim->init(true), MP_STATUS_OK) << g_trace;
    Domain& domain = *sim->domain();
    for (int j = 0; j < 2; ++j)
        for (int i = 0; i < 3; ++i)
            build_column(domain.getObject(i, j), 0., {unit(2, 100), unit(8, 100)});
    FaciesColorMap colors;
    BlockMesh mesh;
    mesh.build(domain, colors, 0);
    // A flat block of 6 columns of 2 boxes: 12 tops and bottoms, and the
    // outer sides (10 cell edges) of each of the 2 boxes.
    EXPECT_EQ(mesh.box_count(), 12u);
    EXPECT_EQ(mesh.quad_count(), 12u + 20u);
    // One column 1 m higher shows its step on its inner sides too.
    build_column(domain.getObject(1, 0), 0., {unit(2, 100), unit(8, 200)});
    mesh.build(domain, colors, 0);
    EXPECT_EQ(mesh.quad_count(),
              12u + 20u + 3u /* its three inner sides; its outer one is one taller quad */);
    for (int side = 0; side < BlockMesh::SIDES; ++side)
        EXPECT_EQ(mesh.colors(BlockMesh::Side(side)).size(), mesh.vertices(BlockMesh::Side(side)).size());
    // An empty neighbour shows the whole side.
    build_column(domain.getObject(2, 1), 0., {});
    mesh.build(domain, colors, 0);
    EXPECT_EQ(mesh.box_count(), 10u);
}

TEST(BlockMesh, FacesAreSeenOnlyFromTheirOwnSideOfTheBlock)
{
    auto sim = simulator_on_grid(4, 3);
    ASSERT_EQ(sim->init(true), MP_STATUS_OK) << g_trace;
    Domain& domain = *sim->domain();
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 4; ++i)
            build_column(domain.getObject(i, j), 0., {DepositionUnit(Facies(2), 100, 1)});
    FaciesColorMap colors;
    BlockMesh mesh;
    mesh.build(domain, colors, 0);
    // The block spans x in [-5, 35], y in [-5, 25], z in [0, 1].
    struct Row
    {
        double eye[3];
        bool seen[BlockMesh::SIDES]; // top, bottom, east, west, north, south
    };
    const Row rows[] = {
        {{15., 10., 100.}, {true, false, true, true, true, true}}, // above the middle
        {{100., 10., 100.}, {true, false, true, false, true, true}},
        {{-100., -100., 0.5}, {true, true, false, true, false, true}},
        {{15., 10., -50.}, {false, true, true, true, true, true}},
    };
    for (const Row& r : rows)
        for (int side = 0; side < BlockMesh::SIDES; ++side)
            EXPECT_EQ(mesh.may_face(static_cast<BlockMesh::Side>(side), r.eye), r.seen[side])
                << "eye " << r.eye[0] << "," << r.eye[1] << "," << r.eye[2] << " side " << side;
    EXPECT_EQ(mesh.quad_count(BlockMesh::TOP), 12u);
    EXPECT_EQ(mesh.quad_count(BlockMesh::EAST), 3u);
    EXPECT_EQ(mesh.quad_count(BlockMesh::NORTH), 4u);
    // Tops are the brightest faces, bottoms the darkest.
    const ViewColor c{200, 200, 200};
    EXPECT_EQ(BlockMesh::shaded(c, BlockMesh::TOP), c);
    EXPECT_LT(BlockMesh::shaded(c, BlockMesh::EAST).red, 200);
    EXPECT_LT(BlockMesh::shaded(c, BlockMesh::BOTTOM).red, BlockMesh::shaded(c, BlockMesh::SOUTH).red);
}
