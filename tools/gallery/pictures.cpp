// The gallery's pictures: every boolean operation and line effect of the
// library on the sample shapes, each made by one call named in its title.

#include "pictures.h"

#include "booleanoracle.h"
#include "samples.h"

#include "noise/noise.h"
#include "path/xpath.h"
#include "rvpath/rvcurve.h"
#include "rvpath/rvpath.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace gallery {

namespace {

using rvRender::Layer;
using namespace gallerySamples;

Layer layer(const QPainterPath &path, Layer::Role role, const QString &label)
{
    Layer l;
    l.path = path;
    l.role = role;
    l.label = label;
    return l;
}

Layer operand(const QPainterPath &path, const QString &label)
{
    return layer(path, Layer::Operand, label);
}

Layer result(const QPainterPath &path, const QString &label)
{
    return layer(path, Layer::Result, label);
}

Layer guide(const QPainterPath &path, const QString &label = QString())
{
    return layer(path, Layer::Guide, label);
}

// Marker points as one polyline: QPainterPath merges consecutive moves and
// drops a line to the current point, so lone points would get lost.
Layer markers(const QVector<QPointF> &points, const QString &label)
{
    QPainterPath path;
    for (int i = 0; i < points.size(); ++i) {
        if (i == 0)
            path.moveTo(points[i]);
        else
            path.lineTo(points[i]);
    }
    return layer(path, Layer::Marker, label);
}

// QPainterPath has no close element: closeSubpath() only ends a subpath on
// its start. RVPath marks closed subpaths, so each subpath that ends on its
// start point is closed explicitly after its elements are copied.
RVPath toRV(const QPainterPath &path)
{
    RVPath rv;
    const int n = path.elementCount();
    for (int start = 0; start < n;) {
        int end = start + 1;
        while (end < n && path.elementAt(end).type != QPainterPath::MoveToElement)
            ++end;
        QPainterPath sub;
        sub.moveTo(path.elementAt(start).x, path.elementAt(start).y);
        for (int i = start + 1; i < end; ++i) {
            const QPainterPath::Element e = path.elementAt(i);
            if (e.type == QPainterPath::CurveToElement && i + 2 < end) {
                sub.cubicTo(e, path.elementAt(i + 1), path.elementAt(i + 2));
                i += 2;
            } else {
                sub.lineTo(e);
            }
        }
        rv.fromPainterPath(sub);
        const QPointF first = path.elementAt(start), last = path.elementAt(end - 1);
        if (end - start > 2 && first == last)
            rv.closeSubpath();
        start = end;
    }
    return rv;
}

QPainterPath toQt(const RVPath &rv)
{
    QPainterPath path;
    rv.toPainterPath(path);
    return path;
}

QPainterPath joined(const QPainterPath &a, const QPainterPath &b)
{
    QPainterPath path = a;
    path.addPath(b);
    return path;
}

// --- sample shapes -------------------------------------------------------------

QPainterPath glyphG()
{
    return glyph(QStringLiteral("g"), QPointF(20, 200), 260);
}

QPainterPath curvedStar()
{
    return star(QPointF(175, 110), 5, 115, 50, 0.12);
}

QPainterPath polyline()
{
    return zigzag(QPointF(20, 180), 4, 70, 120);
}

QPainterPath sShape()
{
    return sCurve(QPointF(20, 200), QPointF(320, 60), 90);
}

// A polygonal star: straight lines, so that every tip is a sharp corner.
QPainterPath polygonStar(const QPointF &centre, double outer, double inner)
{
    QPainterPath path;
    for (int i = 0; i < 10; ++i) {
        const double a = M_PI * i / 5 - M_PI / 2;
        const double r = i % 2 ? inner : outer;
        const QPointF p = centre + QPointF(r * std::cos(a), r * std::sin(a));
        if (i == 0)
            path.moveTo(p);
        else
            path.lineTo(p);
    }
    path.closeSubpath();
    return path;
}

// --- compound-path booleans ------------------------------------------------------

struct XPathDeleter
{
    void operator()(XPath *p) const { delete p; }
};
using XPathPtr = std::unique_ptr<XPath, XPathDeleter>;

XPathPtr toXPath(const QPainterPath &path)
{
    XPathPtr x(rvOracle::toXPath(path));
    x->setEvenOdd(path.fillRule() == Qt::OddEvenFill);
    return x;
}

enum class XOp { Unite, Intersect, Subtract, Exclude };

Drawing xpathBoolean(XOp op, const QPainterPath &a, const QString &aName, const QPainterPath &b,
                     const QString &bName, const QString &call)
{
    const XPathPtr xa = toXPath(a), xb = toXPath(b);
    XPathPtr r;
    switch (op) {
    case XOp::Unite:
        r.reset(xa->unite(xb.get()));
        break;
    case XOp::Intersect:
        r.reset(xa->intersect(xb.get()));
        break;
    case XOp::Subtract:
        r.reset(xa->subtract(xb.get()));
        break;
    case XOp::Exclude:
        r.reset(xa->exclude(xb.get()));
        break;
    }
    Drawing d;
    d.layers << operand(a, QStringLiteral("a: ") + aName)
             << operand(b, QStringLiteral("b: ") + bName)
             << result(rvOracle::toPainterPath(r.get()), call);
    return d;
}

Drawing xpathDivide(const QPainterPath &a, const QString &aName, const QPainterPath &b,
                    const QString &bName)
{
    const XPathPtr xa = toXPath(a), xb = toXPath(b);
    const QList<XPath *> parts = xa->divide(xb.get());
    Drawing d;
    d.layers << operand(a, QStringLiteral("a: ") + aName)
             << operand(b, QStringLiteral("b: ") + bName);
    const QString names[] = {QStringLiteral("[0] a - b"), QStringLiteral("[1] a within b")};
    for (int i = 0; i < parts.size(); ++i) {
        d.layers << result(rvOracle::toPainterPath(parts[i]),
                           i < 2 ? names[i] : QStringLiteral("[%1]").arg(i));
        delete parts[i];
    }
    if (parts.size() != 2)
        d.notes << QStringLiteral("divide() returned %1 compound paths, expected 2")
                           .arg(parts.size());
    return d;
}

// --- RVPath booleans ---------------------------------------------------------------

enum class RVOp { Unite, Intersect, Subtract };

Drawing rvBoolean(RVOp op, const QPainterPath &a, const QString &aName, const QPainterPath &b,
                  const QString &bName, const QString &call)
{
    RVPath ra = toRV(a), rb = toRV(b);
    switch (op) {
    case RVOp::Unite:
        ra.unite(rb);
        break;
    case RVOp::Intersect:
        ra.intersect(rb);
        break;
    case RVOp::Subtract:
        ra.subtract(rb);
        break;
    }
    Drawing d;
    d.layers << operand(a, QStringLiteral("a: ") + aName)
             << operand(b, QStringLiteral("b: ") + bName) << result(toQt(ra), call);
    return d;
}

// --- line effects ------------------------------------------------------------------

// Source faint under the effect; closed sources again as a dashed guide on
// top, since a filled result may cover them.
Drawing effect(const QPainterPath &source, const QString &sourceName, const QPainterPath &out,
               const QString &outName)
{
    Drawing d;
    d.layers << operand(source, sourceName) << result(out, outName);
    d.layers << guide(source);
    return d;
}

Drawing parallel(const QPainterPath &source, const QString &sourceName, double distance,
                 double step)
{
    const RVPath path = toRV(source);
    RVPath out;
    path.parallelPath(out, distance, step);
    return effect(source, QStringLiteral("path: ") + sourceName, toQt(out), QStringLiteral("out"));
}

Drawing thick(const QPainterPath &source, const QString &sourceName, double w0, double w1,
              double step)
{
    RVPath path = toRV(source);
    RVPath out;
    path.thickPath(out, w0, w1, step);
    Drawing d =
            effect(source, QStringLiteral("path: ") + sourceName, toQt(out), QStringLiteral("out"));
    // The source runs inside the outline: only the dashed guide shows it.
    d.layers.removeFirst();
    d.layers.last().label = QStringLiteral("path: ") + sourceName;
    return d;
}

Drawing rounded(const QPainterPath &source, const QString &sourceName, double radius)
{
    RVPath path = toRV(source);
    path.setCornerRound(radius);
    return effect(source, QStringLiteral("path before: ") + sourceName, toQt(path),
                  QStringLiteral("path after"));
}

Drawing smoothed(const QPainterPath &source, const QString &sourceName, int type)
{
    RVPath path = toRV(source);
    path.smooth(type);
    return effect(source, QStringLiteral("path before: ") + sourceName, toQt(path),
                  QStringLiteral("path after"));
}

Drawing manual(const QPainterPath &source, const QString &sourceName, double amplitude, double step)
{
    RVPath path = toRV(source);
    RVPath out;
    out.manualPath(path, amplitude, step);
    return effect(source, QStringLiteral("path: ") + sourceName, toQt(out), QStringLiteral("out"));
}

Drawing wave(const QPainterPath &source, const QString &sourceName, int kind, double wavelength,
             double amplitude, double factor)
{
    RVPath path = toRV(source);
    RVPath out;
    path.wavePath(out, kind, wavelength, amplitude, factor);
    return effect(source, QStringLiteral("path: ") + sourceName, toQt(out), QStringLiteral("out"));
}

// An arrow triangle from the cut end \a base to the recorded tip.
void addArrow(QPainterPath *arrows, const QPointF &base, const QPointF &tip)
{
    const QPointF d = tip - base;
    const double length = std::hypot(d.x(), d.y());
    // (0, 0) is what an end without a head records.
    if (tip == QPointF(0, 0) || !(length > 0.5))
        return;
    const QPointF n = QPointF(-d.y(), d.x()) * 0.45;
    arrows->moveTo(tip);
    arrows->lineTo(base + n);
    arrows->lineTo(base - n);
    arrows->closeSubpath();
}

Drawing lineHeads(const QPainterPath &source, const QString &sourceName, double startLength,
                  double endLength)
{
    RVPath path = toRV(source);
    path.setLineHead(startLength, endLength);
    QPainterPath arrows;
    const int n = path.elementCount();
    for (int s = 0; s < n;) {
        int e = s + 1;
        bool closed = false;
        while (e < n && path.elementAt(e).type != RVPathElement::MoveTo)
            closed |= path.elementAt(e++).type == RVPathElement::Close;
        if (!closed && e - s > 1) {
            const RVPathElement &first = path.elementAt(s);
            const RVPathElement &last = path.elementAt(e - 1);
            addArrow(&arrows, QPointF(first.x, first.y), QPointF(first.headX, first.headY));
            addArrow(&arrows, QPointF(last.x, last.y), QPointF(last.headX, last.headY));
        }
        s = e;
    }
    Drawing d;
    d.layers << operand(source, QStringLiteral("path before: ") + sourceName)
             << result(toQt(path), QStringLiteral("path after"))
             << result(arrows, QStringLiteral("triangles to headX/headY"));
    if (arrows.isEmpty())
        d.notes << QStringLiteral("no tip recorded in headX/headY");
    return d;
}

// --- RVCurve -------------------------------------------------------------------------

const QPointF CurveP0(20, 220), CurveC1(60, 20), CurveC2(300, 20), CurveP3(340, 200);

QPainterPath sampleCubic()
{
    QPainterPath path;
    path.moveTo(CurveP0);
    path.cubicTo(CurveC1, CurveC2, CurveP3);
    return path;
}

QPainterPath controlPolygon()
{
    QPainterPath path;
    path.moveTo(CurveP0);
    path.lineTo(CurveC1);
    path.lineTo(CurveC2);
    path.lineTo(CurveP3);
    return path;
}

Drawing curveWalk()
{
    RVCurve c(CurveP0, CurveC1, CurveC2, CurveP3);
    c.density = 0.05;
    c.init(CurveP0, CurveC1, CurveC2, CurveP3);
    QVector<QPointF> points;
    double x = 0, y = 0;
    // The walk gives steps + 1 points; the bound guards a cursor gone wrong.
    for (int guard = 0; guard < c.steps + 8 && c.vertex(&x, &y); ++guard)
        points.append(QPointF(x, y));
    Drawing d;
    d.layers << guide(controlPolygon(), QStringLiteral("control polygon"))
             << operand(sampleCubic(), QStringLiteral("the cubic"))
             << markers(points,
                        QStringLiteral("%1 walk points, steps = %2")
                                .arg(points.size())
                                .arg(c.steps));
    if (points.size() != c.steps + 1)
        d.notes << QStringLiteral("%1 points for %2 steps").arg(points.size()).arg(c.steps);
    return d;
}

Drawing curveSplit()
{
    RVCurve c(CurveP0, CurveC1, CurveC2, CurveP3);
    QPointF left[4], right[4];
    Drawing d;
    d.layers << guide(controlPolygon(), QStringLiteral("control polygon"));
    if (!c.splitcurve(left, right, 0.3)) {
        d.notes << QStringLiteral("splitcurve() returned false");
        return d;
    }
    QPainterPath l, r;
    l.moveTo(left[0]);
    l.cubicTo(left[1], left[2], left[3]);
    r.moveTo(right[0]);
    r.cubicTo(right[1], right[2], right[3]);
    QPainterPath lp, rp;
    lp.moveTo(left[0]);
    lp.lineTo(left[1]);
    lp.lineTo(left[2]);
    lp.lineTo(left[3]);
    rp.moveTo(right[0]);
    rp.lineTo(right[1]);
    rp.lineTo(right[2]);
    rp.lineTo(right[3]);
    d.layers << guide(joined(lp, rp)) << result(l, QStringLiteral("left"))
             << result(r, QStringLiteral("right"))
             << markers({left[3]}, QStringLiteral("split point"));
    return d;
}

// --- noise ---------------------------------------------------------------------------

Drawing noiseLine()
{
    QImage image(400, 260, QImage::Format_ARGB32);
    image.fill(Qt::white);
    Drawing d;
    d.image = Noise::perlinNoise(image);
    return d;
}

Drawing noiseField()
{
    QImage image(400, 300, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        QRgb *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const float v = Noise::perlinNoise_2D(x / 32.0f, y / 32.0f);
            const int g = std::clamp(int(std::lround(128 + 115 * double(v))), 0, 255);
            line[x] = qRgb(g, g, g);
        }
    }
    Drawing d;
    d.image = image;
    return d;
}

} // namespace

