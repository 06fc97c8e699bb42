#include "rvrender.h"

#include <QtCore/QFile>
#include <QtCore/QTextStream>
#include <QtGui/QFontMetricsF>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace rvRender {

namespace {

// Pixel sizes of the raster picture.
constexpr int MinSide = 16;
constexpr double MarginFraction = 0.06; // free border around the drawing, of the shorter side
constexpr double MarkerRadius = 3.5;
constexpr double ResultPenWidth = 1.6;
constexpr double OperandPenWidth = 1.2;
constexpr double GuidePenWidth = 1.0;

// Fill alpha of operands: faint enough that the result reads on top of them.
constexpr int OperandFillAlpha = 46;
// Open subpaths of a result are stroked in their hue darkened by this
// factor (QColor::darker), so that several open results stay apart.
constexpr int OpenResultDarker = 160;
constexpr double OpenResultPenWidth = 2.4;

// Hues of operands and results, chosen apart on the colour wheel.
const QRgb OperandHues[] = {0x1f6fd0, 0xe07b00, 0x22a045, 0x9b4dca, 0xd0305a, 0x138d90};
const QRgb ResultHues[] = {0x3a6fb0, 0xc8553d, 0x4e9a52, 0x8a5bb5, 0xb8860b, 0x2f8f8f};
const QRgb ResultOutline = 0x1a1a2e;
const QRgb GuideColor = 0x505050;
const QRgb MarkerHues[] = {0xe0102f, 0x0a8f3c, 0x1f4fd0, 0xd07000};

template<typename T, std::size_t N>
QColor pick(const T (&hues)[N], int index)
{
    return QColor(hues[std::size_t(index) % N]);
}

bool finitePoint(double x, double y)
{
    return std::isfinite(x) && std::isfinite(y);
}

bool pathIsFinite(const QPainterPath &path)
{
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (!finitePoint(e.x, e.y))
            return false;
    }
    return true;
}

// A copy without non-finite elements: a curve with a non-finite point is
// dropped and the subpath continues with a move to the next finite point.
QPainterPath finitePath(const QPainterPath &path)
{
    if (pathIsFinite(path))
        return path;
    QPainterPath out;
    out.setFillRule(path.fillRule());
    bool needMove = true;
    const int n = path.elementCount();
    for (int i = 0; i < n; ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (e.type == QPainterPath::CurveToElement && i + 2 < n) {
            const QPainterPath::Element c2 = path.elementAt(i + 1);
            const QPainterPath::Element end = path.elementAt(i + 2);
            i += 2;
            if (finitePoint(e.x, e.y) && finitePoint(c2.x, c2.y) && finitePoint(end.x, end.y)
                && !needMove) {
                out.cubicTo(e.x, e.y, c2.x, c2.y, end.x, end.y);
            } else if (finitePoint(end.x, end.y)) {
                out.moveTo(end.x, end.y);
                needMove = false;
            } else {
                needMove = true;
            }
            continue;
        }
        if (!finitePoint(e.x, e.y)) {
            needMove = true;
            continue;
        }
        if (e.type == QPainterPath::MoveToElement || needMove)
            out.moveTo(e.x, e.y);
        else
            out.lineTo(e.x, e.y);
        needMove = false;
    }
    return out;
}

// Bounds of the finite points of a layer. Markers count their points,
// other layers their drawn extent (curve bounds, not the control polygon).
QRectF layerBounds(const Layer &layer, bool *any)
{
    const QPainterPath path = finitePath(layer.path);
    *any = path.elementCount() > 0;
    if (!*any)
        return QRectF();
    if (layer.role != Layer::Marker)
        return path.boundingRect();
    QRectF r(path.elementAt(0).x, path.elementAt(0).y, 0, 0);
    for (int i = 1; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        r.setLeft(std::min(r.left(), e.x));
        r.setRight(std::max(r.right(), e.x));
        r.setTop(std::min(r.top(), e.y));
        r.setBottom(std::max(r.bottom(), e.y));
    }
    return r;
}

QRectF allBounds(const QVector<Layer> &layers, bool *any)
{
    QRectF bounds;
    *any = false;
    for (const Layer &layer : layers) {
        bool has = false;
        const QRectF r = layerBounds(layer, &has);
        if (!has)
            continue;
        if (!*any) {
            bounds = r;
            *any = true;
        } else {
            bounds.setLeft(std::min(bounds.left(), r.left()));
            bounds.setTop(std::min(bounds.top(), r.top()));
            bounds.setRight(std::max(bounds.right(), r.right()));
            bounds.setBottom(std::max(bounds.bottom(), r.bottom()));
        }
    }
    return bounds;
}

