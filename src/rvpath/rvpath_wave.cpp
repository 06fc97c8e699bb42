// Line effects that walk a path by length: smoothing through the core,
// the hand-drawn line (points displaced by 1-D Perlin noise) and wave lines.

#include "rvpath/rvpath.h"

#include "geometry/konumeric.h"
#include "geometry/kotolerance.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/kosegment.h"
#include "path/xpath.h"
#include "rvpath/rvvector_p.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cmath>

namespace {

// Handle factor of smooth() (the exact spline for the spline types).
constexpr double SmoothFactor = 0.5;
// Frequency of the noise per unit of arc length in manualPath(): neighbouring
// points are displaced coherently.
constexpr double NoiseFrequency = 0.05;
// Bound of the points of manualPath() (a finer step grows to the length
// divided by this) and of the wave pieces of one subpath (longer pieces
// beyond it); even, so that alternating waves still close.
constexpr double MaxSamples = 1e6;
constexpr double MaxPieces = 100000;

// A point and unit tangent at a length along a path, by koPath::getLocationAt()'s
// mapping (whole-unit running length, the whole length ending at time 1 of
// the last curve), found by a forward scan that makes walks in increasing
// offsets linear instead of quadratic in the number of curves.
class Walker
{
public:
    explicit Walker(koPath *path) : m_length(path->getLength())
    {
        double running = 0;
        for (koCurve *curve : path->getCurves()) {
            Entry entry;
            entry.values = curve->getValues();
            entry.before = running;
            running = std::trunc(running + curve->getLength());
            entry.running = running;
            m_entries.append(entry);
        }
    }

    double length() const { return m_length; }

    // False where koPath::getLocationAt() gives no location.
    bool at(double offset, QPointF *point, QPointF *tangent)
    {
        if (offset < 0)
            offset += m_length;
        if (!(offset >= 0) || m_entries.isEmpty())
            return false;
        if (offset < m_entries.at(m_hint).before)
            m_hint = 0;
        for (int i = m_hint; i < m_entries.size(); ++i) {
            const Entry &entry = m_entries.at(i);
            if (offset < entry.running) {
                m_hint = i;
                const double t = koCurve::getTimeAt(entry.values, offset - entry.before,
                                                    koTolerance::NoTime);
                return t >= 0 && t <= 1 && evaluate(entry.values, t, point, tangent);
            }
        }
        return offset <= m_length && evaluate(m_entries.last().values, 1, point, tangent);
    }

private:
    struct Entry
    {
        QVector<double> values;
        double before = 0;
        double running = 0;
    };

    static bool evaluate(const QVector<double> &values, double t, QPointF *point, QPointF *tangent)
    {
        *point = koCurve::getPoint(values, t).toPt();
        *tangent = koCurve::getTangent(values, t).toPt();
        return rvVector::isFinite(*point);
    }

