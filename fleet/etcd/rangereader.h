// SPDX-License-Identifier: MIT
//
// A range of any size, read page by page at one revision. Private to fleet/etcd.
#ifndef CORVEL_FLEET_ETCD_RANGEREADER_H
#define CORVEL_FLEET_ETCD_RANGEREADER_H

#include "fleet/cluster.h"

#include "etcd.grpc.pb.h"

#include <functional>

namespace fleet {

// Moves the pairs of an answer into the range.
void takeEntries(etcdserverpb::RangeResponse &response, Range *range);

class RangeReader {
public:
    using Call =
        std::function<grpc::Status(const etcdserverpb::RangeRequest &, etcdserverpb::RangeResponse *)>;

    explicit RangeReader(Call call) : m_call(std::move(call)) {}

    // All keys from `from` up to, but without, `to`; only `from` when `to` is empty. On failure *range is
    // untouched. A value that is larger than any answer may be is given as an empty one, and without `values`
    // each of them.
    grpc::Status read(const std::string &from, const std::string &to, Range *range, bool values) const;

private:
    grpc::Status page(etcdserverpb::RangeRequest &request, bool values,
                      etcdserverpb::RangeResponse *response) const;

    Call m_call;
};

} // namespace fleet

#endif
