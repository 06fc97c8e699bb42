// The commands of the rvgeom tool: reading operands, running the library's
// booleans, line effects and queries, and writing path data or pictures.

#include "commands.h"

#include "booleanoracle.h"
#include "rvrender.h"
#include "svgpath.h"

#include "boolean/kostyle.h"
#include "curve/kocurvelocation.h"
#include "path/kocurve.h"
#include "path/kopath.h"
#include "path/xpath.h"
#include "rvpath/rvpath.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QMap>

#include <charconv>
#include <cmath>
#include <functional>
#include <memory>

namespace rvGeom {

namespace {

// Effects sample their paths: more points than this per call are refused
// rather than left to run for minutes.
constexpr double MaxSamples = 1e6;
constexpr int DefaultPictureSide = 800;
constexpr double DefaultStep = 2;

// Thrown by the commands with the one-line message for the user; caught in
// run(), so no error passes unreported.
struct Failure
{
    QString message;
    int status = ExitBadInput;
};

[[noreturn]] void fail(const QString &message, int status = ExitBadInput)
{
    throw Failure{message, status};
}

struct Options
{
    QString fill; // empty: each shape's own rule
    QString out;
    int width = DefaultPictureSide, height = DefaultPictureSide;
    QString title;
    double step = DefaultStep;
    int kind = 0;
    double factor = 1;
    CheckOptions check;
};

struct Operand
{
    QString source;           // the argument as given
    QVector<SvgShape> shapes; // one for path data
    QPainterPath outline() const;
};

struct Context
{
    QStringList arguments;
    QString command;
    Options options;
    QStringList positional;
    FILE *out = nullptr;
    FILE *err = nullptr;
    QVector<rvRender::Layer> layers;
};

using Runner = std::function<void(Context &)>;

struct Command
{
    QString name;
    QString synopsis;
    int minArgs;
    int maxArgs;
    QStringList options; // besides --fill, --out, --size, --title
    Runner run;
};

void print(FILE *out, const QString &line)
{
    std::fputs(line.toUtf8().constData(), out);
    std::fputc('\n', out);
}

// The shortest text that reads back as the same double ("60", "0.1",
// "1e+30"), fixed or scientific, whichever is shorter.
QString number(double v)
{
    char buffer[64];
    const std::to_chars_result r = std::to_chars(buffer, buffer + sizeof buffer, v);
    return QString::fromLatin1(buffer, int(r.ptr - buffer));
}

bool finite(const QPainterPath &path)
{
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (!std::isfinite(e.x) || !std::isfinite(e.y))
            return false;
    }
    return true;
}

double finiteNumber(const QString &text, const QString &what)
{
    bool ok = false;
    const double v = text.toDouble(&ok);
    if (!ok)
        fail(QStringLiteral("%1: expected a number, got \"%2\"").arg(what, text));
    if (!std::isfinite(v))
        fail(QStringLiteral("%1: expected a finite number, got \"%2\"").arg(what, text));
    return v;
}

double positiveNumber(const QString &text, const QString &what)
{
    const double v = finiteNumber(text, what);
    if (!(v > 0))
        fail(QStringLiteral("%1: must be positive, got \"%2\"").arg(what, text));
    return v;
}

// --- operands ---------------------------------------------------------------------

void appendPath(QPainterPath *to, const QPainterPath &from)
{
    for (int i = 0; i < from.elementCount(); ++i) {
        const QPainterPath::Element e = from.elementAt(i);
        if (e.isMoveTo())
            to->moveTo(e);
        else if (e.isLineTo())
            to->lineTo(e);
        else if (e.isCurveTo() && i + 2 < from.elementCount()) {
            to->cubicTo(e, from.elementAt(i + 1), from.elementAt(i + 2));
            i += 2;
        }
    }
}

QPainterPath Operand::outline() const
{
    QPainterPath path;
    if (!shapes.isEmpty())
        path.setFillRule(shapes.first().path.fillRule());
    for (const SvgShape &shape : shapes)
        appendPath(&path, shape.path);
    return path;
}

bool looksLikePathData(const QString &text)
{
    const QString t = text.trimmed();
    return t.isEmpty() || t.startsWith(QLatin1Char('M')) || t.startsWith(QLatin1Char('m'));
}

// Shapes from the bytes of a file (or standard input) named \a name: an SVG
// document when it starts with '<', else path data.
QVector<SvgShape> shapesFromBytes(const QByteArray &bytes, const QString &name, const QString &id)
{
    QVector<SvgShape> shapes;
    QString text = QString::fromUtf8(bytes);
    if (text.startsWith(QChar(0xfeff)))
        text.remove(0, 1);
    if (!text.trimmed().startsWith(QLatin1Char('<'))) {
        if (!id.isEmpty())
            fail(QStringLiteral("%1: #%2 needs an SVG file, this holds path data").arg(name, id));
        SvgShape shape;
        shape.path.setFillRule(Qt::OddEvenFill);
        ParseError error;
        if (!parsePathData(text, &shape.path, &error))
            fail(QStringLiteral("%1: %2").arg(name, describe(error, text)));
        shapes.append(shape);
        return shapes;
    }
    QString error;
    if (!readSvgDocument(bytes, &shapes, &error))
        fail(QStringLiteral("%1:%2").arg(name, error));
    if (!id.isEmpty()) {
        QVector<SvgShape> picked;
        for (const SvgShape &shape : qAsConst(shapes))
            if (shape.id == id)
                picked.append(shape);
        if (picked.isEmpty())
            fail(QStringLiteral("%1: no <path> element with id \"%2\"").arg(name, id));
        return picked;
    }
    if (shapes.isEmpty())
        fail(QStringLiteral("%1: no <path> element with path data").arg(name));
    return shapes;
}

Operand loadOperand(const QString &argument, const Options &options)
{
    Operand operand;
    operand.source = argument;
    if (looksLikePathData(argument)) {
        SvgShape shape;
        shape.path.setFillRule(Qt::OddEvenFill);
        ParseError error;
        if (!parsePathData(argument, &shape.path, &error))
            fail(describe(error, argument));
        operand.shapes.append(shape);
    } else if (argument == QLatin1String("-")) {
        QFile in;
        if (!in.open(stdin, QIODevice::ReadOnly))
            fail(QStringLiteral("cannot read standard input"));
        operand.shapes = shapesFromBytes(in.readAll(), QStringLiteral("<stdin>"), QString());
    } else {
        // FILE#ID picks one path of an SVG file (unless a file has that name).
        QString fileName = argument, id;
        const int hash = argument.lastIndexOf(QLatin1Char('#'));
        if (hash > 0 && !QFileInfo::exists(argument)) {
            fileName = argument.left(hash);
            id = argument.mid(hash + 1);
        }
        QFile file(fileName);
        if (QFileInfo(fileName).isDir())
            fail(QStringLiteral("cannot read %1: it is a directory").arg(fileName));
        if (!file.open(QIODevice::ReadOnly))
            fail(QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString()));
        operand.shapes = shapesFromBytes(file.readAll(), fileName, id);
    }
    if (!options.fill.isEmpty()) {
        const Qt::FillRule rule =
                options.fill == QLatin1String("nonzero") ? Qt::WindingFill : Qt::OddEvenFill;
        for (SvgShape &shape : operand.shapes)
            shape.path.setFillRule(rule);
    }
    return operand;
}

