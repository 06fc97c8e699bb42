// Line heads: cuts and tips pinned in a table, and the cut length of random
// open polylines and cubics measured independently of the library.

#include "rvpathtesthelpers.h"

#include <gtest/gtest.h>

using namespace rvTest;

namespace {

constexpr int M = E::MoveTo, L = E::LineTo, C = E::CurveTo, D = E::CurveData, Z = E::Close;

E tip(double x, double y, int type, double hx, double hy)
{
    E e = el(x, y, type);
    e.headX = hx;
    e.headY = hy;
    return e;
}

QPointF headAt(const RVPath &path, int i)
{
    return QPointF(path.elementAt(i).headX, path.elementAt(i).headY);
}

// Length of the subpath [m, end) by Qt's flattening made 2^20 times finer
// (independent of the library's quadrature).
double lengthOf(const RVPath &path, int m, int end)
{
    RVPath part;
    part.setElements(path.elements().mid(m, end - m));
    return QTransform::fromScale(1 << 20, 1 << 20).map(toQt(part)).length() / (1 << 20);
}

} // namespace

TEST(RVPathLineHead, ElementTable)
{
    struct Case
    {
        const char *name;
        RVPath in;
        double start, end;
        RVPath out;
    };
    const double snapped = 5 * std::cos(std::atan2(0.03, 20));
    const Case cases[] = {
            {"start of a 20-unit line", make({el(0, 0, M), el(20, 0, L)}), 5, 0,
             make({tip(5, 0, M, 0, 0), el(20, 0, L)})},
            // Removed: 4 long, exactly 5 long, 8 long (3 left after the start
            // cut), zero length; a short first and last line dropped; closed,
            // lone move-to and NaN subpaths untouched.
            {"lines",
             make({el(0, 0, M),  el(4, 0, L),   el(0, 10, M),  el(0, 15, L),  el(0, 20, M),
                   el(8, 20, L), el(0, 30, M),  el(3, 30, L),  el(3, 50, L),  el(6, 50, L),
                   el(0, 60, M), el(20, 60, L), el(20, 80, L), el(0, 60, Z),  el(7, 7, M),
                   el(7, 7, L),  el(9, 9, M),   el(0, 99, M),  el(NAN, 0, L), el(1, 1, M)}),
             5, 5,
             make({tip(3, 30, M, 0, 30), tip(3, 50, L, 6, 50), el(0, 60, M), el(20, 60, L),
                   el(20, 80, L), el(0, 60, Z), el(9, 9, M), el(0, 99, M), el(NAN, 0, L),
                   el(1, 1, M)})},
            {"cubics: a lone short one removed, short first and last ones dropped",
             make({el(0, 0, M), el(1, 0, C), el(2, 0, D), el(3, 0, D), el(0, 10, M), el(1, 10, C),
                   el(2, 10, D), el(3, 10, D), el(3, 30, L), el(4, 30, C), el(5, 30, D),
                   el(6, 30, D)}),
             5, 5, make({tip(3, 10, M, 0, 10), tip(3, 30, L, 6, 30)})},
            {"cut components below 0.01 snap to 0", make({el(0, 0, M), el(20, 0.03, L)}), 5, 0,
             make({tip(snapped, 0, M, 0, 0), el(20, 0.03, L)})},
            {"zero and NaN lengths", make({el(0, 0, M), el(20, 0, L)}), 0, NAN,
             make({el(0, 0, M), el(20, 0, L)})},
    };
    for (const Case &c : cases) {
        RVPath path = c.in;
        path.setLineHead(c.start, c.end);
        EXPECT_EQ(describe(path), describe(c.out)) << c.name;
    }
}

// Seeded paths: every segment is at least 20 long, so nothing is dropped.
TEST(RVPathLineHead, OpenSubpathsLoseTheRequestedLengthAndKeepTheirTips)
{
    std::mt19937 random = generator(2024);
    std::uniform_real_distribution<double> u(0, 1);
    for (int round = 0; round < 60; ++round) {
        const RVPath path = randomPath(random);
        const double s = 0.5 + 9 * u(random), e = 0.5 + 9 * u(random);
        RVPath cut = path;
        cut.setLineHead(s, e);
        ASSERT_TRUE(cut.elementCount() == path.elementCount()
                    && subpathCount(cut) == subpathCount(path))
                << describe(path);
        for (int m = 0, last = 0; m < path.elementCount(); m = last + 1) {
            for (last = m + 1;
                 last + 1 < path.elementCount() && path.elementAt(last + 1).type != M;)
                ++last;
            ASSERT_EQ(cut.elementAt(m).type, M) << describe(cut);
            const std::string why = describe(path) + "\n" + hexf(s) + " " + hexf(e);
            if (path.elementAt(last).type == Z) {
                for (int i = m; i <= last; ++i)
                    ASSERT_TRUE(pointAt(cut, i) == pointAt(path, i) && headAt(cut, i).isNull())
                            << why;
                continue;
            }
            EXPECT_NEAR(lengthOf(cut, m, last + 1), lengthOf(path, m, last + 1) - s - e, 1e-4)
                    << why;
            EXPECT_TRUE(headAt(cut, m) == pointAt(path, m)
                        && headAt(cut, last) == pointAt(path, last))
                    << why;
            // The new ends lie on the original (Qt's flattening: within 0.3).
            EXPECT_LT(std::max(distanceTo(path, pointAt(cut, m)),
                               distanceTo(path, pointAt(cut, last))),
                      0.3)
                    << why;
        }
    }
}
