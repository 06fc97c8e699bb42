#include "pathtesthelpers.h"

#include "geometry/komatrix.h"

#include <cmath>
#include <random>

namespace {

koPoint lerp(const koPoint &a, const koPoint &b, double t)
{
    return a * (1 - t) + b * t;
}

// Independent evaluation by repeated interpolation, with first and second derivative.
struct Casteljau
{
    koPoint point, d1, d2;
    Casteljau(const QVector<double> &v, double t)
    {
        const koPoint p0(v[0], v[1]), p1(v[2], v[3]), p2(v[4], v[5]), p3(v[6], v[7]);
        const koPoint q1 = lerp(lerp(p0, p1, t), lerp(p1, p2, t), t);
        const koPoint q2 = lerp(lerp(p1, p2, t), lerp(p2, p3, t), t);
        point = lerp(q1, q2, t);
        d1 = (q2 - q1) * 3;
        d2 = lerp(p0 - p1 * 2 + p2, p1 - p2 * 2 + p3, t) * 6;
    }
};

QVector<double> randomCurve(std::mt19937 &rng)
{
    std::uniform_real_distribution<double> coord(-100, 100);
    QVector<double> v(8);
    for (double &c : v)
        c = coord(rng);
    return v;
}

std::string valuesText(const QVector<double> &v)
{
    std::string s;
    for (double c : v)
        s += hex(c) + ", ";
    return "{" + s + "}";
}

} // namespace

TEST(koCurveModel, ValuesConstructorAndText)
{
    koRef<koCurve> c(new koCurve(QVector<double>{1, 2, 3, 5, 7, 11, 13, 17}, nullptr));
    EXPECT_EQ(c->segment1()->handleOut, koPoint(2, 3));
    EXPECT_EQ(c->segment2()->handleIn, koPoint(-6, -6));
    EXPECT_EQ(c->getValues(), QVector<double>({1, 2, 3, 5, 7, 11, 13, 17}));
    const koMatrix shift(1, 0, 0, 1, 10, 0);
    EXPECT_EQ(c->getValues(&shift), QVector<double>({11, 2, 13, 5, 17, 11, 23, 17}));
    EXPECT_EQ(c->toString(),
              QStringLiteral("point1: x: 1, y: 2 handle1: x: 2, y: 3 "
                             "handle2: x: -6, y: -6 point2: x: 13, y: 17"));
    c->clearHandles();
    EXPECT_EQ(c->toString(), QStringLiteral("point1: x: 1, y: 2 point2: x: 13, y: 17"));
    EXPECT_FALSE(c->hasHandles());

    koRef<koCurve> empty(new koCurve);
    EXPECT_EQ(empty->index(), -1);
    EXPECT_FALSE(empty->remove());
    EXPECT_TRUE(empty->getPoint1().isNaN());
    EXPECT_TRUE(empty->getPointAtTime(0.5).isNaN());
}

TEST(koCurveModel, RemoveMergesIntoTheFirstSegment)
{
    koRef<koPath> path(new koPath);
    path->addSegment(new koSegment(koPoint(0, 0), koPoint(), koPoint(1, 0)));
    path->addSegment(new koSegment(koPoint(5, 0), koPoint(-1, 0), koPoint(0, 2)));
    path->addSegment(new koSegment(koPoint(5, 5), koPoint(0, -2), koPoint()));
    EXPECT_TRUE(path->getFirstCurve()->remove());
    EXPECT_EQ(path->segments.size(), 2);
    EXPECT_EQ(path->segments.at(0)->handleOut, koPoint(0, 2));
    EXPECT_TRUE(pathIsConsistent(path.get()));
    // The closing curve of a one-segment closed path is its own segment 2.
    koRef<koPath> single(polygonPath({{1, 1}}, true));
    EXPECT_TRUE(single->getFirstCurve()->remove());
    EXPECT_TRUE(single->isEmpty() && single->curves.isEmpty());
}

TEST(koCurveEvaluate, MatchesDeCasteljau)
{
    std::mt19937 rng(20240517);
    std::uniform_real_distribution<double> time(1e-3, 1 - 1e-3);
    for (int iter = 0; iter < 2000; ++iter) {
        const QVector<double> v = randomCurve(rng);
        const double t = iter < 2 ? double(iter) : time(rng);
        const Casteljau ref(v, t);
        const koPoint p = koCurve::_evaluate(v, t, 0, false);
        const koPoint d = koCurve::_evaluate(v, t, 1, false);
        const koPoint n = koCurve::_evaluate(v, t, 2, true);
        const double k = koCurve::_evaluate(v, t, 3, false).x;
        const double speed = ref.d1.getLength();
        const double kRef = ref.d1.cross(ref.d2) / std::pow(speed, 3);
        SCOPED_TRACE("v = " + valuesText(v) + " t = " + hex(t));
        EXPECT_LT(p.getDistance(ref.point), 1e-10);
        EXPECT_LT(d.getDistance(ref.d1), 1e-9);
        EXPECT_LT(n.getDistance(koPoint(ref.d1.y, -ref.d1.x) / speed), 1e-9); // tangent turned
        EXPECT_NEAR(k, kRef, 1e-9 * (1 + std::fabs(kRef)));
    }
}

