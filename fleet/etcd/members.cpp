// SPDX-License-Identifier: MIT
#include "fleet/etcd/members.h"

#include "etcd.grpc.pb.h"

#include <chrono>

namespace fleet {

namespace {

constexpr int kLargestAnswer =
    64 * 1024 * 1024; // a page of a range; smaller pages are asked for when it is not enough

// Under this name it also is the time limit of making a connection, so it must not be short.
constexpr int kConnectMs = 5000;
constexpr int kLongestPauseMs = 1000;
// etcd ends connections that are asked more often than every 5 s.
constexpr int kKeepAliveMs = 10000;
constexpr int kKeepAliveAnswerMs = 3000;

grpc::ChannelArguments arguments(int largestAnswer)
{
    grpc::ChannelArguments arguments;
    arguments.SetMaxReceiveMessageSize(largestAnswer);
    arguments.SetInt(GRPC_ARG_MIN_RECONNECT_BACKOFF_MS, kConnectMs);
    arguments.SetInt(GRPC_ARG_INITIAL_RECONNECT_BACKOFF_MS, 100);
    arguments.SetInt(GRPC_ARG_MAX_RECONNECT_BACKOFF_MS, kLongestPauseMs);
    arguments.SetInt(GRPC_ARG_KEEPALIVE_TIME_MS, kKeepAliveMs);
    arguments.SetInt(GRPC_ARG_KEEPALIVE_TIMEOUT_MS, kKeepAliveAnswerMs);
    return arguments;
}

} // namespace

Members::Members(const EtcdOptions &options) : m_names(options.endpoints)
{
    grpc::SslCredentialsOptions tls;
    tls.pem_root_certs = options.tls.authority;
    tls.pem_cert_chain = options.tls.certificate;
    tls.pem_private_key = options.tls.key;
    const auto credentials = grpc::SslCredentials(tls);
    for (const std::string &endpoint : options.endpoints)
        m_channels.push_back(
            grpc::CreateCustomChannel(endpoint, credentials, arguments(options.largestAnswer)));
}

bool Members::connected(std::size_t member) const
{
    return m_channels[member]->GetState(false) == GRPC_CHANNEL_READY;
}

void Members::failed(std::size_t member)
{
    m_current.compare_exchange_strong(member, (member + 1) % m_channels.size());
}

void Members::prepare(grpc::ClientContext &context, int milliseconds) const
{
    context.set_deadline(std::chrono::system_clock::now() + std::chrono::milliseconds(milliseconds));
    context.set_wait_for_ready(true);
    context.AddMetadata("hasleader", "true");
}

grpc::Status Members::explained(const grpc::Status &status, std::size_t member) const
{
    const bool known = status.error_code() != grpc::StatusCode::DEADLINE_EXCEEDED ||
                       m_channels[member]->GetState(false) != GRPC_CHANNEL_TRANSIENT_FAILURE;
    grpc::Status why = status;
    if (!known) { // fails at once
        grpc::ClientContext context;
        context.set_deadline(std::chrono::system_clock::now() + std::chrono::milliseconds(100));
        etcdserverpb::RangeRequest request;
        etcdserverpb::RangeResponse response;
        why = etcdserverpb::KV::NewStub(m_channels[member])->Range(&context, request, &response);
    }
    return grpc::Status(status.error_code(), m_names[member] + ": " + why.error_message());
}

} // namespace fleet