// The subpaths of a path split by whether they end on their start point:
// closed ones are filled, open ones only stroked (filling an open polyline
// would fill its implied closing chord).
void splitClosed(const QPainterPath &path, QPainterPath *closed, QPainterPath *open)
{
    closed->setFillRule(path.fillRule());
    open->setFillRule(path.fillRule());
    const int n = path.elementCount();
    int start = 0;
    while (start < n) {
        int end = start + 1;
        while (end < n && path.elementAt(end).type != QPainterPath::MoveToElement)
            ++end;
        const QPainterPath::Element first = path.elementAt(start);
        const QPainterPath::Element last = path.elementAt(end - 1);
        QPainterPath *target =
                (end - start > 1 && first.x == last.x && first.y == last.y) ? closed : open;
        for (int i = start; i < end; ++i) {
            const QPainterPath::Element e = path.elementAt(i);
            if (e.type == QPainterPath::CurveToElement && i + 2 < end) {
                const QPainterPath::Element c2 = path.elementAt(i + 1);
                const QPainterPath::Element p = path.elementAt(i + 2);
                target->cubicTo(e.x, e.y, c2.x, c2.y, p.x, p.y);
                i += 2;
            } else if (e.type == QPainterPath::MoveToElement) {
                target->moveTo(e.x, e.y);
            } else {
                target->lineTo(e.x, e.y);
            }
        }
        start = end;
    }
}

// End points of the path's elements (control points of curves are not
// marked); a point repeating the one before it is marked once.
QVector<QPointF> markerPoints(const QPainterPath &path)
{
    QVector<QPointF> points;
    auto add = [&points](double x, double y) {
        const QPointF p(x, y);
        if (points.isEmpty() || points.last() != p)
            points.append(p);
    };
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (e.type == QPainterPath::CurveToElement) {
            i += 2;
            if (i < path.elementCount())
                add(path.elementAt(i).x, path.elementAt(i).y);
        } else if (e.type != QPainterPath::CurveToDataElement) {
            add(e.x, e.y);
        }
    }
    return points;
}

bool haveGuiApplication()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr;
}

QFont textFont(double pixelSize, bool bold)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(std::max(1, int(std::lround(pixelSize))));
    font.setBold(bold);
    return font;
}

// Styles of one layer: index counts the layers of the same role.
struct Style
{
    QPen pen;
    QBrush brush;
};

Style layerStyle(Layer::Role role, int index)
{
    Style s;
    switch (role) {
    case Layer::Operand: {
        QColor hue = pick(OperandHues, index);
        QColor fill = hue;
        fill.setAlpha(OperandFillAlpha);
        hue.setAlpha(190);
        s.pen = QPen(hue, OperandPenWidth);
        s.brush = QBrush(fill);
        break;
    }
    case Layer::Result: {
        const QColor fill = pick(ResultHues, index);
        s.pen = QPen(QColor(ResultOutline), ResultPenWidth);
        s.brush = QBrush(fill);
        break;
    }
    case Layer::Guide:
        s.pen = QPen(QColor(GuideColor), GuidePenWidth, Qt::DashLine);
        s.brush = Qt::NoBrush;
        break;
    case Layer::Marker:
        s.pen = QPen(QColor(ResultOutline), 1.0);
        s.brush = QBrush(pick(MarkerHues, index));
        break;
    }
    s.pen.setJoinStyle(Qt::RoundJoin);
    s.pen.setCapStyle(Qt::RoundCap);
    return s;
}

QVector<Style> layerStyles(const QVector<Layer> &layers)
{
    int counts[4] = {0, 0, 0, 0};
    QVector<Style> styles;
    styles.reserve(layers.size());
    for (const Layer &layer : layers)
        styles.append(layerStyle(layer.role, counts[layer.role]++));
    return styles;
}

QString xmlEscaped(const QString &text)
{
    return text.toHtmlEscaped();
}

QString svgColor(const QColor &c)
{
    return c.name(QColor::HexRgb);
}

