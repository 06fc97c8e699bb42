#ifndef BOOLEANORACLE_H
#define BOOLEANORACLE_H

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QPainterPath>

#include <functional>
#include <memory>

class XPath;

/*!
    \namespace rvOracle
    An independent judge of the boolean operations of XPath.

    The judge never trusts the library's own geometry: the truth at a point
    is QPainterPath::contains() of the two operands under their fill rules,
    areas are integrated in closed form from the curves, and the reference
    area comes from Qt's boolean of finely flattened operands. A case is one
    operation on two operands; check() runs it and judges it, checkIsolated()
    does the same in a child process so that a crash or a hang becomes a
    reported failure.

    Operand semantics are those of filling: every subpath is closed
    implicitly (as QPainterPath and most renderers fill), the fill rule of
    the QPainterPath decides inside and outside, and an inverse operand is
    the complement of its fill.
*/
namespace rvOracle {

//! The operations judged. Difference is A - B, ReverseDifference B - A;
//! Divide is XPath::divide(): the difference and the intersection.
enum class Op { Union, Intersect, Difference, ReverseDifference, Xor, Divide };

//! "union", "intersect", "difference", "rdifference", "xor", "divide".
QString opName(Op op);
bool opFromName(const QString &name, Op *op);

struct Operand
{
    QPainterPath path;    //!< with its fill rule
    bool inverse = false; //!< the filled set is the complement
    //! Corpus operands: the drawing commands as read. The library operand is
    //! built from them, so that coordinates QPainterPath refuses (NaN,
    //! infinities) still reach the library.
    QJsonArray commands;
};

struct Case
{
    QString name;
    QString family; //!< test family, or the corpus source file
    Operand a;
    Operand b;
    Op op = Op::Union;
    QString expect; //!< corpus only: pass, fail, fuzz or skip
};

struct Options
{
    quint32 seed = 1;
    int gridSide = 32;       //!< grid samples per side of the sampling box
    int randomPoints = 1024; //!< uniform random samples in the box
    int nearPoints = 1024;   //!< samples just beyond the margin of an outline
    //! Sample points closer than this fraction of the box diagonal to an
    //! operand outline are not judged (the operation may move the outline
    //! by rounding and QPainterPath::contains() is exact only to 1e-3).
    double margin = 1e-3;
    double minMargin = 2.5e-3; //!< absolute floor of the margin
    bool checkEvenOdd = true;  //!< the result must read the same under even-odd
    bool checkCurves = true;
    bool checkArea = true;
    int timeoutMs = 20000; //!< checkIsolated() only
};

enum class Status { Passed, Failed, Inconclusive, Crashed, TimedOut };
QString statusName(Status status);

struct Verdict
{
    Status status = Status::Failed;
    QString reason; //!< one line
    QString repro;  //!< failing checks: the operands as C++ code with hex floats
    int samples = 0;
    int mismatches = 0;
    //! Exact areas of the library's result parts (the difference and the
    //! intersection for Divide); NaN when unknown. For a result whose set is
    //! unbounded (inverse operands) the area of its bounded complement.
    double area = qQNaN();
    double area2 = qQNaN();
    bool complement = false;
    //! Absolute uncertainty of area and area2: 0 when integrated exactly,
    //! else the flattening bound of a fallback integration.
    double areaUncertainty = 0;
    double areaError = 0; //!< relative area disagreement with Qt's reference
    double seconds = 0;   //!< time of the library's operation
    //! Failures only: an operand fills differently under the other fill
    //! rule (its contours overlap), or an operand crosses itself.
    bool fillRuleDependent = false;
    bool selfCrossing = false;

