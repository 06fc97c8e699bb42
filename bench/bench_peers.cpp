// Boolean operations against the peers a Qt developer would use instead:
// QPainterPath's united/intersected/subtracted (always) and lib2geom's
// PathIntersectionGraph (when the build found it, RVBENCH_HAVE_2GEOM).
//
// Every library gets the same operands: the shapes are drawn once as
// QPainterPaths and converted to each library's own path type before the
// measured loop. The operations leave their operands untouched (XPath
// clones them, QPainterPath's are const, lib2geom copies them into its
// graph), so each iteration does the whole work on the same inputs; the
// result is built and destroyed inside the loop.
//
// Benchmarks are named BM_Peers/<workload>/<library> so that scripts/bench
// can group them into one table. Each benchmark also records the filled
// areas of its results (untimed, after its loop), and after the run the
// libraries' areas are compared per workload, with a warning on stderr
// where they differ by more than 0.1%: a fast wrong answer is not a result.
// The check uses the results just measured rather than a run of its own at
// set-up, because the largest workload takes minutes.

#include "booleanoracle.h"
#include "oraclegeometry.h"
#include "path/xpath.h"
#include "testglyphs.h"

#include <benchmark/benchmark.h>

#include <QtGui/QPainterPath>

#ifdef RVBENCH_HAVE_2GEOM
#include <2geom/bezier-curve.h>
#include <2geom/intersection-graph.h>
#include <2geom/path.h>
#include <2geom/pathvector.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

enum class Op { Unite, Intersect, Subtract };

// Spread of the libraries' result areas, relative to the largest, above
// which the check warns. Qt flattens curves to polygons, so its areas
// differ from the exact ones by its flattening error.
const double AreaWarning = 1e-3;

struct Workload
{
    std::string name;
    Op op = Op::Unite;
    //! Unite all shapes one by one (each result is the next operand);
    //! otherwise shapes 2k and 2k + 1 are a pair and an iteration is one
    //! operation on the next pair.
    bool chain = false;
    int iterations = 0; //!< fixed iteration count for slow workloads; 0: automatic
    std::vector<QPainterPath> shapes;

    int runs() const { return chain ? 1 : int(shapes.size() / 2); }
};

// Deterministic on every platform (the standard distributions are not).
double uniform(std::mt19937 &random, double low, double high)
{
    return low + (high - low) * (random() / 4294967296.0);
}

// --- the libraries, behind one interface --------------------------------------

struct Rvgraphics
{
    static constexpr const char *name = "rvgraphics";
    using Path = std::unique_ptr<XPath>;

    static Path convert(const QPainterPath &path) { return Path(rvOracle::toXPath(path, true)); }
    static Path apply(Op op, const Path &a, const Path &b)
    {
        if (!a || !b)
            return nullptr;
        switch (op) {
        case Op::Unite:
            return Path(a->unite(b.get()));
        case Op::Intersect:
            return Path(a->intersect(b.get()));
        case Op::Subtract:
            return Path(a->subtract(b.get()));
        }
        return nullptr;
    }
    static QPainterPath toPainterPath(const Path &path)
    {
        return rvOracle::toPainterPath(path.get());
    }
};

struct PainterPath
{
    static constexpr const char *name = "QPainterPath";
    using Path = QPainterPath;

    static Path convert(const QPainterPath &path) { return path; }
    static Path apply(Op op, const Path &a, const Path &b)
    {
        switch (op) {
        case Op::Unite:
            return a.united(b);
        case Op::Intersect:
            return a.intersected(b);
        case Op::Subtract:
            return a.subtracted(b);
        }
        return Path();
    }
    static QPainterPath toPainterPath(const Path &path) { return path; }
};

#ifdef RVBENCH_HAVE_2GEOM
struct Lib2geom
{
    static constexpr const char *name = "lib2geom";
    using Path = Geom::PathVector;

    static Geom::Point point(const QPointF &p) { return Geom::Point(p.x(), p.y()); }
    static QPointF point(const Geom::Point &p) { return QPointF(p[Geom::X], p[Geom::Y]); }

