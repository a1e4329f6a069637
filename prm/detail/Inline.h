#pragma once

/// For the short steps of an evaluation: a call takes longer than what they do, but in large sources compilers stop
/// inlining them.
#if defined(__GNUC__)
#define PRM_ALWAYS_INLINE [[gnu::always_inline]] inline
#define PRM_NEVER_INLINE [[gnu::noinline]]
#else
#define PRM_ALWAYS_INLINE inline
#define PRM_NEVER_INLINE
#endif
