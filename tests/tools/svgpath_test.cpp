// The SVG path data reader of rvgeom: the grammar against paths drawn with
// QPainterPath's own calls, arcs against the circle they approximate, round
// trips through the path data writer, errors, and SVG documents.

#include "commands.h"
#include "rvrender.h"
#include "svgpath.h"

#include "rvpath/rvpath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>

using namespace rvGeom;

namespace {

// Arc points are computed with sines and cosines: a few ulps off.
constexpr double ArcRounding = 1e-12;
// A cubic quarter circle with handles 4/3 tan(22.5 deg) strays at most
// 2.7e-4 radii from the circle.
constexpr double QuarterCircleError = 2.8e-4;

std::string hexf(double v)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%a", v);
    return buffer;
}

std::string dump(const QPainterPath &path)
{
    std::string s;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        s += "MLCc"[e.type];
        s += ' ' + hexf(e.x) + ' ' + hexf(e.y) + ' ';
    }
    return s;
}

QPainterPath parsed(const char *data)
{
    QPainterPath path;
    ParseError error;
    EXPECT_TRUE(parsePathData(QString::fromLatin1(data), &path, &error))
            << data << ": " << error.message.toStdString() << " at " << error.offset;
    return path;
}

using Draw = std::function<void(QPainterPath &)>;

} // namespace

TEST(SvgPathGrammar, EveryCommandMatchesTheDrawingCalls)
{
    const struct
    {
        const char *data;
        Draw draw;
    } cases[] = {
            {"M1 2 L3 4", [](QPainterPath &p) { p.moveTo(1, 2), p.lineTo(3, 4); }},
            {"m1 2 l3 4", [](QPainterPath &p) { p.moveTo(1, 2), p.lineTo(4, 6); }},
            // Extra pairs of a move are line-tos, relative after m.
            {"M1 2 3 4 5 6",
             [](QPainterPath &p) { p.moveTo(1, 2), p.lineTo(3, 4), p.lineTo(5, 6); }},
            {"m1 2 3 4 1 1",
             [](QPainterPath &p) { p.moveTo(1, 2), p.lineTo(4, 6), p.lineTo(5, 7); }},
            {"M0 0 H5 V6 h1 v-2 H1 2",
             [](QPainterPath &p) {
                 p.moveTo(0, 0), p.lineTo(5, 0), p.lineTo(5, 6), p.lineTo(6, 6), p.lineTo(6, 4);
                 p.lineTo(1, 4), p.lineTo(2, 4);
             }},
            {"M0 0 C1 1 2 2 3 0 4 -1 5 -1 6 0",
             [](QPainterPath &p) {
                 p.moveTo(0, 0), p.cubicTo(1, 1, 2, 2, 3, 0), p.cubicTo(4, -1, 5, -1, 6, 0);
             }},
            {"M1 1 c1 1 2 2 3 0 1 1 2 1 3 0",
             [](QPainterPath &p) {
                 p.moveTo(1, 1), p.cubicTo(2, 2, 3, 3, 4, 1), p.cubicTo(5, 2, 6, 2, 7, 1);
             }},
            // S mirrors the previous cubic's second handle, else starts at the point.
            {"M0 0 C0 1 2 1 2 0 S4 -1 4 0 s2 1 2 0",
             [](QPainterPath &p) {
                 p.moveTo(0, 0), p.cubicTo(0, 1, 2, 1, 2, 0), p.cubicTo(2, -1, 4, -1, 4, 0);
                 p.cubicTo(4, 1, 6, 1, 6, 0);
             }},
            {"M0 0 L1 1 S2 2 3 1",
             [](QPainterPath &p) { p.moveTo(0, 0), p.lineTo(1, 1), p.cubicTo(1, 1, 2, 2, 3, 1); }},
            // Quadratics become their exact cubic elevation; T mirrors Q's control.
            {"M0 0 Q3 3 6 0 T12 0",
             [](QPainterPath &p) {
                 p.moveTo(0, 0), p.cubicTo(2, 2, 4, 2, 6, 0), p.cubicTo(8, -2, 10, -2, 12, 0);
             }},
            {"M0 0 q3 3 6 0 t6 0 t6 0",
             [](QPainterPath &p) {
                 p.moveTo(0, 0), p.cubicTo(2, 2, 4, 2, 6, 0), p.cubicTo(8, -2, 10, -2, 12, 0);
                 p.cubicTo(14, 2, 16, 2, 18, 0);
             }},
            {"M0 0 L3 0 T6 0",
             [](QPainterPath &p) { p.moveTo(0, 0), p.lineTo(3, 0), p.cubicTo(3, 0, 4, 0, 6, 0); }},
            // Number syntax.
            {"M1e-3 .5.5-.5", [](QPainterPath &p) { p.moveTo(1e-3, .5), p.lineTo(.5, -.5); }},
            {"M-.5-.5L+1E+2,2e1 3.,-4",
             [](QPainterPath &p) { p.moveTo(-.5, -.5), p.lineTo(100, 20), p.lineTo(3, -4); }},
            {"\t\r\n M 0,0\fL 1 , 1 ", [](QPainterPath &p) { p.moveTo(0, 0), p.lineTo(1, 1); }},
            // After Z the current point is the subpath's start.
            {"M1 1 L10 1 L10 10 Z L5 5",
             [](QPainterPath &p) {
                 p.moveTo(1, 1), p.lineTo(10, 1), p.lineTo(10, 10), p.closeSubpath(),
                         p.moveTo(1, 1);
                 p.lineTo(5, 5);
             }},
            {"M1 1 H10 V10 z m1 1 h1",
             [](QPainterPath &p) {
                 p.moveTo(1, 1), p.lineTo(10, 1), p.lineTo(10, 10), p.closeSubpath();
                 p.moveTo(2, 2), p.lineTo(3, 2);
             }},
            // Degenerate arcs: a zero radius is a line, an arc to its start nothing.
            {"M0 0 A0 5 0 0 1 10 0 a5 5 0 1 1 0 0",
             [](QPainterPath &p) { p.moveTo(0, 0), p.lineTo(10, 0); }},
            {"", [](QPainterPath &) {}},
            {"  ", [](QPainterPath &) {}},
    };
    for (const auto &c : cases) {
        QPainterPath expected;
        c.draw(expected);
        EXPECT_EQ(dump(parsed(c.data)), dump(expected)) << '"' << c.data << '"';
    }
}