Operand operandAt(Context &c, int i)
{
    Operand operand = loadOperand(c.positional.at(i), c.options);
    rvRender::Layer layer;
    layer.path = operand.outline();
    if (layer.path.isEmpty())
        layer.path = QPainterPath();
    layer.role = rvRender::Layer::Operand;
    layer.label = operand.source.size() <= 40 ? operand.source
                                              : operand.source.left(37) + QStringLiteral("...");
    c.layers.append(layer);
    return operand;
}

// --- compound paths -------------------------------------------------------------------

std::unique_ptr<XPath> newXPath(const QPainterPath &path, bool closeAll)
{
    // An empty QPainterPath may still hold Qt's initial move to (0, 0).
    std::unique_ptr<XPath> x(path.isEmpty() ? nullptr : rvOracle::toXPath(path, closeAll));
    if (!x)
        x.reset(new XPath);
    x->setEvenOdd(path.fillRule() == Qt::OddEvenFill);
    return x;
}

// The filled set of an operand: every subpath closed, several shapes of an
// SVG file united (each under its own fill rule), as a renderer draws them.
std::unique_ptr<XPath> fillOf(const Operand &operand)
{
    std::unique_ptr<XPath> set = newXPath(operand.shapes.value(0).path, true);
    for (int i = 1; i < operand.shapes.size(); ++i) {
        std::unique_ptr<XPath> next = newXPath(operand.shapes.at(i).path, true);
        std::unique_ptr<XPath> united(set->unite(next.get()));
        if (!united)
            fail(QStringLiteral("the union of the paths of %1 failed").arg(operand.source),
                 ExitBadInput);
        set = std::move(united);
    }
    return set;
}

