// SPDX-License-Identifier: MIT
//
// Why the configuration store cannot be used. The store's calls say that something failed and not what;
// this looks at the place where the store is. Nothing is written, and no lock is taken.
#ifndef CORVEL_STOREHEALTH_H
#define CORVEL_STOREHEALTH_H

#include <QString>

// The file of the configuration in use; empty when there is no folder for it.
QString storePath();

// What stands in the way of writing there, in the system's words ("No space left on device"); empty when
// nothing does. A store that is merely held by another program looks well.
QString storeObstacle(const QString &path);

#endif
