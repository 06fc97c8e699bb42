#ifndef RVGEOM_COMMANDS_H
#define RVGEOM_COMMANDS_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <cstdio>

class QPainterPath;
class RVPath;

namespace rvGeom {

//! Exit statuses of the tool.
enum ExitStatus {
    ExitOk = 0,
    ExitCheckFailed = 1, //!< check: some case failed
    ExitBadInput = 2     //!< usage error or input that cannot be read
};

/*!
    Runs the rvgeom tool on \a arguments (without the program name): results
    go to \a out, errors to \a err as one line "rvgeom: <problem>". Returns
    the exit status. Every input is checked before use; nothing the user
    types makes the tool crash or hang (effects cap their point counts).
*/
int run(const QStringList &arguments, FILE *out, FILE *err);

//! True when \a arguments ask for a picture (--out), which needs a
//! QGuiApplication for fonts.
bool wantsPicture(const QStringList &arguments);

//! The text of rvgeom --help.
QString helpText();

/*!
    An RVPath of \a path's elements as they are (no nearness merging), with a
    close marker on every subpath of two or more elements whose last point
    is its first (the subpaths QPainterPath::closeSubpath() made).
*/
RVPath toRVPath(const QPainterPath &path);

// --- the check command (check.cpp) ----------------------------------------------

struct CheckOptions
{
    int timeoutMs = 20000;
    bool verbose = false; //!< a line for passing cases too
    bool repro = false;   //!< failing operands as C++ code
    bool inProcess = false;
};

/*!
    Judges the boolean cases of the JSON Lines file \a fileName (see
    helpText()): each in a child process with a time limit, with the
    point-sampling oracle, Qt's area and, where the file holds several
    operations on the same operands, the area identities between them.
    Prints one line per failure and ends with "N passed, N failed".
    Returns ExitCheckFailed when any case failed, ExitBadInput when the file
    cannot be read.
*/
int runCheck(const QString &fileName, const CheckOptions &options, FILE *out, FILE *err);

} // namespace rvGeom

#endif // RVGEOM_COMMANDS_H