TEST(SvgPathGrammar, ArcFlagsNeedNoSeparators)
{
    EXPECT_EQ(dump(parsed("M0 0 a1 1 0 00 1 1")), dump(parsed("M0 0 a1 1 0 0 0 1 1")));
    EXPECT_EQ(dump(parsed("M0 0 a10 10 0 1120 0")), dump(parsed("M0 0 a10,10,0,1,1,20,0")));
    EXPECT_EQ(parsed("M0 0 a10 10 0 1120 0").elementCount(), 1 + 3 * 2); // a half circle
}

// Each arc is checked against its ellipse: the ends of the pieces lie on it
// exactly (up to rounding), the middles within the quarter-circle error.
TEST(SvgPathGrammar, ArcsFollowTheirEllipse)
{
    const struct
    {
        const char *data;
        int pieces;
        QPointF centre;
        double rx, ry, rotation; // degrees
        QPointF junction;        // end of the first piece
    } cases[] = {
            // Half circle: clockwise on screen (sweep 1) over the top.
            {"M0 0 A10 10 0 0 1 20 0", 2, {10, 0}, 10, 10, 0, {10, -10}},
            {"M0 0 A10 10 0 0 0 20 0", 2, {10, 0}, 10, 10, 0, {10, 10}},
            // Radii too small for the chord grow to make it a diameter.
            {"M0 0 A1 1 0 0 1 20 0", 2, {10, 0}, 10, 10, 0, {10, -10}},
            // Negative radii count as positive.
            {"M0 0 A-10 -10 0 0 1 20 0", 2, {10, 0}, 10, 10, 0, {10, -10}},
            // The large arc (270 degrees) around the other centre.
            {"M0 0 A10 10 0 1 1 10 10", 3, {10, 0}, 10, 10, 0, {10, -10}},
            {"M0 0 a10 10 0 0 1 10 10", 1, {0, 10}, 10, 10, 0, {10, 10}},
            // A half ellipse turned upright (major axis vertical, chord 2 rx),
            // clockwise on screen from top to bottom: over the right.
            {"M0 0 A20 10 90 0 1 0 40", 2, {0, 20}, 20, 10, 90, {10, 20}},
    };
    for (const auto &c : cases) {
        const QPainterPath p = parsed(c.data);
        ASSERT_EQ(p.elementCount(), 1 + 3 * c.pieces) << c.data;
        const double phi = c.rotation * M_PI / 180;
        // Distance from the ellipse in its own unit-circle frame.
        auto offEllipse = [&](const QPointF &q) {
            const QPointF d = q - c.centre;
            const double x = std::cos(phi) * d.x() + std::sin(phi) * d.y();
            const double y = -std::sin(phi) * d.x() + std::cos(phi) * d.y();
            return std::hypot(x / c.rx, y / c.ry) - 1;
        };
        const QPointF junction = p.elementAt(3);
        EXPECT_NEAR(junction.x(), c.junction.x(), ArcRounding * 100) << c.data;
        EXPECT_NEAR(junction.y(), c.junction.y(), ArcRounding * 100) << c.data;
        for (int k = 0; k < c.pieces; ++k) {
            const QPointF p0 = p.elementAt(3 * k), p1 = p.elementAt(3 * k + 1),
                          p2 = p.elementAt(3 * k + 2), p3 = p.elementAt(3 * k + 3);
            EXPECT_NEAR(offEllipse(p3), 0, ArcRounding) << c.data << " piece " << k;
            const QPointF middle = (p0 + 3 * p1 + 3 * p2 + p3) / 8;
            EXPECT_LT(std::abs(offEllipse(middle)), QuarterCircleError) << c.data << " piece " << k;
        }
    }
}

