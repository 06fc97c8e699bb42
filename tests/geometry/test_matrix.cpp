#include "geometry/komatrix.h"

#include "geometry/geometrytest.h"

#include <QtGui/QTransform>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

namespace {

std::string describe(const koMatrix &m)
{
    return "koMatrix(" + hexf(m.a) + ", " + hexf(m.b) + ", " + hexf(m.c) + ", " + hexf(m.d) + ", "
            + hexf(m.tx) + ", " + hexf(m.ty) + ")";
}

void expectSame(const koMatrix &m, const QTransform &t, const std::string &what)
{
    const double got[6] = {m.a, m.b, m.c, m.d, m.tx, m.ty};
    const double want[6] = {t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy()};
    double tol = 1e-12;
    for (double w : want)
        tol += 1e-12 * std::abs(w);
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(got[i], want[i], tol) << what << " field " << i;
}

} // namespace

TEST(KoMatrixText, KeepsTheFourPercentFormat)
{
    WarningCapture warnings;
    EXPECT_EQ(koMatrix().toString(), QStringLiteral("a: 1, b: 0, c: 0, d: 4%, tx: 1, ty: 0"));
    EXPECT_EQ(koMatrix(2, 3, 4, 5, 6, 7).toString(),
              QStringLiteral("a: 2, b: 3, c: 4, d: 4%, tx: 5, ty: 6"));
    EXPECT_FALSE(WarningCapture::messages().isEmpty()); // Qt reports the missing placeholder
}

TEST(KoMatrixEdge, PinnedValues)
{
    koMatrix r;
    r.rotate(90);
    EXPECT_NEAR(r.a, 6.123233995736766e-17, 1e-30);
    EXPECT_EQ(r.b, 1);
    EXPECT_EQ(r.c, -1);
    EXPECT_NEAR(r.d, 6.123233995736766e-17, 1e-30);

    // No tolerance: the smallest step above 1 is no longer the identity.
    EXPECT_FALSE(koMatrix(std::nextafter(1.0, 2.0), 0, 0, 1, 0, 0).isIdentity());
    EXPECT_TRUE(koMatrix(std::nextafter(1.0, 2.0), 0, 0, 1, 0, 0)._orNullIfIdentity());
    EXPECT_FALSE(koMatrix()._orNullIfIdentity());
}

TEST(KoMatrixEdge, SingularAndNonFiniteInverse)
{
    koMatrix zero(0, 0, 0, 0, 1, 2);
    EXPECT_TRUE(zero.isSingular());
    zero.invert(); // divided by the zero determinant, not left unchanged
    EXPECT_FALSE(std::isfinite(zero.a) && std::isfinite(zero.tx));

    koMatrix shifted(1, 0, 0, 1, qInf(), 0);
    EXPECT_FALSE(shifted.isInvertible());
    shifted.invert();
    EXPECT_EQ(shifted.a, 1);
    EXPECT_EQ(shifted.inverseTransform(koPoint(3, 4)), koPoint(3, 4));
}

TEST(KoMatrixCoords, CountIsRespectedAndBounded)
{
    const koMatrix m(2, 0, 0, 2, 1, 1);
    QVector<double> v{1, 2, 3, 4};
    m.transformCoords(v, 0);
    EXPECT_EQ(v, (QVector<double>{1, 2, 3, 4}));
    m.transformCoords(v, 1);
    EXPECT_EQ(v, (QVector<double>{3, 5, 3, 4}));
    m.transformCoords(v, 99); // never past the vector's end
    EXPECT_EQ(v, (QVector<double>{7, 11, 7, 9}));
}

// Every operation composes on the inner side, exactly like QTransform's.
TEST(KoMatrixCompose, OperationsMatchQTransform)
{
    std::mt19937 rng(2024);
    std::uniform_real_distribution<double> u(-3, 3);
    for (int i = 0; i < 300; ++i) {
        const koMatrix base(u(rng), u(rng), u(rng), u(rng), 10 * u(rng), 10 * u(rng));
        const koMatrix other(u(rng), u(rng), u(rng), u(rng), 10 * u(rng), 10 * u(rng));
        const double p = u(rng), q = u(rng), angle = 60 * u(rng);
        const koPoint c(5 * p, 5 * q);
        const QTransform t = base.toTransform(), to = other.toTransform();
        const QTransform toC = QTransform::fromTranslate(c.x, c.y);
        const QTransform fromC = QTransform::fromTranslate(-c.x, -c.y);
        const auto rad = [](double deg) { return deg * M_PI / 180; };
        const struct
        {
            const char *name;
            std::function<void(koMatrix &)> op;
            QTransform expected;
        } cases[] = {
                {"append", [&](koMatrix &m) { m.append(other); }, to * t},
                {"prepend", [&](koMatrix &m) { m.prepend(other); }, t * to},
                {"translate", [&](koMatrix &m) { m.translate(p, q); },
                 QTransform(t).translate(p, q)},
                {"scale", [&](koMatrix &m) { m.scale(p, q, &c); },
                 fromC * QTransform::fromScale(p, q) * toC * t},
                {"rotate", [&](koMatrix &m) { m.rotate(angle); }, QTransform(t).rotate(angle)},
                {"rotateAt", [&](koMatrix &m) { m.rotateAt(angle, c); },
                 fromC * QTransform().rotate(angle) * toC * t},
                {"shear", [&](koMatrix &m) { m.shear(p, q, &c); },
                 fromC * QTransform().shear(p, q) * toC * t},
                {"skew", [&](koMatrix &m) { m.skew(angle, -angle / 2); },
                 QTransform(t).shear(std::tan(rad(angle)), std::tan(rad(-angle / 2)))},
                {"invert", [&](koMatrix &m) { m.invert(); }, t.inverted()},
        };
        for (const auto &test : cases) {
            koMatrix m = base;
            test.op(m);
            expectSame(m, test.expected,
                       test.name + (" " + describe(base) + " " + describe(other)) + " " + hexf(p)
                               + " " + hexf(q) + " " + hexf(angle));
        }
        const koRect box = base.transformBounds(koRect(p, q, 2, 3));
        const QRectF want = t.mapRect(QRectF(p, q, 2, 3));
        EXPECT_NEAR(box.x, want.x(), 1e-12) << describe(base);
        EXPECT_NEAR(box.bottom(), want.bottom(), 1e-12) << describe(base);
        EXPECT_NEAR(box.right(), want.right(), 1e-12) << describe(base);
        EXPECT_NEAR(box.y, want.y(), 1e-12) << describe(base);
        const QPointF back = t.inverted().map(QPointF(p, q));
        EXPECT_NEAR(base.inverseTransform(koPoint(p, q)).x, back.x(), 1e-9) << describe(base);
        EXPECT_NEAR(base.inverseTransform(koPoint(p, q)).y, back.y(), 1e-9) << describe(base);
    }
}
