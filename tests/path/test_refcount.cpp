#include "pathtesthelpers.h"

#include "path/xpath.h"

#include <memory>

// Every construction and removal path frees each object exactly once; the
// sanitizer build checks the frees themselves.
class RefCount : public testing::Test
{
protected:
    void SetUp() override { resetProbes(); }
    void TearDown() override
    {
        for (const Probe &p : {ProbeSegment::counter(), ProbeCurve::counter(), ProbePath::counter(),
                               ProbeLocation::counter()})
            EXPECT_EQ(p.alive(), 0);
    }
};

TEST_F(RefCount, UnreferencedObjectIsFreedByItsFirstRelease)
{
    (new ProbeSegment(1, 2))->release();
    (new ProbePath)->release();
    (new ProbeCurve)->release();
    (new ProbeLocation(nullptr, 0.5, koPoint(), false, 0.0))->release();
    for (const Probe &p : {ProbeSegment::counter(), ProbePath::counter(), ProbeCurve::counter(),
                           ProbeLocation::counter()})
        EXPECT_TRUE(p.destroyed == 1 && p.lastSeen == -2);

    ProbeSegment *s = new ProbeSegment;
    s->addRef();
    s->addRef();
    s->release();
    EXPECT_EQ(s->refCount, 1);
    s->release();
    EXPECT_EQ(ProbeSegment::counter().destroyed, 2);
}

TEST_F(RefCount, HoldersKeepWhatTheyHold)
{
    ProbePath *path = new ProbePath(nullptr, true);
    for (int i = 0; i < 4; ++i)
        path->addSegment(new ProbeSegment(i, i * i));
    EXPECT_EQ(path->getCurves().size(), 4);
    EXPECT_EQ(path->segments.at(2)->refCount, 3); // the path and two curves
    koRef<koSegment> kept(path->segments.at(1));
    koRef<koCurve> curve(path->getFirstCurve());
    path->release();
    EXPECT_EQ(ProbePath::counter().destroyed, 1);
    EXPECT_EQ(ProbeSegment::counter().destroyed, 2);
    // Survivors no longer point at the freed path.
    EXPECT_TRUE(kept->path == nullptr && kept->index == -1 && curve->path() == nullptr);
    EXPECT_EQ(kept->refCount, 2); // ours and the curve's
    curve = koRef<koCurve>();
    EXPECT_EQ(ProbeSegment::counter().destroyed, 3);

    ProbeCurve *c = new ProbeCurve(nullptr, new ProbeSegment, new ProbeSegment);
    koCurve *copy = c->clone();
    c->release();
    EXPECT_EQ(ProbeSegment::counter().destroyed, 3);
    copy->release();
    EXPECT_EQ(ProbeSegment::counter().destroyed, 5);
}

TEST_F(RefCount, RemovalPathsFreeExactlyOnce)
{
    for (bool closed : {false, true}) {
        for (bool built : {false, true}) {
            koRef<koPath> path(new ProbePath(nullptr, closed));
            for (int i = 0; i < 6; ++i)
                path->addSegment(new ProbeSegment(i, 0));
            if (built)
                path->getCurves();
            EXPECT_TRUE(path->removeSegment(0));
            EXPECT_TRUE(path->segments.last()->remove());
            EXPECT_TRUE(path->getCurves().at(1)->remove());
            QList<koSegment *> segs;
            QList<koCurve *> curves;
            path->removeSegments(segs, curves, 1, -1, true);
            EXPECT_TRUE(pathIsConsistent(path.get()));
            EXPECT_EQ(ProbeSegment::counter().alive(), 1);
            path->setSegments({});
            EXPECT_EQ(ProbeSegment::counter().alive(), 0);
        }
    }
}

TEST_F(RefCount, GivenCurvesAreHandedOver)
{
    koRef<koPath> path(polygonPath({{0, 0}, {1, 0}}, false));
    path->getCurves();
    // One link is new: one curve is used, the spare one is let go.
    ProbeCurve *used = new ProbeCurve, *spare = new ProbeCurve;
    used->addRef(); // the references the caller's list holds
    spare->addRef();
    path->addSegments({new ProbeSegment(2, 0)}, -1, {used, spare});
    EXPECT_EQ(ProbeCurve::counter().destroyed, 1);
    EXPECT_TRUE(path->curves.at(1) == used && used->refCount == 1);
    EXPECT_TRUE(pathIsConsistent(path.get()));
}

TEST_F(RefCount, SegmentReleasesItsLocation)
{
    koRef<koPath> path(polygonPath({{0, 0}, {1, 0}}, false));
    path->segments.first()->setIntersection(
            new ProbeLocation(path->getFirstCurve(), 0.25, koPoint(), false, 0.0));
    EXPECT_TRUE(path->removeSegment(0));
    EXPECT_EQ(ProbeLocation::counter().destroyed, 1);
}

TEST_F(RefCount, CompoundPathReleasesChildren)
{
    koRef<koPath> kept(new ProbePath(nullptr, true));
    {
        XPath xp;
        xp.addChildren({new ProbePath, kept.get()});
        std::unique_ptr<XPath> copy(xp.clone());
        EXPECT_EQ(ProbePath::counter().made, 2); // clones are plain paths
    }
    EXPECT_EQ(ProbePath::counter().destroyed, 1);
    EXPECT_TRUE(kept->parent == nullptr && kept->refCount == 1);
}
