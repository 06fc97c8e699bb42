#ifndef ORACLECOMMANDS_H
#define ORACLECOMMANDS_H

// Drawing commands of the pathops corpus (["M",x,y], ["L",x,y],
// ["C",x1,y1,x2,y2,x,y], ["Q",x1,y1,x,y], ["K",x1,y1,x,y,w], ["Z"]) played
// into a sink with moveTo/lineTo/cubicTo/close, so that the Qt operand and the
// library operand are drawn from the same numbers.

#include <QtCore/QJsonArray>
#include <QtCore/QJsonValue>
#include <QtCore/QPointF>
#include <QtCore/QString>
#include <QtCore/QtNumeric>

#include <cmath>
#include <limits>

namespace rvOracle {

// Numbers are JSON numbers, or the strings "NaN", "Infinity", "-Infinity".
inline double commandNumber(const QJsonValue &v)
{
    if (v.isDouble())
        return v.toDouble();
    const QString s = v.toString();
    if (s == QLatin1String("Infinity"))
        return std::numeric_limits<double>::infinity();
    if (s == QLatin1String("-Infinity"))
        return -std::numeric_limits<double>::infinity();
    return qQNaN();
}

inline bool commandsHaveNonFinite(const QJsonArray &commands)
{
    for (const QJsonValue &command : commands) {
        const QJsonArray c = command.toArray();
        for (int i = 1; i < c.size(); ++i)
            if (!std::isfinite(commandNumber(c.at(i))))
                return true;
    }
    return false;
}

/*!
    A conic (rational quadratic of weight w) as cubics: halved \a depth times
    (each half is a conic of weight sqrt((1 + w) / 2)), then each piece
    becomes the cubic whose handles lie 4w / (3 (1 + w)) of the way to the
    control point, which is the usual circle approximation when the conic is
    a circular arc. Four pieces of a quarter circle stay within 1e-7 of the
    radius, below the float precision of the corpus.
*/
template<typename Sink>
void conicToCubics(const QPointF &p0, const QPointF &p1, const QPointF &p2, double w, int depth,
                   Sink &sink)
{
    if (std::isinf(w) && w > 0) {
        sink.lineTo(p1);
        sink.lineTo(p2);
        return;
    }
    if (!(w > 0)) {
        sink.lineTo(p2);
        return;
    }
    if (depth > 0) {
        const QPointF mid = (p0 + p1 * (2 * w) + p2) / (2 * (1 + w));
        const QPointF q = (p0 + p1 * w) / (1 + w), r = (p1 * w + p2) / (1 + w);
        const double half = std::sqrt((1 + w) / 2);
        conicToCubics(p0, q, mid, half, depth - 1, sink);
        conicToCubics(mid, r, p2, half, depth - 1, sink);
        return;
    }
    const double k = 4 * w / (3 * (1 + w));
    sink.cubicTo(p0 + (p1 - p0) * k, p2 + (p1 - p2) * k, p2);
}

//! Plays \a commands into \a sink; false (with \a error) on a malformed one.
template<typename Sink>
bool drawCommands(const QJsonArray &commands, Sink &sink, QString *error)
{
    QPointF current, start;
    for (const QJsonValue &value : commands) {
        const QJsonArray c = value.toArray();
        const QString kind = c.at(0).toString();
        auto point = [&](int i) {
            return QPointF(commandNumber(c.at(i)), commandNumber(c.at(i + 1)));
        };
        int need = 0;
        if (kind == QLatin1String("M") || kind == QLatin1String("L"))
            need = 3;
        else if (kind == QLatin1String("C"))
            need = 7;
        else if (kind == QLatin1String("Q"))
            need = 5;
        else if (kind == QLatin1String("K"))
            need = 6;
        else if (kind == QLatin1String("Z"))
            need = 1;
        if (need == 0 || c.size() < need) {
            if (error)
                *error = QStringLiteral("malformed command %1").arg(kind);
            return false;
        }
        if (kind == QLatin1String("M")) {
            start = current = point(1);
            sink.moveTo(current);
        } else if (kind == QLatin1String("L")) {
            current = point(1);
            sink.lineTo(current);
        } else if (kind == QLatin1String("C")) {
            sink.cubicTo(point(1), point(3), point(5));
            current = point(5);
        } else if (kind == QLatin1String("Q")) {
            const QPointF q = point(1), to = point(3);
            sink.cubicTo(current + (q - current) * (2.0 / 3), to + (q - to) * (2.0 / 3), to);
            current = to;
        } else if (kind == QLatin1String("K")) {
            const QPointF q = point(1), to = point(3);
            conicToCubics(current, q, to, commandNumber(c.at(5)), 2, sink);
            current = to;
        } else {
            sink.close();
            current = start;
        }
    }
    return true;
}

} // namespace rvOracle

#endif // ORACLECOMMANDS_H
