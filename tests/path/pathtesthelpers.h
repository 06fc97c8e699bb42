#ifndef PATHTESTHELPERS_H
#define PATHTESTHELPERS_H

#include "curve/kocurvelocation.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/koref.h"
#include "path/kosegment.h"

#include <QtCore/QString>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <initializer_list>
#include <random>
#include <string>
#include <utility>

// Hex-float text, pasteable into a regression test.
inline std::string hex(double v)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%a", v);
    return buffer;
}
inline std::string hex(const koPoint &p)
{
    return "koPoint(" + hex(p.x) + ", " + hex(p.y) + ")";
}

// Counts constructions and destructions per kind and the refCount seen at destruction.
struct Probe
{
    int made = 0, destroyed = 0, lastSeen = 0;
    int alive() const { return made - destroyed; }
};

template<class Base>
struct Probed : Base
{
    template<class... Args>
    explicit Probed(Args &&...args) : Base(std::forward<Args>(args)...)
    {
        ++counter().made;
    }
    ~Probed() override
    {
        ++counter().destroyed;
        counter().lastSeen = this->refCount;
    }
    static Probe &counter()
    {
        static Probe p;
        return p;
    }
};
using ProbeSegment = Probed<koSegment>;
using ProbeCurve = Probed<koCurve>;
using ProbePath = Probed<koPath>;
using ProbeLocation = Probed<koCurveLocation>;

inline void resetProbes()
{
    ProbeSegment::counter() = ProbeCurve::counter() = ProbePath::counter() =
            ProbeLocation::counter() = Probe();
}

// A path of straight segments, built through the model only.
inline koPath *polygonPath(std::initializer_list<koPoint> points, bool closed)
{
    koPath *path = new koPath(nullptr, closed);
    for (const koPoint &p : points)
        path->addSegment(new koSegment(p.x, p.y));
    return path;
}

// Four cubic quarter arcs through right, bottom, left, top: clockwise on
// screen (y down).
inline koPath *circlePath(const koPoint &c, double r)
{
    const double k = 0.5522847498307936 * r;
    const koPoint pts[4] = {{c.x + r, c.y}, {c.x, c.y + r}, {c.x - r, c.y}, {c.x, c.y - r}};
    const koPoint out[4] = {{0, k}, {-k, 0}, {0, -k}, {k, 0}};
    koPath *path = new koPath(nullptr, true);
    for (int i = 0; i < 4; ++i)
        path->addSegment(new koSegment(pts[i], -out[i], out[i]));
    return path;
}

// Random segments with points in [lo, hi)^2 and, if curved, handle
// coordinates within +-handle.
inline koPath *randomPath(std::mt19937 &rng, bool curved, bool closed, int n, double lo = 0,
                          double hi = 100, double handle = 30)
{
    std::uniform_real_distribution<double> pos(lo, hi),
            h(curved ? -handle : 0, curved ? handle : 0);
    koPath *path = new koPath(nullptr, closed);
    for (int i = 0; i < n; ++i) {
        path->addSegment(new koSegment(koPoint(pos(rng), pos(rng)), koPoint(h(rng), h(rng)),
                                       koPoint(h(rng), h(rng))));
    }
    return path;
}

inline QVector<koPoint> pointsOf(const koPath *path)
{
    QVector<koPoint> points;
    for (const koSegment *s : path->segments)
        points.append(s->point);
    return points;
}

// The segments as hex-float literals, to paste a failing case into a test.
inline std::string pathText(const koPath *path)
{
    std::string text = path->closed ? "closed:" : "open:";
    for (const koSegment *s : path->segments) {
        text += " {" + hex(s->point.x) + ", " + hex(s->point.y) + ", " + hex(s->handleIn.x) + ", "
                + hex(s->handleIn.y) + ", " + hex(s->handleOut.x) + ", " + hex(s->handleOut.y)
                + "}";
    }
    return text;
}

using CubicPoints = std::array<koPoint, 4>;

// The cubics the paths trace, read from their segments (a lone point counts).
inline QVector<CubicPoints> tracedCubics(std::initializer_list<const koPath *> paths)
{
    QVector<CubicPoints> out;
    for (const koPath *path : paths) {
        const int n = path->segments.size();
        for (int i = 0; i < (n == 1 ? 1 : (path->closed ? n : n - 1)); ++i) {
            const koSegment *a = path->segments.at(i), *b = path->segments.at((i + 1) % n);
            out.append({a->point, a->point + a->handleOut, b->point + b->handleIn, b->point});
        }
    }
    return out;
}

// Bernstein form, independent of the library's evaluation.
inline koPoint bernstein(const CubicPoints &c, double t)
{
    const double u = 1 - t;
    return c[0] * (u * u * u) + c[1] * (3 * u * u * t) + c[2] * (3 * u * t * t)
            + c[3] * (t * t * t);
}

// Segment indices match positions, curve i joins segments i and i + 1 (cyclic), the curve
// count is the implied one, and every reference has its holder.
inline testing::AssertionResult pathIsConsistent(koPath *path)
{
    const int n = path->segments.size();
    const int nc = path->curves.size();
    if (nc != 0 && nc != int(path->_countCurves()))
        return testing::AssertionFailure() << nc << " curves for " << n << " segments";
    QVector<int> refs(n, 1);
    for (int i = 0; i < nc; ++i) {
        koCurve *c = path->curves.at(i);
        const int j = i + 1 < n ? i + 1 : 0;
        if (c->path() != path || c->segment1() != path->segments.at(i)
            || c->segment2() != path->segments.at(j) || c->refCount != 1)
            return testing::AssertionFailure() << "curve " << i << " of " << nc << " is mislinked";
        ++refs[i];
        ++refs[j];
    }
    for (int i = 0; i < n; ++i) {
        const koSegment *s = path->segments.at(i);
        if (s->path != path || s->index != i || s->refCount != refs.at(i))
            return testing::AssertionFailure()
                    << "segment " << i << ": index " << s->index << " refCount " << s->refCount
                    << " expected " << refs.at(i);
    }
    return testing::AssertionSuccess();
}

#endif // PATHTESTHELPERS_H
