// SVG path data and SVG documents read into QPainterPath.

#include "svgpath.h"

#include <QtCore/QStack>
#include <QtCore/QXmlStreamReader>
#include <QtCore/QtMath>

#include <cmath>

namespace rvGeom {

namespace {

// A sweep within this fraction of a quarter turn above a multiple of 90
// degrees (a half circle computed as pi + 1 ulp) gets no extra sliver piece.
constexpr double QuarterSlack = 1e-9;
// Data longer than this is quoted in messages as a window around the error.
constexpr int QuoteLimit = 60;

bool isWsp(QChar c)
{
    const ushort u = c.unicode();
    return u == 0x20 || u == 0x9 || u == 0xA || u == 0xD || u == 0xC;
}

bool isDigit(QChar c)
{
    return c.unicode() >= '0' && c.unicode() <= '9';
}

// QPainterPath silently ignores points with a coordinate beyond this (Qt
// 5.15's validity test for path points), so the reader refuses them.
constexpr double MaxCoordinate = 1e128;

bool drawable(double v)
{
    return std::abs(v) < MaxCoordinate; // false for NaN
}

bool drawable(const QPointF &p)
{
    return drawable(p.x()) && drawable(p.y());
}

// A cursor over the characters of one attribute or argument, with the number
// and separator rules shared by path data and transform lists.
class Scanner
{
public:
    explicit Scanner(const QString &text) : m_text(text) {}

    int pos() const { return m_pos; }
    bool atEnd() const { return m_pos >= m_text.size(); }
    QChar peek() const { return atEnd() ? QChar() : m_text.at(m_pos); }
    void advance() { ++m_pos; }

    void skipWsp()
    {
        while (!atEnd() && isWsp(peek()))
            ++m_pos;
    }
    // comma-wsp, optional: wsp* ","? wsp*. True when a comma was taken.
    bool skipCommaWsp()
    {
        skipWsp();
        if (peek() == QLatin1Char(',')) {
            ++m_pos;
            skipWsp();
            return true;
        }
        return false;
    }
    bool atNumberStart() const
    {
        const QChar c = peek();
        return isDigit(c) || c == QLatin1Char('.') || c == QLatin1Char('-')
                || c == QLatin1Char('+');
    }

    // sign? (digits ("." digits?)? | "." digits) ([eE] sign? digits)?
    bool number(double *value, ParseError *error)
    {
        const int start = m_pos;
        if (peek() == QLatin1Char('-') || peek() == QLatin1Char('+'))
            ++m_pos;
        int digits = 0;
        while (isDigit(peek())) {
            ++m_pos;
            ++digits;
        }
        if (peek() == QLatin1Char('.')) {
            ++m_pos;
            while (isDigit(peek())) {
                ++m_pos;
                ++digits;
            }
        }
        if (digits == 0)
            return fail(error, QStringLiteral("expected a number"), start);
        if (peek() == QLatin1Char('e') || peek() == QLatin1Char('E')) {
            ++m_pos;
            if (peek() == QLatin1Char('-') || peek() == QLatin1Char('+'))
                ++m_pos;
            if (!isDigit(peek()))
                return fail(error, QStringLiteral("expected the digits of an exponent"), m_pos);
            while (isDigit(peek()))
                ++m_pos;
        }
        // QString::toDouble() reads the C locale and rounds correctly.
        // Overflow gives an infinity; underflow gives 0, which is kept.
        *value = m_text.midRef(start, m_pos - start).toDouble();
        if (!std::isfinite(*value))
            return fail(error, QStringLiteral("number out of range"), start);
        return true;
    }

    bool flag(bool *value, ParseError *error)
    {
        const QChar c = peek();
        if (c != QLatin1Char('0') && c != QLatin1Char('1'))
            return fail(error, QStringLiteral("expected a flag (0 or 1)"), m_pos);
        *value = c == QLatin1Char('1');
        ++m_pos;
        return true;
    }

    static bool fail(ParseError *error, const QString &message, int offset)
    {
        if (error) {
            error->message = message;
            error->offset = offset;
        }
        return false;
    }

private:
    const QString &m_text;
    int m_pos = 0;
};

// Draws the commands into a QPainterPath with SVG's current-point rules.
class PathBuilder
{
public:
    explicit PathBuilder(QPainterPath *path) : m_path(path) {}

    QPointF current() const { return m_current; }