QString svgOpacity(const QColor &c)
{
    return formatNumber(std::round(c.alphaF() * 1000) / 1000);
}

QString svgStroke(const QColor &color, double width)
{
    return QStringLiteral("stroke=\"%1\" stroke-opacity=\"%2\" stroke-width=\"%3\" "
                          "stroke-linejoin=\"round\" stroke-linecap=\"round\" "
                          "vector-effect=\"non-scaling-stroke\"")
            .arg(svgColor(color), svgOpacity(color), formatNumber(width));
}

} // namespace

QString formatNumber(double value)
{
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    // The shortest 'g' text that reads back exactly: the lowest precision
    // that round-trips may still be longer than a higher one ("1e+01" and
    // "10"), so every precision is tried.
    QString best = QString::number(value, 'g', 17);
    for (int precision = 1; precision < 17; ++precision) {
        const QString text = QString::number(value, 'g', precision);
        if (text.size() < best.size() && text.toDouble() == value)
            best = text;
    }
    return best;
}

QString svgPathData(const QPainterPath &path)
{
    QString d;
    const int n = path.elementCount();
    d.reserve(n * 16);
    QPointF start;
    auto add = [&d](const QString &token) {
        if (!d.isEmpty())
            d += QLatin1Char(' ');
        d += token;
    };
    auto addPoint = [&add](double x, double y) {
        add(formatNumber(x));
        add(formatNumber(y));
    };
    // A subpath ends at a move or at the end of the path.
    auto endsSubpath = [&path, n](int next) {
        return next >= n || path.elementAt(next).type == QPainterPath::MoveToElement;
    };
    for (int i = 0; i < n; ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        switch (e.type) {
        case QPainterPath::MoveToElement:
            start = QPointF(e.x, e.y);
            add(QStringLiteral("M"));
            addPoint(e.x, e.y);
            break;
        case QPainterPath::LineToElement:
            if (e.x == start.x() && e.y == start.y() && endsSubpath(i + 1)) {
                add(QStringLiteral("Z"));
            } else {
                add(QStringLiteral("L"));
                addPoint(e.x, e.y);
            }
            break;
        case QPainterPath::CurveToElement: {
            if (i + 2 >= n)
                return d; // a truncated curve cannot come from QPainterPath's builders
            const QPainterPath::Element c2 = path.elementAt(i + 1);
            const QPainterPath::Element end = path.elementAt(i + 2);
            add(QStringLiteral("C"));
            addPoint(e.x, e.y);
            addPoint(c2.x, c2.y);
            addPoint(end.x, end.y);
            i += 2;
            if (end.x == start.x() && end.y == start.y() && endsSubpath(i + 1))
                add(QStringLiteral("Z"));
            break;
        }
        case QPainterPath::CurveToDataElement:
            break; // consumed with its curve
        }
    }
    return d;
}