TEST(SvgPathGrammar, ErrorsNameTheProblemAndTheOffset)
{
    const struct
    {
        const char *data;
        const char *message;
        int offset;
    } cases[] = {
            {"M 10 x", "expected a number", 5},
            {"L 1 2", "path data must start with a move (M or m)", 0},
            {"M0 0 X 5", "unknown command 'X'", 5},
            {"M0 0 L1", "expected a number", 7},
            {"M0 0 L1 2,", "expected a number after ','", 10},
            {"M0 0 L, 1 1", "expected a number", 6},
            {"M0 0 A1 1 0 2 0 5 5", "expected a flag (0 or 1)", 12},
            {"M1e 2", "expected the digits of an exponent", 3},
            {"M1e999 0", "number out of range", 1},
            {"M0 0 L nan 1", "expected a number", 7},
            {"M0 0 Z 5 5", "expected a command after Z, not a number", 7},
            // QPainterPath would drop points beyond 1e128 silently.
            {"M1e127 0 l1e128 0", "coordinates out of range", 10},
            {"M0 0 Q1e200 0 1 1", "coordinates out of range", 6},
            {"M0 0 L1 1 L2 .", "expected a number", 13},
    };
    for (const auto &c : cases) {
        QPainterPath path;
        path.moveTo(1, 1);
        ParseError error;
        EXPECT_FALSE(parsePathData(QString::fromLatin1(c.data), &path, &error)) << c.data;
        EXPECT_EQ(error.message.toStdString(), c.message) << c.data;
        EXPECT_EQ(error.offset, c.offset) << c.data;
        EXPECT_TRUE(path.isEmpty()) << c.data;
    }
    ParseError error;
    const QString longData = QStringLiteral("M0 0") + QStringLiteral(" L1 2").repeated(30)
            + QStringLiteral(" L1 ?") + QStringLiteral(" L1 2").repeated(30);
    QPainterPath path;
    ASSERT_FALSE(parsePathData(longData, &path, &error));
    EXPECT_EQ(describe(error, longData).toStdString(),
              "path data: expected a number at offset 158 in \"...2 L1 2 L1 2 L1 2 L1 2 L1 2 L1 ? "
              "L1 2 L1 2 L1 2 L1 2 L1 2 L1 ...\"");
}

