// rvgraphics-gallery: renders every boolean operation and line effect of the
// library on built-in sample shapes into PNG files and one index.html.
//
// Each picture is drawn in a child process of its own, so that an effect
// that crashes, hangs or leaks spoils only its own picture; the index then
// shows what went wrong in its place.
//
// usage: rvgraphics-gallery [--out DIR] [--only TEXT] [--timeout SECONDS] [--check]

#include "booleanoracle.h"
#include "pictures.h"
#include "rvrender.h"
#include "samples.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QTextStream>
#include <QtCore/QUrl>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>

#include <cstdio>

#if defined(__SANITIZE_ADDRESS__)
#define GALLERY_LEAK_CHECK 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define GALLERY_LEAK_CHECK 1
#endif
#endif
#ifdef GALLERY_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

#ifndef RVGALLERY_DEFAULT_OUT
#define RVGALLERY_DEFAULT_OUT "gallery"
#endif

namespace {

using gallery::Drawing;
using gallery::Picture;

constexpr int PictureWidth = 480;
constexpr int PictureHeight = 420;

// Fontconfig and FreeType keep caches for the life of the process and never
// free them; allocations made while fonts load are not the gallery's leaks.
struct FontLeaksIgnored
{
#ifdef GALLERY_LEAK_CHECK
    FontLeaksIgnored()
    {
        __lsan_disable();
    }
    ~FontLeaksIgnored()
    {
        __lsan_enable();
    }
#endif
};

void print(const QString &text)
{
    std::fputs(qPrintable(text + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

// Puts the title above a finished image (the noise pictures).
QImage titledImage(const QImage &image, const QString &title)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(14);
    font.setBold(true);
    const int band = 40, border = 16;
    const int width = std::max(image.width() + 2 * border, PictureWidth);
    QImage out(width, image.height() + band + border, QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::white);
    QPainter painter(&out);
    painter.setFont(font);
    painter.setPen(QColor(0x20, 0x20, 0x20));
    painter.drawText(QRect(0, 0, width, band), Qt::AlignCenter, title);
    const QPoint at((width - image.width()) / 2, band);
    painter.drawImage(at, image);
    painter.setPen(QColor(0xb0, 0xb0, 0xb0));
    painter.drawRect(QRect(at - QPoint(1, 1), image.size() + QSize(1, 1)));
    return out;
}

// Draws one picture and saves it; returns the notes of what looked wrong.
QStringList drawPicture(const Picture &picture, const QString &fileName)
{
    Drawing d = picture.draw();
    QStringList notes = d.notes;
    QImage image;
    if (!d.image.isNull()) {
        image = titledImage(d.image, picture.title);
    } else {
        for (const rvRender::Layer &layer : d.layers) {
            if ((layer.role == rvRender::Layer::Result || layer.role == rvRender::Layer::Marker)
                && layer.path.elementCount() == 0) {
                notes << QStringLiteral("empty result%1")
                                 .arg(layer.label.isEmpty() ? QString()
                                                            : QStringLiteral(" (") + layer.label
                                                      + QLatin1Char(')'));
            }
        }
        image = rvRender::renderImage(d.layers, PictureWidth, PictureHeight, picture.title);
    }
    if (!image.save(fileName, "PNG"))
        notes << QStringLiteral("cannot write %1").arg(fileName);
    return notes;
}

struct Outcome
{
    bool drawn = false; //!< the child finished and wrote its picture
    QStringList notes;  //!< problems seen; a drawn picture with notes counts as failed
};

// Draws the picture in a child process with a time limit.
Outcome drawIsolated(const Picture &picture, const QString &fileName, int timeoutMs)
{
    QFile::remove(fileName); // no stale picture from an earlier run
    const rvOracle::ChildRun run = rvOracle::runInChild(
            [&] { return drawPicture(picture, fileName).join(QLatin1Char('\n')).toUtf8(); },
            timeoutMs);
    if (!run.started)
        return Outcome{false, {run.error}};
    Outcome o;
    if (!run.message.isEmpty())
        o.notes = QString::fromUtf8(run.message).split(QLatin1Char('\n'));
    if (run.timedOut) {
        o.notes << QStringLiteral("no picture within %1 s (killed)").arg(timeoutMs / 1000.0);
    } else if (run.signal) {
        o.notes << run.crashText();
    } else if (run.exitCode == rvOracle::ChildLeaked) {
        o.drawn = true;
        o.notes << QStringLiteral("memory leaked (leak report on the console)");
    } else if (run.exitCode == 0) {
        o.drawn = true;
    } else {
        o.notes << QStringLiteral("ended with status %1").arg(run.exitCode);
    }
    return o;
}

QString html(const QString &text)
{
    return text.toHtmlEscaped();
}

bool writeIndex(const QString &fileName, const QVector<Picture> &list,
                const QVector<Outcome> &outcomes, QString *error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        *error = file.errorString();
        return false;
    }
    QTextStream out(&file);
    out.setCodec("UTF-8");
    out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        << "<title>rvgraphics gallery</title>\n<style>\n"
        << "body { font-family: 'DejaVu Sans', sans-serif; margin: 24px; color: #202020; }\n"
        << "section { display: flex; flex-wrap: wrap; gap: 16px; }\n"
        << "figure { margin: 0; width: 480px; border: 1px solid #ddd; padding: 6px; }\n"
        << "figure img { width: 480px; display: block; }\n"
        << "figcaption { font-size: 13px; margin-top: 6px; }\n"
        << "figcaption code { font-size: 14px; font-weight: bold; }\n"
        << "figure.failed { border-color: #d00; background: #fff4f4; }\n"
        << ".note { color: #b00; }\n"
        << "</style>\n</head>\n<body>\n<h1>rvgraphics gallery</h1>\n"
        << "<p>Every boolean operation and line effect of the library on built-in sample "
        << "shapes. Operands are drawn faintly, results solid; dashed lines are sources or "
        << "construction lines. Each title is the call that made the picture.</p>\n";
    int failed = 0;
    for (const Outcome &o : outcomes)
        failed += !o.drawn || !o.notes.isEmpty();
    if (failed)
        out << "<p class=\"note\">" << failed << " of " << list.size()
            << " pictures show a problem (marked in red).</p>\n";
    QString section;
    for (int i = 0; i < list.size(); ++i) {
        const Picture &p = list[i];
        const Outcome &o = outcomes[i];
        if (p.section != section) {
            if (!section.isEmpty())
                out << "</section>\n";
            section = p.section;
            out << "<h2>" << html(section) << "</h2>\n<section>\n";
        }
        const bool ok = o.drawn && o.notes.isEmpty();
        out << "<figure id=\"" << html(p.name) << "\"" << (ok ? "" : " class=\"failed\"") << ">";
        if (o.drawn)
            out << "<a href=\"" << html(p.name) << ".png\"><img src=\"" << html(p.name)
                << ".png\" alt=\"" << html(p.title) << "\"></a>";
        out << "\n<figcaption><code>" << html(p.title) << "</code><br>" << html(p.caption);
        for (const QString &note : o.notes)
            out << "<br><span class=\"note\">" << html(note) << "</span>";
        out << "</figcaption></figure>\n";
    }
    if (!section.isEmpty())
        out << "</section>\n";
    out << "</body>\n</html>\n";
    out.flush();
    if (file.error() != QFile::NoError) {
        *error = file.errorString();
        return false;
    }
    return true;
}

// A picture is blank when every pixel has the colour of the first one.
bool isBlank(const QImage &image)
{
    const QImage rgb = image.convertToFormat(QImage::Format_ARGB32);
    const QRgb background = rgb.pixel(0, 0);
    for (int y = 0; y < rgb.height(); ++y) {
        const QRgb *line = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
        for (int x = 0; x < rgb.width(); ++x) {
            if (line[x] != background)
                return false;
        }
    }
    return true;
}

// Checks the written gallery: index.html, each picture it shows exists and
// is not blank, and no picture is marked as failed. Returns the problems.
QStringList checkGallery(const QDir &dir)
{
    QStringList problems;
    QFile index(dir.filePath(QStringLiteral("index.html")));
    if (!index.open(QIODevice::ReadOnly))
        return {QStringLiteral("%1 is missing").arg(index.fileName())};
    const QString text = QString::fromUtf8(index.readAll());
    static const QRegularExpression image(QStringLiteral("<img src=\"([^\"]+)\""));
    static const QRegularExpression failed(
            QStringLiteral("<figure id=\"([^\"]+)\" class=\"failed\""));
    int count = 0;
    for (auto it = image.globalMatch(text); it.hasNext();) {
        const QString name = it.next().captured(1);
        ++count;
        const QString path = dir.filePath(name);
        QImage picture;
        if (!QFileInfo::exists(path))
            problems << QStringLiteral("%1: missing").arg(name);
        else if (!picture.load(path))
            problems << QStringLiteral("%1: not a readable image").arg(name);
        else if (isBlank(picture))
            problems << QStringLiteral("%1: blank").arg(name);
    }
    if (count == 0)
        problems << QStringLiteral("index.html shows no picture");
    for (auto it = failed.globalMatch(text); it.hasNext();)
        problems << QStringLiteral("%1: marked as failed in index.html").arg(it.next().captured(1));
    return problems;
}

int usage(int code)
{
    print(QStringLiteral(
                  "usage: rvgraphics-gallery [--out DIR] [--only TEXT] [--timeout SECONDS] "
                  "[--check]\n"
                  "  --out DIR      output folder (default %1)\n"
                  "  --only TEXT    draw only the pictures whose file name contains TEXT\n"
                  "                 (index.html then shows only those)\n"
                  "  --timeout S    time limit per picture in seconds (default 20)\n"
                  "  --check        afterwards check the folder: every picture of index.html\n"
                  "                 exists and is not blank, none failed; non-zero exit otherwise")
                  .arg(QString::fromUtf8(RVGALLERY_DEFAULT_OUT)));
    return code;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QString fontProblem;
    bool fontLoaded = false;
    QGuiApplication *app = nullptr;
    {
        [[maybe_unused]] FontLeaksIgnored ignored;
        app = new QGuiApplication(argc, argv);
        fontLoaded = gallerySamples::loadGlyphFont(&fontProblem);
        // Warm the font caches (text and glyph outlines) while leaks are ignored.
        rvRender::renderImage({}, 64, 64, QStringLiteral("warm up"));
        gallerySamples::glyph(QStringLiteral("g"), QPointF(), 20);
    }
    std::unique_ptr<QGuiApplication> appOwner(app);

    QString outDir = QString::fromUtf8(RVGALLERY_DEFAULT_OUT);
    QString only;
    int timeoutMs = 20000;
    bool check = false;
    const QStringList args = QCoreApplication::arguments();
    for (int i = 1; i < args.size(); ++i) {
        const QString &a = args[i];
        if (a == QLatin1String("--out") && i + 1 < args.size()) {
            outDir = args[++i];
        } else if (a == QLatin1String("--only") && i + 1 < args.size()) {
            only = args[++i];
        } else if (a == QLatin1String("--timeout") && i + 1 < args.size()) {
            bool ok = false;
            const double seconds = args[++i].toDouble(&ok);
            if (!ok || !(seconds > 0) || seconds > 3600) {
                print(QStringLiteral("rvgraphics-gallery: bad --timeout %1").arg(args[i]));
                return 2;
            }
            timeoutMs = int(seconds * 1000);
        } else if (a == QLatin1String("--check")) {
            check = true;
        } else if (a == QLatin1String("--help") || a == QLatin1String("-h")) {
            return usage(0);
        } else {
            print(QStringLiteral("rvgraphics-gallery: unknown argument %1").arg(a));
            return usage(2);
        }
    }

    QDir dir(outDir);
    if (!dir.mkpath(QStringLiteral("."))) {
        print(QStringLiteral("rvgraphics-gallery: cannot create %1").arg(outDir));
        return 1;
    }
    dir.setPath(dir.absolutePath());
    if (!fontLoaded)
        print(QStringLiteral("warning: %1; glyphs use the default font").arg(fontProblem));

    QVector<Picture> list;
    for (const Picture &p : gallery::pictures()) {
        if (only.isEmpty() || p.name.contains(only))
            list.append(p);
    }
    QVector<Outcome> outcomes;
    int failed = 0;
    for (int i = 0; i < list.size(); ++i) {
        const Picture &p = list[i];
        const Outcome o = drawIsolated(p, dir.filePath(p.name + QStringLiteral(".png")), timeoutMs);
        outcomes.append(o);
        const bool ok = o.drawn && o.notes.isEmpty();
        failed += !ok;
        print(QStringLiteral("[%1/%2] %3  %4%5")
                      .arg(i + 1)
                      .arg(list.size())
                      .arg(p.name, -24)
                      .arg(p.title)
                      .arg(ok ? QString()
                              : QStringLiteral("\n        PROBLEM: ")
                                           + o.notes.join(QStringLiteral("; "))));
    }

    const QString indexFile = dir.filePath(QStringLiteral("index.html"));
    QString error;
    if (!writeIndex(indexFile, list, outcomes, &error)) {
        print(QStringLiteral("rvgraphics-gallery: cannot write %1: %2").arg(indexFile, error));
        return 1;
    }
    print(QStringLiteral("%1 pictures, %2 with a problem").arg(list.size()).arg(failed));
    print(QStringLiteral("Open %1").arg(QUrl::fromLocalFile(indexFile).toString()));

    if (check) {
        const QStringList problems = checkGallery(dir);
        for (const QString &problem : problems)
            print(QStringLiteral("check: ") + problem);
        print(problems.isEmpty() ? QStringLiteral("check: passed")
                                 : QStringLiteral("check: %1 problems").arg(problems.size()));
        return problems.isEmpty() ? 0 : 1;
    }
    return 0;
}