    bool moveTo(const QPointF &p)
    {
        if (!drawable(p))
            return false;
        m_path->moveTo(p);
        m_current = m_start = p;
        m_needMove = false;
        return true;
    }
    bool lineTo(const QPointF &p)
    {
        if (!drawable(p))
            return false;
        beginDrawing();
        m_path->lineTo(p);
        m_current = p;
        return true;
    }
    bool cubicTo(const QPointF &c1, const QPointF &c2, const QPointF &p)
    {
        if (!drawable(c1) || !drawable(c2) || !drawable(p))
            return false;
        beginDrawing();
        m_path->cubicTo(c1, c2, p);
        m_current = p;
        return true;
    }
    // The exact degree elevation: handles two thirds of the way to the
    // control point.
    bool quadTo(const QPointF &q, const QPointF &p)
    {
        return cubicTo(m_current + (q - m_current) * (2.0 / 3), p + (q - p) * (2.0 / 3), p);
    }
    bool arcTo(double rx, double ry, double rotation, bool large, bool sweep, const QPointF &to)
    {
        if (!drawable(to))
            return false;
        if (to.x() == m_current.x() && to.y() == m_current.y())
            return true; // an arc to its own start is omitted
        if (rx == 0 || ry == 0)
            return lineTo(to);
        QVector<QPointF> points;
        arcToCubics(m_current, rx, ry, rotation, large, sweep, to, &points);
        for (const QPointF &p : qAsConst(points))
            if (!drawable(p))
                return false;
        for (int i = 0; i + 2 < points.size(); i += 3)
            cubicTo(points.at(i), points.at(i + 1), points.at(i + 2));
        return true;
    }
    void close()
    {
        m_path->closeSubpath();
        m_current = m_start;
        m_needMove = true;
    }

private:
    // After Z the next drawing command starts at the subpath's start.
    void beginDrawing()
    {
        if (m_needMove) {
            m_path->moveTo(m_start);
            m_needMove = false;
        }
    }