    QVector<Entry> m_entries;
    double m_length;
    int m_hint = 0;
};

// The sideways direction of the effects for the unit tangent t: (t.y, -t.x),
// the side of RVPath::parallelPath()'s positive distances. Zero where the
// tangent is unknown, so that such points stay on the path.
inline QPointF side(const QPointF &t)
{
    if (!rvVector::isFinite(t))
        return QPointF();
    return QPointF(t.y(), -t.x());
}

// One step of a wave pattern within a piece: a line to, or a cubic through,
// points given as (fraction of the piece along the path, multiple of the
// height across it).
struct WaveOp
{
    int points; // 1: line, 3: cubic
    double u[3];
    double d[3];
};

// Quarter sine as one cubic: handles at (0.3516, 0.5523) and (0.6484, 1) of
// the quarter's length and height (slope 1 at the start, level at the peak,
// the middle on the sine).
constexpr double QA = 0.3516;
constexpr double QH = 0.5523;

// 0: half sine waves, alternating sides piece by piece.
const WaveOp HalfSine[] = {
        {3, {QA / 2, (1 - QA) / 2, 0.5}, {QH, 1, 1}},
        {3, {0.5 + QA / 2, 1 - QA / 2, 1}, {1, QH, 0}},
};
// 1: a bump on one side (scallops, a cloud's edge): at half a piece's height a
// half circle.
const WaveOp Bump[] = {{3, {0, 1, 1}, {4.0 / 3.0, 4.0 / 3.0, 0}}};
// 2: a curl, one loop per piece: the prolate cycloid u = theta / 2pi -
// CurlReach sin(theta), d = (1 - cos(theta)) / 2 in four Hermite quarters
// (handles a third of the derivative times the quarter's pi / 2). It runs
// back near the path, so neighbouring pieces cross in loops there.
constexpr double CurlReach = 0.3;
constexpr double CurlK = M_PI / 6;
constexpr double CurlU = 1 / (2 * M_PI);
const WaveOp Loop[] = {
        {3,
         {CurlK * (CurlU - CurlReach), 0.25 - CurlReach - CurlK *CurlU, 0.25 - CurlReach},
         {0, 0.5 - CurlK / 2, 0.5}},
        {3,
         {0.25 - CurlReach + CurlK * CurlU, 0.5 - CurlK *(CurlU + CurlReach), 0.5},
         {0.5 + CurlK / 2, 1, 1}},
        {3,
         {0.5 + CurlK * (CurlU + CurlReach), 0.75 + CurlReach - CurlK *CurlU, 0.75 + CurlReach},
         {1, 0.5 + CurlK / 2, 0.5}},
        {3,
         {0.75 + CurlReach + CurlK * CurlU, 1 - CurlK *(CurlU - CurlReach), 1},
         {0.5 - CurlK / 2, 0, 0}},
};
// 3: zigzag, apexes alternating sides.
const WaveOp Zigzag[] = {{1, {0.5}, {1}}, {1, {1}, {0}}};
// 4: sawtooth, rising across the piece and dropping at its end.
const WaveOp Sawtooth[] = {{1, {0}, {-1}}, {1, {1}, {1}}};
// 5: a whole sine period per piece.
const WaveOp FullSine[] = {
        {3, {QA / 4, (1 - QA) / 4, 0.25}, {QH, 1, 1}},
        {3, {0.25 + QA / 4, 0.5 - QA / 4, 0.5}, {1, QH, 0}},
        {3, {0.5 + QA / 4, 0.75 - QA / 4, 0.75}, {-QH, -1, -1}},
        {3, {0.75 + QA / 4, 1 - QA / 4, 1}, {-1, -QH, 0}},
};
// 6: square wave, alternating sides.
const WaveOp Square[] = {{1, {0}, {1}}, {1, {1}, {1}}};

struct WaveShape
{
    const WaveOp *ops;
    int count;
    bool alternates; // sides alternate piece by piece
    bool offCentre;  // pieces end off the path: a step back to it at the end
};

WaveShape waveShape(int kind)
{
    switch (kind) {
    case 0:
        return {HalfSine, 2, true, false};
    case 2:
        return {Loop, 4, false, false};
    case 3:
        return {Zigzag, 2, true, false};
    case 4:
        return {Sawtooth, 2, false, true};
    case 5:
        return {FullSine, 4, false, false};
    case 6:
        return {Square, 2, true, true};
    default:
        return {Bump, 1, false, false};
    }
}

// Point at \a offset along the walked path displaced by \a across along
// side(). Offsets beyond the ends wrap round a closed path and continue along
// the end tangent of an open one.
bool wavePoint(Walker &walk, bool closed, double offset, double across, QPointF *out)
{
    const double length = walk.length();
    double beyond = 0;
    if (offset < 0 || offset > length) {
        if (closed && length > 0) {
            offset = std::fmod(offset, length);
            if (offset < 0)
                offset += length;
        } else {
            beyond = offset < 0 ? offset : offset - length;
            offset = offset < 0 ? 0 : length;
        }
    }
    QPointF p, t;
    if (!walk.at(offset, &p, &t))
        return false;
    const QPointF n = side(t);
    if (beyond != 0 && !n.isNull())
        p += beyond * QPointF(-n.y(), n.x());
    *out = p + across * n;
    return true;
}

} // namespace

void RVPath::smooth(int type)
{
    XPath x;
    toXPath(x, 0);
    for (koPath *child : x.getChildren())
        child->smooth(type, SmoothFactor, 0, -1);
    clear();
    fromXPath(x, 0, -1);
}

