#include "curve/kocurvelocation.h"

#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"

koCurveLocation::koCurveLocation(koCurve *curve, double time, const koPoint &point, bool overlap,
                                 double distance)
    : overlap(overlap), distance(distance)
{
    // The end of one curve is the start of the next: store it there, so that
    // equal places compare equal by curve and time.
    if (curve && time > koTolerance::CurveTimeMax) {
        if (koCurve *next = curve->getNext()) {
            curve = next;
            time = 0;
        }
    }
    setCurve(curve);
    this->time = time;
    if (!point.isNaN())
        this->point = point;
    else if (curve)
        this->point = curve->getPointAtTime(time);
    else
        this->point = point;
}

koCurveLocation::~koCurveLocation() = default;

void koCurveLocation::release()
{
    if (refCount > 1) {
        --refCount;
        return;
    }
    refCount = -2;
    delete this;
}

void koCurveLocation::setCurve(koCurve *c)
{
    if (!c)
        return;
    path = c->path();
    version = path ? path->version : 0;
    segment = nullptr;
    curve = c;
    segment1 = c->segment1();
    segment2 = c->segment2();
}
