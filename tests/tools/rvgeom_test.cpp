// The built rvgeom program: results read back through an independent area,
// the check command on a cases file with broken cases, and the error paths.

#include "booleanoracle.h"
#include "svgpath.h"

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gtest/gtest.h>

namespace {

struct ProgramRun
{
    int status = -1;
    QString out, err;
};

ProgramRun rvgeom(const QStringList &arguments)
{
    QProcess process;
    // Sanitizer builds: the leak checker's list of suppressed Qt leaks would
    // join the one-line messages on standard error.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LSAN_OPTIONS"),
                       environment.value(QStringLiteral("LSAN_OPTIONS"))
                               + QStringLiteral(":print_suppressions=0"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(RVGEOM_PROGRAM), arguments);
    ProgramRun run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.status = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

QString write(const QTemporaryDir &dir, const QString &name, const QByteArray &content)
{
    QFile file(dir.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return file.fileName();
}

const QString square = QStringLiteral("M0 0 H60 V60 H0 Z");
const QString shifted = QStringLiteral("m30 30 h60 v60 h-60 z");

} // namespace

TEST(RvgeomProgram, HelpListsEveryCommand)
{
    const ProgramRun run = rvgeom({QStringLiteral("--help")});
    EXPECT_EQ(run.status, 0);
    for (const char *command : {"unite", "intersect", "subtract", "exclude", "divide", "offset",
                                "thick", "round", "heads", "wave", "manual", "smooth", "length",
                                "bounds", "area", "contains", "crossings", "check"})
        EXPECT_TRUE(run.out.contains(QStringLiteral("\n  rvgeom %1 ").arg(QLatin1String(command))))
                << command << " has no example";
}

// The booleans' path data, read back, has the area of the ideal set
// (integrated independently of the library).
TEST(RvgeomProgram, BooleanResultsReadBackWithTheRightArea)
{
    const struct
    {
        const char *command;
        double area;
    } cases[] = {{"unite", 6300}, {"intersect", 900}, {"subtract", 2700}, {"exclude", 5400}};
    for (const auto &c : cases) {
        const ProgramRun run = rvgeom({QLatin1String(c.command), square, shifted});
        ASSERT_EQ(run.status, 0) << c.command << run.err.toStdString();
        QPainterPath result;
        rvGeom::ParseError error;
        ASSERT_TRUE(rvGeom::parsePathData(run.out.trimmed(), &result, &error)) << c.command;
        result.setFillRule(Qt::WindingFill);
        EXPECT_NEAR(rvOracle::exactArea(result), c.area, 1e-9) << c.command;
    }
    const ProgramRun divide = rvgeom({QStringLiteral("divide"), square, shifted});
    EXPECT_EQ(divide.out.trimmed().split(QLatin1Char('\n')).size(), 2);
}

TEST(RvgeomProgram, QueriesAndFillRules)
{
    const QString nested = QStringLiteral("M0 0 H10 V10 H0 Z M2 2 H8 V8 H2 Z");
    const struct
    {
        QStringList arguments;
        const char *out;
    } cases[] = {
            {{QStringLiteral("area"), nested}, "64\n"},
            {{QStringLiteral("area"), QStringLiteral("--fill"), QStringLiteral("nonzero"), nested},
             "100\n"},
            {{QStringLiteral("contains"), nested, QStringLiteral("5"), QStringLiteral("5")},
             "outside\n"},
            {{QStringLiteral("contains"), QStringLiteral("--fill=nonzero"), nested,
              QStringLiteral("5"), QStringLiteral("5")},
             "inside\n"},
            {{QStringLiteral("crossings"), QStringLiteral("M0 0 L10 10"),
              QStringLiteral("M0 10 L10 0")},
             "5 5\n"},
            {{QStringLiteral("bounds"), QStringLiteral("M0 0 C0 -40 10 -40 10 0")},
             "0 -30 10 30\n"},
            {{QStringLiteral("length"), QStringLiteral("M0 0 H3 V4 Z")}, "12\n"},
    };
    for (const auto &c : cases) {
        const ProgramRun run = rvgeom(c.arguments);
        EXPECT_EQ(run.status, 0) << c.arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(run.out.toStdString(), c.out) << c.arguments.join(QLatin1Char(' ')).toStdString();
    }
}

TEST(RvgeomProgram, PicturesAreWritten)
{
    QTemporaryDir dir;
    const QString png = dir.filePath(QStringLiteral("u.png"));
    const QString svg = dir.filePath(QStringLiteral("u.svg"));
    EXPECT_EQ(rvgeom({QStringLiteral("unite"), square, shifted, QStringLiteral("--out"), png,
                      QStringLiteral("--size"), QStringLiteral("200x100")})
                      .status,
              0);
    EXPECT_EQ(QImage(png).size(), QSize(200, 100));
    const ProgramRun run = rvgeom({QStringLiteral("offset"), square, QStringLiteral("5"),
                                   QStringLiteral("--out=") + svg});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.out.isEmpty());
    QFile file(svg);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("<svg"));
}