    // Closed subpaths of lines and cubics, as the other libraries get them.
    static Path convert(const QPainterPath &path)
    {
        Path result;
        for (int i = 0; i < path.elementCount(); ++i) {
            const QPainterPath::Element e = path.elementAt(i);
            if (e.isMoveTo()) {
                if (!result.empty())
                    result.back().close(true);
                result.push_back(Geom::Path(point(e)));
            } else if (e.isLineTo() && !result.empty()) {
                result.back().appendNew<Geom::LineSegment>(point(e));
            } else if (e.isCurveTo() && !result.empty() && i + 2 < path.elementCount()) {
                result.back().appendNew<Geom::CubicBezier>(point(e), point(path.elementAt(i + 1)),
                                                           point(path.elementAt(i + 2)));
                i += 2;
            }
        }
        if (!result.empty())
            result.back().close(true);
        return result;
    }
    static Path apply(Op op, const Path &a, const Path &b)
    {
        Geom::PathIntersectionGraph graph(a, b);
        switch (op) {
        case Op::Unite:
            return graph.getUnion();
        case Op::Intersect:
            return graph.getIntersection();
        case Op::Subtract:
            return graph.getAminusB();
        }
        return Path();
    }
    // Results are pieces of the operands' lines and cubics; any other curve
    // would be approximated by a polyline of its points.
    static QPainterPath toPainterPath(const Path &paths)
    {
        QPainterPath result;
        for (const Geom::Path &path : paths) {
            result.moveTo(point(path.initialPoint()));
            for (const Geom::Curve &curve : path) {
                const auto *bezier = dynamic_cast<const Geom::BezierCurve *>(&curve);
                if (bezier && bezier->order() == 3) {
                    result.cubicTo(point((*bezier)[1]), point((*bezier)[2]), point((*bezier)[3]));
                } else if (bezier && bezier->order() == 2) {
                    result.quadTo(point((*bezier)[1]), point((*bezier)[2]));
                } else if (bezier && bezier->order() == 1) {
                    result.lineTo(point(curve.finalPoint()));
                } else {
                    for (int k = 1; k <= 64; ++k)
                        result.lineTo(point(curve.pointAt(k / 64.0)));
                }
            }
            result.closeSubpath();
        }
        return result;
    }
};
#endif

// --- running a workload ----------------------------------------------------------

template<class Lib>
std::vector<typename Lib::Path> convertAll(const std::vector<QPainterPath> &shapes)
{
    std::vector<typename Lib::Path> result;
    result.reserve(shapes.size());
    for (const QPainterPath &shape : shapes)
        result.push_back(Lib::convert(shape));
    return result;
}

// The result of run \a run (a pair index) of \a workload.
template<class Lib>
typename Lib::Path runOnce(const Workload &workload, const std::vector<typename Lib::Path> &shapes,
                           int run)
{
    if (!workload.chain)
        return Lib::apply(workload.op, shapes[2 * run], shapes[2 * run + 1]);
    typename Lib::Path result = Lib::apply(Op::Unite, shapes[0], shapes[1]);
    for (size_t k = 2; k < shapes.size(); ++k)
        result = Lib::apply(Op::Unite, result, shapes[k]);
    return result;
}

// --- the area check --------------------------------------------------------------

/*
    Area filled by contours that neither cross nor overlap, as boolean results
    are: each contour's exact area (the oracle's closed form, no library's
    own), added or cut out by the parity of the contours around it. Nesting
    rather than orientation decides, since the libraries orient holes
    differently.
*/
double filledArea(const QPainterPath &path)
{
    using namespace rvOracle::geom;
    const QVector<Subpath> subpaths = subpathsOf(path);
    const QRectF box = path.controlPointRect();
    const double tolerance = std::max(1e-5 * std::hypot(box.width(), box.height()), 1e-9);
    const QVector<QPolygonF> polygons = flatten(subpaths, tolerance);
    QVector<QRectF> boxes;
    for (const QPolygonF &polygon : polygons)
        boxes << polygon.boundingRect();
    double total = 0;
    for (int i = 0; i < subpaths.size(); ++i) {
        const QPolygonF &polygon = polygons[i];
        const double area = std::abs(signedArea(subpaths[i]));
        if (area == 0 || polygon.size() < 2)
            continue;
        // The middle of the longest edge: the point least likely to lie on
        // another contour that touches this one.
        int longest = 0;
        auto edge = [&](int k) { return QLineF(polygon[k], polygon[(k + 1) % polygon.size()]); };
        for (int k = 1; k < polygon.size(); ++k)
            if (edge(k).length() > edge(longest).length())
                longest = k;
        const QPointF probe = edge(longest).center();
        int depth = 0;
        for (int j = 0; j < polygons.size(); ++j)
            if (j != i && boxes[j].contains(probe) && winding(polygons[j], probe) != 0)
                ++depth;
        total += depth % 2 ? -area : area;
    }
    return total;
}

