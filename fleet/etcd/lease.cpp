// SPDX-License-Identifier: MIT
#include "fleet/etcd/lease.h"

#include "etcd.grpc.pb.h"

namespace fleet {

grpc::Status Lease::hold(std::size_t member, int seconds, bool *anew)
{
    if (m_id != 0) {
        const grpc::Status status = renew(member);
        if (!status.ok() || m_id != 0)
            return status;
    }
    *anew = true;
    return grant(member, seconds);
}

grpc::Status Lease::grant(std::size_t member, int seconds)
{
    grpc::ClientContext context;
    m_members.prepare(context, m_callMs);
    etcdserverpb::LeaseGrantRequest request;
    request.set_ttl(seconds);
    etcdserverpb::LeaseGrantResponse response;
    const grpc::Status status =
        etcdserverpb::Lease::NewStub(m_members.channel(member))->LeaseGrant(&context, request, &response);
    m_id = status.ok() ? response.id() : 0;
    return status;
}

// A stream in the API, for which we have no use beyond one question and its answer. A time to live of 0 means
// that the lease has run out.
grpc::Status Lease::renew(std::size_t member)
{
    grpc::ClientContext context;
    m_members.prepare(context, m_callMs);
    const auto stub = etcdserverpb::Lease::NewStub(m_members.channel(member));
    const auto stream = stub->LeaseKeepAlive(&context);
    etcdserverpb::LeaseKeepAliveRequest request;
    request.set_id(m_id);
    etcdserverpb::LeaseKeepAliveResponse response;
    const bool answered = stream->Write(request) && stream->WritesDone() && stream->Read(&response);
    const grpc::Status status = stream->Finish();
    if (!answered)
        return status.ok() ? grpc::Status(grpc::StatusCode::UNAVAILABLE, "the lease was not renewed")
                           : status;
    if (response.ttl() <= 0)
        m_id = 0;
    return grpc::Status::OK;
}

grpc::Status Lease::end(std::size_t member)
{
    if (m_id == 0)
        return grpc::Status::OK;
    grpc::ClientContext context;
    m_members.prepare(context, m_callMs);
    etcdserverpb::LeaseRevokeRequest request;
    request.set_id(m_id);
    etcdserverpb::LeaseRevokeResponse response;
    m_id = 0;
    return etcdserverpb::Lease::NewStub(m_members.channel(member))->LeaseRevoke(&context, request, &response);
}

} // namespace fleet