// A cases file with good cases and one broken case of each kind: an unknown
// operation, a malformed command, non-JSON, and a wrong expected area.
TEST(RvgeomProgram, CheckReportsBrokenCases)
{
    QTemporaryDir dir;
    const QByteArray a = R"([["M",0,0],["L",60,0],["L",60,60],["L",0,60],["Z"]])";
    const QByteArray b = R"([["M",30,30],["L",90,30],["L",90,90],["L",30,90],["Z"]])";
    const QByteArray cases = "{\"name\":\"u\",\"op\":\"union\",\"a\":" + a + ",\"b\":" + b
            + ",\"area\":6300}\n"
              "{\"name\":\"i\",\"op\":\"intersect\",\"a\":"
            + a + ",\"b\":" + b
            + "}\n"
              "{\"name\":\"d\",\"op\":\"divide\",\"fillA\":\"nonzero\",\"a\":"
            + a + ",\"b\":" + b
            + "}\n"
              "{\"name\":\"s\",\"op\":\"simplify\",\"a\":"
            + a
            + "}\n"
              "\n"
              "{\"name\":\"bad-op\",\"op\":\"merge\",\"a\":"
            + a + ",\"b\":" + b
            + "}\n"
              "{\"name\":\"bad-command\",\"op\":\"xor\",\"a\":[[\"M\",0,0],[\"L\",1]],\"b\":"
            + b
            + "}\n"
              "not json\n"
              "{\"name\":\"wrong-area\",\"op\":\"subtract\",\"a\":"
            + a + ",\"b\":" + b + ",\"area\":2000}\n";
    const ProgramRun run =
            rvgeom({QStringLiteral("check"), write(dir, QStringLiteral("cases.jsonl"), cases)});
    EXPECT_EQ(run.status, 1);
    const QStringList lines = run.out.trimmed().split(QLatin1Char('\n'));
    EXPECT_EQ(
            lines,
            (QStringList{QStringLiteral(
                                 "FAIL bad-op line 6: malformed case: unknown operation \"merge\""),
                         QStringLiteral("FAIL bad-command line 7: malformed case: a[1]: L takes 2 "
                                        "numbers, got 1"),
                         QStringLiteral("FAIL line 8: malformed case: not JSON: illegal value "
                                        "at offset 1"),
                         QStringLiteral(
                                 "FAIL wrong-area [subtract evenodd/evenodd] line 9: the result's "
                                 "area is 2700, the case expects 2000"),
                         QStringLiteral("4 passed, 4 failed")}))
            << run.out.toStdString();

    const ProgramRun good =
            rvgeom({QStringLiteral("check"),
                    write(dir, QStringLiteral("good.jsonl"), cases.left(cases.indexOf("\n\n")))});
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.out.toStdString(), "4 passed, 0 failed\n");
}

