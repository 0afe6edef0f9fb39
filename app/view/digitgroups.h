// SPDX-License-Identifier: MIT
#ifndef CORVEL_DIGITGROUPS_H
#define CORVEL_DIGITGROUPS_H

#include <QByteArray>

// A number with a comma before every group of three digits, the minus sign in front: -1,234,567.
QByteArray digitGroups(qint64 number);

#endif
