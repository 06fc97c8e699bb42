// The boolean operations judged by the oracle (tools/oracle) over seeded
// families of operand pairs: circles and ellipses, star shapes with cubic
// edges, glyph outlines of DejaVu Sans, and degenerate pairs. Every case is
// run in a child process, so a crash or hang is a failed case, not a dead
// suite. Cases that show a limit of the algorithm are listed in
// knownFailures() with the reason; they are reported, never dropped.

#include "booleanoracle.h"
#include "path/xpath.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtGui/QFont>
#include <QtGui/QFontDatabase>
#include <QtGui/QGuiApplication>
#include <QtGui/QTransform>

#include <cmath>
#include <cstdio>
#include <random>

using namespace rvOracle;

namespace {

#if defined(__SANITIZE_ADDRESS__)
#define ORACLE_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORACLE_SANITIZED 1
#endif
#endif
#ifdef ORACLE_SANITIZED
constexpr bool Sanitized = true;
} // namespace
#include <sanitizer/lsan_interface.h>
namespace {
#else
constexpr bool Sanitized = false;
#endif

// Fontconfig keeps allocations it never frees once a font is loaded; they
// are the system's, so the leak checker ignores what is allocated while the
// glyph outlines are made (the library is not called meanwhile).
struct FontLeaksIgnored
{
#ifdef ORACLE_SANITIZED
    FontLeaksIgnored()
    {
        __lsan_disable();
    }
    ~FontLeaksIgnored()
    {
        __lsan_enable();
    }
#endif
};

const Op Operations[] = {Op::Union, Op::Intersect, Op::Difference, Op::Xor, Op::Divide};

// "family/pair/operation" (operation "identities" for the area identities)
// -> why the case fails.
const QMap<QString, QString> &knownFailures()
{
    // Empty at present. The two shared-corner pairs used to fail here: with
    // no crossings each contour is judged at the middle of its length, which
    // was the shared corner; the winding sample now moves off vertices.
    static const QMap<QString, QString> known;
    return known;
}

Options suiteOptions()
{
    Options o;
    o.seed = 20240611;
    if (Sanitized) {
        o.gridSide = 12;
        o.randomPoints = o.nearPoints = 160;
        o.timeoutMs = 240000;
    } else {
        o.gridSide = 24;
        o.randomPoints = o.nearPoints = 600;
        o.timeoutMs = 60000;
    }
    return o;
}

// The families are drawn from fixed seeds; RVGRAPHICS_ORACLE_SEED shifts
// them to explore other shapes (known failures are then keyed differently).
std::mt19937 generator(unsigned family)
{
    return std::mt19937(family + qEnvironmentVariableIntValue("RVGRAPHICS_ORACLE_SEED") * 7919u);
}

struct Pair
{
    QString name;
    Operand a, b;
};

Operand operand(QPainterPath path)
{
    path.setFillRule(Qt::WindingFill);
    Operand o;
    o.path = path;
    return o;
}

QPainterPath rect(double x, double y, double w, double h)
{
    QPainterPath p;
    p.addRect(x, y, w, h);
    return p;
}

QPainterPath joined(QPainterPath a, const QPainterPath &b)
{
    a.addPath(b); // not operator+, which unites
    return a;
}

QPainterPath ellipse(double cx, double cy, double rx, double ry, double degrees = 0)
{
    QPainterPath p;
    p.addEllipse(QPointF(0, 0), rx, ry);
    return QTransform().translate(cx, cy).rotate(degrees).map(p);
}

// A star of n tips around (cx, cy) whose edges are cubics bowed sideways
// by up to a fifth of their chord; redrawn until it does not cross itself.
QPainterPath star(std::mt19937 &random, double cx, double cy)
{
    std::uniform_real_distribution<double> u(0, 1);
    QPainterPath p;
    for (int attempt = 0; attempt < 50; ++attempt) {
        const int n = 5 + int(u(random) * 6);
        const double outer = 80 + 70 * u(random), inner = outer * (0.35 + 0.35 * u(random));
        QVector<QPointF> corners;
        for (int i = 0; i < 2 * n; ++i) {
            const double angle = M_PI * (i + 0.3 * (u(random) - 0.5)) / n;
            const double r = i % 2 ? inner : outer;
            corners.append(QPointF(cx + r * std::cos(angle), cy + r * std::sin(angle)));
        }
        p = QPainterPath();
        p.moveTo(corners[0]);
        for (int i = 0; i < corners.size(); ++i) {
            const QPointF from = corners[i], to = corners[(i + 1) % corners.size()];
            const QPointF d = to - from, normal(-d.y(), d.x());
            const double bow1 = 0.2 * (u(random) - 0.5), bow2 = 0.2 * (u(random) - 0.5);
            p.cubicTo(from + d / 3 + normal * bow1, from + d * 2 / 3 + normal * bow2, to);
        }
        p.closeSubpath();
        if (!std::isnan(exactArea(p)))
            break;
    }
    return p;
}

struct Tally
{
    int passed = 0, failed = 0, known = 0, inconclusive = 0;
};

class FamilyRun
{
public:
    explicit FamilyRun(const QString &family) : m_family(family) {}