// A single open subpath: intersect and subtract clip it as a line.
bool isSingleOpenLine(const Operand &operand)
{
    if (operand.shapes.size() != 1)
        return false;
    const QPainterPath &p = operand.shapes.first().path;
    int moves = 0;
    for (int i = 0; i < p.elementCount(); ++i)
        moves += p.elementAt(i).isMoveTo();
    if (moves != 1 || p.elementCount() < 2)
        return false;
    const QPointF first = p.elementAt(0), last = p.elementAt(p.elementCount() - 1);
    return first != last;
}

// --- output -----------------------------------------------------------------------------

void emitPath(Context &c, const QPainterPath &path, const QString &label)
{
    if (!finite(path))
        fail(QStringLiteral("%1: the library gave non-finite coordinates").arg(c.command),
             ExitCheckFailed);
    // Qt keeps a move to (0, 0) in an empty path that has a fill rule.
    const QPainterPath drawn = path.isEmpty() ? QPainterPath() : path;
    if (c.options.out.isEmpty())
        print(c.out, rvRender::svgPathData(drawn));
    rvRender::Layer layer;
    layer.path = drawn;
    layer.role = rvRender::Layer::Result;
    layer.label = label;
    c.layers.append(layer);
}

void addMarkers(Context &c, const QVector<QPointF> &points, const QString &label)
{
    rvRender::Layer layer;
    layer.role = rvRender::Layer::Marker;
    layer.label = label;
    for (const QPointF &p : points) {
        layer.path.moveTo(p);
        layer.path.lineTo(p);
    }
    c.layers.append(layer);
}

QString quoteArgument(const QString &a)
{
    if (!a.isEmpty() && !a.contains(QLatin1Char(' ')) && !a.contains(QLatin1Char('"')))
        return a;
    QString q = a;
    q.replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QLatin1Char('"') + q + QLatin1Char('"');
}

void writePicture(const Context &c)
{
    const QString &file = c.options.out;
    QString title = c.options.title;
    if (title.isEmpty()) {
        QStringList quoted;
        for (const QString &a : c.arguments)
            if (a != QLatin1String("--out") && a != file && !a.startsWith(QLatin1String("--out=")))
                quoted << quoteArgument(a);
        title = QStringLiteral("rvgeom ") + quoted.join(QLatin1Char(' '));
    }
    QString error;
    const QString suffix = QFileInfo(file).suffix().toLower();
    const bool ok = suffix == QLatin1String("png")
            ? rvRender::writePng(file, c.layers, c.options.width, c.options.height, title, &error)
            : rvRender::writeSvg(file, c.layers, title, &error);
    if (!ok)
        fail(QStringLiteral("cannot write %1: %2").arg(file, error));
}

// --- booleans -----------------------------------------------------------------------------

void runBoolean(Context &c)
{
    const Operand a = operandAt(c, 0), b = operandAt(c, 1);
    const bool clip =
            (c.command == QLatin1String("intersect") || c.command == QLatin1String("subtract"))
            && isSingleOpenLine(a);
    std::unique_ptr<XPath> pa = clip ? newXPath(a.shapes.first().path, false) : fillOf(a);
    std::unique_ptr<XPath> pb = fillOf(b);
    QVector<XPath *> results;
    if (c.command == QLatin1String("unite"))
        results << pa->unite(pb.get());
    else if (c.command == QLatin1String("intersect"))
        results << pa->intersect(pb.get());
    else if (c.command == QLatin1String("subtract"))
        results << pa->subtract(pb.get());
    else if (c.command == QLatin1String("exclude"))
        results << pa->exclude(pb.get());
    else
        results = pa->divide(pb.get()).toVector();
    std::vector<std::unique_ptr<XPath>> owned;
    for (XPath *r : qAsConst(results))
        owned.emplace_back(r);
    if (results.contains(nullptr) || results.isEmpty())
        fail(QStringLiteral("%1: the library gave no result").arg(c.command), ExitCheckFailed);
    const QStringList labels = c.command == QLatin1String("divide")
            ? QStringList{QStringLiteral("A - B"), QStringLiteral("A within B")}
            : QStringList{c.command};
    for (int i = 0; i < results.size(); ++i)
        emitPath(c, rvOracle::toPainterPath(results.at(i)), labels.value(i));
}

// --- line effects ---------------------------------------------------------------------------

double outlineLength(const QPainterPath &path)
{
    std::unique_ptr<XPath> x = newXPath(path, false);
    double total = 0;
    for (koCurve *curve : x->getCurves())
        total += curve->getLength();
    return total;
}

// Refuses steps that would sample the outline more than MaxSamples times.
void checkSampling(const QPainterPath &path, double step, const QString &what)
{
    const double length = outlineLength(path);
    if (!(length / step <= MaxSamples))
        fail(QStringLiteral("%1 %2 is too small for an outline of length %3 (at most %4 points)")
                     .arg(what, number(step), number(length))
                     .arg(MaxSamples, 0, 'g'));
}

