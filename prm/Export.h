#pragma once

#include <QtGlobal>

/// Marks what the shared library publishes; everything else stays hidden.
#if defined(PRM_BUILDING)
#define PRM_EXPORT Q_DECL_EXPORT
#else
#define PRM_EXPORT Q_DECL_IMPORT
#endif

/// For the short steps of an evaluation: a call takes longer than what they do, but in large sources compilers stop
/// inlining them.
#if defined(__GNUC__)
#define PRM_ALWAYS_INLINE [[gnu::always_inline]] inline
#define PRM_NEVER_INLINE [[gnu::noinline]]
#else
#define PRM_ALWAYS_INLINE inline
#define PRM_NEVER_INLINE
#endif
