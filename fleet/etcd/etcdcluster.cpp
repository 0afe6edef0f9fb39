// SPDX-License-Identifier: MIT
#include "fleet/etcd/etcdcluster.h"

#include "fleet/etcd/lease.h"
#include "fleet/etcd/members.h"
#include "fleet/etcd/outcomes.h"
#include "fleet/etcd/rangereader.h"
#include "fleet/etcd/watchstream.h"

#include "etcd.grpc.pb.h"

#include <grpc/support/log.h>

#include <algorithm>

namespace fleet {

namespace {

void addComparison(etcdserverpb::TxnRequest &request, const Put &put)
{
    if (put.expectedRevision == Put::kAnyRevision)
        return;
    etcdserverpb::Compare *compare = request.add_compare();
    compare->set_result(etcdserverpb::Compare::EQUAL);
    compare->set_target(etcdserverpb::Compare::MOD); // 0 for a key that is not there
    compare->set_key(put.key);
    compare->set_mod_revision(put.expectedRevision);
}

void addOperation(etcdserverpb::TxnRequest &request, const Put &put, std::int64_t lease)
{
    etcdserverpb::RequestOp *operation = request.add_success();
    if (put.remove) {
        operation->mutable_request_delete_range()->set_key(put.key);
        return;
    }
    etcdserverpb::PutRequest *one = operation->mutable_request_put();
    one->set_key(put.key);
    one->set_value(put.value);
    if (put.withLease)
        one->set_lease(lease);
}

etcdserverpb::TxnRequest transaction(const std::vector<Put> &puts, std::int64_t lease)
{
    etcdserverpb::TxnRequest request;
    for (const Put &put : puts) {
        addComparison(request, put);
        addOperation(request, put, lease);
    }
    return request;
}

class Client : public EtcdCluster {
public:
    explicit Client(const EtcdOptions &options)
        : m_options(options), m_members(std::make_shared<Members>(options)),
          m_lease(*m_members, options.callMs)
    {
    }

    Outcome range(const std::string &prefix, Range *range) override
    {
        return read(prefix, prefixEnd(prefix), range);
    }
    Outcome get(const std::string &key, Range *range) override { return read(key, std::string(), range); }
    Outcome keys(const std::string &prefix, std::vector<std::string> *keys) override;
    Outcome names(const std::string &prefix, Range *range) override
    {
        return read(prefix, prefixEnd(prefix), range, false);
    }
    Outcome getAll(const std::vector<std::string> &keys, Range *range) override;
    Outcome commit(const std::vector<Put> &puts, std::int64_t *revision) override;
    std::unique_ptr<Watch> watch(const std::string &prefix, std::int64_t fromRevision,
                                 WatchSink *sink) override;
    Outcome keepAlive(const std::string &key, const std::string &value, int seconds) override;
    Outcome endLease() override;
    bool cutOff() const override { return m_cutOff; }
    std::string reason() const override { return m_reason; }

private:
    Outcome getSome(const std::string *keys, std::size_t count, Range *range);
    Outcome read(const std::string &from, const std::string &to, Range *range, bool values = true);
    Outcome told(const grpc::Status &status, std::size_t member);
    Outcome refused(Outcome outcome, const char *reason);