QImage renderImage(const QVector<Layer> &layers, int width, int height, const QString &title)
{
    width = std::max(width, MinSide);
    height = std::max(height, MinSide);
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);

    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);

    const bool text = haveGuiApplication();
    const double margin = MarginFraction * std::min(width, height);

    // Title on top, wrapped to the width.
    double top = margin;
    if (text && !title.isEmpty()) {
        const QFont font = textFont(std::clamp(width / 36.0, 11.0, 20.0), true);
        painter.setFont(font);
        const QRectF box(margin * 0.5, margin * 0.4, width - margin, height);
        const QRectF used = painter.boundingRect(box, Qt::AlignHCenter | Qt::TextWordWrap, title);
        painter.setPen(QColor(0x20, 0x20, 0x20));
        painter.drawText(box, Qt::AlignHCenter | Qt::TextWordWrap, title);
        top = used.bottom() + margin * 0.6;
    }

    // Legend at the bottom: one swatch and label per labelled layer.
    const QVector<Style> styles = layerStyles(layers);
    double bottom = height - margin;
    QVector<int> labelled;
    for (int i = 0; i < layers.size(); ++i) {
        if (!layers[i].label.isEmpty())
            labelled.append(i);
    }
    if (text && !labelled.isEmpty()) {
        const QFont font = textFont(std::clamp(width / 50.0, 10.0, 15.0), false);
        painter.setFont(font);
        const QFontMetricsF metrics(font);
        const double line = metrics.height();
        const double swatch = line * 0.8;
        // Lay the entries out in rows that fit the width.
        QVector<QVector<int>> rows(1);
        double x = margin * 0.5;
        for (int i : labelled) {
            const double w = swatch + 6 + metrics.horizontalAdvance(layers[i].label) + 18;
            if (x + w > width - margin * 0.5 && !rows.last().isEmpty()) {
                rows.append(QVector<int>());
                x = margin * 0.5;
            }
            rows.last().append(i);
            x += w;
        }
        double y = height - margin * 0.4 - rows.size() * line;
        bottom = y - margin * 0.4;
        for (const QVector<int> &row : rows) {
            x = margin * 0.5;
            for (int i : row) {
                const Style &s = styles[i];
                const QRectF sw(x, y + (line - swatch) / 2, swatch, swatch);
                painter.setPen(s.pen);
                painter.setBrush(layers[i].role == Layer::Guide ? QBrush(Qt::NoBrush) : s.brush);
                if (layers[i].role == Layer::Marker)
                    painter.drawEllipse(sw.center(), MarkerRadius, MarkerRadius);
                else if (layers[i].role == Layer::Guide)
                    painter.drawLine(QPointF(sw.left(), sw.center().y()),
                                     QPointF(sw.right(), sw.center().y()));
                else
                    painter.drawRect(sw);
                painter.setPen(QColor(0x30, 0x30, 0x30));
                painter.drawText(QPointF(x + swatch + 6, y + metrics.ascent()), layers[i].label);
                x += swatch + 6 + metrics.horizontalAdvance(layers[i].label) + 18;
            }
            y += line;
        }
    }

    bool any = false;
    const QRectF bounds = allBounds(layers, &any);
    const QRectF area(margin, top, width - 2 * margin, bottom - top);
    if (!any || area.width() <= 1 || area.height() <= 1)
        return image;

    // Fit keeping the aspect; a degenerate extent (a point, a straight
    // horizontal or vertical line) takes its scale from the other side.
    double scale = 1;
    const double bw = bounds.width(), bh = bounds.height();
    if (bw > 0 && bh > 0)
        scale = std::min(area.width() / bw, area.height() / bh);
    else if (bw > 0)
        scale = area.width() / bw;
    else if (bh > 0)
        scale = area.height() / bh;
    if (!std::isfinite(scale) || scale <= 0)
        scale = 1;
    QTransform toImage;
    toImage.translate(area.center().x(), area.center().y());
    toImage.scale(scale, scale);
    toImage.translate(-bounds.center().x(), -bounds.center().y());

    for (int i = 0; i < layers.size(); ++i) {
        const Layer &layer = layers[i];
        const Style &s = styles[i];
        const QPainterPath path = toImage.map(finitePath(layer.path));
        painter.setPen(s.pen);
        switch (layer.role) {
        case Layer::Operand:
        case Layer::Result: {
            QPainterPath closed, open;
            splitClosed(path, &closed, &open);
            painter.setBrush(s.brush);
            painter.drawPath(closed);
            painter.setBrush(Qt::NoBrush);
            if (layer.role == Layer::Result)
                painter.setPen(QPen(s.brush.color().darker(OpenResultDarker), OpenResultPenWidth,
                                    Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.drawPath(open);
            break;
        }
        case Layer::Guide:
            painter.setBrush(Qt::NoBrush);
            painter.drawPath(path);
            break;
        case Layer::Marker:
            painter.setBrush(s.brush);
            for (const QPointF &p : markerPoints(path))
                painter.drawEllipse(p, MarkerRadius, MarkerRadius);
            break;
        }
    }
    return image;
}

bool writePng(const QString &fileName, const QVector<Layer> &layers, int width, int height,
              const QString &title, QString *error)
{
    const QImage image = renderImage(layers, width, height, title);
    if (!image.save(fileName, "PNG")) {
        if (error)
            *error = QStringLiteral("cannot write PNG file %1").arg(fileName);
        return false;
    }
    return true;
}

QString svgDocument(const QVector<Layer> &layers, const QString &title)
{
    bool any = false;
    QRectF bounds = allBounds(layers, &any);
    if (!any)
        bounds = QRectF(0, 0, 100, 100);
    double side = std::max(bounds.width(), bounds.height());
    if (!(side > 0))
        side = 100;
    const double pad = side * MarginFraction;
    const double fontSize = side * 0.05;
    const double titleSpace = title.isEmpty() ? 0 : fontSize * 1.8;
    const QRectF view(bounds.left() - pad, bounds.top() - pad - titleSpace,
                      bounds.width() + 2 * pad, bounds.height() + 2 * pad + titleSpace);
    // Display size: the longer side 800 pixels.
    const double pixels = 800 / std::max(view.width(), view.height());

    QString svg;
    QTextStream out(&svg);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\""
        << formatNumber(std::round(view.width() * pixels)) << "\" height=\""
        << formatNumber(std::round(view.height() * pixels)) << "\" viewBox=\""
        << formatNumber(view.left()) << ' ' << formatNumber(view.top()) << ' '
        << formatNumber(view.width()) << ' ' << formatNumber(view.height()) << "\">\n";
    if (!title.isEmpty())
        out << "  <title>" << xmlEscaped(title) << "</title>\n";
    out << "  <rect x=\"" << formatNumber(view.left()) << "\" y=\"" << formatNumber(view.top())
        << "\" width=\"" << formatNumber(view.width()) << "\" height=\""
        << formatNumber(view.height()) << "\" fill=\"#ffffff\"/>\n";
    if (!title.isEmpty()) {
        out << "  <text x=\"" << formatNumber(view.center().x()) << "\" y=\""
            << formatNumber(view.top() + pad * 0.5 + fontSize) << "\" font-family=\"DejaVu Sans, "
            << "sans-serif\" font-size=\"" << formatNumber(fontSize)
            << "\" font-weight=\"bold\" text-anchor=\"middle\" fill=\"#202020\">"
            << xmlEscaped(title) << "</text>\n";
    }

    const QVector<Style> styles = layerStyles(layers);
    const double markerRadius = side * 0.008;
    for (int i = 0; i < layers.size(); ++i) {
        const Layer &layer = layers[i];
        const Style &s = styles[i];
        const QPainterPath path = finitePath(layer.path);
        const QString rule = path.fillRule() == Qt::WindingFill ? QStringLiteral("nonzero")
                                                                : QStringLiteral("evenodd");
        const QString stroke = svgStroke(s.pen.color(), s.pen.widthF());
        out << "  <g>";
        if (!layer.label.isEmpty())
            out << "<title>" << xmlEscaped(layer.label) << "</title>";
        out << '\n';
        switch (layer.role) {
        case Layer::Operand:
        case Layer::Result: {
            QPainterPath closed, open;
            splitClosed(path, &closed, &open);
            const QColor fill = s.brush.color();
            if (!closed.isEmpty())
                out << "    <path d=\"" << svgPathData(closed) << "\" fill=\"" << svgColor(fill)
                    << "\" fill-opacity=\"" << svgOpacity(fill) << "\" fill-rule=\"" << rule
                    << "\" " << stroke << "/>\n";
            if (!open.isEmpty())
                out << "    <path d=\"" << svgPathData(open) << "\" fill=\"none\" "
                    << (layer.role == Layer::Result
                                ? svgStroke(fill.darker(OpenResultDarker), OpenResultPenWidth)
                                : stroke)
                    << "/>\n";
            break;
        }
        case Layer::Guide:
            if (!path.isEmpty())
                out << "    <path d=\"" << svgPathData(path) << "\" fill=\"none\" " << stroke
                    << " stroke-dasharray=\"5 4\"/>\n";
            break;
        case Layer::Marker:
            for (const QPointF &p : markerPoints(path))
                out << "    <circle cx=\"" << formatNumber(p.x()) << "\" cy=\""
                    << formatNumber(p.y()) << "\" r=\"" << formatNumber(markerRadius)
                    << "\" fill=\"" << svgColor(s.brush.color()) << "\" " << stroke << "/>\n";
            break;
        }
        out << "  </g>\n";
    }
    out << "</svg>\n";
    out.flush();
    return svg;
}

bool writeSvg(const QString &fileName, const QVector<Layer> &layers, const QString &title,
              QString *error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        if (error)
            *error = QStringLiteral("cannot write SVG file %1: %2")
                             .arg(fileName, file.errorString());
        return false;
    }
    const QByteArray bytes = svgDocument(layers, title).toUtf8();
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        if (error)
            *error = QStringLiteral("cannot write SVG file %1: %2")
                             .arg(fileName, file.errorString());
        return false;
    }
    return true;
}

} // namespace rvRender
