/* SPDX-License-Identifier: MIT */
/* The names of the video server's values, and what they are kept as. The list is made when this is built. */
#ifndef RKCFG_TOOL_KNOWNNAMES_H
#define RKCFG_TOOL_KNOWNNAMES_H

enum class KnownType { None, Text, Number };

// None for a name or a path that the server has no use for. Paths compare without regard to ASCII case.
KnownType knownType(const char *path, const char *name);

#endif