void RVPath::manualPath(RVPath &source, double amplitude, double step)
{
    if (source.isEmpty() || !(step > 0) || !qIsFinite(step) || !qIsFinite(amplitude))
        return;
    XPath x;
    source._toXPathAsDrawn(x, 0);
    koPath *first = x.getFirstChild();
    if (!first)
        return;
    Walker walk(first);
    const double length = walk.length();

    // The first subpath of the (tidied) source: its start, end and closing.
    const QVector<RVPathElement> &elements = source.elements();
    int end = 1;
    while (end < elements.size() && elements.at(end).type != RVPathElement::MoveTo)
        ++end;
    const RVPathElement &startElement = elements.first(), &lastElement = elements.at(end - 1);
    const bool closed = lastElement.type == RVPathElement::Close;
    const QPointF s(startElement.x, startElement.y);
    const QPointF e = closed ? s : QPointF(lastElement.x, lastElement.y);

    RVPath result;
    result.moveTo(s.x(), s.y());
    if (length > 0 && qIsFinite(length)) {
        const double h = std::max(step, length / MaxSamples);
        QPointF q = s;
        for (int j = 1; j <= int(MaxSamples) + 1; ++j) {
            const double offset = j * h;
            if (!(offset < length))
                break;
            QPointF p, t;
            if (walk.at(offset, &p, &t)) {
                const double n = koNumeric::perlinNoise_1D(offset * NoiseFrequency) * amplitude;
                q = p + n * side(t);
            }
            result.lineTo(q.x(), q.y());
        }
    }
    result.lineTo(e.x(), e.y());
    if (closed)
        result.closeSubpath();
    clear();
    for (const RVPathElement &element : result.elements())
        m_elements.append(element);
}

void RVPath::wavePath(RVPath &out, int kind, double wavelength, double amplitude, double factor)
{
    // Built before out is cleared: out may be this path.
    XPath x;
    _toXPathAsDrawn(x, 0);
    out.clear();
    const double height = factor * (amplitude == -1.0 ? wavelength * 0.5 : amplitude);
    if (!(wavelength > 0) || !qIsFinite(height))
        return;
    const WaveShape shape = waveShape(kind);
    const QVector<koPath *> children = x.getChildren();
    for (int c = 0; c < children.size(); ++c) {
        koPath *child = children.at(c);
        if (child->isEmpty())
            continue;
        const bool closed = child->isClosed();
        Walker walk(child);
        const double length = walk.length();
        const double quotient = length / wavelength;
        double n = quotient > 0 && qIsFinite(quotient) ? roundValue(quotient) : 0;
        if (closed && shape.alternates && std::fmod(n, 2) == 1)
            n = n < quotient ? n + 1 : n - 1;
        n = std::min(n, MaxPieces);
        if (n < 1) {
            // Shorter than half a wave: the subpath as it is.
            out.fromXPath(x, c, c + 1);
            continue;
        }
        const double piece = length / n;
        const int pieces = int(n);
        // Room for the whole wave: at most 12 elements a piece.
        out.m_elements.reserve(out.m_elements.size() + 12 * pieces + 4);
        const koPoint start = child->getFirstSegment()->point;
        out.moveTo(start.x, start.y);
        for (int k = 0; k < pieces; ++k) {
            const double sign = shape.alternates && k % 2 ? -1 : 1;
            for (int i = 0; i < shape.count; ++i) {
                const WaveOp &op = shape.ops[i];
                QPointF p[3];
                bool ok = true;
                for (int j = 0; j < op.points && ok; ++j)
                    ok = wavePoint(walk, closed, (k + op.u[j]) * piece, sign * op.d[j] * height,
                                   &p[j]);
                if (!ok)
                    continue;
                if (op.points == 3)
                    out.cubicTo(p[0], p[1], p[2]);
                else
                    out.lineTo(p[0].x(), p[0].y());
            }
        }
        if (shape.offCentre) {
            QPointF p;
            if (wavePoint(walk, closed, length, 0, &p))
                out.lineTo(p.x(), p.y());
        }
        if (closed)
            out.closeSubpath();
    }
}