TEST(koCurveEvaluate, EdgeTimesAndDegenerateHandles)
{
    const QVector<double> v{0.1, 0.2, 3, 7, 9, -4, 10.3, 0.7};
    EXPECT_TRUE(koCurve::_evaluate(v, -0.0001, 0, false).isNaN());
    EXPECT_TRUE(koCurve::_evaluate(v, 1.0001, 1, true).isNaN());
    EXPECT_TRUE(koCurve::getPoint(v, qQNaN()).isNaN());
    EXPECT_TRUE(koCurve::getPoint(QVector<double>(3, 1.0), 0.5).isNaN());
    EXPECT_EQ(koCurve::getPoint(v, 0), koPoint(0.1, 0.2)); // bit for bit
    EXPECT_EQ(koCurve::getPoint(v, 1), koPoint(10.3, 0.7));

    // Handle 1 on its point: zero weighted tangent at 0, unit tangent from handle 1 to 2.
    const QVector<double> w{0, 0, 1e-13, 0, 3, 4, 6, 0};
    EXPECT_EQ(koCurve::_evaluate(w, 0, 1, false), koPoint(0, 0));
    const koPoint tangent = koCurve::_evaluate(w, 0, 1, true);
    EXPECT_NEAR(tangent.x, 0.6, 1e-15);
    EXPECT_NEAR(tangent.y, 0.8, 1e-15);

    EXPECT_EQ(koCurve::_evaluate({0, 0, 1, 1, 2, 2, 3, 3}, 0.3, 3, false).x, 0); // straight
    EXPECT_EQ(koCurve::_evaluate(QVector<double>(8, 2.0), 0.5, 3, false), koPoint(0, 0));
    EXPECT_FALSE(koCurve::hasHandles({0, 0, 1e-12, -1e-12, 5, 5, 5, 5}));
    EXPECT_TRUE(koCurve::hasHandles({0, 0, 0, 0, 5, 5.001, 5, 5}));
}

TEST(koCurveArea, MatchesDenseShoelaceThroughTheOrigin)
{
    std::mt19937 rng(7);
    for (int iter = 0; iter < 200; ++iter) {
        const QVector<double> v = randomCurve(rng);
        const int steps = 4000;
        double sum = 0;
        koPoint prev(v[0], v[1]);
        for (int i = 1; i <= steps; ++i) {
            const koPoint p = Casteljau(v, double(i) / steps).point;
            sum += prev.cross(p);
            prev = p;
        }
        EXPECT_NEAR(koCurve::getArea(v), sum / 2, 1e-3 * (1 + std::fabs(sum))) << valuesText(v);
    }
}

TEST(koCurveLocationConstruction, EndOfCurveMovesToTheNextCurve)
{
    koRef<koPath> path(polygonPath({{0, 0}, {4, 0}, {4, 4}}, false));
    const QList<koCurve *> &curves = path->getCurves();
    koRef<koCurveLocation> moved(
            new koCurveLocation(curves.at(0), 0.9999999, koPoint(qQNaN(), 0), false, 0.5));
    EXPECT_EQ(moved->curve, curves.at(1));
    EXPECT_EQ(moved->time, 0);
    EXPECT_EQ(moved->point, koPoint(4, 0)); // computed for the NaN point
    EXPECT_EQ(moved->segment1, path->segments.at(1));
    EXPECT_EQ(moved->path, path.get());
    EXPECT_EQ(moved->offset, -1);
    // On the last curve of an open path the time stays.
    koRef<koCurveLocation> kept(
            new koCurveLocation(curves.at(1), 0.9999999, koPoint(1, 1), true, 0));
    EXPECT_EQ(kept->curve, curves.at(1));
    EXPECT_EQ(kept->time, 0.9999999);
    EXPECT_EQ(kept->point, koPoint(1, 1));
    EXPECT_EQ(curves.at(1)->refCount, 1); // locations never count their curve
    kept->setCurve(nullptr);
    EXPECT_EQ(kept->curve, curves.at(1));
    koRef<koCurveLocation> loose(
            new koCurveLocation(nullptr, 0.5, koPoint(qQNaN(), qQNaN()), false, 0));
    EXPECT_TRUE(loose->point.isNaN());
}
