#include "samples.h"

#include <QtCore/QFile>
#include <QtGui/QFont>
#include <QtGui/QFontDatabase>

#include <cmath>

namespace gallerySamples {

namespace {

const char GlyphFontFile[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

QString &glyphFamily()
{
    static QString family;
    return family;
}

} // namespace

bool loadGlyphFont(QString *why)
{
    const QString file = QString::fromLatin1(GlyphFontFile);
    if (!QFile::exists(file)) {
        *why = QStringLiteral("%1 is not installed").arg(file);
        return false;
    }
    const int id = QFontDatabase::addApplicationFont(file);
    if (id < 0) {
        *why = QStringLiteral("%1 does not load").arg(file);
        return false;
    }
    glyphFamily() = QFontDatabase::applicationFontFamilies(id).value(0);
    return true;
}

QPainterPath glyph(const QString &text, const QPointF &origin, int pixelSize)
{
    QFont font(glyphFamily().isEmpty() ? QStringLiteral("DejaVu Sans") : glyphFamily());
    font.setPixelSize(pixelSize);
    font.setHintingPreference(QFont::PreferNoHinting);
    QPainterPath path;
    path.addText(origin, font, text);
    return path;
}

QPainterPath circle(const QPointF &centre, double radius)
{
    QPainterPath path;
    path.addEllipse(centre, radius, radius);
    return path;
}

QPainterPath star(const QPointF &centre, int points, double outer, double inner, double bulge)
{
    QPainterPath path;
    const int corners = 2 * std::max(points, 2);
    auto corner = [&](int i) {
        const double a = M_PI * i / (corners / 2) - M_PI / 2;
        const double r = i % 2 ? inner : outer;
        return centre + QPointF(r * std::cos(a), r * std::sin(a));
    };
    path.moveTo(corner(0));
    for (int i = 0; i < corners; ++i) {
        const QPointF p = corner(i), q = corner(i + 1);
        const QPointF d = q - p;
        // Outward normal of a clockwise (y-down) outline: (dy, -dx) turned.
        const QPointF n(-d.y() * bulge, d.x() * bulge);
        path.cubicTo(p + d / 3 - n, p + 2 * d / 3 - n, q);
    }
    path.closeSubpath();
    return path;
}

QPainterPath zigzag(const QPointF &start, int teeth, double toothWidth, double height)
{
    QPainterPath path;
    path.moveTo(start);
    for (int i = 0; i < teeth; ++i) {
        path.lineTo(start + QPointF((i + 0.5) * toothWidth, -height));
        path.lineTo(start + QPointF((i + 1) * toothWidth, 0));
    }
    return path;
}

QPainterPath sCurve(const QPointF &from, const QPointF &to, double swing)
{
    const QPointF d = to - from;
    const double length = std::hypot(d.x(), d.y());
    const QPointF n = length > 0 ? QPointF(-d.y(), d.x()) * (swing / length) : QPointF();
    const QPointF mid = (from + to) / 2;
    QPainterPath path;
    path.moveTo(from);
    path.cubicTo(from + d / 6 + n, mid - d / 6 + n, mid);
    path.cubicTo(mid + d / 6 - n, to - d / 6 - n, to);
    return path;
}

QPainterPath rectangle(double x, double y, double w, double h)
{
    QPainterPath path;
    path.moveTo(x, y);
    path.lineTo(x + w, y);
    path.lineTo(x + w, y + h);
    path.lineTo(x, y + h);
    path.closeSubpath();
    return path;
}

} // namespace gallerySamples