QPainterPath painterPathOf(const RVPath &path)
{
    QPainterPath out;
    path.toPainterPath(out);
    out.setFillRule(Qt::WindingFill);
    return out;
}

void runEffect(Context &c)
{
    const Operand operand = operandAt(c, 0);
    const QPainterPath outline = operand.outline();
    RVPath source = toRVPath(outline);
    RVPath result;
    const QStringList &p = c.positional;
    const QString &name = c.command;
    double headStart = 0, headEnd = 0;
    if (name == QLatin1String("offset")) {
        const double distance = finiteNumber(p.at(1), QStringLiteral("DISTANCE"));
        checkSampling(outline, c.options.step, QStringLiteral("--step"));
        source.parallelPath(result, distance, c.options.step);
    } else if (name == QLatin1String("thick")) {
        const double start = finiteNumber(p.at(1), QStringLiteral("WIDTH"));
        const double end =
                p.size() > 2 ? finiteNumber(p.at(2), QStringLiteral("END_WIDTH")) : start;
        checkSampling(outline, c.options.step, QStringLiteral("--step"));
        source.thickPath(result, start, end, c.options.step);
    } else if (name == QLatin1String("round")) {
        const double radius = finiteNumber(p.at(1), QStringLiteral("RADIUS"));
        if (radius < 0)
            fail(QStringLiteral("RADIUS: must not be negative, got \"%1\"").arg(p.at(1)));
        source.setCornerRound(radius);
        result = source;
    } else if (name == QLatin1String("heads")) {
        headStart = finiteNumber(p.at(1), QStringLiteral("START"));
        headEnd = p.size() > 2 ? finiteNumber(p.at(2), QStringLiteral("END")) : headStart;
        source.setLineHead(headStart, headEnd);
        result = source;
    } else if (name == QLatin1String("wave")) {
        const double wavelength = positiveNumber(p.at(1), QStringLiteral("WAVELENGTH"));
        const double amplitude =
                p.size() > 2 ? finiteNumber(p.at(2), QStringLiteral("AMPLITUDE")) : -1.0;
        checkSampling(outline, wavelength, QStringLiteral("WAVELENGTH"));
        source.wavePath(result, c.options.kind, wavelength, amplitude, c.options.factor);
    } else if (name == QLatin1String("manual")) {
        const double amplitude = finiteNumber(p.at(1), QStringLiteral("AMPLITUDE"));
        const double step = positiveNumber(p.at(2), QStringLiteral("STEP"));
        checkSampling(outline, step, QStringLiteral("STEP"));
        result.manualPath(source, amplitude, step);
    } else { // smooth
        static const QStringList types = {
                QStringLiteral("continuous"), QStringLiteral("asymmetric"),
                QStringLiteral("catmull-rom"), QStringLiteral("geometric")};
        const QString type = p.value(1, types.first());
        const int index = types.indexOf(type);
        if (index < 0)
            fail(QStringLiteral("TYPE: unknown smoothing \"%1\" (use %2)")
                         .arg(type, types.join(QStringLiteral(", "))));
        source.smooth(index);
        result = source;
    }
    emitPath(c, painterPathOf(result), name);

    if (name == QLatin1String("heads")) {
        // The uncut tips sit on the first and last element of each open subpath.
        const QVector<RVPathElement> &e = result.elements();
        QVector<QPointF> tips;
        for (int first = 0; first < e.size();) {
            int last = first;
            while (last + 1 < e.size() && e.at(last + 1).type != RVPathElement::MoveTo)
                ++last;
            if (e.at(last).type != RVPathElement::Close && last > first) {
                // An end is cut, and its tip recorded, only for a positive length.
                const int ends[2] = {first, last};
                for (int k = 0; k < 2; ++k) {
                    if (!((k == 0 ? headStart : headEnd) > 0))
                        continue;
                    const QPointF tip(e.at(ends[k]).headX, e.at(ends[k]).headY);
                    print(c.out,
                          QStringLiteral("%1 %2 %3")
                                  .arg(k == 0 ? QStringLiteral("start-tip")
                                              : QStringLiteral("end-tip"),
                                       number(tip.x()), number(tip.y())));
                    tips << tip;
                }
            }
            first = last + 1;
        }
        addMarkers(c, tips, QStringLiteral("tips"));
    }
}

// --- queries -------------------------------------------------------------------------------

