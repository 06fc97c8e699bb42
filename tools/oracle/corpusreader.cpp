// Reader of the pathops corpus: one JSON object per line (see the corpus's
// README for the record format).

#include "booleanoracle.h"
#include "oraclecommands.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace rvOracle {

namespace {

// Draws into a QPainterPath. Coordinates QPainterPath refuses (NaN,
// infinities) are not handed to it; such operands are judged only for
// crashes and hangs.
struct PainterSink
{
    QPainterPath *path;
    void moveTo(const QPointF &p)
    {
        if (finite(p))
            path->moveTo(p);
    }
    void lineTo(const QPointF &p)
    {
        if (finite(p))
            path->lineTo(p);
    }
    void cubicTo(const QPointF &c1, const QPointF &c2, const QPointF &p)
    {
        if (finite(c1) && finite(c2) && finite(p))
            path->cubicTo(c1, c2, p);
    }
    void close() { path->closeSubpath(); }
    static bool finite(const QPointF &p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }
};

bool readOperand(const QJsonObject &record, const QString &which, Operand *operand, QString *error)
{
    const QString fill = record.value(QStringLiteral("fill") + which.toUpper()).toString();
    if (fill != QLatin1String("winding") && fill != QLatin1String("evenodd")) {
        *error = QStringLiteral("unknown fill rule \"%1\"").arg(fill);
        return false;
    }
    operand->commands = record.value(which).toArray();
    operand->inverse = record.value(QStringLiteral("inverse") + which.toUpper()).toBool();
    operand->path = QPainterPath();
    operand->path.setFillRule(fill == QLatin1String("winding") ? Qt::WindingFill : Qt::OddEvenFill);
    PainterSink sink{&operand->path};
    return drawCommands(operand->commands, sink, error);
}

} // namespace

bool readCorpusCase(const QByteArray &line, Case *c, QString *error)
{
    QString dummy;
    QString *err = error ? error : &dummy;
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(line, &parseError);
    if (!doc.isObject()) {
        *err = parseError.errorString();
        return false;
    }
    const QJsonObject record = doc.object();
    c->name = record.value(QStringLiteral("name")).toString();
    c->family = record.value(QStringLiteral("source")).toString();
    c->expect = record.value(QStringLiteral("expect")).toString();
    const QString op = record.value(QStringLiteral("op")).toString();
    if (!opFromName(op, &c->op) || c->op == Op::Divide) {
        *err = QStringLiteral("%1: unknown operation \"%2\"").arg(c->name, op);
        return false;
    }
    if (!readOperand(record, QStringLiteral("a"), &c->a, err)
        || !readOperand(record, QStringLiteral("b"), &c->b, err)) {
        *err = c->name + QStringLiteral(": ") + *err;
        return false;
    }
    return true;
}

QVector<Case> readCorpus(const QString &fileName, QString *error)
{
    QVector<Case> cases;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return cases;
    }
    int lineNumber = 0;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        ++lineNumber;
        if (line.isEmpty())
            continue;
        Case c;
        QString lineError;
        if (readCorpusCase(line, &c, &lineError))
            cases.append(c);
        else if (error)
            *error = QStringLiteral("line %1: %2").arg(lineNumber).arg(lineError);
    }
    return cases;
}

} // namespace rvOracle
