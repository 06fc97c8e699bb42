// A small tour of rvgraphics: build two curved shapes, combine them with each
// boolean operation, and print what came back. The results keep their cubic
// curves; the SVG path data printed for the union can be pasted into any SVG
// viewer.

#include "rvgraphics.h"

#include <QtCore/QString>

#include <cstdio>

namespace {

// A compound path holding one circle.
XPath *circle(double cx, double cy, double r)
{
    koPath *path = new koPath;
    path->ellipse(koRect(cx - r, cy - r, 2 * r, 2 * r));
    path->join(path, 1e-9); // the ellipse ends on its start point: close it
    XPath *shape = new XPath;
    shape->addChild(path);
    return shape;
}

QString svgData(const XPath *shape)
{
    QString d;
    for (koPath *child : shape->getChildren()) {
        const QList<koSegment *> &segments = child->getSegments();
        if (segments.isEmpty())
            continue;
        const int count = segments.size() + (child->isClosed() ? 1 : 0);
        for (int i = 0; i < count; ++i) {
            const koSegment *s = segments.at(i % segments.size());
            if (i == 0) {
                d += QStringLiteral("M%1 %2 ").arg(s->point.x).arg(s->point.y);
                continue;
            }
            const koSegment *prev = segments.at(i - 1);
            const koPoint h1 = prev->point + prev->handleOut;
            const koPoint h2 = s->point + s->handleIn;
            d += QStringLiteral("C%1 %2 %3 %4 %5 %6 ")
                         .arg(h1.x)
                         .arg(h1.y)
                         .arg(h2.x)
                         .arg(h2.y)
                         .arg(s->point.x)
                         .arg(s->point.y);
        }
        if (child->isClosed())
            d += QStringLiteral("Z ");
    }
    return d.trimmed();
}

void report(const char *name, XPath *result)
{
    if (!result) {
        std::printf("%-10s (no result)\n", name);
        return;
    }
    double area = 0;
    int curved = 0;
    for (koPath *child : result->getChildren()) {
        area += child->getArea(); // signed: holes subtract
        for (koCurve *curve : child->getCurves())
            curved += curve->hasHandles() ? 1 : 0;
    }
    std::printf("%-10s %d contour(s), %d curved segment(s), area %.4f\n", name,
                int(result->getChildren().size()), curved, area);
}

} // namespace

int main()
{
    XPath *a = circle(0, 0, 10);
    XPath *b = circle(12, 0, 10);
    std::printf("rvgraphics %s: two circles of radius 10, centres 12 apart\n",
                RVGRAPHICS_VERSION_STR);

    XPath *united = a->unite(b);
    report("unite", united);
    XPath *common = a->intersect(b);
    report("intersect", common);
    XPath *rest = a->subtract(b);
    report("subtract", rest);
    XPath *either = a->exclude(b);
    report("exclude", either);

    std::printf("\nunion as SVG path data:\n%s\n", qPrintable(svgData(united)));

    delete united;
    delete common;
    delete rest;
    delete either;
    delete a;
    delete b;
    return 0;
}
