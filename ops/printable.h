// SPDX-License-Identifier: MIT
//
// Bytes of the store and of files as a terminal may have them. Pure; any thread.
#ifndef CORVEL_OPS_PRINTABLE_H
#define CORVEL_OPS_PRINTABLE_H

#include <QByteArray>

namespace ops {

// Control characters as "\\x1b", so that a stored text cannot steer a terminal; in a text that is no UTF-8
// every byte beyond ASCII likewise.
QByteArray printable(const QByteArray &text);

} // namespace ops

#endif