    void run(const QVector<Pair> &pairs)
    {
        const Options options = suiteOptions();
        for (const Pair &pair : pairs) {
            QMap<Op, Verdict> verdicts;
            for (Op op : Operations) {
                Case c;
                c.name = m_family + QLatin1Char('/') + pair.name;
                c.family = m_family;
                c.a = pair.a;
                c.b = pair.b;
                c.op = op;
                verdicts[op] = checkIsolated(c, options);
                record(c.name, opName(op), verdicts[op]);
            }
            record(m_family + QLatin1Char('/') + pair.name, QStringLiteral("identities"),
                   checkAreaIdentities(pair.a, pair.b, verdicts));
        }
        report();
    }

private:
    void record(const QString &name, const QString &op, const Verdict &v)
    {
        const QString key = name + QLatin1Char('/') + op;
        Tally &t = m_tallies[op];
        const auto known = knownFailures().constFind(key);
        if (v.status == Status::Inconclusive) {
            ++t.inconclusive;
        } else if (v.passed()) {
            ++t.passed;
            if (known != knownFailures().constEnd())
                m_fixed << QStringLiteral("%1 passes now (listed as known: %2)").arg(key, *known);
        } else if (known != knownFailures().constEnd()) {
            ++t.known;
        } else {
            ++t.failed;
            m_unexpected << QStringLiteral("%1 %2: %3\n%4")
                                    .arg(key, statusName(v.status), v.reason, v.repro);
        }
    }

    void report() const
    {
        std::printf("[ oracle ] %s: pass rate per operation (known failures, inconclusive)\n",
                    qPrintable(m_family));
        for (auto it = m_tallies.constBegin(); it != m_tallies.constEnd(); ++it) {
            const Tally &t = it.value();
            const int judged = t.passed + t.failed + t.known;
            std::printf("[ oracle ]   %-12s %3d/%-3d %6.1f%%  (%d known, %d inconclusive)\n",
                        qPrintable(it.key()), t.passed, judged,
                        judged ? 100.0 * t.passed / judged : 100.0, t.known, t.inconclusive);
        }
        for (const QString &note : m_fixed)
            std::printf("[ oracle ] note: %s\n", qPrintable(note));
        EXPECT_TRUE(m_unexpected.isEmpty()) << qPrintable(m_unexpected.join(QStringLiteral("\n")));
    }

    QString m_family;
    QMap<QString, Tally> m_tallies;
    QStringList m_unexpected, m_fixed;
};

} // namespace

TEST(BooleanOracle, CirclesAndEllipses)
{
    std::mt19937 random = generator(1);
    std::uniform_real_distribution<double> u(0, 1);
    QVector<Pair> pairs;
    for (int i = 0; i < 10; ++i) {
        // B's centre lies within reach of A's outline, so the two overlap.
        const double rx = 50 + 80 * u(random), ry = i % 2 ? rx : 40 + 80 * u(random);
        const double sx = 50 + 80 * u(random), sy = i % 3 ? sx : 40 + 80 * u(random);
        const double angle = 2 * M_PI * u(random), reach = (0.3 + 0.9 * u(random)) * (rx + sx) / 2;
        pairs.append({QStringLiteral("pair%1").arg(i),
                      operand(ellipse(200, 200, rx, ry, 180 * u(random))),
                      operand(ellipse(200 + reach * std::cos(angle), 200 + reach * std::sin(angle),
                                      sx, sy, 180 * u(random)))});
    }
    FamilyRun(QStringLiteral("circles")).run(pairs);
}

TEST(BooleanOracle, StarsWithCubicEdges)
{
    std::mt19937 random = generator(2);
    std::uniform_real_distribution<double> u(0, 1);
    QVector<Pair> pairs;
    for (int i = 0; i < 10; ++i) {
        const QPainterPath a = star(random, 200, 200);
        const QPainterPath b =
                star(random, 200 + 120 * (u(random) - 0.5), 200 + 120 * (u(random) - 0.5));
        pairs.append({QStringLiteral("pair%1").arg(i), operand(a), operand(b)});
    }
    FamilyRun(QStringLiteral("stars")).run(pairs);
}