// The filled areas of each library's results, per workload: one per pair,
// or the one of a chain.
struct LibraryAreas
{
    const char *library;
    std::vector<double> areas;
};
std::map<std::string, std::vector<LibraryAreas>> recordedAreas;

void recordAreas(const Workload &workload, const char *library, const std::vector<double> &areas)
{
    std::vector<LibraryAreas> &entries = recordedAreas[workload.name];
    for (LibraryAreas &entry : entries)
        if (std::strcmp(entry.library, library) == 0) {
            entry.areas = areas;
            return;
        }
    entries.push_back({library, areas});
}

// Compares the recorded areas of the libraries on each workload and warns
// where they disagree. Returns the number of warnings.
int checkAreas(const std::vector<Workload> &workloads)
{
    int warnings = 0;
    for (const Workload &workload : workloads) {
        const std::vector<LibraryAreas> &entries = recordedAreas[workload.name];
        if (entries.size() < 2)
            continue;
        for (int run = 0; run < workload.runs(); ++run) {
            double low = qInf(), high = -qInf();
            bool finite = true;
            for (const LibraryAreas &entry : entries) {
                const double area = run < int(entry.areas.size()) ? entry.areas[run] : qQNaN();
                low = std::min(low, area);
                high = std::max(high, area);
                finite = finite && std::isfinite(area);
            }
            const double spread = (high - low) / std::max(std::abs(high), 1e-300);
            if (finite && spread <= AreaWarning)
                continue;
            ++warnings;
            std::string line = "bench_peers: warning: result areas differ on " + workload.name;
            if (!workload.chain)
                line += " (pair " + std::to_string(run) + ")";
            line += ":";
            for (const LibraryAreas &entry : entries) {
                char text[80];
                std::snprintf(text, sizeof text, " %s %.9g", entry.library,
                              run < int(entry.areas.size()) ? entry.areas[run] : qQNaN());
                line += text;
            }
            char text[32];
            std::snprintf(text, sizeof text, " (%.3g%%)", 100 * spread);
            std::fprintf(stderr, "%s%s\n", line.c_str(), text);
        }
    }
    return warnings;
}

// --- the benchmarks -----------------------------------------------------------------

template<class Lib>
double areaOf(const typename Lib::Path &result)
{
    return filledArea(Lib::toPainterPath(result));
}

template<class Lib>
void measure(benchmark::State &state, const Workload &workload)
{
    const std::vector<typename Lib::Path> shapes = convertAll<Lib>(workload.shapes);
    typename Lib::Path result;
    int run = 0;
    for (auto _ : state) {
        try {
            result = runOnce<Lib>(workload, shapes, run);
        } catch (const std::exception &e) {
            state.SkipWithError(e.what());
            recordAreas(workload, Lib::name, {});
            return;
        }
        benchmark::DoNotOptimize(result);
        run = (run + 1) % workload.runs();
    }

    // Untimed: the chain's result just measured; the pairs once more each
    // (they take milliseconds).
    std::vector<double> areas;
    if (workload.chain) {
        areas.push_back(areaOf<Lib>(result));
    } else {
        for (int k = 0; k < workload.runs(); ++k) {
            try {
                areas.push_back(areaOf<Lib>(runOnce<Lib>(workload, shapes, k)));
            } catch (const std::exception &) {
                areas.push_back(qQNaN());
            }
        }
    }
    recordAreas(workload, Lib::name, areas);
}

template<class Lib>
void registerPeer(const Workload &workload)
{
    const std::string name = "BM_Peers/" + workload.name + "/" + Lib::name;
    benchmark::internal::Benchmark *b = benchmark::RegisterBenchmark(
            name.c_str(), [&workload](benchmark::State &state) { measure<Lib>(state, workload); });
    b->Unit(workload.chain ? benchmark::kMillisecond : benchmark::kMicrosecond);
    if (workload.iterations > 0)
        b->Iterations(workload.iterations);
}

// --- the workloads -----------------------------------------------------------------

