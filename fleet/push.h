// SPDX-License-Identifier: MIT
//
// What is put into the cluster together with pushed documents: who changed which paths, and when. It is the
// cluster's history, the last hundred pushes of each machine to each server; and it is a receipt: whether it
// is there tells whether a push whose answer was lost has arrived. Pure; any thread.
#ifndef CORVEL_FLEET_PUSH_H
#define CORVEL_FLEET_PUSH_H

#include "fleet/keypath.h"
#include "fleet/replica.h"

namespace fleet {

constexpr std::uint64_t kHistorySlots = 100;

struct Receipt {
    std::string key;
    std::string value;
};

// number counts a machine's pushes to a server.
Receipt receiptOf(const Place &place, const QByteArray &who, std::uint64_t number,
                  const Documents &documents);
std::string receiptKey(const Place &place, const QByteArray &who, std::uint64_t number);
// Short, for keeping: equal for equal values only.
std::string receiptMark(const std::string &value);

} // namespace fleet

#endif