void runQuery(Context &c)
{
    const Operand a = operandAt(c, 0);
    const QString &name = c.command;
    if (name == QLatin1String("length")) {
        print(c.out, number(outlineLength(a.outline())));
    } else if (name == QLatin1String("bounds")) {
        std::unique_ptr<XPath> x = newXPath(a.outline(), false);
        koRect box;
        bool any = false;
        for (koPath *child : x->children) {
            if (child->segments.isEmpty())
                continue;
            const koRect r = koPath::getBounds(child->segments, child->closed, nullptr);
            box = any ? box.unite(r) : r;
            any = true;
        }
        if (!any)
            fail(QStringLiteral("bounds: the shape has no segments"));
        print(c.out,
              QStringLiteral("%1 %2 %3 %4")
                      .arg(number(box.x), number(box.y), number(box.width), number(box.height)));
        rvRender::Layer layer;
        layer.role = rvRender::Layer::Guide;
        layer.path.addRect(QRectF(box.x, box.y, box.width, box.height));
        layer.label = QStringLiteral("bounds");
        c.layers.append(layer);
    } else if (name == QLatin1String("area")) {
        std::unique_ptr<XPath> fill = fillOf(a);
        // Resolved contours alternate in orientation with their nesting, so
        // the signed areas add up to the area of the fill.
        std::unique_ptr<XPath> resolved(XPath::preparePath(fill.get(), true));
        double sum = 0;
        if (resolved)
            for (koPath *child : resolved->children)
                sum += child->getArea();
        print(c.out, number(std::abs(sum)));
    } else if (name == QLatin1String("contains")) {
        const double x = finiteNumber(c.positional.at(1), QStringLiteral("X"));
        const double y = finiteNumber(c.positional.at(2), QStringLiteral("Y"));
        std::unique_ptr<XPath> fill = fillOf(a);
        koStyle style;
        style.evenOdd = fill->isEvenOdd();
        const bool inside = fill->contains(koPoint(x, y), style);
        print(c.out, inside ? QStringLiteral("inside") : QStringLiteral("outside"));
        addMarkers(c, {QPointF(x, y)},
                   inside ? QStringLiteral("inside") : QStringLiteral("outside"));
    } else { // crossings
        std::unique_ptr<XPath> pa = newXPath(a.outline(), false);
        std::unique_ptr<XPath> pb;
        if (c.positional.size() > 1)
            pb = newXPath(operandAt(c, 1).outline(), false);
        const QList<koCurveLocation *> found = pa->getCrossings(pb ? pb.get() : nullptr);
        QVector<QPointF> points;
        for (const koCurveLocation *location : found) {
            const koPoint p = location->getPoint();
            points << QPointF(p.x, p.y);
        }
        XPath::releaseLocations(found, true);
        for (const QPointF &p : qAsConst(points))
            print(c.out, QStringLiteral("%1 %2").arg(number(p.x()), number(p.y())));
        addMarkers(c, points, QStringLiteral("crossings"));
    }
}

void runCheckCommand(Context &c)
{
    const int status = runCheck(c.positional.at(0), c.options.check, c.out, c.err);
    if (status != ExitOk)
        throw Failure{QString(), status};
}

const QVector<Command> &commands()
{
    static const QVector<Command> list = {
            {QStringLiteral("unite"), QStringLiteral("A B"), 2, 2, {}, runBoolean},
            {QStringLiteral("intersect"), QStringLiteral("A B"), 2, 2, {}, runBoolean},
            {QStringLiteral("subtract"), QStringLiteral("A B"), 2, 2, {}, runBoolean},
            {QStringLiteral("exclude"), QStringLiteral("A B"), 2, 2, {}, runBoolean},
            {QStringLiteral("divide"), QStringLiteral("A B"), 2, 2, {}, runBoolean},
            {QStringLiteral("offset"),
             QStringLiteral("SHAPE DISTANCE"),
             2,
             2,
             {QStringLiteral("--step")},
             runEffect},
            {QStringLiteral("thick"),
             QStringLiteral("SHAPE WIDTH [END_WIDTH]"),
             2,
             3,
             {QStringLiteral("--step")},
             runEffect},
            {QStringLiteral("round"), QStringLiteral("SHAPE RADIUS"), 2, 2, {}, runEffect},
            {QStringLiteral("heads"), QStringLiteral("SHAPE START [END]"), 2, 3, {}, runEffect},
            {QStringLiteral("wave"),
             QStringLiteral("SHAPE WAVELENGTH [AMPLITUDE]"),
             2,
             3,
             {QStringLiteral("--kind"), QStringLiteral("--factor")},
             runEffect},
            {QStringLiteral("manual"), QStringLiteral("SHAPE AMPLITUDE STEP"), 3, 3, {}, runEffect},
            {QStringLiteral("smooth"), QStringLiteral("SHAPE [TYPE]"), 1, 2, {}, runEffect},
            {QStringLiteral("length"), QStringLiteral("SHAPE"), 1, 1, {}, runQuery},
            {QStringLiteral("bounds"), QStringLiteral("SHAPE"), 1, 1, {}, runQuery},
            {QStringLiteral("area"), QStringLiteral("SHAPE"), 1, 1, {}, runQuery},
            {QStringLiteral("contains"), QStringLiteral("SHAPE X Y"), 3, 3, {}, runQuery},
            {QStringLiteral("crossings"), QStringLiteral("A [B]"), 1, 2, {}, runQuery},
            {QStringLiteral("check"),
             QStringLiteral("CASES.jsonl"),
             1,
             1,
             {QStringLiteral("--timeout"), QStringLiteral("--verbose"), QStringLiteral("--repro"),
              QStringLiteral("--in-process")},
             runCheckCommand},
    };
    return list;
}

