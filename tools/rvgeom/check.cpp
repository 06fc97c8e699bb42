// rvgeom check: boolean cases from JSON Lines, judged by the boolean oracle.

#include "commands.h"

#include "booleanoracle.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>

#include <cmath>
#include <unistd.h>

namespace rvGeom {

using rvOracle::Op;
using rvOracle::Status;
using rvOracle::Verdict;

namespace {

// An expected area matches within this share of its size (and of one unit
// of area for small results), beyond the judge's own area uncertainty.
constexpr double AreaRelativeTolerance = 1e-6;
constexpr int ProgressWidth = 30;

struct Entry
{
    int line = 0;
    QString name;
    QString op;       // as written in the file
    QString fills;    // "evenodd/winding", for the report
    QString error;    // a malformed record
    QString groupKey; // the operands, for the area identities
    rvOracle::Case c;
    bool hasArea = false;
    double area = 0;
    Verdict verdict;
};

void print(FILE *out, const QString &line)
{
    std::fputs(line.toUtf8().constData(), out);
    std::fputc('\n', out);
    std::fflush(out);
}

bool isNumber(const QJsonValue &v)
{
    if (v.isDouble())
        return true;
    const QString s = v.toString();
    return v.isString()
            && (s == QLatin1String("NaN") || s == QLatin1String("Infinity")
                || s == QLatin1String("-Infinity"));
}

// Checks a path's command arrays before the oracle reads them, so that a
// typing error is a reported failure and not a silently empty operand.
bool validatePath(const QJsonValue &value, const QString &which, QString *error)
{
    if (!value.isArray()) {
        *error = QStringLiteral("\"%1\" must be an array of commands").arg(which);
        return false;
    }
    const QJsonArray commands = value.toArray();
    for (int i = 0; i < commands.size(); ++i) {
        const QString where = QStringLiteral("%1[%2]").arg(which).arg(i);
        const QJsonArray command = commands.at(i).toArray();
        if (!commands.at(i).isArray() || command.isEmpty()) {
            *error = QStringLiteral("%1: expected a command array such as [\"M\",0,0]").arg(where);
            return false;
        }
        const QString kind = command.at(0).toString();
        static const QMap<QString, int> sizes = {
                {QStringLiteral("M"), 3}, {QStringLiteral("L"), 3}, {QStringLiteral("C"), 7},
                {QStringLiteral("Q"), 5}, {QStringLiteral("K"), 6}, {QStringLiteral("Z"), 1}};
        if (!sizes.contains(kind)) {
            *error = QStringLiteral("%1: unknown command %2")
                             .arg(where,
                                  QString::fromUtf8(
                                          QJsonDocument(command).toJson(QJsonDocument::Compact)));
            return false;
        }
        if (command.size() != sizes.value(kind)) {
            *error = QStringLiteral("%1: %2 takes %3 numbers, got %4")
                             .arg(where, kind)
                             .arg(sizes.value(kind) - 1)
                             .arg(command.size() - 1);
            return false;
        }
        for (int k = 1; k < command.size(); ++k) {
            if (!isNumber(command.at(k))) {
                *error = QStringLiteral("%1: argument %2 is not a number").arg(where).arg(k);
                return false;
            }
        }
    }
    return true;
}

// Reads one record into \a e: the format of the pathops corpus, with the
// library's operation names as aliases, even-odd as the default fill rule,
// "nonzero" for "winding", divide and simplify (A alone), and an optional
// expected area.
bool readRecord(const QByteArray &line, Entry *e)
{
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(line, &parseError);
    if (!doc.isObject()) {
        e->error = doc.isNull() ? QStringLiteral("not JSON: %1 at offset %2")
                                          .arg(parseError.errorString())
                                          .arg(parseError.offset)
                                : QStringLiteral("not a JSON object");
        return false;
    }
    QJsonObject record = doc.object();
    e->name = record.value(QStringLiteral("name")).toString();
    e->op = record.value(QStringLiteral("op")).toString();
    static const QMap<QString, QString> ops = {
            {QStringLiteral("union"), QStringLiteral("union")},
            {QStringLiteral("unite"), QStringLiteral("union")},
            {QStringLiteral("intersect"), QStringLiteral("intersect")},
            {QStringLiteral("difference"), QStringLiteral("difference")},
            {QStringLiteral("subtract"), QStringLiteral("difference")},
            {QStringLiteral("rdifference"), QStringLiteral("rdifference")},
            {QStringLiteral("xor"), QStringLiteral("xor")},
            {QStringLiteral("exclude"), QStringLiteral("xor")},
            {QStringLiteral("divide"), QStringLiteral("union")},
            {QStringLiteral("simplify"), QStringLiteral("union")},
    };
    if (!record.contains(QStringLiteral("op"))) {
        e->error = QStringLiteral("missing \"op\"");
        return false;
    }
    if (!ops.contains(e->op)) {
        e->error = QStringLiteral("unknown operation \"%1\"")
                           .arg(record.value(QStringLiteral("op")).toVariant().toString());
        return false;
    }
    const bool simplify = e->op == QLatin1String("simplify");
    record.insert(QStringLiteral("op"), ops.value(e->op));
    if (simplify) {
        // Simplify is the union of A with nothing: A's fill, resolved.
        record.insert(QStringLiteral("b"), QJsonArray());
        record.insert(QStringLiteral("fillB"), record.value(QStringLiteral("fillA")));
        record.remove(QStringLiteral("inverseB"));
    }
    for (const QString &which : {QStringLiteral("a"), QStringLiteral("b")}) {
        if (!record.contains(which)) {
            e->error = QStringLiteral("missing operand \"%1\"").arg(which);
            return false;
        }
        if (!validatePath(record.value(which), which, &e->error))
            return false;
        const QString fillKey = QStringLiteral("fill") + which.toUpper();
        const QJsonValue fill = record.value(fillKey);
        QString rule = fill.isUndefined() ? QStringLiteral("evenodd") : fill.toString();
        if (rule == QLatin1String("nonzero"))
            rule = QStringLiteral("winding");
        if (rule != QLatin1String("evenodd") && rule != QLatin1String("winding")) {
            e->error = QStringLiteral("%1: unknown fill rule %2 (use evenodd or nonzero)")
                               .arg(fillKey,
                                    QString::fromUtf8(QJsonDocument(QJsonArray{fill})
                                                              .toJson(QJsonDocument::Compact)));
            return false;
        }
        record.insert(fillKey, rule);
        const QJsonValue inverse = record.value(QStringLiteral("inverse") + which.toUpper());
        if (!inverse.isUndefined() && !inverse.isBool()) {
            e->error = QStringLiteral("inverse%1 must be true or false").arg(which.toUpper());
            return false;
        }
    }
    const QJsonValue area = record.value(QStringLiteral("area"));
    if (!area.isUndefined()) {
        if (!area.isDouble()) {
            e->error = QStringLiteral("\"area\" must be a number");
            return false;
        }
        e->hasArea = true;
        e->area = area.toDouble();
    }
    e->fills = record.value(QStringLiteral("fillA")).toString() + QLatin1Char('/')
            + record.value(QStringLiteral("fillB")).toString();
    QJsonObject operands;
    for (const char *key : {"a", "b", "fillA", "fillB", "inverseA", "inverseB"})
        operands.insert(QLatin1String(key), record.value(QLatin1String(key)));
    e->groupKey = QString::fromUtf8(QJsonDocument(operands).toJson(QJsonDocument::Compact));

    QString error;
    if (!rvOracle::readCorpusCase(QJsonDocument(record).toJson(QJsonDocument::Compact), &e->c,
                                  &error)) {
        e->error = error;
        return false;
    }
    if (e->op == QLatin1String("divide"))
        e->c.op = Op::Divide;
    if (e->name.isEmpty())
        e->name = QStringLiteral("line %1").arg(e->line);
    e->c.name = e->name;
    return true;
}

// A bar on the terminal (standard error, else standard output), redrawn in
// place and wiped before any report line.
class Progress
{
public:
    Progress(int total, FILE *out, FILE *err) : m_total(total)
    {
        if (::isatty(::fileno(err)))
            m_stream = err;
        else if (::isatty(::fileno(out)))
            m_stream = out;
    }
    void show(int done, int failed)
    {
        if (!m_stream)
            return;
        const int filled = m_total > 0 ? ProgressWidth * done / m_total : ProgressWidth;
        std::fprintf(m_stream, "\r[%s%s] %d/%d, %d failed", QByteArray(filled, '#').constData(),
                     QByteArray(ProgressWidth - filled, '.').constData(), done, m_total, failed);
        std::fflush(m_stream);
        m_shown = true;
    }
    void wipe()
    {
        if (m_stream && m_shown) {
            std::fputs("\r\033[K", m_stream);
            std::fflush(m_stream);
        }
        m_shown = false;
    }

private:
    FILE *m_stream = nullptr;
    int m_total;
    bool m_shown = false;
};

bool isFailure(Status status)
{
    return status == Status::Failed || status == Status::Crashed || status == Status::TimedOut;
}

// The expected area of a case against the library's result area.
void checkExpectedArea(Entry *e)
{
    Verdict &v = e->verdict;
    if (!e->hasArea || !v.passed())
        return;
    if (v.complement) {
        v.status = Status::Failed;
        v.reason = QStringLiteral("an area is given but the result is unbounded");
        return;
    }
    const double got = e->c.op == Op::Divide ? v.area + v.area2 : v.area;
    const double allowed =
            AreaRelativeTolerance * std::max(1.0, std::abs(e->area)) + v.areaUncertainty;
    if (!(std::abs(got - e->area) <= allowed)) {
        v.status = Status::Failed;
        v.reason = QStringLiteral("the result's area is %1, the case expects %2")
                           .arg(got, 0, 'g', 12)
                           .arg(e->area, 0, 'g', 12);
    }
}

} // namespace

int runCheck(const QString &fileName, const CheckOptions &options, FILE *out, FILE *err)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        print(err, QStringLiteral("rvgeom: cannot read %1: %2").arg(fileName, file.errorString()));
        return ExitBadInput;
    }
    QVector<Entry> entries;
    for (int lineNumber = 1; !file.atEnd(); ++lineNumber) {
        const QByteArray line = file.readLine().trimmed();
        if (line.isEmpty())
            continue;
        Entry e;
        e.line = lineNumber;
        readRecord(line, &e);
        entries.append(e);
    }
    if (file.error() != QFileDevice::NoError) {
        print(err, QStringLiteral("rvgeom: cannot read %1: %2").arg(fileName, file.errorString()));
        return ExitBadInput;
    }
    if (entries.isEmpty()) {
        print(err, QStringLiteral("rvgeom: %1: no cases").arg(fileName));
        return ExitBadInput;
    }

    rvOracle::Options judge;
    judge.timeoutMs = options.timeoutMs;
    Progress progress(entries.size(), out, err);
    int failed = 0;
    auto report = [&](const QString &line) {
        progress.wipe();
        print(out, line);
    };
    for (int i = 0; i < entries.size(); ++i) {
        Entry &e = entries[i];
        progress.show(i, failed);
        QString label = QStringLiteral("line %1").arg(e.line);
        if (e.error.isEmpty())
            label.prepend(QStringLiteral("%1 [%2 %3] ").arg(e.name, e.op, e.fills));
        else if (!e.name.isEmpty())
            label.prepend(e.name + QLatin1Char(' '));
        if (!e.error.isEmpty()) {
            e.verdict.status = Status::Failed;
            e.verdict.reason = QStringLiteral("malformed case: ") + e.error;
        } else {
            e.verdict = options.inProcess ? rvOracle::check(e.c, judge)
                                          : rvOracle::checkIsolated(e.c, judge);
            checkExpectedArea(&e);
        }
        const Status s = e.verdict.status;
        if (isFailure(s)) {
            ++failed;
            report(QStringLiteral("FAIL %1: %2%3")
                           .arg(label,
                                s == Status::Failed
                                        ? QString()
                                        : rvOracle::statusName(s) + QStringLiteral(": "),
                                e.verdict.reason));
            if (options.repro && !e.verdict.repro.isEmpty())
                report(e.verdict.repro.trimmed());
        } else if (options.verbose) {
            report(QStringLiteral("%1 %2: %3")
                           .arg(s == Status::Passed ? QStringLiteral("ok")
                                                    : QStringLiteral("INCONCLUSIVE"),
                                label, e.verdict.reason));
        }
    }

    // Area identities between the results of cases on the same operands.
    QMap<QString, QVector<int>> groups;
    for (int i = 0; i < entries.size(); ++i)
        if (entries.at(i).error.isEmpty())
            groups[entries.at(i).groupKey].append(i);
    for (const QVector<int> &group : qAsConst(groups)) {
        QMap<Op, Verdict> verdicts;
        QStringList names;
        for (int i : group) {
            if (!verdicts.contains(entries.at(i).c.op))
                verdicts.insert(entries.at(i).c.op, entries.at(i).verdict);
            names << entries.at(i).name;
        }
        if (verdicts.size() < 2)
            continue;
        const rvOracle::Case &c = entries.at(group.first()).c;
        const Verdict identities = rvOracle::checkAreaIdentities(c.a, c.b, verdicts);
        if (identities.status != Status::Failed)
            continue;
        report(QStringLiteral("FAIL area identities of %1: %2")
                       .arg(names.join(QStringLiteral(", ")), identities.reason));
        for (int i : group) {
            if (!isFailure(entries.at(i).verdict.status)) {
                entries[i].verdict.status = Status::Failed;
                ++failed;
            }
        }
    }

    int passed = 0, inconclusive = 0;
    for (const Entry &e : qAsConst(entries)) {
        passed += e.verdict.status == Status::Passed;
        inconclusive += e.verdict.status == Status::Inconclusive;
    }
    progress.wipe();
    if (inconclusive > 0)
        print(out,
              QStringLiteral("%1 inconclusive (no sample point away from the outlines)")
                      .arg(inconclusive));
    print(out, QStringLiteral("%1 passed, %2 failed").arg(passed).arg(failed));
    return failed > 0 ? ExitCheckFailed : ExitOk;
}

} // namespace rvGeom