    bool passed() const { return status == Status::Passed; }
    //! Ordering key for "worst failures": crashes and hangs first, then the
    //! share of failing samples, then the area error.
    double badness() const;
    QByteArray serialize() const;
    static bool deserialize(const QByteArray &bytes, Verdict *verdict);
};

//! The library's result of one case. The parts are owned; \c complement
//! means the result set is the complement of the parts (inverse operands).
struct Outcome
{
    std::unique_ptr<XPath> first;
    std::unique_ptr<XPath> second; //!< Divide: the intersection
    bool complement = false;
    bool complement2 = false; //!< the same for the second part
    int parts = 1;            //!< Divide: the number of parts returned
    double seconds = 0;
    Outcome();
    ~Outcome();
    Outcome(Outcome &&other);
};

/*!
    A new compound path (caller owns it) with one koPath per subpath of
    \a path, built with moveTo/lineTo/cubicCurveTo. A subpath whose last point
    equals its first is closed and the duplicated point merged into the first
    segment; with \a closeAll every subpath of two or more points is closed.
    Quadratic pieces must have been elevated to cubics before (QPainterPath
    holds none). Orientations are kept as drawn and recorded, so the compound
    path does not reorient its children.
*/
XPath *toXPath(const QPainterPath &path, bool closeAll = false);
//! The children as subpaths (closed children closed), fill rule WindingFill.
QPainterPath toPainterPath(const XPath *path);

//! Runs the case's operation on the library (operands closed as for filling;
//! inverse operands through the complement identities).
Outcome runOperation(const Case &c);
//! Judges \a outcome against the truth of \a c.
Verdict judge(const Case &c, const Outcome &outcome, const Options &options);
//! runOperation() and judge() in this process.
Verdict check(const Case &c, const Options &options);
//! check() in a forked child process; a crash, a hang beyond
//! options.timeoutMs or (sanitizer builds) a leak becomes the verdict.
Verdict checkIsolated(const Case &c, const Options &options);

//! How a child process of runInChild() ended.
struct ChildRun
{
    bool started = false;  //!< false: pipe() or fork() failed (see error), nothing ran
    bool timedOut = false; //!< killed at the time limit
    int signal = 0;        //!< the signal that ended it, 0 for none
    int exitCode = -1;     //!< its exit status, -1 when it did not exit
    QByteArray message;    //!< what the work returned, as far as it arrived
    QString error;

    //! "crashed with signal N (name)".
    QString crashText() const;
};
//! Exit status of a child whose work finished but leaked memory (builds with
//! the leak checker only); 2 when the message could not be sent, else 0.
constexpr int ChildLeaked = 3;
//! Runs \a work in a forked child process that sends its result back, so
//! that a crash, a hang beyond \a timeoutMs or a leak ends only the child.
ChildRun runInChild(const std::function<QByteArray()> &work, int timeoutMs);

/*!
    The area identities between the results of one operand pair:
    |A u B| + |A n B| = |A| + |B|, |A - B| = |A| - |A n B|,
    |A xor B| = |A u B| - |A n B|, and the parts of Divide against the
    difference and the intersection. \a verdicts holds the verdicts of the
    pair's operations by operation (missing ones are skipped). Inconclusive
    when an operand crosses itself or has no finite area.
*/
Verdict checkAreaIdentities(const Operand &a, const Operand &b, const QMap<Op, Verdict> &verdicts);

//! C++ statements that rebuild \a path in a QPainterPath named \a name, with
//! every coordinate as a hex-float literal.
QString toCpp(const QPainterPath &path, const QString &name);
//! Both operands and the operation as C++ statements.
QString reproducer(const Case &c);

//! True when some coordinate of \a path is NaN or infinite.
bool hasNonFinite(const QPainterPath &path);
//! The exact area of the region \a path fills under its fill rule, for
//! outlines whose contours neither cross nor touch; NaN otherwise.
double exactArea(const QPainterPath &path);

// --- the pathops corpus (JSON lines) ------------------------------------------

/*!
    Parses one corpus record (see the corpus README: op, fillA/fillB,
    inverseA/inverseB, expect, and the paths a and b as command arrays M, L,
    C, Q, K, Z). Conics (K) are approximated by cubics, four per conic, well
    below the float precision of the data. Returns false with \a error set
    for a malformed record.
*/
bool readCorpusCase(const QByteArray &line, Case *c, QString *error);
//! All records of a file; a malformed line sets \a error and is skipped.
QVector<Case> readCorpus(const QString &fileName, QString *error);

} // namespace rvOracle

#endif // BOOLEANORACLE_H
