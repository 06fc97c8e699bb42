#ifndef GALLERY_SAMPLES_H
#define GALLERY_SAMPLES_H

#include <QtCore/QPointF>
#include <QtCore/QString>
#include <QtGui/QPainterPath>

/*!
    \namespace gallerySamples
    The sample shapes of the gallery, as QPainterPaths in y-down coordinates
    of a few hundred units (RVPath merges points closer than one unit, so the
    shapes are drawn at screen-like sizes).
*/
namespace gallerySamples {

//! Loads DejaVu Sans into the application fonts (needs the QGuiApplication).
//! False with \a why set when the file is missing or does not load; glyphs
//! then come from Qt's default font.
bool loadGlyphFont(QString *why);
//! The outline of \a text with its baseline starting at \a origin.
QPainterPath glyph(const QString &text, const QPointF &origin, int pixelSize);
//! A full circle (four cubics, closed).
QPainterPath circle(const QPointF &centre, double radius);
//! A star of \a points tips, closed, each edge a cubic bowed outwards by
//! \a bulge times its length (0: straight cubics).
QPainterPath star(const QPointF &centre, int points, double outer, double inner, double bulge);
//! An open zigzag polyline of \a teeth teeth from \a start to the right.
QPainterPath zigzag(const QPointF &start, int teeth, double toothWidth, double height);
//! An open S-shaped curve of two cubics from \a from to \a to, swinging
//! \a swing to either side of the chord.
QPainterPath sCurve(const QPointF &from, const QPointF &to, double swing);
//! A closed rectangle as four lines.
QPainterPath rectangle(double x, double y, double w, double h);

} // namespace gallerySamples

#endif // GALLERY_SAMPLES_H
