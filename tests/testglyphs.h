#ifndef TESTGLYPHS_H
#define TESTGLYPHS_H

// Glyph outlines of DejaVu Sans for tests: real-world curves with holes,
// tight turns and nearly parallel edges. Loading a font needs a
// QGuiApplication (made here on the offscreen platform when missing) and
// leaks fontconfig's caches, which the leak checker is told to ignore.

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtGui/QFont>
#include <QtGui/QFontDatabase>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainterPath>

#if defined(__SANITIZE_ADDRESS__)
#define TESTGLYPHS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TESTGLYPHS_SANITIZED 1
#endif
#endif
#ifdef TESTGLYPHS_SANITIZED
#include <sanitizer/lsan_interface.h>
#endif

namespace testGlyphs {

// Fontconfig's never-freed allocations while glyphs load are not ours.
struct FontLeaksIgnored
{
#ifdef TESTGLYPHS_SANITIZED
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

// DejaVu Sans at \a pixelSize; false with \a why set when it cannot load.
inline bool font(QFont *out, int pixelSize, QString *why)
{
    const QString fontFile = QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");
    if (!QFile::exists(fontFile)) {
        *why = QStringLiteral("DejaVu Sans is not installed");
        return false;
    }
    static int argc = 1;
    static char name[] = "rvgraphics-test";
    static char *argv[] = {name, nullptr};
    [[maybe_unused]] FontLeaksIgnored ignored;
    if (!QCoreApplication::instance()) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        new QGuiApplication(argc, argv); // lives until the process ends
    }
    static int id = -2;
    if (id == -2)
        id = qobject_cast<QGuiApplication *>(QCoreApplication::instance())
                ? QFontDatabase::addApplicationFont(fontFile)
                : -1;
    if (id < 0) {
        *why = QStringLiteral("no QGuiApplication, or the font does not load");
        return false;
    }
    *out = QFont(QFontDatabase::applicationFontFamilies(id).value(0));
    out->setPixelSize(pixelSize);
    return true;
}

// The outline of \a text with its baseline origin at (x, y); empty with
// \a why set when the font is unavailable.
inline QPainterPath outline(const QString &text, double x, double y, int pixelSize, QString *why)
{
    QFont f;
    QPainterPath path;
    if (!font(&f, pixelSize, why))
        return path;
    [[maybe_unused]] FontLeaksIgnored ignored;
    path.addText(x, y, f, text);
    return path;
}

} // namespace testGlyphs

#endif // TESTGLYPHS_H