// Options taking a value; the others are switches.
bool takesValue(const QString &option)
{
    static const QStringList valued = {QStringLiteral("--fill"),   QStringLiteral("--out"),
                                       QStringLiteral("--size"),   QStringLiteral("--title"),
                                       QStringLiteral("--step"),   QStringLiteral("--kind"),
                                       QStringLiteral("--factor"), QStringLiteral("--timeout")};
    return valued.contains(option);
}

void applyOption(Options &o, const QString &name, const QString &value)
{
    if (name == QLatin1String("--fill")) {
        if (value != QLatin1String("evenodd") && value != QLatin1String("nonzero"))
            fail(QStringLiteral("--fill: expected evenodd or nonzero, got \"%1\"").arg(value));
        o.fill = value;
    } else if (name == QLatin1String("--out")) {
        const QString suffix = QFileInfo(value).suffix().toLower();
        if (suffix != QLatin1String("svg") && suffix != QLatin1String("png"))
            fail(QStringLiteral("--out: the file name must end in .svg or .png, got \"%1\"")
                         .arg(value));
        o.out = value;
    } else if (name == QLatin1String("--size")) {
        const QStringList wh = value.split(QLatin1Char('x'));
        bool ok1 = false, ok2 = true;
        o.width = wh.value(0).toInt(&ok1);
        o.height = wh.size() > 1 ? wh.value(1).toInt(&ok2) : o.width;
        if (!ok1 || !ok2 || wh.size() > 2 || o.width < 16 || o.height < 16 || o.width > 10000
            || o.height > 10000)
            fail(QStringLiteral("--size: expected WIDTHxHEIGHT in pixels (16 to 10000), got "
                                "\"%1\"")
                         .arg(value));
    } else if (name == QLatin1String("--title")) {
        o.title = value;
    } else if (name == QLatin1String("--step")) {
        o.step = positiveNumber(value, name);
    } else if (name == QLatin1String("--kind")) {
        bool ok = false;
        o.kind = value.toInt(&ok);
        if (!ok || o.kind < 0)
            fail(QStringLiteral("--kind: expected a wave kind 0, 1, 2, ..., got \"%1\"")
                         .arg(value));
    } else if (name == QLatin1String("--factor")) {
        o.factor = finiteNumber(value, name);
    } else if (name == QLatin1String("--timeout")) {
        bool ok = false;
        o.check.timeoutMs = value.toInt(&ok);
        if (!ok || o.check.timeoutMs <= 0)
            fail(QStringLiteral("--timeout: expected milliseconds, got \"%1\"").arg(value));
    } else if (name == QLatin1String("--verbose")) {
        o.check.verbose = true;
    } else if (name == QLatin1String("--repro")) {
        o.check.repro = true;
    } else if (name == QLatin1String("--in-process")) {
        o.check.inProcess = true;
    } else {
        fail(QStringLiteral("unknown option %1 (see rvgeom --help)").arg(name));
    }
}

