#pragma once

#include <QtGlobal>

/// Marks what the host library publishes; everything else stays hidden.
#if defined(PRM_HOST_BUILDING)
#define PRM_HOST_EXPORT Q_DECL_EXPORT
#else
#define PRM_HOST_EXPORT Q_DECL_IMPORT
#endif
