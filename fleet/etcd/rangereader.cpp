// SPDX-License-Identifier: MIT
#include "fleet/etcd/rangereader.h"

#include "fleet/etcd/outcomes.h"

namespace fleet {

namespace {

constexpr std::int64_t kPage = 256; // documents, usually some hundred KiB
constexpr std::int64_t kNamePage = 8192;

} // namespace

void takeEntries(etcdserverpb::RangeResponse &response, Range *range)
{
    for (auto &pair : *response.mutable_kvs()) {
        Entry entry;
        entry.key = std::move(*pair.mutable_key());
        entry.value = std::move(*pair.mutable_value());
        entry.modRevision = pair.mod_revision();
        range->entries.push_back(std::move(entry));
    }
}

// Too much for one answer: fewer at a time, at last one without its value.
grpc::Status RangeReader::page(etcdserverpb::RangeRequest &request, bool values,
                               etcdserverpb::RangeResponse *response) const
{
    request.set_limit(values ? kPage : kNamePage);
    request.set_keys_only(!values);
    grpc::Status status = m_call(request, response);
    while (outcomeOf(status) == Outcome::TooLarge && !request.keys_only()) {
        request.set_keys_only(request.limit() == 1);
        request.set_limit(request.limit() == 1 ? 1 : request.limit() / 16);
        response->Clear();
        status = m_call(request, response);
    }
    return status;
}

grpc::Status RangeReader::read(const std::string &from, const std::string &to, Range *range,
                               bool values) const
{
    Range all;
    etcdserverpb::RangeRequest request;
    request.set_key(from);
    request.set_range_end(to);
    for (bool more = true; more;) {
        etcdserverpb::RangeResponse response;
        const grpc::Status status = page(request, values, &response);
        if (!status.ok())
            return status;
        all.cluster = response.header().cluster_id();
        all.revision = all.revision == 0 ? response.header().revision() : all.revision;
        takeEntries(response, &all);
        more = response.more() && !all.entries.empty();
        request.set_revision(all.revision); // what follows is of the same moment
        if (more)
            request.set_key(all.entries.back().key + '\0');
    }
    *range = std::move(all);
    return grpc::Status::OK;
}

} // namespace fleet
