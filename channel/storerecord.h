// SPDX-License-Identifier: MIT
//
// RKCFG_CHANGE as rkcfg.h of this source tree has it, member by member; a site's own header need not have
// it. A test holds the two against each other. Read through librarycalls.h.
#ifndef CORVEL_STORERECORD_H
#define CORVEL_STORERECORD_H

#include <QtGlobal>

struct StoreRecord {
    quint32 size;
    qint64 id;
    qint64 batch;
    qint64 timeUs;
    const char *program;
    quint32 pid;
    const char *user;
    const char *label;
    const char *keyPath;
    const char *valueName;
    int oldType, newType;
    const char *oldText;
    quint32 oldSize;
    const char *newText;
    quint32 newSize;
    quint32 oldNumber, newNumber;
    qint64 undoes;
};

#endif
