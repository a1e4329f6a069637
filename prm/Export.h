#pragma once

#include <QtGlobal>

/// Marks what the shared library publishes; everything else stays hidden.
#if defined(PRM_BUILDING)
#define PRM_EXPORT Q_DECL_EXPORT
#else
#define PRM_EXPORT Q_DECL_IMPORT
#endif