// parse -> svgPathData -> parse gives the same elements, on seeded random
// data that uses every command, both cases and the number forms.
TEST(SvgPathGrammar, RoundTripsThroughThePathDataWriter)
{
    std::mt19937 random(20240611);
    std::uniform_int_distribution<int> pick(0, 1 << 30);
    auto number = [&]() {
        const double v = (pick(random) % 2000 - 1000) / 8.0 * std::pow(10.0, pick(random) % 7 - 3);
        const int form = pick(random) % 3;
        return form == 0    ? QString::number(v, 'g', 17)
                : form == 1 ? QString::number(v, 'e', 6)
                            : QString::number(v, 'f', 3);
    };
    const QString commands = QStringLiteral("MmLlHhVvCcSsQqTtAaZz");
    for (int round = 0; round < 200; ++round) {
        QString data = QStringLiteral("M") + number() + QLatin1Char(' ') + number();
        const int count = 1 + pick(random) % 12;
        for (int i = 0; i < count; ++i) {
            const QChar command = commands.at(pick(random) % commands.size());
            data += QLatin1Char(' ') + command;
            const int arguments = QStringLiteral("MLTmlt").contains(command) ? 2
                    : QStringLiteral("HVhv").contains(command)               ? 1
                    : QStringLiteral("Cc").contains(command)                 ? 6
                    : QStringLiteral("SQsq").contains(command)               ? 4
                    : QStringLiteral("Aa").contains(command)                 ? 7
                                                                             : 0;
            for (int k = 0; k < arguments; ++k) {
                const bool flag = arguments == 7 && (k == 3 || k == 4);
                data += QLatin1Char(' ') + (flag ? QString::number(pick(random) % 2) : number());
            }
        }
        QPainterPath first, second;
        ParseError error;
        ASSERT_TRUE(parsePathData(data, &first, &error))
                << data.toStdString() << ": " << error.message.toStdString();
        const QString written = rvRender::svgPathData(first);
        ASSERT_TRUE(parsePathData(written, &second, &error))
                << written.toStdString() << ": " << error.message.toStdString();
        EXPECT_EQ(dump(second), dump(first)) << data.toStdString();
        EXPECT_EQ(rvRender::svgPathData(second), written);
    }
}

TEST(SvgDocument, TransformsFillRulesAndHiddenElements)
{
    const QByteArray xml = R"svg(<?xml version="1.0"?>
<svg xmlns="http://www.w3.org/2000/svg">
  <defs><path id="unused" d="M0 0 H5 V5 Z"/></defs>
  <g transform="translate(10 20) scale(2)" fill-rule="evenodd">
    <path id="a" d="M0 0 H1 V1 Z"/>
    <path id="b" style="fill: red; fill-rule: nonzero" transform="rotate(90)" d="M0 0 H1"/>
  </g>
  <path d="M0 0 L1 1"/>
  <path id="no-data"/>
</svg>)svg";
    QVector<SvgShape> shapes;
    QString error;
    ASSERT_TRUE(readSvgDocument(xml, &shapes, &error)) << error.toStdString();
    ASSERT_EQ(shapes.size(), 3);
    EXPECT_EQ(shapes[0].id, QStringLiteral("a"));
    EXPECT_EQ(shapes[0].line, 5);
    EXPECT_EQ(shapes[0].path.fillRule(), Qt::OddEvenFill);
    EXPECT_EQ(shapes[0].path.elementAt(2), QPointF(12, 22));
    // The path's own rotation acts first, then the group's scale and shift.
    EXPECT_EQ(shapes[1].path.fillRule(), Qt::WindingFill);
    EXPECT_NEAR(shapes[1].path.elementAt(1).x, 10, ArcRounding);
    EXPECT_NEAR(shapes[1].path.elementAt(1).y, 22, ArcRounding);
    EXPECT_EQ(shapes[2].path.fillRule(), Qt::WindingFill); // SVG's initial value

    const struct
    {
        QByteArray xml;
        const char *error;
    } bad[] = {
            {"<svg>\n<path d=\"M0 0 L1\"/></svg>",
             "2: path data: expected a number at offset 7 in \"M0 0 L1\""},
            {"<svg><path fill-rule=\"odd\" d=\"M0 0\"/></svg>", "1: unknown fill-rule \"odd\""},
            {"<svg><g transform=\"spin(3)\"/></svg>",
             "1: transform: unknown transform \"spin\" at offset 0 in \"spin(3)\""},
            {"<svg><path d=\"M0 0\">", "1: XML error: Premature end of document."},
    };
    for (const auto &b : bad) {
        EXPECT_FALSE(readSvgDocument(b.xml, &shapes, &error));
        EXPECT_EQ(error.toStdString(), b.error);
        EXPECT_TRUE(shapes.isEmpty());
    }
}

TEST(SvgDocument, ClosedSubpathsGetACloseMarkerInRVPath)
{
    const RVPath rv = toRVPath(parsed("M0 0 H10 V10 Z M20 0 H30 M40 0 C50 0 50 10 40 0"));
    QVector<int> types;
    for (const RVPathElement &e : rv.elements())
        types << e.type;
    EXPECT_EQ(types, (QVector<int>{0, 1, 1, 1, 4, 0, 1, 0, 2, 3, 3, 4}));
}