// Glyph pairs of DejaVu Sans at 200 pixels; empty with \a skip set when the
// font or a QGuiApplication is not to be had.
QVector<Pair> glyphPairs(QString *skip)
{
    const QString fontFile = QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");
    if (!QFile::exists(fontFile)) {
        *skip = QStringLiteral("DejaVu Sans is not installed");
        return {};
    }
    static int argc = 1;
    static char name[] = "test_boolean";
    static char *argv[] = {name, nullptr};
    [[maybe_unused]] FontLeaksIgnored fontLeaksIgnored;
    if (!QCoreApplication::instance()) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        new QGuiApplication(argc, argv); // lives until the process ends
    }
    const int id = qobject_cast<QGuiApplication *>(QCoreApplication::instance())
            ? QFontDatabase::addApplicationFont(fontFile)
            : -1;
    if (id < 0) {
        *skip = QStringLiteral("no QGuiApplication, or the font does not load");
        return {};
    }
    QFont font(QFontDatabase::applicationFontFamilies(id).value(0));
    font.setPixelSize(200);

    std::mt19937 random = generator(3);
    std::uniform_real_distribution<double> u(0, 1);
    const char *texts[][2] = {{"a", "o"}, {"B", "8"}, {"g", "e"}, {"R", "Q"},
                              {"%", "&"}, {"@", "S"}, {"W", "M"}, {"e", "e"}};
    QVector<Pair> pairs;
    for (const auto &t : texts) {
        QPainterPath a, b;
        a.addText(0, 0, font, QString::fromLatin1(t[0]));
        b.addText(60 * (u(random) - 0.5), 60 * (u(random) - 0.5), font, QString::fromLatin1(t[1]));
        pairs.append(
                {QString::fromLatin1(t[0]) + QString::fromLatin1(t[1]), operand(a), operand(b)});
    }
    // Nearly coincident outlines: the same glyph moved by a fraction of a pixel.
    QPainterPath s1, s2;
    s1.addText(0, 0, font, QStringLiteral("s"));
    s2.addText(0.25, 0.1, font, QStringLiteral("s"));
    pairs.append({QStringLiteral("ss-shifted"), operand(s1), operand(s2)});
    return pairs;
}

TEST(BooleanOracle, GlyphOutlines)
{
    QString skip;
    const QVector<Pair> pairs = glyphPairs(&skip);
    if (pairs.isEmpty())
        GTEST_SKIP() << qPrintable(skip);
    FamilyRun(QStringLiteral("glyphs")).run(pairs);
}

TEST(BooleanOracle, DegeneratePairs)
{
    std::mt19937 random = generator(4);
    const QPainterPath circle = ellipse(200, 200, 100, 100);
    const QPainterPath someStar = star(random, 200, 200);
    QPainterPath curvedBelow, curvedAbove;
    curvedBelow.moveTo(100, 100);
    curvedBelow.cubicTo(150, 50, 250, 150, 300, 100);
    curvedAbove = curvedBelow;
    curvedBelow.lineTo(300, 300);
    curvedBelow.lineTo(100, 300);
    curvedBelow.closeSubpath();
    curvedAbove.lineTo(300, 0);
    curvedAbove.lineTo(100, 0);
    curvedAbove.closeSubpath();
    QPainterPath zeroLength;
    zeroLength.moveTo(100, 100);
    zeroLength.lineTo(300, 100);
    zeroLength.lineTo(300, 100);
    zeroLength.cubicTo(300, 100, 300, 100, 300, 100);
    zeroLength.lineTo(300, 300);
    zeroLength.lineTo(100, 300);
    zeroLength.closeSubpath();
    const QPainterPath ring =
            joined(ellipse(200, 200, 150, 150), ellipse(200, 200, 70, 70).toReversed());
    QPainterPath otherRing = ring;
    otherRing.translate(80, 30);

    const QVector<Pair> pairs = {
            {QStringLiteral("identical-circles"), operand(circle), operand(circle)},
            {QStringLiteral("identical-stars"), operand(someStar), operand(someStar)},
            {QStringLiteral("shared-edge"), operand(rect(100, 100, 100, 100)),
             operand(rect(200, 100, 100, 100))},
            {QStringLiteral("shared-edge-part"), operand(rect(100, 100, 100, 100)),
             operand(rect(200, 150, 100, 100))},
            {QStringLiteral("shared-curved-edge"), operand(curvedBelow), operand(curvedAbove)},
            {QStringLiteral("shared-vertex"), operand(rect(100, 100, 100, 100)),
             operand(rect(200, 200, 100, 100))},
            {QStringLiteral("shared-vertex-2"), operand(rect(100, 100, 100, 100)),
             operand(rect(0, 200, 100, 100))},
            {QStringLiteral("inside"), operand(ellipse(200, 200, 150, 150)),
             operand(rect(150, 150, 100, 100))},
            {QStringLiteral("inside-reversed"), operand(rect(150, 150, 100, 100)),
             operand(ellipse(200, 200, 150, 150))},
            {QStringLiteral("inside-touching"), operand(rect(100, 100, 200, 200)),
             operand(rect(100, 150, 100, 100))},
            {QStringLiteral("collinear-overlap"), operand(rect(100, 100, 100, 100)),
             operand(rect(150, 100, 100, 60))},
            {QStringLiteral("collinear-opposite"), operand(rect(100, 100, 100, 100)),
             operand(rect(150, 100, 100, 60).toReversed())},
            {QStringLiteral("zero-length"), operand(zeroLength),
             operand(ellipse(300, 300, 80, 80))},
            {QStringLiteral("hole-crossed"), operand(ring), operand(rect(170, 20, 60, 360))},
            {QStringLiteral("hole-island"), operand(ring), operand(ellipse(200, 200, 40, 40))},
            {QStringLiteral("rings"), operand(ring), operand(otherRing)},
            {QStringLiteral("disjoint"), operand(circle), operand(ellipse(600, 200, 50, 80))},
            {QStringLiteral("tangent-outside"), operand(circle),
             operand(ellipse(400, 200, 100, 100))},
            {QStringLiteral("tangent-inside"), operand(circle), operand(ellipse(250, 200, 50, 50))},
    };
    FamilyRun(QStringLiteral("degenerate")).run(pairs);
}

