// Curve geometry benchmarks: the intersection search on typical pairs and the
// length of a cubic.
//
// Heap allocations are counted by interposing the C allocator (Qt's
// containers call malloc directly, operator new ends there too); the counters
// "allocs" report allocations per iteration.

#include "curve/kocurvelocation.h"
#include "curve/koopparam.h"
#include "path/kocurve.h"

#include <benchmark/benchmark.h>

#include <QtCore/QList>
#include <QtCore/QVector>

#include <atomic>
#include <cstddef>

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *pointer, std::size_t size);
void __libc_free(void *pointer);
}

namespace {
std::atomic<long> allocationCount{0};
}

extern "C" {
void *malloc(std::size_t size) noexcept
{
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}
void *calloc(std::size_t count, std::size_t size) noexcept
{
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, size);
}
void *realloc(void *pointer, std::size_t size) noexcept
{
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(pointer, size);
}
void free(void *pointer) noexcept
{
    __libc_free(pointer);
}
}

namespace {

// Two free curves (no path) made from curve values.
struct CurvePair
{
    QVector<double> v1, v2;
    koCurve *c1, *c2;
    CurvePair(const QVector<double> &a, const QVector<double> &b)
        : v1(a), v2(b), c1(new koCurve(a, nullptr)), c2(new koCurve(b, nullptr))
    {}
    ~CurvePair()
    {
        c1->release();
        c2->release();
    }
};

// An arch from (0, 0) to (100, 0), highest point (50, 45).
const QVector<double> arch = {0, 0, 0, 60, 100, 60, 100, 0};

void releaseAll(QList<koCurveLocation *> &locations)
{
    for (koCurveLocation *location : qAsConst(locations)) {
        koCurveLocation *partner = location->intersection;
        location->release();
        if (partner)
            partner->release();
    }
    locations.clear();
}

// One intersection search per iteration, including the release of the
// locations it found.
void runSearch(benchmark::State &state, const QVector<double> &a, const QVector<double> &b)
{
    CurvePair pair(a, b);
    QList<koCurveLocation *> locations;
    opParam param;
    int found = 0;
    const long before = allocationCount.load();
    for (auto _ : state) {
        koCurve::getIntersections(pair.v1, pair.v2, pair.c1, pair.c2, locations, param);
        found = locations.size();
        benchmark::DoNotOptimize(found);
        releaseAll(locations);
    }
    const long allocations = allocationCount.load() - before;
    state.counters["allocs"] = benchmark::Counter(double(allocations) / state.iterations());
    state.counters["found"] = found;
}

// The reduced control polygons are apart in y (x overlaps, so both axes are
// tested): rejected before any other work.
void BM_IntersectRejectedPair(benchmark::State &state)
{
    runSearch(state, arch, {0, 50, 30, 90, 70, 90, 100, 50});
}
BENCHMARK(BM_IntersectRejectedPair);

// A small arch under the big one: the bounds overlap, clipping finds nothing.
void BM_IntersectDisjointPair(benchmark::State &state)
{
    runSearch(state, arch, {30, 5, 30, 25, 70, 25, 70, 5});
}
BENCHMARK(BM_IntersectDisjointPair);

// A rising curve that leaves the arch through its top: one transversal
// crossing.
void BM_IntersectCrossingPair(benchmark::State &state)
{
    runSearch(state, arch, {20, -10, 40, 30, 60, 40, 80, 90});
}
BENCHMARK(BM_IntersectCrossingPair);

// Two arches touching at their highest points (50, 30).
void BM_IntersectTangentPair(benchmark::State &state)
{
    runSearch(state, {0, 0, 0, 40, 100, 40, 100, 0}, {0, 60, 0, 20, 100, 20, 100, 60});
}
BENCHMARK(BM_IntersectTangentPair);

void BM_CurveLength(benchmark::State &state)
{
    const QVector<double> v = {0, 0, 30, 80, 70, -40, 100, 20};
    const long before = allocationCount.load();
    for (auto _ : state) {
        double length = koCurve::getLength(v, 0, 1);
        benchmark::DoNotOptimize(length);
    }
    const long allocations = allocationCount.load() - before;
    state.counters["allocs"] = benchmark::Counter(double(allocations) / state.iterations());
}
BENCHMARK(BM_CurveLength);

} // namespace
