/* SPDX-License-Identifier: MIT */
/* The files of a store as bytes, and everything that can be done to them. */
#ifndef CAMPAIGN_MUTATIONS_H
#define CAMPAIGN_MUTATIONS_H

#include <QByteArray>
#include <QMap>
#include <QString>

// Bytes by file name.
using StoreFiles = QMap<QString, QByteArray>;

struct Mutation {
    const char *name;
    const char *file; // which one it is done to
    void (*apply)(QByteArray &bytes);
};

constexpr int mutationCount = 22;
extern const Mutation mutations[mutationCount];

#endif
