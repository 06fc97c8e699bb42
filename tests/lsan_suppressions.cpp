// Leak-checker suppressions, compiled into the test programs of the sanitizer
// build only.
//
// Qt 5's offscreen platform plugin never frees the screen it creates with the
// QGuiApplication (a QScreen / QPlatformScreen / cursor cycle), so every test
// that needs a QGuiApplication (fonts, images) would report it as a leak. The
// entries are the frames that appear in the leak checker's fast-unwound stacks
// of those allocations. Suppressed blocks count as reachable, so a leaked
// QObject goes unreported too (its private part matches QObject::QObject); the
// library has no QObjects, and its own leaked objects are still reported.

extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\n"
           "leak:QScreen::QScreen\n"
           "leak:QPlatformScreen::QPlatformScreen\n"
           "leak:QWindowSystemInterface::handleScreenAdded\n"
           "leak:QObject::QObject\n"
           "leak:QtSharedPointer::ExternalRefCountData::getAndRef\n";
}