// The judge itself: it accepts Qt's own boolean as a result (read back
// through the library's containment) and rejects a wrong one, and its areas
// and conic approximation match closed forms.
TEST(BooleanOracle, JudgeSelfCheck)
{
    Case c;
    c.name = QStringLiteral("self-check");
    c.a = operand(ellipse(200, 200, 100, 60, 30));
    c.b = operand(rect(150, 120, 200, 120));
    c.op = Op::Intersect;
    Options options = suiteOptions();
    options.checkCurves = false; // Qt's result is flattened
    options.checkArea = false;

    Outcome right;
    right.first.reset(toXPath(c.a.path.intersected(c.b.path), true));
    const Verdict good = judge(c, right, options);
    EXPECT_TRUE(good.passed()) << qPrintable(good.reason);
    EXPECT_GT(good.samples, 100);

    Outcome wrong;
    wrong.first.reset(toXPath(c.a.path.united(c.b.path), true));
    const Verdict bad = judge(c, wrong, options);
    EXPECT_EQ(bad.status, Status::Failed);
    EXPECT_GT(bad.mismatches, 0);
    EXPECT_TRUE(bad.repro.contains(QStringLiteral("0x1.2cp+7"))) << qPrintable(bad.repro); // 150

    // A ring: even-odd counts the hole, non-zero only with the hole reversed.
    QPainterPath ring = joined(ellipse(0, 0, 100, 100), ellipse(0, 0, 50, 50));
    const double circleArea = exactArea(ellipse(0, 0, 100, 100));
    EXPECT_NEAR(circleArea, M_PI * 1e4, M_PI * 1e4 * 3e-4); // Qt's four-cubic circle
    ring.setFillRule(Qt::OddEvenFill);
    EXPECT_NEAR(exactArea(ring), circleArea * 0.75, 1e-9 * circleArea);
    ring.setFillRule(Qt::WindingFill);
    EXPECT_NEAR(exactArea(ring), circleArea, 1e-9 * circleArea);

    // A corpus circle of four conics comes out within float precision.
    Case corpus;
    ASSERT_TRUE(readCorpusCase(
            R"({"name":"c","source":"s","op":"union","fillA":"winding","fillB":"evenodd","inverseA":false,)"
            R"("inverseB":true,"expect":"pass","a":[["M",1,0],["K",1,1,0,1,0.7071067690849304],)"
            R"(["K",-1,1,-1,0,0.7071067690849304],["K",-1,-1,0,-1,0.7071067690849304],)"
            R"(["K",1,-1,1,0,0.7071067690849304],["Z"]],"b":[]})",
            &corpus, nullptr));
    EXPECT_EQ(corpus.op, Op::Union);
    EXPECT_TRUE(corpus.b.inverse);
    EXPECT_EQ(corpus.b.path.fillRule(), Qt::OddEvenFill);
    EXPECT_NEAR(exactArea(corpus.a.path), M_PI, 1e-6);
}
