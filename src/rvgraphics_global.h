#ifndef RVGRAPHICS_GLOBAL_H
#define RVGRAPHICS_GLOBAL_H

#include <QtCore/qglobal.h>

// Symbols are hidden by default; only classes marked RVGRAPHICS_EXPORT form
// the interface of the shared library.
#if defined(RVGRAPHICS_BUILD_LIBRARY)
#define RVGRAPHICS_EXPORT Q_DECL_EXPORT
#else
#define RVGRAPHICS_EXPORT Q_DECL_IMPORT
#endif

#define RVGRAPHICS_VERSION_STR "0.1.0"

#endif // RVGRAPHICS_GLOBAL_H
