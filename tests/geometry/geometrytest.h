#ifndef GEOMETRYTEST_H
#define GEOMETRYTEST_H

// Helpers shared by the geometry tests: hex-float printing of failing inputs
// (paste-able into a regression test) and capture of the warning log.

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

#include <cstdio>
#include <string>

// QString::asprintf has no %a; the C library's printf does.
inline std::string hexf(double v)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%a", v);
    return buffer;
}

// Collects warnings instead of printing them while alive.
struct WarningCapture
{
    static QStringList &messages()
    {
        static QStringList list;
        return list;
    }
    WarningCapture()
        : previous(qInstallMessageHandler(
                [](QtMsgType type, const QMessageLogContext &, const QString &msg) {
                    if (type == QtWarningMsg)
                        messages().append(msg);
                }))
    {
        messages().clear();
    }
    ~WarningCapture() { qInstallMessageHandler(previous); }
    const QtMessageHandler previous;
};

#endif // GEOMETRYTEST_H
