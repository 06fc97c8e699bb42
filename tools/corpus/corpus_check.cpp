// rvgraphics-corpus-check: judges the library's boolean operations on every
// case of a pathops corpus file (JSON lines) with the boolean oracle. Each
// case runs in its own child process, so crashes and hangs are reported as
// failures. Prints one line per failure, a summary by operation and fill
// rules, the worst failures, and ends with "N passed, N failed".

#include "booleanoracle.h"

#include <QtCore/QMap>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <algorithm>
#include <cstdio>

using namespace rvOracle;

namespace {

struct Tally
{
    int cases = 0, passed = 0, failed = 0, inconclusive = 0, crashed = 0, timedOut = 0;
    void add(const Verdict &v)
    {
        ++cases;
        switch (v.status) {
        case Status::Passed:
            ++passed;
            break;
        case Status::Failed:
            ++failed;
            break;
        case Status::Inconclusive:
            ++inconclusive;
            break;
        case Status::Crashed:
            ++crashed;
            break;
        case Status::TimedOut:
            ++timedOut;
            break;
        }
    }
    int failures() const { return failed + crashed + timedOut; }
};

void print(const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

QString fills(const Case &c)
{
    auto one = [](const Operand &o) {
        return (o.inverse ? QStringLiteral("~") : QString())
                + (o.path.fillRule() == Qt::WindingFill ? QStringLiteral("winding")
                                                        : QStringLiteral("evenodd"));
    };
    return one(c.a) + QLatin1Char('/') + one(c.b);
}

void printTable(const QString &title, const QMap<QString, Tally> &table)
{
    print(QString());
    print(QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8")
                  .arg(title, -34)
                  .arg(QStringLiteral("cases"), 6)
                  .arg(QStringLiteral("passed"), 7)
                  .arg(QStringLiteral("failed"), 7)
                  .arg(QStringLiteral("inconcl"), 8)
                  .arg(QStringLiteral("crashed"), 8)
                  .arg(QStringLiteral("timeout"), 8)
                  .arg(QStringLiteral("pass rate"), 10));
    for (auto it = table.constBegin(); it != table.constEnd(); ++it) {
        const Tally &t = it.value();
        print(QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8%")
                      .arg(it.key(), -34)
                      .arg(t.cases, 6)
                      .arg(t.passed, 7)
                      .arg(t.failed, 7)
                      .arg(t.inconclusive, 8)
                      .arg(t.crashed, 8)
                      .arg(t.timedOut, 8)
                      .arg(t.cases ? 100.0 * t.passed / t.cases : 0.0, 9, 'f', 1));
    }
}

int usage()
{
    print(QStringLiteral(
            "usage: rvgraphics-corpus-check FILE.jsonl [options]\n"
            "  --filter REGEX  only cases whose name matches\n"
            "  --limit N       at most N cases\n"
            "  --timeout MS    time limit per case (default 20000)\n"
            "  --seed N        seed of the sample points\n"
            "  --margin F      unjudged band around the outlines, share of the diagonal (default "
            "1e-3)\n"
            "  --samples N     random and near-outline sample points each (default 1024)\n"
            "  --worst N       number of worst failures listed (default 15)\n"
            "  --repro         print each failure's operands as C++ (hex floats)\n"
            "  --verbose       print passing cases too\n"
            "  --in-process    no child processes (for debuggers; a crash ends the run)"));
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    QString file, filter;
    int limit = -1, worstCount = 15;
    bool repro = false, verbose = false, inProcess = false;
    Options options;
    for (int i = 1; i < argc; ++i) {
        const QString arg = QString::fromLocal8Bit(argv[i]);
        auto value = [&]() { return i + 1 < argc ? QString::fromLocal8Bit(argv[++i]) : QString(); };
        if (arg == QLatin1String("--filter"))
            filter = value();
        else if (arg == QLatin1String("--limit"))
            limit = value().toInt();
        else if (arg == QLatin1String("--timeout"))
            options.timeoutMs = value().toInt();
        else if (arg == QLatin1String("--seed"))
            options.seed = value().toUInt();
        else if (arg == QLatin1String("--margin"))
            options.margin = value().toDouble();
        else if (arg == QLatin1String("--samples"))
            options.randomPoints = options.nearPoints = value().toInt();
        else if (arg == QLatin1String("--worst"))
            worstCount = value().toInt();
        else if (arg == QLatin1String("--repro"))
            repro = true;
        else if (arg == QLatin1String("--verbose"))
            verbose = true;
        else if (arg == QLatin1String("--in-process"))
            inProcess = true;
        else if (arg.startsWith(QLatin1String("-")) || !file.isEmpty())
            return usage();
        else
            file = arg;
    }
    if (file.isEmpty() || options.timeoutMs <= 0)
        return usage();

    QString error;
    const QVector<Case> cases = readCorpus(file, &error);
    if (!error.isEmpty())
        print(QStringLiteral("warning: %1").arg(error));
    if (cases.isEmpty()) {
        print(QStringLiteral("no cases read from %1").arg(file));
        return 2;
    }
    const QRegularExpression pattern(filter);

    QMap<QString, Tally> byOp, byOpAndFill, byExpect;
    Tally total;
    QVector<QPair<Case, Verdict>> failures;
    for (const Case &c : cases) {
        if (!filter.isEmpty() && !pattern.match(c.name).hasMatch())
            continue;
        if (limit >= 0 && total.cases >= limit)
            break;
        const Verdict v = inProcess ? check(c, options) : checkIsolated(c, options);
        const QString key = QStringLiteral("%1 %2").arg(opName(c.op), -12).arg(fills(c));
        byOp[opName(c.op)].add(v);
        byOpAndFill[key].add(v);
        byExpect[c.expect].add(v);
        total.add(v);
        const bool bad = v.status == Status::Failed || v.status == Status::Crashed
                || v.status == Status::TimedOut;
        if (bad || verbose || v.status == Status::Inconclusive)
            print(QStringLiteral("%1 %2 %3 %4 [%5] %6s: %7")
                          .arg(bad                  ? QStringLiteral("FAIL")
                                       : v.passed() ? QStringLiteral("ok  ")
                                                    : QStringLiteral("INCONCLUSIVE"))
                          .arg(c.name, opName(c.op), fills(c), c.expect)
                          .arg(v.seconds, 0, 'f', 3)
                          .arg(v.reason));
        if (bad) {
            if (repro)
                print(v.repro);
            failures.append(qMakePair(c, v));
        }
    }

    printTable(QStringLiteral("by operation"), byOp);
    printTable(QStringLiteral("by operation and fill rules"), byOpAndFill);
    printTable(QStringLiteral("by Skia's expectation"), byExpect);

    // Likely causes: an operand whose fill depends on its fill rule (its
    // contours overlap each other), an operand that crosses itself, or
    // neither.
    int ruleDependent = 0, selfCrossing = 0, hangsAndCrashes = 0;
    for (const auto &f : failures) {
        if (f.second.status != Status::Failed)
            ++hangsAndCrashes;
        else if (f.second.fillRuleDependent)
            ++ruleDependent;
        else if (f.second.selfCrossing)
            ++selfCrossing;
    }
    print(QString());
    print(QStringLiteral("failures by likely cause: %1 crashed or timed out, %2 with an operand "
                         "whose fill "
                         "depends on the fill rule, %3 more with a self-crossing operand, %4 other")
                  .arg(hangsAndCrashes)
                  .arg(ruleDependent)
                  .arg(selfCrossing)
                  .arg(failures.size() - hangsAndCrashes - ruleDependent - selfCrossing));

    std::stable_sort(failures.begin(), failures.end(), [](const auto &x, const auto &y) {
        return x.second.badness() > y.second.badness();
    });
    if (!failures.isEmpty()) {
        print(QString());
        print(QStringLiteral("worst failures:"));
        for (int i = 0; i < failures.size() && i < worstCount; ++i) {
            const Case &c = failures[i].first;
            const Verdict &v = failures[i].second;
            print(QStringLiteral("%1. %2 (%3, %4, %5): %6")
                          .arg(i + 1)
                          .arg(c.name, opName(c.op), fills(c), statusName(v.status), v.reason));
        }
    }
    print(QString());
    print(QStringLiteral("%1 inconclusive (no sample point away from the outlines)")
                  .arg(total.inconclusive));
    print(QStringLiteral("%1 passed, %2 failed").arg(total.passed).arg(total.failures()));
    return total.failures() > 0 ? 1 : 0;
}