    QPainterPath *m_path;
    QPointF m_current, m_start;
    bool m_needMove = false;
};

int argumentCount(QChar command)
{
    switch (command.toUpper().unicode()) {
    case 'M':
    case 'L':
    case 'T':
        return 2;
    case 'H':
    case 'V':
        return 1;
    case 'C':
        return 6;
    case 'S':
    case 'Q':
        return 4;
    case 'A':
        return 7;
    case 'Z':
        return 0;
    default:
        return -1;
    }
}

QString quoted(const QString &data, int offset)
{
    if (data.size() <= QuoteLimit)
        return QLatin1Char('"') + data + QLatin1Char('"');
    const int half = QuoteLimit / 2;
    const int from = qBound(0, offset - half, data.size() - QuoteLimit);
    QString text = data.mid(from, QuoteLimit);
    if (from > 0)
        text.prepend(QStringLiteral("..."));
    if (from + QuoteLimit < data.size())
        text.append(QStringLiteral("..."));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace

void arcToCubics(const QPointF &from, double rx, double ry, double rotation, bool large, bool sweep,
                 const QPointF &to, QVector<QPointF> *points)
{
    points->clear();
    rx = std::abs(rx);
    ry = std::abs(ry);
    const double phi = qDegreesToRadians(rotation);
    const double cosPhi = std::cos(phi), sinPhi = std::sin(phi);

    // The chord's half in the ellipse's own frame.
    const double dx = (from.x() - to.x()) / 2, dy = (from.y() - to.y()) / 2;
    const double x1 = cosPhi * dx + sinPhi * dy;
    const double y1 = -sinPhi * dx + cosPhi * dy;

    // Radii too small for the chord grow until the chord is a diameter.
    // lambda is 1 when the chord is a diameter; the centre lies
    // sqrt(1 / lambda - 1) half-chords (in the ellipse's metric) off the chord.
    const double lambda = (x1 / rx) * (x1 / rx) + (y1 / ry) * (y1 / ry);
    double ratio = 0;
    if (lambda > 1) {
        const double s = std::sqrt(lambda);
        rx *= s;
        ry *= s;
    } else {
        ratio = 1 / lambda - 1;
    }
    double k = std::sqrt(std::max(0.0, ratio));
    if (large == sweep)
        k = -k;
    const double cx1 = k * rx * y1 / ry, cy1 = -k * ry * x1 / rx;
    const double cx = cosPhi * cx1 - sinPhi * cy1 + (from.x() + to.x()) / 2;
    const double cy = sinPhi * cx1 + cosPhi * cy1 + (from.y() + to.y()) / 2;

    // Start angle and sweep on the unit circle of the ellipse's frame.
    const double ux = (x1 - cx1) / rx, uy = (y1 - cy1) / ry;
    const double vx = (-x1 - cx1) / rx, vy = (-y1 - cy1) / ry;
    const double theta = std::atan2(uy, ux);
    double delta = std::atan2(ux * vy - uy * vx, ux * vx + uy * vy);
    if (!sweep && delta > 0)
        delta -= 2 * M_PI;
    else if (sweep && delta < 0)
        delta += 2 * M_PI;

    const double quarters = std::abs(delta) / (M_PI / 2);
    const int n = std::max(1, int(std::ceil(quarters - QuarterSlack)));
    const double step = delta / n;
    const double handle = 4.0 / 3.0 * std::tan(step / 4);
    auto point = [&](double t) {
        const double c = std::cos(t), s = std::sin(t);
        return QPointF(cx + rx * c * cosPhi - ry * s * sinPhi,
                       cy + rx * c * sinPhi + ry * s * cosPhi);
    };
    auto derivative = [&](double t) {
        const double c = std::cos(t), s = std::sin(t);
        return QPointF(-rx * s * cosPhi - ry * c * sinPhi, -rx * s * sinPhi + ry * c * cosPhi);
    };
    points->reserve(3 * n);
    QPointF start = from;
    for (int i = 0; i < n; ++i) {
        const double t1 = theta + i * step, t2 = theta + (i + 1) * step;
        const QPointF end = i == n - 1 ? to : point(t2);
        points->append(start + derivative(t1) * handle);
        points->append(end - derivative(t2) * handle);
        points->append(end);
        start = end;
    }
}

bool parsePathData(const QString &data, QPainterPath *path, ParseError *error)
{
    // A fill rule other than the default gives Qt's empty path an initial
    // move to (0, 0); isEmpty() still holds for it.
    const Qt::FillRule rule = path->fillRule();
    auto clear = [&]() {
        *path = QPainterPath();
        if (rule != path->fillRule())
            path->setFillRule(rule);
    };
    clear();
    Scanner in(data);
    PathBuilder out(path);
    auto fail = [&](const QString &message, int offset) {
        clear();
        return Scanner::fail(error, message, offset);
    };

    QChar previous;        // the command of the previous argument group
    QPointF lastC2, lastQ; // for the reflections of S and T
    in.skipWsp();
    bool first = true;
    while (!in.atEnd()) {
        const int commandOffset = in.pos();
        QChar command = in.peek();
        const int count = argumentCount(command);
        if (count < 0) {
            if (in.atNumberStart())
                return fail(previous.unicode() == 'Z' || previous.unicode() == 'z'
                                    ? QStringLiteral("expected a command after Z, not a number")
                                    : QStringLiteral("expected a command"),
                            commandOffset);
            return fail(QStringLiteral("unknown command '%1'").arg(command), commandOffset);
        }
        if (first && command.toUpper() != QLatin1Char('M'))
            return fail(QStringLiteral("path data must start with a move (M or m)"), commandOffset);
        first = false;
        in.advance();
        in.skipWsp();

        if (count == 0) {
            out.close();
            previous = command;
            continue;
        }
        // Argument groups: at least one, more while numbers follow.
        for (int group = 0;; ++group) {
            const int groupOffset = in.pos();
            double v[7];
            bool flags[2] = {false, false};
            for (int i = 0; i < count; ++i) {
                if (i > 0)
                    in.skipCommaWsp();
                const bool isFlag = (command.toUpper() == QLatin1Char('A')) && (i == 3 || i == 4);
                if (isFlag ? !in.flag(&flags[i - 3], error) : !in.number(&v[i], error)) {
                    clear();
                    return false;
                }
            }
            const bool relative = command.isLower();
            const QPointF at = out.current();
            auto p = [&](int i) {
                return relative ? at + QPointF(v[i], v[i + 1]) : QPointF(v[i], v[i + 1]);
            };
            bool ok = true;
            switch (command.toUpper().unicode()) {
            case 'M':
                ok = out.moveTo(p(0));
                // Further pairs of a move are line-tos of the same kind.
                command = relative ? QLatin1Char('l') : QLatin1Char('L');
                break;
            case 'L':
                ok = out.lineTo(p(0));
                break;
            case 'H':
                ok = out.lineTo(QPointF(relative ? at.x() + v[0] : v[0], at.y()));
                break;
            case 'V':
                ok = out.lineTo(QPointF(at.x(), relative ? at.y() + v[0] : v[0]));
                break;
            case 'C':
                lastC2 = p(2);
                ok = out.cubicTo(p(0), lastC2, p(4));
                break;
            case 'S': {
                // The first handle mirrors the previous cubic's second one.
                const bool after = QStringLiteral("CcSs").contains(previous);
                const QPointF c1 = after ? 2 * at - lastC2 : at;
                lastC2 = p(0);
                ok = out.cubicTo(c1, lastC2, p(2));
                break;
            }
            case 'Q':
                lastQ = p(0);
                ok = out.quadTo(lastQ, p(2));
                break;
            case 'T': {
                const bool after = QStringLiteral("QqTt").contains(previous);
                lastQ = after ? 2 * at - lastQ : at;
                ok = out.quadTo(lastQ, p(0));
                break;
            }
            case 'A':
                ok = out.arcTo(v[0], v[1], v[2], flags[0], flags[1], p(5));
                break;
            }
            if (!ok)
                return fail(QStringLiteral("coordinates out of range"), groupOffset);
            previous = command;

            // Another group follows after an optional comma; a comma must be
            // followed by one.
            const bool comma = in.skipCommaWsp();
            if (in.atNumberStart())
                continue;
            if (comma)
                return fail(QStringLiteral("expected a number after ','"), in.pos());
            break;
        }
    }
    return true;
}

QString describe(const ParseError &error, const QString &data)
{
    if (error.offset < 0)
        return QStringLiteral("path data: %1").arg(error.message);
    return QStringLiteral("path data: %1 at offset %2 in %3")
            .arg(error.message)
            .arg(error.offset)
            .arg(quoted(data, error.offset));
}

// --- transform lists -------------------------------------------------------------

bool parseTransform(const QString &text, QTransform *transform, ParseError *error)
{
    *transform = QTransform();
    Scanner in(text);
    in.skipWsp();
    while (!in.atEnd()) {
        const int nameOffset = in.pos();
        QString name;
        while (!in.atEnd() && in.peek().isLetter()) {
            name.append(in.peek());
            in.advance();
        }
        int minimum = 0, maximum = 0;
        if (name == QLatin1String("matrix"))
            minimum = maximum = 6;
        else if (name == QLatin1String("translate") || name == QLatin1String("scale"))
            minimum = 1, maximum = 2;
        else if (name == QLatin1String("rotate"))
            minimum = 1, maximum = 3;
        else if (name == QLatin1String("skewX") || name == QLatin1String("skewY"))
            minimum = maximum = 1;
        else
            return Scanner::fail(error, QStringLiteral("unknown transform \"%1\"").arg(name),
                                 nameOffset);
        in.skipWsp();
        if (in.peek() != QLatin1Char('('))
            return Scanner::fail(error, QStringLiteral("expected '('"), in.pos());
        in.advance();
        in.skipWsp();
        double v[6];
        int count = 0;
        while (in.atNumberStart() && count < maximum) {
            if (!in.number(&v[count++], error))
                return false;
            in.skipCommaWsp();
        }
        if (count < minimum || (count == 2 && name == QLatin1String("rotate"))
            || in.peek() != QLatin1Char(')'))
            return Scanner::fail(error, QStringLiteral("wrong arguments of %1()").arg(name),
                                 in.pos());
        in.advance();

        QTransform t;
        if (name == QLatin1String("matrix")) {
            t = QTransform(v[0], v[1], v[2], v[3], v[4], v[5]);
        } else if (name == QLatin1String("translate")) {
            t.translate(v[0], count > 1 ? v[1] : 0);
        } else if (name == QLatin1String("scale")) {
            t.scale(v[0], count > 1 ? v[1] : v[0]);
        } else if (name == QLatin1String("rotate")) {
            if (count == 3)
                t.translate(v[1], v[2]);
            t.rotate(v[0]);
            if (count == 3)
                t.translate(-v[1], -v[2]);
        } else if (name == QLatin1String("skewX")) {
            t.shear(std::tan(qDegreesToRadians(v[0])), 0);
        } else {
            t.shear(0, std::tan(qDegreesToRadians(v[0])));
        }
        // Functions apply right to left: the one written last acts first.
        *transform = t * *transform;
        in.skipCommaWsp();
    }
    return true;
}

// --- SVG documents ------------------------------------------------------------------

namespace {

struct ElementState
{
    Qt::FillRule fill = Qt::WindingFill; // SVG's initial value: nonzero
    QTransform transform;
    bool hidden = false; // inside an element whose content is not drawn
};

// fill-rule from the attribute, or from a "fill-rule:" declaration of the
// style attribute, which takes precedence as CSS does.
QString fillRuleOf(const QXmlStreamAttributes &attributes)
{
    QString value = attributes.value(QLatin1String("fill-rule")).toString().trimmed();
    const QString style = attributes.value(QLatin1String("style")).toString();
    for (const QString &declaration : style.split(QLatin1Char(';'))) {
        const int colon = declaration.indexOf(QLatin1Char(':'));
        if (colon > 0 && declaration.left(colon).trimmed() == QLatin1String("fill-rule"))
            value = declaration.mid(colon + 1).trimmed();
    }
    return value;
}

} // namespace

bool readSvgDocument(const QByteArray &xml, QVector<SvgShape> *shapes, QString *error)
{
    static const QString svgNamespace = QStringLiteral("http://www.w3.org/2000/svg");
    shapes->clear();
    QXmlStreamReader reader(xml);
    QStack<ElementState> stack;
    stack.push(ElementState());
    auto fail = [&](const QString &message) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(reader.lineNumber()).arg(message);
        shapes->clear();
        return false;
    };
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::EndElement) {
            stack.pop();
            continue;
        }
        if (token != QXmlStreamReader::StartElement)
            continue;
        ElementState state = stack.top();
        const QXmlStreamAttributes attributes = reader.attributes();
        const bool svg = reader.namespaceUri().isEmpty() || reader.namespaceUri() == svgNamespace;
        const QStringRef name = reader.name();
        if (!svg || name == QLatin1String("defs") || name == QLatin1String("clipPath")
            || name == QLatin1String("mask") || name == QLatin1String("marker")
            || name == QLatin1String("pattern") || name == QLatin1String("symbol"))
            state.hidden = true;

