// rvgeom: the command line over rvgraphics (see rvgeom --help).

#include "commands.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QGuiApplication>

#include <cstdio>
#include <memory>

namespace {

// Qt's own notes about the environment (no XDG runtime directory on a
// server, ...) are not the user's business; other warnings are passed on.
void messageHandler(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtDebugMsg || type == QtInfoMsg
        || message.startsWith(QLatin1String("QStandardPaths:")))
        return;
    std::fprintf(stderr, "rvgeom: Qt: %s\n", message.toLocal8Bit().constData());
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);

    // Pictures need a QGuiApplication (fonts for the title); a machine
    // without a display gets the offscreen platform. The application sees no
    // arguments, so that Qt's own options (-platform, ...) are not taken
    // from the user's shapes.
    qInstallMessageHandler(messageHandler);
    int appArgc = 1;
    char *appArgv[] = {argv[0], nullptr};
    std::unique_ptr<QCoreApplication> app;
    if (rvGeom::wantsPicture(arguments)) {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        app.reset(new QGuiApplication(appArgc, appArgv));
    }
    return rvGeom::run(arguments, stdout, stderr);
}