int execute(const QStringList &arguments, FILE *out, FILE *err)
{
    Context c;
    c.arguments = arguments;
    c.out = out;
    c.err = err;
    QStringList given; // options seen, for the per-command check
    bool optionsEnd = false;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &a = arguments.at(i);
        // "-" is standard input and "-5" a number; options start with "--".
        if (optionsEnd || !a.startsWith(QLatin1String("--"))) {
            if (c.command.isEmpty())
                c.command = a;
            else
                c.positional << a;
            continue;
        }
        if (a == QLatin1String("--")) {
            optionsEnd = true;
            continue;
        }
        QString name = a, value;
        const int equals = a.indexOf(QLatin1Char('='));
        if (equals > 0) {
            name = a.left(equals);
            value = a.mid(equals + 1);
        } else if (takesValue(a)) {
            if (i + 1 >= arguments.size())
                fail(QStringLiteral("%1: missing value").arg(a));
            value = arguments.at(++i);
        }
        if (name == QLatin1String("--help"))
            return -1;
        applyOption(c.options, name, value);
        given << name;
    }
    if (c.command.isEmpty())
        fail(QStringLiteral("missing command (see rvgeom --help)"));
    const QVector<Command> &list = commands();
    const auto it = std::find_if(list.begin(), list.end(),
                                 [&](const Command &k) { return k.name == c.command; });
    if (it == list.end())
        fail(QStringLiteral("unknown command \"%1\" (see rvgeom --help)").arg(c.command));
    const Command &command = *it;
    static const QStringList common = {QStringLiteral("--fill"), QStringLiteral("--out"),
                                       QStringLiteral("--size"), QStringLiteral("--title")};
    for (const QString &option : qAsConst(given))
        if (!command.options.contains(option)
            && (command.name == QLatin1String("check") || !common.contains(option)))
            fail(QStringLiteral("%1: option %2 does not apply").arg(command.name, option));
    if (c.positional.size() < command.minArgs)
        fail(QStringLiteral("%1: missing arguments (usage: rvgeom %1 %2)")
                     .arg(command.name, command.synopsis));
    if (c.positional.size() > command.maxArgs)
        fail(QStringLiteral("%1: too many arguments (usage: rvgeom %1 %2)")
                     .arg(command.name, command.synopsis));
    command.run(c);
    if (!c.options.out.isEmpty())
        writePicture(c);
    return ExitOk;
}

} // namespace

RVPath toRVPath(const QPainterPath &path)
{
    RVPath rv;
    const int count = path.isEmpty() ? 0 : path.elementCount();
    int start = -1;
    for (int i = 0; i < count; ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (e.isMoveTo())
            start = i;
        RVPathElement element;
        element.x = e.x;
        element.y = e.y;
        element.type = int(e.type);
        rv.appendElement(element);
        const bool subpathEnds = i + 1 == count || path.elementAt(i + 1).isMoveTo();
        if (subpathEnds && start >= 0 && i > start) {
            const QPainterPath::Element first = path.elementAt(start);
            if (first.x == e.x && first.y == e.y && e.type != QPainterPath::CurveToElement)
                rv.closeSubpath();
        }
    }
    return rv;
}

bool wantsPicture(const QStringList &arguments)
{
    for (const QString &a : arguments) {
        if (a == QLatin1String("--"))
            break;
        if (a == QLatin1String("--out") || a.startsWith(QLatin1String("--out=")))
            return true;
    }
    return false;
}

int run(const QStringList &arguments, FILE *out, FILE *err)
{
    if (arguments.isEmpty() || arguments.first() == QLatin1String("-h")
        || arguments.first() == QLatin1String("help")) {
        std::fputs(helpText().toUtf8().constData(), arguments.isEmpty() ? err : out);
        return arguments.isEmpty() ? ExitBadInput : ExitOk;
    }
    try {
        const int status = execute(arguments, out, err);
        if (status < 0) {
            std::fputs(helpText().toUtf8().constData(), out);
            return ExitOk;
        }
        return status;
    } catch (const Failure &failure) {
        if (!failure.message.isEmpty())
            print(err, QStringLiteral("rvgeom: ") + failure.message);
        return failure.status;
    } catch (const std::bad_alloc &) {
        print(err, QStringLiteral("rvgeom: out of memory"));
        return ExitBadInput;
    }
}