// Text outlines: real-world curves (TrueType quadratics as cubics), holes,
// and the many nearly parallel crossings of a shape against a slightly
// shifted copy of itself.
std::vector<Workload> glyphWorkloads()
{
    QString why;
    const QPainterPath text = testGlyphs::outline(QStringLiteral("Geometry"), 0, 200, 200, &why);
    if (text.isEmpty()) {
        std::fprintf(stderr, "bench_peers: no glyph workloads: %s\n", qPrintable(why));
        return {};
    }
    const QPainterPath shifted = text.translated(6, 4);
    std::vector<Workload> result;
    for (auto [name, op] :
         {std::pair("glyphs-unite", Op::Unite), std::pair("glyphs-intersect", Op::Intersect),
          std::pair("glyphs-subtract", Op::Subtract)})
        result.push_back({name, op, false, 0, {text, shifted}});
    return result;
}

// A star with \a tips points around \a centre, its edges cubics bowed a
// little to either side: curve-curve crossings in general position.
QPainterPath star(std::mt19937 &random, const QPointF &centre, double radius, int tips)
{
    std::vector<QPointF> corners;
    const double phase = uniform(random, 0, 2 * M_PI);
    for (int i = 0; i < 2 * tips; ++i) {
        const double angle = phase + (i + uniform(random, -0.25, 0.25)) * M_PI / tips;
        const double r = radius * (i % 2 ? uniform(random, 0.35, 0.55) : uniform(random, 0.8, 1.0));
        corners.push_back(centre + r * QPointF(std::cos(angle), std::sin(angle)));
    }
    QPainterPath path;
    path.moveTo(corners[0]);
    for (size_t i = 0; i < corners.size(); ++i) {
        const QPointF from = corners[i], to = corners[(i + 1) % corners.size()];
        const QPointF chord = to - from, normal(-chord.y(), chord.x());
        path.cubicTo(from + chord / 3 + uniform(random, -0.1, 0.1) * normal,
                     from + 2 * chord / 3 + uniform(random, -0.1, 0.1) * normal, to);
    }
    path.closeSubpath();
    return path;
}

std::vector<Workload> starWorkloads()
{
    std::mt19937 random(20240611);
    std::vector<QPainterPath> stars;
    for (int pair = 0; pair < 16; ++pair) {
        const int tips = 5 + int(random() % 6);
        stars.push_back(star(random, QPointF(0, 0), 150, tips));
        const QPointF offset(uniform(random, -60, 60), uniform(random, -60, 60));
        stars.push_back(star(random, offset, uniform(random, 100, 180), tips + 1));
    }
    std::vector<Workload> result;
    for (auto [name, op] :
         {std::pair("stars-unite", Op::Unite), std::pair("stars-intersect", Op::Intersect),
          std::pair("stars-subtract", Op::Subtract)})
        result.push_back({name, op, false, 0, stars});
    return result;
}

// \a count circles united one by one: the accumulated result grows with
// every step, so this shows how the cost scales with the size of an operand
// and whether the results stay sound when they feed the next operation. The
// circles' areas add up to that of their 1000 x 1000 field, so they cover
// about two thirds of it and leave many holes.
Workload circleWorkload(int count, int iterations)
{
    std::mt19937 random(7 + count);
    const double meanRadius = 1000 * std::sqrt(1 / (M_PI * count));
    Workload w{"circles-" + std::to_string(count), Op::Unite, true, iterations, {}};
    for (int i = 0; i < count; ++i) {
        const QPointF centre(uniform(random, 0, 1000), uniform(random, 0, 1000));
        const double r = meanRadius * uniform(random, 0.6, 1.4);
        QPainterPath circle;
        circle.addEllipse(centre, r, r);
        w.shapes.push_back(circle);
    }
    return w;
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;

    // Built once and never resized: the benchmarks keep references.
    std::vector<Workload> workloads = glyphWorkloads();
    for (Workload &w : starWorkloads())
        workloads.push_back(std::move(w));
    workloads.push_back(circleWorkload(10, 0));
    workloads.push_back(circleWorkload(100, 0));
    workloads.push_back(circleWorkload(1000, 1));

    for (const Workload &workload : workloads) {
        registerPeer<Rvgraphics>(workload);
        registerPeer<PainterPath>(workload);
#ifdef RVBENCH_HAVE_2GEOM
        registerPeer<Lib2geom>(workload);
#endif
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    const int warnings = checkAreas(workloads);
    std::fprintf(stderr, "bench_peers: area check: %d warning%s\n", warnings,
                 warnings == 1 ? "" : "s");
    return 0;
}
