#include "rvpathtesthelpers.h"

#include <gtest/gtest.h>

#include <cmath>

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

QPointF at(const RVPath &path, int i)
{
    return QPointF(path.elementAt(i).x, path.elementAt(i).y);
}

QPointF headAt(const RVPath &path, int i)
{
    return QPointF(path.elementAt(i).headX, path.elementAt(i).headY);
}

// Subpath starts (move-tos) plus the element count as the last end.
QVector<int> starts(const RVPath &path)
{
    QVector<int> list;
    for (int i = 0; i < path.elementCount(); ++i) {
        if (path.elementAt(i).type == M)
            list << i;
    }
    return list << path.elementCount();
}

// Length of the subpath [m, end), cubics as fine polylines of the Bernstein
// form (independent of the library's quadrature).
double lengthOf(const RVPath &path, int m, int end)
{
    double length = 0;
    for (int i = m + 1; i < end; ++i) {
        const QPointF a = at(path, i - 1);
        if (path.elementAt(i).type == L)
            length += QLineF(a, at(path, i)).length();
        if (path.elementAt(i).type != C)
            continue;
        const QPointF b = at(path, i), c = at(path, i + 1), d = at(path, i + 2);
        QPointF last = a;
        for (int k = 1; k <= 4000; ++k) {
            const double t = k / 4000.0, r = 1 - t;
            const QPointF q = r * r * r * a + 3 * r * r * t * b + 3 * r * t * t * c + t * t * t * d;
            length += QLineF(last, q).length();
            last = q;
        }
        i += 2;
    }
    return length;
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

// Seeded open polylines and chains of gentle cubics (every segment at least
// 20 long, so nothing is dropped) with some closed subpaths among them.
TEST(RVPathLineHead, OpenSubpathsLoseTheRequestedLengthAndKeepTheirTips)
{
    std::mt19937 random = generator(2024);
    std::uniform_real_distribution<double> u(0, 1);
    for (int round = 0; round < 40; ++round) {
        RVPath path;
        for (int k = 0, count = 1 + int(u(random) * 4); k < count; ++k) {
            const QVector<QPointF> pts = randomPolyline(random, 2 + int(u(random) * 5));
            const bool curved = u(random) < 0.5;
            path.moveTo(pts[0].x(), pts[0].y());
            for (int i = 1; i < pts.size(); ++i) {
                const QPointF a = pts[i - 1], b = pts[i], n(a.y() - b.y(), b.x() - a.x());
                if (curved)
                    path.cubicTo(a + (b - a) / 3 + n * (u(random) - 0.5) / 2,
                                 a + (b - a) * 2 / 3 + n * (u(random) - 0.5) / 2, b);
                else
                    path.lineTo(b.x(), b.y());
            }
            if (u(random) < 0.25)
                path.closeSubpath();
        }
        const double s = 0.5 + 9 * u(random), e = 0.5 + 9 * u(random);
        RVPath cut = path;
        cut.setLineHead(s, e);
        const QVector<int> before = starts(path), after = starts(cut);
        ASSERT_EQ(before, after) << describe(path);
        for (int k = 0; k + 1 < before.size(); ++k) {
            const int m = before[k], last = before[k + 1] - 1;
            const std::string why = describe(path) + "\n" + hexf(s) + " " + hexf(e);
            if (path.elementAt(last).type == Z) {
                for (int i = m; i <= last; ++i)
                    ASSERT_TRUE(at(cut, i) == at(path, i) && headAt(cut, i).isNull()) << why;
                continue;
            }
            EXPECT_NEAR(lengthOf(cut, m, last + 1), lengthOf(path, m, last + 1) - s - e,
                        path.elementAt(m + 1).type == C ? 1e-3 : 0.03)
                    << why;
            EXPECT_TRUE(headAt(cut, m) == at(path, m) && headAt(cut, last) == at(path, last))
                    << why;
            // The new ends lie on the original (Qt's flattening: within 0.3).
            EXPECT_LT(std::max(distanceTo(path, at(cut, m)), distanceTo(path, at(cut, last))), 0.3)
                    << why;
        }
    }
}