QString helpText()
{
    return QStringLiteral(
            R"(usage: rvgeom COMMAND [OPTIONS] ARGUMENTS...

A shape (SHAPE, A, B) is SVG path data ("M0 0 L10 0 ..."; every command of the
SVG path grammar, arcs included), a file holding path data, an SVG file (its
<path> elements; FILE.svg#ID picks the path with that id), or - for standard
input. Results are SVG path data on standard output, one line per path; with
--out FILE.svg or FILE.png they are drawn instead, operands faintly beneath.

Boolean operations (curves stay curves; every subpath is closed for filling):
  unite A B          the union of the fills of A and B
  intersect A B      the common part; a single open path A is clipped as a line
  subtract A B       A minus B; a single open path A is clipped as a line
  exclude A B        the parts in exactly one of A and B
  divide A B         two lines: A minus B, then A within B

Line effects. They work in device units: points of the result closer than
1 unit on both axes are merged, so draw small shapes (a few units) larger.
  offset SHAPE DISTANCE        the parallel path; positive distances lie on the
                               left of the direction of travel (y down)
  thick SHAPE WIDTH [END]      outline of the first subpath stroked with sides
                               WIDTH (tapering to END) from it, round caps
  round SHAPE RADIUS           every corner replaced by a cubic, the lines cut
                               back by RADIUS
  heads SHAPE START [END]      open subpaths cut back by START and END (default
                               START) for line heads; prints the path, then the
                               uncut tips ("start-tip X Y", "end-tip X Y")
  wave SHAPE WAVELENGTH [AMP]  a wave along every subpath (AMP: half the
                               wavelength when omitted)
  manual SHAPE AMPLITUDE STEP  hand-drawn look of the first subpath: a point
                               every STEP, moved sideways by noise
  smooth SHAPE [TYPE]          every subpath smoothed through its points; TYPE
                               continuous (default), asymmetric, catmull-rom,
                               geometric

Queries:
  length SHAPE       length of the outline
  bounds SHAPE       exact bounds of the curves: X Y WIDTH HEIGHT
  area SHAPE         area of the fill
  contains SHAPE X Y "inside" or "outside" the fill
  crossings A [B]    points where A crosses B (or itself), one "X Y" per line

Testing:
  check CASES.jsonl  judges boolean cases, one JSON object per line:
                     {"name": "n", "op": "union", "a": PATH, "b": PATH}
                     PATH: [["M",x,y], ["L",x,y], ["C",x1,y1,x2,y2,x,y],
                     ["Q",x1,y1,x,y], ["K",x1,y1,x,y,w] (conic), ["Z"]];
                     numbers may be "NaN", "Infinity", "-Infinity".
                     op: union|unite, intersect, difference|subtract,
                     rdifference (B - A), xor|exclude, divide, simplify (a
                     only). Optional: fillA/fillB ("evenodd" (default),
                     "nonzero"/"winding"), inverseA/inverseB, and "area": the
                     expected area of the result (divide: of both parts).
                     Each case runs in a child process with a time limit and
                     is judged by sample points against QPainterPath and by
                     areas; cases on the same operands also by the area
                     identities. Prints one line per failure and
                     "N passed, N failed".

Options:
  --fill evenodd|nonzero  fill rule of every shape (default: even-odd for path
                          data, an SVG path's own fill-rule, else nonzero)
  --out FILE.svg|.png     draw operands and results into a picture
  --size W[xH]            picture size in pixels (default 800x800)
  --title TEXT            picture title (default: the command line)
  --step S                offset, thick: sampling step along curves (2)
  --kind N                wave: 0 sine (default), 1 bumps, 2 curls, 3 zigzag,
                          4 sawtooth, 5 full sine periods, 6 square wave
  --factor F              wave: height factor (1)
  --timeout MS            check: time limit per case (20000)
  --verbose               check: a line for passing cases too
  --repro                 check: failing operands as C++ code
  --in-process            check: no child processes (a crash ends the run)
  --help                  this text

Examples:
  rvgeom unite "M0 0 H60 V60 H0 Z" "M30 30 h60 v60 h-60 z"
  rvgeom subtract "M0 0 H100 V100 H0 Z" "M20 50 a30 30 0 1 0 60 0 a30 30 0 1 0 -60 0" --out hole.png
  rvgeom intersect "M-10 50 H110" "M0 0 H100 V100 H0 Z"
  rvgeom exclude "M0 0 H60 V60 H0 Z" "M30 30 h60 v60 h-60 z" --fill nonzero
  rvgeom divide drawing.svg#a drawing.svg#b --out parts.svg
  rvgeom offset "M0 0 C50 0 50 50 100 50" 10
  rvgeom thick "M0 0 Q50 -40 100 0" 8 0
  rvgeom round "M0 0 H100 V100" 20
  rvgeom heads "M0 0 L100 0" 10 15
  rvgeom wave "M0 0 H200" 20 --kind 1
  rvgeom manual "M0 0 H200 V100" 3 5
  rvgeom smooth "M0 0 L50 40 L100 0 L150 40" catmull-rom
  rvgeom length "M0 0 A50 50 0 0 1 100 0"
  rvgeom bounds "M0 0 C0 -50 100 -50 100 0"
  rvgeom area --fill nonzero drawing.svg
  rvgeom contains "M0 0 H10 V10 H0 Z" 5 5
  rvgeom crossings "M0 0 L10 10" "M0 10 L10 0"
  rvgeom check cases.jsonl

Exit status: 0 success, 1 check found failing cases (or the library gave an
unusable result), 2 bad input or usage.
)");
}

} // namespace rvGeom