    EtcdOptions m_options;
    std::shared_ptr<Members> m_members;
    Lease m_lease;
    std::string m_kept; // what keepAlive() put last, "key\nvalue"
    bool m_cutOff = false;
    std::string m_reason;
};

// After no answer the next call goes to the next member.
Outcome Client::told(const grpc::Status &status, std::size_t member)
{
    const Outcome outcome = outcomeOf(status);
    if (outcome == Outcome::Done)
        return outcome;
    m_reason = lineOf(m_members->explained(status, member));
    if (outcome != Outcome::Unreachable)
        return outcome;
    m_cutOff = !m_members->connected(member);
    m_members->failed(member);
    return outcome;
}

Outcome Client::refused(Outcome outcome, const char *reason)
{
    m_reason = reason;
    return outcome;
}

Outcome Client::read(const std::string &from, const std::string &to, Range *range, bool values)
{
    const std::size_t member = m_members->current();
    const auto stub = etcdserverpb::KV::NewStub(m_members->channel(member));
    const RangeReader reader(
        [&](const etcdserverpb::RangeRequest &request, etcdserverpb::RangeResponse *response) {
            grpc::ClientContext context;
            m_members->prepare(context, m_options.callMs);
            return stub->Range(&context, request, response);
        });
    return told(reader.read(from, to, range, values), member);
}

// A transaction that only reads.
Outcome Client::getSome(const std::string *keys, std::size_t count, Range *range)
{
    etcdserverpb::TxnRequest request;
    for (std::size_t at = 0; at < count; ++at)
        request.add_success()->mutable_request_range()->set_key(keys[at]);
    const std::size_t member = m_members->current();
    grpc::ClientContext context;
    m_members->prepare(context, m_options.callMs);
    etcdserverpb::TxnResponse response;
    const grpc::Status status =
        etcdserverpb::KV::NewStub(m_members->channel(member))->Txn(&context, request, &response);
    if (!status.ok())
        return told(status, member);
    range->revision = response.header().revision();
    range->cluster = response.header().cluster_id();
    for (auto &one : *response.mutable_responses())
        takeEntries(*one.mutable_response_range(), range);
    return Outcome::Done;
}

Outcome Client::getAll(const std::vector<std::string> &keys, Range *range)
{
    Range all;
    Outcome outcome = Outcome::Done;
    std::size_t most = kMaxPuts;
    for (std::size_t at = 0; at < keys.size() && outcome == Outcome::Done;) {
        const std::size_t count = std::min(most, keys.size() - at);
        outcome = getSome(&keys[at], count, &all);
        if (outcome == Outcome::TooLarge && count > 1) { // fewer at a time
            most = std::max<std::size_t>(1, count / 16);
            outcome = Outcome::Done;
        } else {
            at += count;
        }
    }
    if (outcome == Outcome::Done)
        *range = std::move(all);
    return outcome;
}

Outcome Client::keys(const std::string &prefix, std::vector<std::string> *keys)
{
    Range range;
    const Outcome outcome = read(prefix, prefixEnd(prefix), &range, false);
    if (outcome != Outcome::Done)
        return outcome;
    keys->clear();
    for (Entry &entry : range.entries)
        keys->push_back(std::move(entry.key));
    return outcome;
}

Outcome Client::commit(const std::vector<Put> &puts, std::int64_t *revision)
{
    if (puts.size() > kMaxPuts)
        return refused(Outcome::TooLarge, "too many keys for one transaction");
    const std::size_t member = m_members->current();
    grpc::ClientContext context;
    m_members->prepare(context, m_options.callMs);
    etcdserverpb::TxnResponse response;
    const grpc::Status status = etcdserverpb::KV::NewStub(m_members->channel(member))
                                    ->Txn(&context, transaction(puts, m_lease.id()), &response);
    if (status.error_code() == grpc::StatusCode::NOT_FOUND)
        m_lease.forget();
    if (!status.ok())
        return told(status, member);
    if (!response.succeeded())
        return refused(Outcome::Refused, "somebody else changed a key first");
    if (revision)
        *revision = response.header().revision();
    return Outcome::Done;
}

std::unique_ptr<Watch> Client::watch(const std::string &prefix, std::int64_t fromRevision, WatchSink *sink)
{
    etcdserverpb::WatchCreateRequest what;
    what.set_key(prefix);
    what.set_range_end(prefixEnd(prefix));
    what.set_start_revision(fromRevision);
    what.set_progress_notify(true);
    what.set_fragment(true);
    return std::make_unique<WatchStream>(m_members, m_options, std::move(what), sink);
}

Outcome Client::keepAlive(const std::string &key, const std::string &value, int seconds)
{
    const std::size_t member = m_members->current();
    bool anew = false;
    const Outcome held = told(m_lease.hold(member, seconds, &anew), member);
    const std::string wanted = key + '\n' + value;
    if (held != Outcome::Done || (!anew && wanted == m_kept))
        return held;
    Put put;
    put.key = key;
    put.value = value;
    put.withLease = true;
    m_kept.clear();
    const Outcome outcome = commit({put}, nullptr);
    if (outcome == Outcome::Done)
        m_kept = wanted;
    return outcome;
}

Outcome Client::endLease()
{
    const std::size_t member = m_members->current();
    m_kept.clear();
    return told(m_lease.end(member), member);
}

} // namespace

std::unique_ptr<EtcdCluster> etcdCluster(const EtcdOptions &options)
{
    gpr_set_log_function(
        [](gpr_log_func_args *) {}); // it would write several lines for each refused handshake
    return std::make_unique<Client>(options);
}

std::string prefixEnd(std::string prefix)
{
    while (!prefix.empty() && prefix.back() == '\xff')
        prefix.pop_back();
    if (prefix.empty())
        return std::string(1, '\0'); // etcd's word for "to the end"
    ++prefix.back();
    return prefix;
}

} // namespace fleet