TEST(RvgeomProgram, BadInputGetsOneLineAndAnExitStatus)
{
    QTemporaryDir dir;
    const QString badSvg = write(dir, QStringLiteral("bad.svg"),
                                 "<svg>\n<path d=\"M0 0 L1 1\"/>\n<path d=\"M0 0 Q1\"/></svg>");
    const QString goodSvg =
            write(dir, QStringLiteral("good.svg"), "<svg><path id=\"y\" d=\"M0 0 H1\"/></svg>");
    const QString missing = dir.filePath(QStringLiteral("missing.svg"));
    const struct
    {
        QStringList arguments;
        QString err;
    } cases[] = {
            {{QStringLiteral("length"), QStringLiteral("M 10 x")},
             QStringLiteral("path data: expected a number at offset 5 in \"M 10 x\"")},
            {{QStringLiteral("area"), badSvg},
             badSvg
                     + QStringLiteral(
                             ":3: path data: expected a number at offset 7 in \"M0 0 Q1\"")},
            {{QStringLiteral("area"), missing},
             QStringLiteral("cannot read %1: No such file or directory").arg(missing)},
            {{QStringLiteral("area"), goodSvg + QStringLiteral("#x")},
             goodSvg + QStringLiteral(": no <path> element with id \"x\"")},
            {{QStringLiteral("frobnicate"), square},
             QStringLiteral("unknown command \"frobnicate\" (see rvgeom --help)")},
            {{QStringLiteral("unite"), square},
             QStringLiteral("unite: missing arguments (usage: rvgeom unite A B)")},
            {{QStringLiteral("length"), square, square},
             QStringLiteral("length: too many arguments (usage: rvgeom length SHAPE)")},
            {{QStringLiteral("contains"), square, QStringLiteral("nan"), QStringLiteral("0")},
             QStringLiteral("X: expected a finite number, got \"nan\"")},
            {{QStringLiteral("offset"), square, QStringLiteral("ten")},
             QStringLiteral("DISTANCE: expected a number, got \"ten\"")},
            {{QStringLiteral("manual"), square, QStringLiteral("3"), QStringLiteral("0")},
             QStringLiteral("STEP: must be positive, got \"0\"")},
            {{QStringLiteral("offset"), square, QStringLiteral("5"), QStringLiteral("--step"),
              QStringLiteral("1e-6")},
             QStringLiteral("--step 1e-06 is too small for an outline of length 240 (at most 1e+06 "
                            "points)")},
            {{QStringLiteral("area"), QStringLiteral("--fill"), QStringLiteral("odd"), square},
             QStringLiteral("--fill: expected evenodd or nonzero, got \"odd\"")},
            {{QStringLiteral("unite"), square, square, QStringLiteral("--kind"),
              QStringLiteral("1")},
             QStringLiteral("unite: option --kind does not apply")},
            {{QStringLiteral("area"), square, QStringLiteral("--out")},
             QStringLiteral("--out: missing value")},
            {{QStringLiteral("area"), square, QStringLiteral("--out"), QStringLiteral("x.jpg")},
             QStringLiteral("--out: the file name must end in .svg or .png, got \"x.jpg\"")},
            {{QStringLiteral("area"), square, QStringLiteral("--colour")},
             QStringLiteral("unknown option --colour (see rvgeom --help)")},
            {{QStringLiteral("check"), missing},
             QStringLiteral("cannot read %1: No such file or directory").arg(missing)},
    };
    for (const auto &c : cases) {
        const ProgramRun run = rvgeom(c.arguments);
        EXPECT_EQ(run.status, 2) << c.arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(run.err.toStdString(),
                  (QStringLiteral("rvgeom: ") + c.err + QLatin1Char('\n')).toStdString());
        EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
    }
    const ProgramRun nothing = rvgeom({});
    EXPECT_EQ(nothing.status, 2);
    EXPECT_TRUE(nothing.err.startsWith(QStringLiteral("usage: rvgeom")));
}
