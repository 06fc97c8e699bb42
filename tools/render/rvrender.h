#ifndef RVRENDER_H
#define RVRENDER_H

#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QImage>
#include <QtGui/QPainterPath>

/*!
    \namespace rvRender
    Pictures of paths for the command-line tool and the gallery: a raster
    image (QPainter) or a standalone SVG document of a few layers, and the
    SVG path data of a QPainterPath.

    Coordinates are those of the paths, y pointing down as in SVG and Qt.
    Layers are drawn in their order, so the result usually comes after the
    operands it was made from. Non-finite coordinates are skipped when the
    bounds are measured; a picture without finite bounds is blank except for
    its title.
*/
namespace rvRender {

struct Layer
{
    enum Role {
        Operand, //!< an input: light fill and thin outline, one hue per operand
        Result,  //!< the output: solid fill, dark outline; open subpaths only stroked
        Guide,   //!< construction lines: thin and dashed, never filled
        //! A small dot at each point of the path (crossings, tips): move,
        //! line and curve end points, a repeated point once. QPainterPath
        //! merges consecutive moves and drops a line to the current point,
        //! so give lone points as a polyline: moveTo(first), lineTo(next)...
        Marker
    };
    QPainterPath path; //!< y-down path coordinates, with its fill rule
    Role role = Result;
    QString label; //!< optional legend text
};

/*!
    Fits the bounds of all layers into \a width x \a height with a margin,
    keeping the aspect ratio, on a white background. Operands are drawn
    faintly (light fill and thin outline, distinct hues), the result filled
    solid with a dark outline (open subpaths of a result are stroked only,
    not filled), guides as thin dashed lines and markers as small dots at the
    path's points. A non-empty \a title is written on top, labels of layers
    as a legend at the bottom. Sizes below 16 pixels are raised to 16.
    Text needs a QGuiApplication (on any platform, offscreen included);
    without one the picture is drawn without title and legend.
*/
QImage renderImage(const QVector<Layer> &layers, int width, int height,
                   const QString &title = QString());

//! renderImage() saved as PNG; on failure returns false and sets *error (if given).
bool writePng(const QString &fileName, const QVector<Layer> &layers, int width, int height,
              const QString &title, QString *error);

/*!
    A standalone SVG document of the same picture: the viewBox is the padded
    bounds of the layers, fills use the layer path's fill rule (evenodd for
    QPainterPath's default OddEvenFill, nonzero for WindingFill), strokes
    keep their width on screen (vector-effect non-scaling-stroke). The title
    goes into <title> and a text line above the picture.
*/
QString svgDocument(const QVector<Layer> &layers, const QString &title = QString());

//! svgDocument() written as UTF-8; on failure returns false and sets *error (if given).
bool writeSvg(const QString &fileName, const QVector<Layer> &layers, const QString &title,
              QString *error);

/*!
    SVG path data of \a path: absolute M, L, C and Z commands, one space
    between tokens, numbers in the shortest form that reads back as the same
    double ("0.1", "10", "1e+30"; the sign of zero is not kept). A subpath
    that ends on its start point (closeSubpath(): the next element is a move
    or the path ends) is closed with Z: a last line back to the start
    becomes the Z, a last curve ending on the start is followed by Z. A line
    to the start in the middle of a subpath stays an L. Non-finite numbers
    are written as "nan", "inf", "-inf", which SVG readers reject: callers
    that need valid SVG check their paths first.
*/
QString svgPathData(const QPainterPath &path);

//! The shortest 'g' text of \a value (QString::number, precision 1 to 17)
//! that parses back to the same double; "nan", "inf", "-inf" otherwise.
QString formatNumber(double value);

} // namespace rvRender

#endif // RVRENDER_H
