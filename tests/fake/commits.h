// SPDX-License-Identifier: MIT
//
// Stands between a test program and the store library: is anything written that has not been made durable?
// Link commits.cpp into the program itself; the real functions run as usual.
#ifndef CORVEL_TEST_COMMITS_H
#define CORVEL_TEST_COMMITS_H

namespace Commits {

// Writes since the last save, and saves, both counted since clear().
int pending();
int saves();
void clear();

} // namespace Commits

#endif
