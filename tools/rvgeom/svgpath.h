#ifndef SVGPATH_H
#define SVGPATH_H

#include <QtCore/QByteArray>
#include <QtCore/QPointF>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QPainterPath>
#include <QtGui/QTransform>

/*!
    \namespace rvGeom
    Input of the rvgeom tool: SVG path data and the <path> elements of SVG
    documents, read into QPainterPath.

    Path data follows the SVG path grammar strictly: every command of
    M m L l H h V v C c S s Q q T t A a Z z, implicit repetition of a
    command's argument groups (a move's extra pairs are line-tos), numbers
    such as "1e-3", ".5.5" (two numbers) and "-.5-.5", flags without
    separators ("a1 1 0 00 1 1"). A command after Z that is not a move starts
    at the closed subpath's start. Quadratics become their exact cubic
    elevation; elliptical arcs become cubics of at most 90 degrees each (the
    endpoint parametrisation of SVG's implementation notes: radii too small for
    the chord are scaled up, negative radii count as positive, a zero radius
    draws a line, an arc to its own start point draws nothing). Closing a
    subpath is QPainterPath::closeSubpath(), which adds the line back to the
    start when the last point is elsewhere.

    Errors stop the parse: the whole input is rejected with a one-line
    message naming the problem and the character offset (0-based) in the
    data, so that nothing is drawn from half-read data. Coordinates of
    1e128 or more in magnitude (after relative steps, arcs and transforms)
    are errors too: QPainterPath would drop such points without a word.
*/
namespace rvGeom {

struct ParseError
{
    QString message; //!< e.g. "expected a number"
    int offset = -1; //!< 0-based character offset in the data, -1: none
};

//! Parses \a data into \a path (replaced; fill rule left as it is). The
//! empty or blank string is the empty path. On error returns false, fills
//! \a error and leaves \a path empty.
bool parsePathData(const QString &data, QPainterPath *path, ParseError *error = nullptr);

/*!
    "path data: <message> at offset <n> in "<data>"", with long data cut to
    a window around the offset (marked by "...").
*/
QString describe(const ParseError &error, const QString &data);

/*!
    Appends to \a path the elliptical arc from \a from to \a to with radii
    \a rx, \a ry, the ellipse rotated by \a rotation degrees, as SVG's A
    command does (\a sweep true: the direction of increasing angle, clockwise
    on a y-down screen). Pieces span at most 90 degrees, with handles of
    4/3 tan(a/4) of the radius, and the last one ends exactly on \a to. The
    caller has checked that the inputs are finite; the points are returned
    in \a points (three per cubic) so that the caller can check them before
    they reach QPainterPath.
*/
void arcToCubics(const QPointF &from, double rx, double ry, double rotation, bool large, bool sweep,
                 const QPointF &to, QVector<QPointF> *points);

//! One drawn <path> element of an SVG document.
struct SvgShape
{
    QPainterPath path; //!< transformed to document coordinates; with its fill rule
    QString id;        //!< the element's id attribute, may be empty
    int line = 0;      //!< line of the element in the document
};

/*!
    The <path> elements of the SVG document \a xml, in document order, read
    with QXmlStreamReader. Each path's transform attribute and those of its
    ancestors are applied (matrix, translate, scale, rotate, skewX, skewY);
    its fill rule is the fill-rule attribute or style property, inherited
    from the ancestors, and SVG's initial value nonzero when none is given.
    Paths inside <defs>, <clipPath>, <mask>, <marker>, <pattern> and
    <symbol> are not drawn and are skipped, as are paths without a d
    attribute. On error (XML not well formed, malformed path data or
    transform, unknown fill rule) returns false with a one-line \a error
    that starts with the line number ("12: path data: ...").
*/
bool readSvgDocument(const QByteArray &xml, QVector<SvgShape> *shapes, QString *error);

/*!
    Parses an SVG transform list into \a transform (a QTransform in Qt's
    row-vector convention, so that transform.map() applies it to a point).
*/
bool parseTransform(const QString &text, QTransform *transform, ParseError *error);

} // namespace rvGeom

#endif // SVGPATH_H