QVector<Picture> pictures()
{
    QVector<Picture> list;
    auto add = [&list](const QString &section, const QString &name, const QString &title,
                       const QString &caption, std::function<Drawing()> draw) {
        list.append(Picture{section, name, title, caption, std::move(draw)});
    };

    const QString glyphName = QStringLiteral("glyph \"g\"");
    const QString starName = QStringLiteral("star with cubic edges");
    const QString circleName = QStringLiteral("circle");

    // Compound-path booleans.
    const QString xsec = QStringLiteral("XPath boolean operations");
    const QString gs = QStringLiteral("a: the glyph \"g\" of DejaVu Sans (a hole and a descender), "
                                      "b: a five-pointed star with bowed cubic edges.");
    add(xsec, QStringLiteral("xpath-unite"), QStringLiteral("a.unite(b)"), gs, [=] {
        return xpathBoolean(XOp::Unite, glyphG(), glyphName, curvedStar(), starName,
                            QStringLiteral("a.unite(b)"));
    });
    add(xsec, QStringLiteral("xpath-intersect"), QStringLiteral("a.intersect(b)"), gs, [=] {
        return xpathBoolean(XOp::Intersect, glyphG(), glyphName, curvedStar(), starName,
                            QStringLiteral("a.intersect(b)"));
    });
    add(xsec, QStringLiteral("xpath-subtract"), QStringLiteral("a.subtract(b)"), gs, [=] {
        return xpathBoolean(XOp::Subtract, glyphG(), glyphName, curvedStar(), starName,
                            QStringLiteral("a.subtract(b)"));
    });
    add(xsec, QStringLiteral("xpath-exclude"), QStringLiteral("a.exclude(b)"), gs, [=] {
        return xpathBoolean(XOp::Exclude, glyphG(), glyphName, curvedStar(), starName,
                            QStringLiteral("a.exclude(b)"));
    });
    add(xsec, QStringLiteral("xpath-divide"), QStringLiteral("a.divide(b)"),
        gs + QStringLiteral(" The two results: a outside b, a inside b."),
        [=] { return xpathDivide(glyphG(), glyphName, curvedStar(), starName); });
    add(xsec, QStringLiteral("xpath-glyphs-unite"), QStringLiteral("a.unite(b)"),
        QStringLiteral("a: the glyph \"R\", b: the glyph \"8\" shifted onto it: curves and holes "
                       "of both glyphs meet."),
        [] {
            return xpathBoolean(XOp::Unite, glyph(QStringLiteral("R"), QPointF(0, 220), 260),
                                QStringLiteral("glyph \"R\""),
                                glyph(QStringLiteral("8"), QPointF(90, 240), 260),
                                QStringLiteral("glyph \"8\""), QStringLiteral("a.unite(b)"));
        });
    add(xsec, QStringLiteral("xpath-circles-exclude"), QStringLiteral("a.exclude(b)"),
        QStringLiteral("a, b: two overlapping circles; the result is both crescents, its edges "
                       "still cubic arcs rather than polygons."),
        [=] {
            return xpathBoolean(XOp::Exclude, circle(QPointF(100, 100), 90), circleName,
                                circle(QPointF(210, 130), 100), circleName,
                                QStringLiteral("a.exclude(b)"));
        });

    // RVPath booleans.
    const QString rsec = QStringLiteral("RVPath boolean operations");
    add(rsec, QStringLiteral("rvpath-unite"), QStringLiteral("a.unite(b)"),
        QStringLiteral("RVPath a: a star with cubic edges, b: a circle; a becomes the union."),
        [=] {
            return rvBoolean(RVOp::Unite, curvedStar(), starName, circle(QPointF(260, 180), 80),
                             circleName, QStringLiteral("a after a.unite(b)"));
        });
    add(rsec, QStringLiteral("rvpath-intersect"), QStringLiteral("a.intersect(b)"),
        QStringLiteral("RVPath a: the glyph \"S\", b: a circle; a becomes the intersection."), [=] {
            return rvBoolean(RVOp::Intersect, glyph(QStringLiteral("S"), QPointF(20, 220), 260),
                             QStringLiteral("glyph \"S\""), circle(QPointF(110, 110), 95),
                             circleName, QStringLiteral("a after a.intersect(b)"));
        });
    add(rsec, QStringLiteral("rvpath-subtract"), QStringLiteral("a.subtract(b)"),
        QStringLiteral("RVPath a: a circle, b: a star with cubic edges; a becomes the circle with "
                       "a star-shaped bite."),
        [=] {
            return rvBoolean(RVOp::Subtract, circle(QPointF(110, 110), 110), circleName,
                             curvedStar(), starName, QStringLiteral("a after a.subtract(b)"));
        });
    add(rsec, QStringLiteral("rvpath-crosspoints"), QStringLiteral("a.crossPoints(b)"),
        QStringLiteral("RVPath a: an open zigzag, b: a circle; the dots are the returned crossing "
                       "points (eight expected)."),
        [=] {
            RVPath a = toRV(polyline()), b = toRV(circle(QPointF(160, 120), 80));
            const QVector<QPointF> points = a.crossPoints(b);
            Drawing d;
            d.layers << operand(polyline(), QStringLiteral("a: zigzag"))
                     << operand(circle(QPointF(160, 120), 80), QStringLiteral("b: circle"))
                     << markers(points, QStringLiteral("%1 crossing points").arg(points.size()));
            return d;
        });
    add(rsec, QStringLiteral("rvpath-dividepath"), QStringLiteral("a.dividePath(b, at)"),
        QStringLiteral("RVPath a: an open S-curve, b: a circle; a keeps only its part after the "
                       "first crossing, the dot is at."),
        [=] {
            const QPainterPath circ = circle(QPointF(110, 170), 70);
            RVPath a = toRV(sShape()), b = toRV(circ);
            QPointF at;
            const bool crossed = a.dividePath(b, at);
            Drawing d;
            d.layers << operand(sShape(), QStringLiteral("a before: S-curve"))
                     << operand(circ, QStringLiteral("b: circle"))
                     << result(toQt(a), QStringLiteral("a after"));
            if (crossed)
                d.layers << markers({at}, QStringLiteral("at"));
            else
                d.notes << QStringLiteral("dividePath() returned false");
            return d;
        });

    // Parallel paths.
    const QString psec = QStringLiteral("Parallel paths");
    const QString zig = QStringLiteral("open zigzag");
    add(psec, QStringLiteral("parallel-open-plus"), QStringLiteral("path.parallelPath(out, 12, 2)"),
        QStringLiteral("An open zigzag offset by +12 (to the left of travel, which runs left to "
                       "right): sharp tips bevelled, open stays open."),
        [=] { return parallel(polyline(), zig, 12, 2); });
    add(psec, QStringLiteral("parallel-open-minus"),
        QStringLiteral("path.parallelPath(out, -12, 2)"),
        QStringLiteral("The same zigzag offset by -12, to the right of travel."),
        [=] { return parallel(polyline(), zig, -12, 2); });
    add(psec, QStringLiteral("parallel-scurve"), QStringLiteral("path.parallelPath(out, 20, 2)"),
        QStringLiteral("An open S-curve of two cubics offset by +20: curves are flattened every "
                       "2 units along the arc."),
        [=] { return parallel(sShape(), QStringLiteral("S-curve"), 20, 2); });
    add(psec, QStringLiteral("parallel-star-plus"), QStringLiteral("path.parallelPath(out, 12, 2)"),
        QStringLiteral("A closed polygonal star (clockwise) offset by +12: grown outwards, tips "
                       "bevelled, closed stays closed."),
        [=] {
            return parallel(polygonStar(QPointF(150, 150), 130, 55), QStringLiteral("polygon star"),
                            12, 2);
        });
    add(psec, QStringLiteral("parallel-star-minus"),
        QStringLiteral("path.parallelPath(out, -12, 2)"),
        QStringLiteral("The same star offset by -12: shrunk inwards, no loops at the inner "
                       "corners."),
        [=] {
            return parallel(polygonStar(QPointF(150, 150), 130, 55), QStringLiteral("polygon star"),
                            -12, 2);
        });
    add(psec, QStringLiteral("parallel-curved-star"),
        QStringLiteral("path.parallelPath(out, 10, 2)"),
        QStringLiteral("A star with bowed cubic edges offset by +10."),
        [=] { return parallel(curvedStar(), starName, 10, 2); });
    add(psec, QStringLiteral("parallel-glyph"), QStringLiteral("path.parallelPath(out, 6, 2)"),
        QStringLiteral("The glyph \"g\" (outline and hole are separate subpaths) offset by +6."),
        [=] { return parallel(glyphG(), glyphName, 6, 2); });
    add(psec, QStringLiteral("parallel-circle"), QStringLiteral("path.parallelPath(out, -20, 2)"),
        QStringLiteral("A circle of radius 100 offset by -20."),
        [=] { return parallel(circle(QPointF(100, 100), 100), circleName, -20, 2); });

    // Thick paths.
    const QString tsec = QStringLiteral("Thick paths");
    add(tsec, QStringLiteral("thick-scurve"), QStringLiteral("path.thickPath(out, 4, 36, 2)"),
        QStringLiteral("An open S-curve stroked with a width growing from 4 to 36, round caps; the "
                       "dashed line is the source."),
        [=] { return thick(sShape(), QStringLiteral("S-curve"), 4, 36, 2); });
    add(tsec, QStringLiteral("thick-zigzag"), QStringLiteral("path.thickPath(out, 30, 0, 2)"),
        QStringLiteral("An open zigzag tapering from 30 to a point."),
        [=] { return thick(polyline(), zig, 30, 0, 2); });
    add(tsec, QStringLiteral("thick-circle"), QStringLiteral("path.thickPath(out, 6, 24, 2)"),
        QStringLiteral("A closed circle as source: a ring whose width grows from 6 to 24 around "
                       "the circle."),
        [=] { return thick(circle(QPointF(100, 100), 100), circleName, 6, 24, 2); });

    // Rounded corners.
    const QString csec = QStringLiteral("Rounded corners");
    add(csec, QStringLiteral("round-zigzag"), QStringLiteral("path.setCornerRound(20)"),
        QStringLiteral("An open zigzag: each corner becomes one cubic, the ends stay."),
        [=] { return rounded(polyline(), zig, 20); });
    add(csec, QStringLiteral("round-star"), QStringLiteral("path.setCornerRound(15)"),
        QStringLiteral("A closed polygonal star, the closing corner included."), [=] {
            return rounded(polygonStar(QPointF(150, 150), 130, 55), QStringLiteral("polygon star"),
                           15);
        });
    add(csec, QStringLiteral("round-rect"), QStringLiteral("path.setCornerRound(30)"),
        QStringLiteral("A closed rectangle 300 x 180."),
        [=] { return rounded(rectangle(0, 0, 300, 180), QStringLiteral("rectangle"), 30); });
    add(csec, QStringLiteral("round-glyph"), QStringLiteral("path.setCornerRound(8)"),
        QStringLiteral("The glyph \"E\": straight runs stay straight, its twelve corners round."),
        [=] {
            return rounded(glyph(QStringLiteral("E"), QPointF(0, 220), 260),
                           QStringLiteral("glyph \"E\""), 8);
        });

    // Line heads.
    const QString hsec = QStringLiteral("Line heads");
    add(hsec, QStringLiteral("heads-zigzag"), QStringLiteral("path.setLineHead(30, 30)"),
        QStringLiteral("An open zigzag cut back by 30 at both ends; the triangles run from the cut "
                       "ends to the tips recorded in headX/headY."),
        [=] { return lineHeads(polyline(), zig, 30, 30); });
    add(hsec, QStringLiteral("heads-scurve"), QStringLiteral("path.setLineHead(0, 40)"),
        QStringLiteral("An open S-curve with an arrow at its end only."),
        [=] { return lineHeads(sShape(), QStringLiteral("S-curve"), 0, 40); });

    // Smoothing.
    const QString ssec = QStringLiteral("Smoothing");
    for (int type = 0; type < 4; ++type) {
        add(ssec, QStringLiteral("smooth-%1").arg(type),
            QStringLiteral("path.smooth(%1)").arg(type),
            QStringLiteral(
                    "Two subpaths: an open zigzag and a closed polygonal star, smoothed with "
                    "type %1.")
                    .arg(type),
            [=] {
                return smoothed(joined(polyline(), polygonStar(QPointF(420, 110), 100, 45)),
                                QStringLiteral("zigzag and star"), type);
            });
    }

    // Hand-drawn lines.
    const QString msec = QStringLiteral("Hand-drawn lines");
    add(msec, QStringLiteral("manual-zigzag"), QStringLiteral("out.manualPath(path, 4, 5)"),
        QStringLiteral("An open zigzag redrawn every 5 units with noise of amplitude 4."),
        [=] { return manual(polyline(), zig, 4, 5); });
    add(msec, QStringLiteral("manual-circle"), QStringLiteral("out.manualPath(path, 8, 4)"),
        QStringLiteral("A closed circle redrawn every 4 units with noise of amplitude 8."),
        [=] { return manual(circle(QPointF(100, 100), 100), circleName, 8, 4); });

    // Waves.
    const QString wsec = QStringLiteral("Waves");
    for (int kind = 0; kind < 8; ++kind) {
        add(wsec, QStringLiteral("wave-%1").arg(kind),
            QStringLiteral("path.wavePath(out, %1, 30, 10, 1)").arg(kind),
            QStringLiteral(
                    "Wave kind %1 of wavelength 30 and height 10 along an open S-curve and a "
                    "closed circle.")
                    .arg(kind),
            [=] {
                return wave(joined(sShape(), circle(QPointF(440, 130), 90)),
                            QStringLiteral("S-curve and circle"), kind, 30, 10, 1);
            });
    }

    // Curve stepping.
    const QString vsec = QStringLiteral("RVCurve");
    add(vsec, QStringLiteral("rvcurve-walk"), QStringLiteral("while (c.vertex(&x, &y))"),
        QStringLiteral("RVCurve c(p0, c1, c2, p3) with c.density = 0.05 and init() again: the "
                       "forward-difference walk gives p0, the stepped points, exactly p3."),
        [] { return curveWalk(); });
    add(vsec, QStringLiteral("rvcurve-split"), QStringLiteral("c.splitcurve(left, right, 0.3)"),
        QStringLiteral("De Casteljau split of the same cubic at t = 0.3; dashed: the control "
                       "polygons."),
        [] { return curveSplit(); });

    // Noise.
    const QString nsec = QStringLiteral("Noise");
    add(nsec, QStringLiteral("noise-line"), QStringLiteral("Noise::perlinNoise(image)"),
        QStringLiteral("A white 400 x 260 image: the wavering line along row 200 from "
                       "perlinNoise_1D(0.05 x)."),
        [] { return noiseLine(); });
    add(nsec, QStringLiteral("noise-field"),
        QStringLiteral("Noise::perlinNoise_2D(x / 32.0f, y / 32.0f)"),
        QStringLiteral("The two-dimensional noise over 400 x 300 pixels as grey levels "
                       "(128 + 115 v)."),
        [] { return noiseField(); });
    return list;
}

} // namespace gallery