        const QString rule = fillRuleOf(attributes);
        if (rule == QLatin1String("evenodd"))
            state.fill = Qt::OddEvenFill;
        else if (rule == QLatin1String("nonzero"))
            state.fill = Qt::WindingFill;
        else if (!rule.isEmpty() && rule != QLatin1String("inherit"))
            return fail(QStringLiteral("unknown fill-rule \"%1\"").arg(rule));

        if (attributes.hasAttribute(QLatin1String("transform"))) {
            const QString text = attributes.value(QLatin1String("transform")).toString();
            QTransform own;
            ParseError parseError;
            if (!parseTransform(text, &own, &parseError))
                return fail(QStringLiteral("transform: %1 at offset %2 in \"%3\"")
                                    .arg(parseError.message)
                                    .arg(parseError.offset)
                                    .arg(text));
            state.transform = own * state.transform;
        }
        stack.push(state);

        if (state.hidden || name != QLatin1String("path")
            || !attributes.hasAttribute(QLatin1String("d")))
            continue;
        SvgShape shape;
        shape.line = int(reader.lineNumber());
        shape.id = attributes.value(QLatin1String("id")).toString();
        const QString d = attributes.value(QLatin1String("d")).toString();
        ParseError parseError;
        if (!parsePathData(d, &shape.path, &parseError))
            return fail(describe(parseError, d));
        // Element by element, so that no point leaves Qt's range unnoticed.
        for (int i = 0; i < shape.path.elementCount() && !state.transform.isIdentity(); ++i) {
            const QPointF p = state.transform.map(QPointF(shape.path.elementAt(i)));
            if (!drawable(p))
                return fail(QStringLiteral("transformed coordinates out of range"));
            shape.path.setElementPositionAt(i, p.x(), p.y());
        }
        shape.path.setFillRule(state.fill);
        shapes->append(shape);
    }
    if (reader.hasError())
        return fail(QStringLiteral("XML error: %1").arg(reader.errorString()));
    return true;
}

} // namespace rvGeom
