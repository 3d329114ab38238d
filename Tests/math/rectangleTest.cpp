#include "System/math/rectangle.h"

#include <gtest/gtest.h>

#include <vector>

namespace Qel {
namespace {

using Points = std::vector<D3DXVECTOR2>;

void expectEqual(cRectangle const &actual, cRectangle const &expected)
{
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.width, expected.width);
    EXPECT_EQ(actual.height, expected.height);
}

TEST(Rectangle, HoldsItsEdgesButDoesNotIntersectAlongThem)
{
    cRectangle const r(1, 2, 2, 2);
    EXPECT_TRUE(r.isInside(1, 2));
    EXPECT_TRUE(r.isInside(3, 4));
    EXPECT_FALSE(r.isInside(3.01f, 4));
    EXPECT_TRUE(r.isInside(r));
    EXPECT_FALSE(r.isInside(cRectangle(1, 2, 2, 2.5f)));
    EXPECT_TRUE(r.isInside(Points{}));
    EXPECT_FALSE(r.isInside(Points{{2, 3}, {0, 3}}));

    cRectangle const big(0, 0, 10, 10);
    struct {
        cRectangle other;
        bool intersects;
    } const rows[] = {
        {{10, 0, 5, 5}, false}, {{9, 9, 5, 5}, true}, {{0, 10, 10, 1}, false},  {{-5, 4, 20, 1}, true},
        {{0, 0, 10, 10}, true}, {{3, 3, 0, 0}, true}, {{-5, -5, 5, 20}, false},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(testing::Message() << row.other.x << ' ' << row.other.y);
        EXPECT_EQ(big.intersects(row.other), row.intersects);
    }
    EXPECT_FALSE(big.intersects(Points{}));
    EXPECT_TRUE(big.intersects(Points{{-1, 11}, {11, -1}})) << "ranges, not points";
}

TEST(Rectangle, GrowsAndIsClipped)
{
    cRectangle r(0, 0, 2, 2);
    r.addPoint(D3DXVECTOR2(-1, 5));
    expectEqual(r, {-1, 0, 3, 5});
    r.reset();
    r.addPoint(cRectangle(3, -4, 2, 1));
    expectEqual(r, {0, -4, 5, 4});

    struct {
        cRectangle in, out;
    } const rows[] = {
        {{20, 20, 5, 5}, {10, 10, 0, 0}},
        {{-5, -5, 2, 30}, {0, 0, 0, 10}},
        {{-5, 3, 8, 4}, {0, 3, 3, 4}},
        {{2, 2, 3, 3}, {2, 2, 3, 3}},
    };
    for (auto const &row : rows) {
        r = row.in;
        r.clip(cRectangle(0, 0, 10, 10));
        expectEqual(r, row.out);
    }
    EXPECT_TRUE(cRectangle(0, 0, 1, 1).isSizeSmaller(cRectangle(9, 9, 2, 2)));
    EXPECT_FALSE(cRectangle(0, 0, 1, 2).isSizeSmaller(cRectangle(9, 9, 2, 2)));
}

} // namespace
} // namespace Qel
